#include "gl/image/QGLTexture.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include "QTD/frame/Text.h"
#include "gl/image/GLPixels.h"
#include "gl/image/LineTransfer.h"
#include "gl/surface/ActiveSurface.h"
#include "gl/surface/LivingObjects.h"
#include "gl/surface/QGLSurface.h"

using QTD::ToText;

QGLTexture::QGLTexture() : pixelFormat(0) {
  parameters.Set("filter", ToText(GL_NEAREST));
  parameters.Set("surface", ToText(static_cast<const void*>(nullptr)));
}

QGLTexture::~QGLTexture() {
  QGLTexture::done();
}

bool QGLTexture::init(const ZynImage* image, QTD::PROPERTIES* list) {
  done();
  parameters.Merge(list);
  if (image) {
    parameters.Set("size.x", ToText(image->width));
    parameters.Set("size.y", ToText(image->height));
    parameters.Set("pixeltype", ToText(image->pixelType));
  }
  if (!findSurface() || !image) return false;
  if (!fitsLimit(parameters.GetInt64("size.x"), parameters.GetInt64("size.y"))) return false;
  pixelFormat.Decode(static_cast<uint32_t>(parameters.GetInt64("pixeltype")));
  return make();
}

bool QGLTexture::init(const QTD::PixelFormat& format, int width, int height, QTD::PROPERTIES* list) {
  done();
  parameters.Merge(list);
  const int64_t usedWidth = width > 0 ? width : list ? list->GetInt64("size.x", "0") : 0;
  const int64_t usedHeight = height > 0 ? height : list ? list->GetInt64("size.y", "0") : 0;
  parameters.Set("size.x", ToText(static_cast<long long>(usedWidth)));
  parameters.Set("size.y", ToText(static_cast<long long>(usedHeight)));
  if (!findSurface() || format.family == QTD::PixelFormat::Unknown) return false;
  if (!fitsLimit(usedWidth, usedHeight)) return false;
  pixelFormat.Decode(format.Encode());
  pixelFormat.properties = format.properties;
  return make();
}

bool QGLTexture::fitsLimit(int64_t width, int64_t height) {
  const int64_t limit = surface->properties.GetInt64("gl.texture");
  return width > 0 && width <= limit && height > 0 && height <= limit;
}

bool QGLTexture::make() {
  if (parameters.Has("texture")) {
    textureName = static_cast<uint32_t>(parameters.GetInt64("texture"));
  } else {
    const GLPixels pixels = PixelsOf(pixelFormat);
    const GLint filter = parameters.GetInt("filter");
    surface->glGenTextures(1, &textureName);
    surface->glActiveTexture(GL_TEXTURE0);
    surface->glBindTexture(GL_TEXTURE_2D, textureName);
    surface->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    surface->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
    surface->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
    surface->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
    surface->glTexImage2D(GL_TEXTURE_2D, 0, pixels.internalFormat, parameters.GetInt("size.x"),
                          parameters.GetInt("size.y"), 0, pixels.format, pixels.type, nullptr);
  }
  checkError("QGLTexture::init()");
  return true;
}

void QGLTexture::done() {
  deleteOwn();
  textureName = 0;
}

void QGLTexture::deleteOwn() {
  if (textureName == 0 || parameters.Has("texture")) return;
  const ActiveSurface active(surface);
  if (active && context == active->Context() && active->glIsTexture(textureName))
    active->glDeleteTextures(1, &textureName);
}

bool QGLTexture::isValid() {
  return textureName != 0;
}

bool QGLTexture::findSurface() {
  surface = LivingSurface(surface);
  if (!surface) surface = LivingSurface(parameters.GetPointer("surface"));
  context = surface ? surface->Context() : nullptr;
  return surface && surface->isActive();
}

// The context goes with the surface; neither another one at its address nor its next context has the name.
bool QGLTexture::isCurrent() {
  return context && QOpenGLContext::currentContext() == context && LivingSurface(surface) &&
         surface->isActive();
}

bool QGLTexture::isLive() {
  return isCurrent() && surface->glIsTexture(textureName);
}

bool QGLTexture::render() {
  if (!isLive()) return false;
  const int width = parameters.GetInt("size.x");
  const int height = parameters.GetInt("size.y");
  surface->glActiveTexture(GL_TEXTURE0);
  surface->glBindTexture(GL_TEXTURE_2D, textureName);
  surface->glViewport(0, 0, width, height);
  surface->renderTexture(width, height);
  unbind();
  return true;
}

bool QGLTexture::bind() {
  if (!isLive()) return false;
  surface->glEnable(GL_TEXTURE_2D);
  surface->glActiveTexture(GL_TEXTURE0);
  surface->glBindTexture(GL_TEXTURE_2D, textureName);
  return true;
}

void QGLTexture::unbind() {
  if (!isCurrent()) return;
  surface->glActiveTexture(GL_TEXTURE0);
  surface->glBindTexture(GL_TEXTURE_2D, 0);
}

bool QGLTexture::fill(const ZynImage* image) {
  if (!isLive() || !image || !image->imageData) return false;
  const GLPixels pixels = PixelsOf(pixelFormat);
  const int width = parameters.GetInt("size.x");
  const int height = parameters.GetInt("size.y");
  if (!LinesLieWithin(*image, pixels.LineBytes(static_cast<uint32_t>(width)), static_cast<uint32_t>(height)))
    return false;
  bind();
  UploadLines(*surface, pixels, width, height, image->imageData, image->linePitch);
  checkError("QGLTexture::fill()");
  unbind();
  return true;
}

void QGLTexture::setTexture(uint32_t name) {
  deleteOwn();
  textureName = name;
  parameters.Set("texture", ToText(name));
}

uint32_t QGLTexture::texture() {
  return textureName;
}

uint32_t QGLTexture::checkError(const char* where) {
  return isCurrent() ? static_cast<uint32_t>(surface->checkError(where, 1, 0)) : 0;
}

QTD::PixelFormat& QGLTexture::format() {
  return pixelFormat;
}

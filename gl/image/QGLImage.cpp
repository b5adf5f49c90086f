#include "gl/image/QGLImage.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>

#include "QTD/frame/Text.h"
#include "QTD/image/ImageRecord.h"
#include "QTD/screen/Numbers.h"
#include "gl/image/GLPixels.h"
#include "gl/passes/ShaderSources.h"
#include "gl/surface/ActiveSurface.h"
#include "gl/surface/LivingObjects.h"
#include "gl/surface/QGLSurface.h"

using QTD::ToText;

namespace {

constexpr const char* kUniforms[] = {"source", "flipVert", "colorCoef", "colorHigh", "colorMono"};

// All blocks of the list are laid out like this one.
QGLImageAttachment* FindAttachment(const ZynImage* record) {
  auto* block = static_cast<QGLImageAttachment*>(record ? record->attachments : nullptr);
  while (block && block->tag != QGLImageAttachment::kTag)
    block = static_cast<QGLImageAttachment*>(block->next);
  return block;
}

bool Attach(ZynImage* record, QGLImage* image) {
  void* const memory = std::malloc(sizeof(QGLImageAttachment));
  if (!memory) return false;
  auto* const block = new (memory) QGLImageAttachment;
  block->image = image;
  block->next = record->attachments;
  record->attachments = block;
  return true;
}

}  // namespace

QGLImage* AttachedImage(const ZynImage* record) {
  const QGLImageAttachment* const block = FindAttachment(record);
  return block ? block->image : nullptr;
}

uint32_t AttachedTexture(const ZynImage* record) {
  QGLImage* const image = AttachedImage(record);
  return image ? image->texture() : 0;
}

QGLImage::QGLImage(QGLSurface* usedSurface) : surface(usedSurface), format(0) {
  parameters.Set("filter", ToText(GL_NEAREST));
  parameters.Set("surface", ToText(static_cast<const void*>(usedSurface)));
  parameters.Set("readGPU", "0");
}

QGLImage::~QGLImage() {
  QGLImage::done();
}

bool QGLImage::init(const ZynImage* image, QTD::PROPERTIES* list) {
  done();
  if (image) {
    parameters.Set("size.x", ToText(image->width));
    parameters.Set("size.y", ToText(image->height));
    parameters.Set("pixeltype", ToText(image->pixelType));
  }
  parameters.Merge(list);
  if (!findSurface() || !makeRecord(image)) return false;

  const GLPixels pixels = PixelsOf(format);
  makeTexture(pixels);
  if (!makeFramebuffer(pixels)) {
    checkError("QGLImage::init()");
    done();
    return false;
  }
  makeProgram();
  unbind();
  checkError("QGLImage::init()");
  return surface->LastError() == 0;  // an invalid operation counts here, though `checkError` answers 0
}

bool QGLImage::findSurface() {
  surface = LivingSurface(surface);
  if (!surface) surface = LivingSurface(parameters.GetPointer("surface"));
  context = surface ? surface->Context() : nullptr;
  return surface && surface->isActive();
}

// The context goes with the surface; neither another one at its address nor its next context has these names.
bool QGLImage::isCurrent() {
  return context && QOpenGLContext::currentContext() == context && LivingSurface(surface) &&
         surface->isActive();
}

bool QGLImage::makeRecord(const ZynImage* image) {
  const int64_t width = parameters.GetInt64("size.x");
  const int64_t height = parameters.GetInt64("size.y");
  const auto code = static_cast<uint32_t>(parameters.GetInt64("pixeltype"));
  const int64_t limit = surface->properties.GetInt64("gl.renderbuffer");
  if (width < 1 || width > limit || height < 1 || height > limit) return false;
  if (limit > std::numeric_limits<int>::max()) return false;

  const bool bottomUp = (image && image->origin == 1) != parameters.GetBool("image.flip.vert");
  const int lines = static_cast<int>(height);
  record = QTD::ImageCreate(nullptr, static_cast<uint32_t>(width), bottomUp ? -lines : lines, code);
  if (!record || !record->imageData || !Attach(record, this)) {
    QTD::ImageDelete(record);
    return false;
  }
  format.Decode(code);
  return true;
}

void QGLImage::makeTexture(const GLPixels& pixels) {
  const GLint filter = parameters.GetInt("filter");
  surface->glGenTextures(1, &textureName);
  surface->glActiveTexture(GL_TEXTURE0);
  surface->glBindTexture(GL_TEXTURE_2D, textureName);
  surface->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
  surface->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
  surface->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
  surface->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
  surface->glTexImage2D(GL_TEXTURE_2D, 0, pixels.internalFormat, static_cast<GLsizei>(record->width),
                        static_cast<GLsizei>(record->height), 0, pixels.format, pixels.type, nullptr);
}

bool QGLImage::makeFramebuffer(const GLPixels& pixels) {
  surface->glGenFramebuffers(1, &framebuffer);
  surface->glGenRenderbuffers(1, &renderbuffer);
  surface->glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
  surface->glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
  if (attach(pixels.internalFormat)) return true;
  if (format.family != QTD::PixelFormat::Rgb) return false;

  // Three channels are no target for every driver; four are. What the driver had to say on three is
  // forgotten.
  constexpr int kMostErrors = 16;
  for (int i = 0; i < kMostErrors && surface->glGetError() != GL_NO_ERROR; ++i) continue;
  const GLint four = format.depth == 8 ? GL_RGBA8 : GL_RGBA16;
  surface->glTexImage2D(GL_TEXTURE_2D, 0, four, static_cast<GLsizei>(record->width),
                        static_cast<GLsizei>(record->height), 0, pixels.format, pixels.type, nullptr);
  return attach(four);
}

// The texture takes the place of the renderbuffer, which stays allocated.
bool QGLImage::attach(int internalFormat) {
  surface->glRenderbufferStorage(GL_RENDERBUFFER, static_cast<GLenum>(internalFormat),
                                 static_cast<GLsizei>(record->width), static_cast<GLsizei>(record->height));
  surface->glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, renderbuffer);
  surface->glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, textureName, 0);
  return surface->glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

void QGLImage::makeProgram() {
  // What becomes of the shaders shows in later errors of the driver.
  shader.addShaderFromSourceCode(QOpenGLShader::Vertex, FindShaderSource("image.v.glsl"));
  shader.addShaderFromSourceCode(QOpenGLShader::Fragment, FindShaderSource("image.f.glsl"));
  shader.link();
  shader.bind();
  for (const char* const name : kUniforms) {
    uniforms.Set(name, ToText(surface->glGetUniformLocation(shader.programId(), name)));
  }
  shader.release();
}

// The program stays.
void QGLImage::done() {
  QTD::ImageDelete(record);
  const bool any = framebuffer != 0 || renderbuffer != 0 || textureName != 0;
  if (!any) return;
  if (const ActiveSurface active(surface); active && context == active->Context()) {
    if (framebuffer != 0) active->glDeleteFramebuffers(1, &framebuffer);
    if (renderbuffer != 0) active->glDeleteRenderbuffers(1, &renderbuffer);
    if (active->glIsTexture(textureName)) active->glDeleteTextures(1, &textureName);
  }
  framebuffer = 0;
  renderbuffer = 0;
  textureName = 0;
}

QTD::PROPERTIES& QGLImage::properties() {
  return parameters;
}

bool QGLImage::isValid() {
  return framebuffer != 0;
}

bool QGLImage::isLive() {
  return isCurrent() && framebuffer != 0;
}

bool QGLImage::render() {
  if (!isCurrent()) return false;
  const int width = parameters.GetInt("size.x");
  const int height = parameters.GetInt("size.y");
  surface->glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
  surface->glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
  surface->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
  surface->glViewport(0, 0, width, height);
  surface->renderTexture(width, height);
  surface->glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
  surface->glBindRenderbuffer(GL_RENDERBUFFER, 0);
  return true;
}

bool QGLImage::bind() {
  if (!isLive()) return false;
  surface->glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
  surface->glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
  surface->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
  return true;
}

void QGLImage::unbind() {
  if (!isCurrent()) return;
  surface->glBindFramebuffer(GL_FRAMEBUFFER, 0);
  surface->glBindRenderbuffer(GL_RENDERBUFFER, 0);
}

uint32_t QGLImage::useProgram(bool withParameters, QTD::PROPERTIES* list) {
  const uint32_t name = program();
  if (!isCurrent() || name == 0) return 0;
  QTD::PROPERTIES& used = list ? *list : parameters;
  double coefficient = 1.0;
  int mono = 0;  // 1 alone counts, and for `flip` too
  int flip = 0;
  if (withParameters) {
    coefficient = used.GetDouble("image.color.coef");
    mono = used.GetInt("image.color.mono");
    flip = used.GetInt("image.flip.vert");
    if (QTD::IsNearZero(coefficient)) coefficient = DefaultColorCoef(format);
  }
  const auto location = [this](const char* uniform) { return uniforms.GetInt(uniform, "-1"); };
  surface->glUseProgram(name);
  surface->glUniform1i(location("source"), 0);
  surface->glUniform1i(location("flipVert"), flip);
  surface->glUniform1f(location("colorCoef"), static_cast<float>(coefficient));
  surface->glUniform1f(location("colorHigh"), 1.0f);
  surface->glUniform1i(location("colorMono"), mono);
  return name;
}

bool QGLImage::releaseProgram() {
  if (!isCurrent() || program() == 0) return false;
  surface->glUseProgram(0);
  return true;
}

bool QGLImage::copyTexture(uint32_t name, QTD::PROPERTIES* list) {
  if (!isLive() || name == 0) return false;
  bind();
  useProgram(true, list);
  surface->glActiveTexture(GL_TEXTURE0);
  surface->glBindTexture(GL_TEXTURE_2D, name);
  const bool rendered = render();
  releaseProgram();
  unbind();
  return rendered;
}

uint32_t QGLImage::texture() {
  return textureName;
}

uint32_t QGLImage::program() {
  // Asked for its number, a program that was never built would come into being.
  return uniforms.Count() == 0 ? 0 : shader.programId();
}

ZynImage* QGLImage::image() {
  return record;
}

uint32_t QGLImage::checkError(const char* where) {
  return isCurrent() ? static_cast<uint32_t>(surface->checkError(where, 1, 0)) : 0;
}

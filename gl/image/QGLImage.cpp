#include "gl/image/QGLImage.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <new>
#include <vector>

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

enum Uniform { kSource, kFlipVert, kColorCoef, kColorHigh, kColorMono };
constexpr const char* kUniforms[] = {"source", "flipVert", "colorCoef", "colorHigh", "colorMono"};

// The targets that exist, by their records.
class LivingTargets {
 public:
  static LivingTargets& Instance() {
    // Never destroyed: targets may live until the very end of the process.
    static LivingTargets& instance = *new LivingTargets;
    return instance;
  }

  void Add(const ZynImage* record, QGLImage* target) {
    const std::lock_guard<std::mutex> guard(lock);
    rows.push_back({record, record->imageData, target});
  }

  void Remove(const QGLImage* target) {
    const std::lock_guard<std::mutex> guard(lock);
    rows.erase(std::remove_if(rows.begin(), rows.end(), [&](const Row& row) { return row.target == target; }),
               rows.end());
  }

  bool IsRecord(const ZynImage* record) {
    return Find([&](const Row& row) { return row.record == record; });
  }

  // Null when no target's record has these pixels.
  QGLImage* OfPixels(const uint8_t* pixels) {
    return Find([&](const Row& row) { return row.pixels == pixels; });
  }

 private:
  struct Row {
    const ZynImage* record;
    const uint8_t* pixels;
    QGLImage* target;
  };

  template <typename Fits>
  QGLImage* Find(const Fits& fits) {
    const std::lock_guard<std::mutex> guard(lock);
    const auto found = std::find_if(rows.begin(), rows.end(), fits);
    return found == rows.end() ? nullptr : found->target;
  }

  std::mutex lock;  // guards `rows`
  std::vector<Row> rows;
};

// All blocks of the list are laid out like this one.
QGLImage* FirstAttached(const ZynImage& record) {
  auto* block = static_cast<QGLImageAttachment*>(record.attachments);
  while (block && block->tag != QGLImageAttachment::kTag)
    block = static_cast<QGLImageAttachment*>(block->next);
  return block ? block->image : nullptr;
}

}  // namespace

// The list of a target's own record is followed. A copy of such a record is known by its pixels: what stands
// in its list may be a host's, or gone.
QGLImage* AttachedImage(const ZynImage* record) {
  if (!record || !record->attachments) return nullptr;
  LivingTargets& targets = LivingTargets::Instance();
  return targets.IsRecord(record) ? FirstAttached(*record) : targets.OfPixels(record->imageData);
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
  const ZynImage like = image ? *image : ZynImage{};  // it may be the record that goes now
  done();
  if (image) {
    parameters.Set("size.x", ToText(like.width));
    parameters.Set("size.y", ToText(like.height));
    parameters.Set("pixeltype", ToText(like.pixelType));
  }
  parameters.Merge(list);
  if (!findSurface()) return false;
  // What was left behind before fails this too. An invalid operation counts, though `checkError` answers 0.
  checkError("QGLImage::init()");
  bool good = surface->LastError() == 0;
  try {
    good = make(like.origin == 1) && good;
  } catch (...) {
    done();
    throw;
  }
  // A target that failed is none.
  if (!good) done();
  return good;
}

bool QGLImage::make(bool bottomUp) {
  if (!makeRecord(bottomUp)) return false;
  const GLPixels pixels = PixelsOf(format);
  makeTexture(pixels);
  bool good = makeFramebuffer(pixels);
  if (good) makeProgram();
  unbind();
  checkError("QGLImage::init()");
  return good && surface->LastError() == 0;
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

bool QGLImage::makeRecord(bool sourceIsBottomUp) {
  const int64_t width = parameters.GetInt64("size.x");
  const int64_t height = parameters.GetInt64("size.y");
  const auto code = static_cast<uint32_t>(parameters.GetInt64("pixeltype"));
  const int64_t limit = surface->properties.GetInt64("gl.renderbuffer");
  if (width < 1 || width > limit || height < 1 || height > limit) return false;
  if (limit > std::numeric_limits<int>::max()) return false;

  const bool bottomUp = sourceIsBottomUp != parameters.GetBool("image.flip.vert");
  const int lines = static_cast<int>(height);
  record = QTD::ImageCreate(nullptr, static_cast<uint32_t>(width), bottomUp ? -lines : lines, code);
  if (!record || !record->imageData || !attachTo()) {
    QTD::ImageDelete(record);
    return false;
  }
  format.Decode(code);
  return true;
}

bool QGLImage::attachTo() {
  void* const memory = std::malloc(sizeof(QGLImageAttachment));
  if (!memory) return false;
  auto* const block = new (memory) QGLImageAttachment;
  block->image = this;
  block->next = record->attachments;
  record->attachments = block;
  LivingTargets::Instance().Add(record, this);
  return true;
}

void QGLImage::deleteRecord() {
  if (record) LivingTargets::Instance().Remove(this);
  QTD::ImageDelete(record);
  read = false;
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
  for (int i = 0; i < kMostErrors; ++i) {
    const GLenum error = surface->glGetError();
    if (error == GL_NO_ERROR) break;
    if (error == GL_OUT_OF_MEMORY) return false;
  }
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
  shader.removeAllShaders();  // of an earlier `init`
  shader.addShaderFromSourceCode(QOpenGLShader::Vertex, FindShaderSource("image.v.glsl"));
  shader.addShaderFromSourceCode(QOpenGLShader::Fragment, FindShaderSource("image.f.glsl"));
  shader.link();
  shader.bind();
  for (std::size_t i = 0; i < std::size(kUniforms); ++i) {
    locations[i] = surface->glGetUniformLocation(shader.programId(), kUniforms[i]);
    uniforms.Set(kUniforms[i], ToText(locations[i]));
  }
  shader.release();
}

// The program stays.
void QGLImage::done() {
  deleteRecord();
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
  read = false;
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

QGLImage::Copy QGLImage::readCopy(QTD::PROPERTIES& list) const {
  Copy copy;
  copy.coefficient = list.GetDouble("image.color.coef");
  copy.mono = list.GetInt("image.color.mono");
  copy.flip = list.GetInt("image.flip.vert");
  if (QTD::IsNearZero(copy.coefficient)) copy.coefficient = DefaultColorCoef(format);
  return copy;
}

uint32_t QGLImage::useProgram(bool withParameters, QTD::PROPERTIES* list) {
  if (!isCurrent() || program() == 0) return 0;
  return use(withParameters ? readCopy(list ? *list : parameters) : Copy());
}

uint32_t QGLImage::use(const Copy& copy) {
  const uint32_t name = program();
  if (name == 0) return 0;
  surface->glUseProgram(name);
  surface->glUniform1i(locations[kSource], 0);
  surface->glUniform1i(locations[kFlipVert], copy.flip);
  surface->glUniform1f(locations[kColorCoef], static_cast<float>(copy.coefficient));
  surface->glUniform1f(locations[kColorHigh], 1.0f);
  surface->glUniform1i(locations[kColorMono], copy.mono);
  return name;
}

bool QGLImage::releaseProgram() {
  if (!isCurrent() || program() == 0) return false;
  surface->glUseProgram(0);
  return true;
}

bool QGLImage::copyTexture(uint32_t name, QTD::PROPERTIES* list) {
  if (!isLive() || name == 0) return false;
  const Copy copy = readCopy(list ? *list : parameters);  // throws before anything is bound
  bind();
  use(copy);
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

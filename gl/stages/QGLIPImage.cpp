#include "gl/stages/QGLIPImage.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "QTD/frame/Logging.h"
#include "QTD/image/PixelFormats.h"
#include "QTD/screen/Numbers.h"

namespace {

constexpr uint32_t kByteDepth = 8;
constexpr int kWordDepth = 16;
constexpr uint32_t kMostDepth = 64;  // of a record that tells the truth, by far

// How far the samples of a depth lie below the top of their texels.
int MissingBits(uint32_t depth) {
  return depth == kByteDepth ? 0 : kWordDepth - static_cast<int>(std::min(depth, kMostDepth));
}

}  // namespace

ZynImgProcessor* ZynDisplayQGL::Image::CreateComponent(ZynDisplayProcessor* display) {
  return new QGLIPImage(display);
}

void ZynDisplayQGL::Image::DeleteComponent(ZynImgProcessor* stage) {
  delete stage;
}

QGLIPImage::QGLIPImage(ZynDisplayProcessor* display) : QGLStage(display, nullptr, "image.gpu", "QGLIPImage") {
  plain.Set("image.color.coef", QTD::ToText(1.0));
}

QGLIPImage::~QGLIPImage() {
  EndParameterCalls();
  QGLIPImage::Release();
}

void QGLIPImage::Release() {
  const QTD::RMutexLock guard(lock);
  Discard(second, target);
}

uint32_t QGLIPImage::Init(const ZynImage* source, const ZynImage* output) {
  const QTD::RMutexLock guard(lock);
  // Copies, since the caller may hand in records of this stage, which go now.
  const ZynImage format = source ? *source : ZynImage{};
  const ZynImage wanted = output ? *output : ZynImage{};
  Release();
  if (!TakeSurface() || !source) return Finish(ZYN_ERR_NOT_READY);
  const SurfacePass current(surface);
  uint32_t code = ZYN_ERR_FAILED;
  try {
    code = Prepare(format, output ? &wanted : nullptr);
  } catch (...) {  // a parameter that is no number
  }
  if (code != 0) Release();
  ready = code == 0;
  return Finish(code);
}

uint32_t QGLIPImage::Prepare(const ZynImage& source, const ZynImage* output) {
  const double ratio =
      output ? std::ldexp(1.0, MissingBits(source.bitDepth) - MissingBits(output->bitDepth)) : 1.0;
  const ZynImage& result = output ? *output : source;
  std::string coef = parameters.GetString("image.color.coef", QTD::ToText(ratio));
  const std::string mono =
      parameters.GetString("image.color.mono", QTD::ToText(QTD::IsMonoFormat(source.pixelType) ? 1 : 0));
  const bool flip = Flip();
  parameters.Set("image.color.coef", coef).Set("image.color.mono", mono);
  // A factor of 0 counts as not set; the target's own default would know nothing of the source.
  if (QTD::IsNearZero(QTD::ParseDouble(coef))) coef = QTD::ToText(ratio);

  QTD::PROPERTIES list;
  list.Set("image.color.mono", QTD::ToText(QTD::ParseInt(mono)))
      .Set("image.color.coef", coef)
      .Set("image.flip.vert", QTD::ToText(flip));
  target = std::make_unique<QGLImage>(surface);
  target->init(&source, &list);
  // What is turned needs a second image too: the first takes what comes in as it is.
  if (result.pixelType != source.pixelType || flip) {
    second = std::make_unique<QGLImage>(surface);
    second->init(&result, &list);
  }
  sourceInfo = Header(source, source.origin == 1, source.pixelType);
  outputInfo = Header(source, IsFlipped(source), result.pixelType);
  if (!sourceInfo || !outputInfo) return QTD::kStageNoMemory;
  out = Result()->image();
  return 0;
}

uint32_t QGLIPImage::ProcessImage(const ZynImage* source, ZynImage*, void*) {
  ZYN_TRACE(log, "QGLIPImage::ProcessImage()");
  const QTD::RMutexLock guard(lock);
  return RunOnCard([&] { return Run(source); });
}

uint32_t QGLIPImage::Run(const ZynImage* source) {
  if (!target || !target->isValid() || !Result()->isValid() || !FindSurface()) return ZYN_ERR_NOT_READY;
  if (!FitsTarget(source)) return ZYN_ERR_BAD_ARGUMENT;
  surface->glEnable(GL_TEXTURE_2D);
  surface->checkError("QGLIPImage::ProcessImage()", 1, 0);

  surface->glActiveTexture(GL_TEXTURE0);
  bool done = Upload(*source);
  if (second) {
    surface->glActiveTexture(GL_TEXTURE0);
    surface->glBindTexture(GL_TEXTURE_2D, target->texture());
    done = second->copyTexture(target->texture(), nullptr) && done;
  }
  target->image()->imageID = Result()->image()->imageID = source->imageID;
  if (parameters.GetInt("readGPU") != 0 && !Result()->readGPU(nullptr)) done = false;
  return done ? 0u : uint32_t{ZYN_ERR_FAILED};
}

// The picture as it is, into the first image.
bool QGLIPImage::Upload(const ZynImage& source) {
  if (const uint32_t texture = TextureOf(source)) {
    surface->glBindTexture(GL_TEXTURE_2D, texture);
    return target->copyTexture(texture, &plain);
  }
  surface->glBindTexture(GL_TEXTURE_2D, target->texture());
  return IsInMemory(source) && target->fillGPU(&source);
}

uint32_t QGLIPImage::ExecuteCommand(const char* command) {
  if (!command || std::strcmp(command, "readGPU") != 0) return 0;
  const QTD::RMutexLock guard(lock);
  return Finish(ReadBack());
}

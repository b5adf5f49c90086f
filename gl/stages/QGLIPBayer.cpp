#include "gl/stages/QGLIPBayer.h"

#include "QTD/frame/Logging.h"
#include "QTD/image/PixelFormats.h"

ZynImgProcessor* ZynDisplayQGL::Bayer::CreateComponent(ZynDisplayProcessor* display) {
  return new QGLIPBayer(display);
}

void ZynDisplayQGL::Bayer::DeleteComponent(ZynImgProcessor* stage) {
  if (stage) stage->Release();
  delete stage;
}

QGLIPBayer::QGLIPBayer(ZynDisplayProcessor* display) : QGLStage(display, nullptr, "", "QGLIPBayer") {}

QGLIPBayer::~QGLIPBayer() {
  EndParameterCalls();
  QGLIPBayer::Release();
}

void QGLIPBayer::Release() {
  const QTD::RMutexLock guard(lock);
  Discard(pass, target, input);
}

uint32_t QGLIPBayer::Init(const ZynImage* source, const ZynImage* output) {
  const QTD::RMutexLock guard(lock);
  // Copies, since the caller may hand in records of this stage, which go now.
  const ZynImage format = source ? *source : ZynImage{};
  const bool bgr = output && QTD::IsBgrFormat(output->pixelType);
  Release();
  if (!TakeSurface() || !source) return Finish(ZYN_ERR_NOT_READY);
  const SurfacePass current(surface);
  uint32_t code = ZYN_ERR_FAILED;
  try {
    code = Prepare(format, QTD::DemosaicedFormat(format.pixelType, bgr));
  } catch (...) {  // a parameter that is no number
  }
  if (code != 0) Release();
  return Finish(code);
}

uint32_t QGLIPBayer::Prepare(const ZynImage& source, uint32_t targetCode) {
  QTD::PROPERTIES list;
  Describe(source, list);
  const std::string flip = QTD::ToText(Flip());
  const std::string coef = parameters.GetString("image.color.coef", "1.");
  parameters.Set("image.flip.vert", parameters.GetString("image.flip.vert", "0"))
      .Set("image.color.coef", coef);
  if (!MakeInput().init(&source, &list)) return 0;

  list.Set("image.color.coef", coef).Set("image.flip.vert", flip).Set("pixeltype", QTD::ToText(targetCode));
  target = std::make_unique<QGLImage>(surface);
  if (!target->init(nullptr, &list)) return 0;

  SetTarget(list, target.get());
  pass = std::make_unique<RenderObjects::QGLBayerMHC>(surface);
  if (!pass->Init(&source, &list)) return ZYN_ERR_NOT_READY;

  sourceInfo = Header(source, source.origin == 1, source.pixelType);
  outputInfo = Header(source, IsFlipped(source), targetCode);
  if (!sourceInfo || !outputInfo) return QTD::kStageNoMemory;
  out = target->image();
  ready = true;
  return 0;
}

uint32_t QGLIPBayer::ProcessImage(const ZynImage* source, ZynImage*, void*) {
  ZYN_TRACE(log, "QGLIPBayer::ProcessImage()");
  const QTD::RMutexLock guard(lock);
  return RunOnCard([&] { return Run(source); });
}

uint32_t QGLIPBayer::Run(const ZynImage* source) {
  if (!ready || !FindSurface()) return ZYN_ERR_NOT_READY;
  if (!FitsTarget(source)) return ZYN_ERR_BAD_ARGUMENT;
  if (BindInput(*source) == 0 || !pass->Render(source, nullptr)) return ZYN_ERR_FAILED;
  NameTarget(*source);
  BindTarget();
  return 0;
}

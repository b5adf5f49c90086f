#include "gl/stages/QGLIPColorCorrection.h"

#include "QTD/frame/Logging.h"

ZynImgProcessor* ZynDisplayQGL::ColorCorrection::CreateComponent(ZynDisplayProcessor* display) {
  return new QGLIPColorCorrection(display);
}

void ZynDisplayQGL::ColorCorrection::DeleteComponent(ZynImgProcessor* stage) {
  delete stage;
}

QGLIPColorCorrection::QGLIPColorCorrection(ZynDisplayProcessor* display)
    : QGLStage(display, nullptr, "correction.gpu", "QGLIPColorCorrection") {}

QGLIPColorCorrection::~QGLIPColorCorrection() {
  EndParameterCalls();
  QGLIPColorCorrection::Release();
}

void QGLIPColorCorrection::Release() {
  const QTD::RMutexLock guard(lock);
  Discard(pass, target, input);
}

uint32_t QGLIPColorCorrection::Init(const ZynImage* source, const ZynImage*) {
  const QTD::RMutexLock guard(lock);
  // A copy, since the caller may hand in a record of this stage, which goes now.
  const ZynImage format = source ? *source : ZynImage{};
  Release();
  if (!TakeSurface() || !source) return Finish(ZYN_ERR_NOT_READY);
  const SurfacePass current(surface);
  uint32_t code = ZYN_ERR_FAILED;
  try {
    code = Prepare(format);
  } catch (...) {  // a parameter that is no number
  }
  if (code != 0) Release();
  return Finish(code);
}

uint32_t QGLIPColorCorrection::Prepare(const ZynImage& source) {
  QTD::PROPERTIES list;
  Describe(source, list);
  list.Set("pixeltype", QTD::ToText(source.pixelType));
  if (!MakeInput().init(&source, &list)) return 0;

  ResetParameters();
  list.Set("image.flip.vert", QTD::ToText(Flip()))
      .Set("image.color.high", QTD::ToText(1.0))
      .Set("image.color.coef", QTD::ToText(1.0));
  target = std::make_unique<QGLImage>(surface);
  target->init(&source, &list);
  SetTarget(list, target.get());
  pass = std::make_unique<RenderObjects::QGLColorCorrection>(surface);
  pass->Init(&source, &list);

  sourceInfo = Header(source, source.origin == 1, source.pixelType);
  outputInfo = sourceInfo;  // one record for both
  if (!sourceInfo) return QTD::kStageNoMemory;
  out = target->image();
  ready = true;
  return Apply();
}

uint32_t QGLIPColorCorrection::ProcessImage(const ZynImage* source, ZynImage*, void*) {
  ZYN_TRACE(log, "QGLIPColorCorrection::ProcessImage()");
  const QTD::RMutexLock guard(lock);
  return RunOnCard([&] { return Run(source); });
}

uint32_t QGLIPColorCorrection::Run(const ZynImage* source) {
  if (!target || !target->isValid() || !FindSurface()) return ZYN_ERR_NOT_READY;
  if (!FitsTarget(source)) return ZYN_ERR_BAD_ARGUMENT;
  const uint32_t texture = BindInput(*source);
  if (texture == 0) return ZYN_ERR_FAILED;
  NameTarget(*source);
  if (!IsEnabled()) {
    target->copyTexture(texture, nullptr);
    return 0;
  }
  if (!pass->Render(source, nullptr)) return ZYN_ERR_FAILED;
  BindTarget();
  return 0;
}

#include "gl/stages/QGLIPUnpack.h"

#include "QTD/frame/Logging.h"
#include "QTD/image/PixelFormats.h"

namespace {

constexpr uint32_t kPackingMask = 0xF000;
constexpr uint32_t kBitByBit = 0x2000;

}  // namespace

ZynImgProcessor* ZynDisplayQGL::Unpack::CreateComponent(ZynDisplayProcessor* display) {
  return new QGLIPUnpack(display);
}

void ZynDisplayQGL::Unpack::DeleteComponent(ZynImgProcessor* stage) {
  delete stage;
}

QGLIPUnpack::QGLIPUnpack(ZynDisplayProcessor* display) : QGLStage(display, nullptr, "", "QGLIPUnpack") {}

QGLIPUnpack::~QGLIPUnpack() {
  EndParameterCalls();
  QGLIPUnpack::Release();
}

void QGLIPUnpack::Release() {
  const QTD::RMutexLock guard(lock);
  Discard(pass, target, input, ownSurface);
}

uint32_t QGLIPUnpack::Init(const ZynImage* source, const ZynImage*) {
  const QTD::RMutexLock guard(lock);
  // A copy, since the caller may hand in a record of this stage, which goes now.
  const ZynImage format = source ? *source : ZynImage{};
  Release();
  if (format.width == 0 || format.height == 0) return Finish(ZYN_ERR_BAD_ARGUMENT);
  if ((format.pixelType & kPackingMask) != kBitByBit) return Finish(QTD::kStageFormat);
  const SurfacePass current(TakeSurface());
  uint32_t code = ZYN_ERR_FAILED;
  try {
    code = Prepare(format);
  } catch (...) {  // a parameter that is no number
  }
  if (code != 0) Release();
  ready = code == 0;
  return Finish(code);
}

uint32_t QGLIPUnpack::Prepare(const ZynImage& source) {
  const uint32_t targetCode = QTD::UnpackedFormat(source.pixelType);
  const QTD::PixelFormat packed(source.pixelType);
  if (source.width > static_cast<uint32_t>(INT32_MAX) || source.height > static_cast<uint32_t>(INT32_MAX))
    return ZYN_ERR_NOT_READY;
  const int rowBytes = packed.LineBytes(static_cast<int>(source.width));
  const auto rows = static_cast<int>(source.height);

  QTD::PROPERTIES list;
  list.Set("size.x", QTD::ToText(source.width)).Set("size.y", QTD::ToText(source.height));
  ownSurface = std::make_unique<QGLSurfaceRef>(surface);
  if (!ownSurface->init(&list)) return ZYN_ERR_NOT_READY;

  target = std::make_unique<QGLImage>(ownSurface.get());
  list.Set("image.flip.vert", QTD::ToText(Flip())).Set("pixeltype", QTD::ToText(targetCode));
  if (!target->init(nullptr, &list)) return ZYN_ERR_NOT_READY;

  // One byte to a texel.
  list.Set("surface", QTD::ToText(static_cast<const void*>(ownSurface.get())));
  QTD::PixelFormat bytes(0);
  bytes.SetDefault();
  if (!MakeInput().init(bytes, rowBytes, rows, &list)) return ZYN_ERR_NOT_READY;

  list.Set("src.size.y", QTD::ToText(rows)).Set("src.size.x", QTD::ToText(rowBytes));
  SetTarget(list, target.get());
  pass = std::make_unique<RenderObjects::QGLUnpackU3V>(ownSurface.get());
  if (!pass->Init(&source, &list)) return ZYN_ERR_NOT_READY;

  ZynImage rowSize = source;
  rowSize.width = static_cast<uint32_t>(rowBytes);
  sourceInfo = Header(rowSize, source.origin == 1, source.pixelType);
  outputInfo = Header(source, IsFlipped(source), targetCode);
  if (!sourceInfo || !outputInfo) return QTD::kStageNoMemory;
  out = target->image();
  return 0;
}

uint32_t QGLIPUnpack::ProcessImage(const ZynImage* source, ZynImage*, void*) {
  ZYN_TRACE(log, "QGLIPUnpack::ProcessImage()");
  const QTD::RMutexLock guard(lock);
  return RunOnCard([&] { return Run(source); });
}

uint32_t QGLIPUnpack::Run(const ZynImage* source) {
  if (!ready || !UsableSurface() || !FitsTarget(source) || !QTD::IsPackedFormat(source->pixelType))
    return ZYN_ERR_BAD_ARGUMENT;
  if (BindInput(WithTruePitch(*source)) == 0 || !pass->Render(source, nullptr)) return ZYN_ERR_FAILED;
  NameTarget(*source);
  BindTarget();
  return 0;
}

// Packed rows follow each other without gaps, though a record's pitch is rounded up: only a pitch beyond that
// means rows that are padded.
ZynImage QGLIPUnpack::WithTruePitch(const ZynImage& source) {
  ZynImage picture = source;
  if (source.linePitch <= QTD::LinePitch(source.width, QTD::BitsPerPixel(source.pixelType)))
    picture.linePitch = static_cast<uint32_t>(input->Parameters().GetInt64("size.x"));
  return picture;
}

#include "gl/stages/QGLIPExposureColoration.h"

#include <string_view>

#include "QTD/frame/ArgumentView.h"
#include "QTD/frame/Logging.h"
#include "QTD/image/PixelFormats.h"

namespace {

constexpr uint32_t kByteDepth = 8;
constexpr uint32_t kWordDepth = 16;
constexpr const char* kLowColor = "65280";  // green
constexpr const char* kHighColor = "255";   // red

}  // namespace

ZynImgProcessor* ZynDisplayQGL::ExposureColoration::CreateComponent(ZynDisplayProcessor* display,
                                                                    ZynComponent* chain) {
  return new QGLIPExposureColoration(display, chain);
}

void ZynDisplayQGL::ExposureColoration::DeleteComponent(ZynImgProcessor* stage) {
  delete stage;
}

// The name is that of the correction; it is kept.
QGLIPExposureColoration::QGLIPExposureColoration(ZynDisplayProcessor* display, ZynComponent* chainComponent)
    : QGLStage(display, chainComponent, "correction.gpu", "QGLIPExposureColoration"), link(chainComponent) {}

QGLIPExposureColoration::~QGLIPExposureColoration() {
  link.End();
  EndParameterCalls();
  QGLIPExposureColoration::Release();
}

void QGLIPExposureColoration::Release() {
  const QTD::RMutexLock guard(lock);
  Discard(pass, target, input);
}

uint32_t QGLIPExposureColoration::Init(const ZynImage* source, const ZynImage*) {
  const QTD::UnpackedStage unpacked(link);
  const std::optional<ZynImage> values = unpacked.Info(true);
  const QTD::RMutexLock guard(lock);
  // A copy, since the caller may hand in a record of this stage, which goes now.
  const ZynImage format = source ? *source : ZynImage{};
  Release();
  if (!TakeSurface() || !source) return Finish(ZYN_ERR_NOT_READY);
  const SurfacePass current(surface);
  uint32_t code = ZYN_ERR_FAILED;
  try {
    code = Prepare(format, values);
  } catch (...) {  // a parameter that is no number
  }
  if (code != 0) Release();
  return Finish(code);
}

uint32_t QGLIPExposureColoration::Prepare(const ZynImage& source, const std::optional<ZynImage>& values) {
  QTD::PROPERTIES list;
  Describe(source, list);
  list.Set("pixeltype", QTD::ToText(source.pixelType));
  if (!MakeInput().init(&source, &list)) return 0;

  // Factor 1: the copy of a disabled stage is the picture unchanged.
  list.Set("image.color.mono", parameters.GetString("image.color.mono", "0"))
      .Set("image.color.coef", QTD::ToText(1.0));
  target = std::make_unique<QGLImage>(surface);
  target->init(&source, &list);
  SetTarget(list, target.get());
  pass = std::make_unique<RenderObjects::QGLExposureColoration>(surface);
  pass->Init(&source, &list);

  sourceInfo = Header(source, false, source.pixelType);
  outputInfo = sourceInfo;  // one record for both
  if (!sourceInfo) return QTD::kStageNoMemory;
  out = target->image();
  ready = true;
  if (values && !SetThresholds(*values)) ready = false;  // a depth that no image has
  return 0;
}

// Sample values of the image become texture values: a depth of less than 16 lies in the low bits of a word.
bool QGLIPExposureColoration::SetThresholds(const ZynImage& values) {
  if (!pass) return false;
  const uint32_t depth = values.bitDepth;
  if (depth < 1 || depth > kWordDepth) return false;
  const double levels = 1u << depth;
  const double texelLevels = depth == kByteDepth ? levels : 1u << kWordDepth;
  double low = parameters.GetDouble("thres.lo", "-1");
  if (low < 0) low = 1.0;
  double high = parameters.GetDouble("thres.hi", "-1");
  if (high < 0) high = (levels - 1) * (QTD::IsRgbFormat(values.pixelType) ? 3 : 1) - 1;
  const auto lowColor = static_cast<uint32_t>(parameters.GetInt64("color.lo", kLowColor));
  const auto highColor = static_cast<uint32_t>(parameters.GetInt64("color.hi", kHighColor));

  const QTD::RMutexLock guard(pass->Lock());
  pass->thresholdLo = low / texelLevels;
  pass->thresholdHi = high / texelLevels;
  pass->colorLo = lowColor;
  pass->colorHi = highColor;
  ready = true;
  return true;
}

uint32_t QGLIPExposureColoration::ProcessImage(const ZynImage* source, ZynImage*, void*) {
  ZYN_TRACE(log, "QGLIPExposureColoration::ProcessImage()");
  const QTD::UnpackedStage unpacked(link);
  QTD::RecordHold hold;
  const ZynImage* const values = unpacked.Out(hold);
  const QTD::RMutexLock guard(lock);
  return RunOnCard([&] { return Run(source, values); });
}

uint32_t QGLIPExposureColoration::Run(const ZynImage* source, const ZynImage* values) {
  if (!target || !target->isValid() || !FindSurface() || !values) return ZYN_ERR_NOT_READY;
  if (!FitsTarget(source)) return ZYN_ERR_BAD_ARGUMENT;
  if (!BindPicture(*source)) return ZYN_ERR_FAILED;
  NameTarget(*source);
  if (!IsEnabled()) {
    target->copyTexture(TextureOf(*source), nullptr);
    return 0;
  }
  if (!ready && !SetThresholds(*values)) return ZYN_ERR_NOT_READY;
  passArguments.Set("mono", QTD::ToText(QTD::IsRgbFormat(values->pixelType) ? 0 : 1))
      .Set("colors", QTD::ToText(1u << (values->bitDepth & 31)))
      .Set("source", QTD::ToText(TextureOf(*values)));
  if (!pass->Render(source, &passArguments)) return ZYN_ERR_FAILED;
  BindTarget();
  return 0;
}

// In a chain the picture is on the card. One that comes in memory is uploaded, but texture 0 stays bound:
// what is not marked turns black, and a disabled stage keeps its last result. Kept.
bool QGLIPExposureColoration::BindPicture(const ZynImage& picture) {
  surface->glEnable(GL_TEXTURE_2D);
  surface->glActiveTexture(GL_TEXTURE0);
  const uint32_t texture = TextureOf(picture);
  if (texture == 0) return input && IsInMemory(picture) && input->bind() && input->fill(&picture);
  surface->glBindTexture(GL_TEXTURE_2D, texture);
  return true;
}

// Commands.

uint32_t QGLIPExposureColoration::WaitForPass() {
  if (!pass) return ZYN_ERR_NOT_READY;
  const QTD::RMutexLock guard(pass->Lock());
  return 0;
}

uint32_t QGLIPExposureColoration::ResetByCommand(QTD::ARGUMENTS* args) {
  return QTD::ArgumentView(args).GetInt("apply", "0") == 1 ? WaitForPass() : 0;
}

uint32_t QGLIPExposureColoration::ExecuteCommand(const char* command) {
  const QTD::RMutexLock guard(lock);
  return Finish(CodeOf([&] {
    const std::string_view wanted = command ? command : "";
    if (wanted == "enable" || wanted == "disable") Enable(wanted == "enable");
    if (wanted == "params.apply") return WaitForPass();
    return wanted == "readGPU" ? ReadBack() : 0;
  }));
}

uint32_t QGLIPExposureColoration::RunCommand(const char* command, QTD::ARGUMENTS* args) {
  const QTD::RMutexLock guard(lock);
  const auto done = [&](const auto& work) { return Finish(CodeOf(work)) == 0 ? 1u : 0u; };
  const std::string_view wanted = command ? command : "";
  if (wanted == "cmd.params.apply") return done([&] { return WaitForPass(); });
  if (wanted == "cmd.params.reset") return done([&] { return ResetByCommand(args); });
  if (wanted == "readGPU") return done([&] { return ReadBack(); });
  if (wanted == "cmd.enable") EnableByCommand(args);
  return 0;
}

#include "cpu/stages/CPUIPExposureColoration.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string_view>

#include "QTD/frame/ArgumentView.h"
#include "QTD/frame/Logging.h"
#include "QTD/frame/Text.h"
#include "QTD/image/ImageRecord.h"
#include "QTD/image/PixelFormats.h"
#include "cpu/stages/CPUIPImage.h"
#include "cpu/stages/ColorationKernels.h"

namespace {

// In the order in which they are written back: thresholds first.
constexpr QTD::Default kDefaults[] = {
    {"thres.lo", "-1"}, {"thres.hi", "-1"}, {"color.lo", "65280"}, {"color.hi", "255"}};

constexpr uint32_t kPictureBits = 24;
constexpr uint32_t kPictureBytes = 3;
constexpr uint32_t kByteDepth = 8;
constexpr uint32_t kMostDepth = 16;

// Correction and overlay work in place, on the very image that "image.unpacked" gave: it keeps a copy aside.
void KeepValues(ZynImgProcessor* unpacked, bool on) {
  if (auto* const image = dynamic_cast<CPUIPImage*>(unpacked)) image->KeepUntouched(on);
}

// The bytes of a colour 0x00BBGGRR in the order of the picture's samples.
void SplitColor(uint32_t color, bool blueFirst, uint8_t (&bytes)[kPictureBytes]) {
  for (uint32_t n = 0; n < kPictureBytes; ++n) {
    bytes[n] = static_cast<uint8_t>(color >> 8 * (blueFirst ? kPictureBytes - 1 - n : n));
  }
}

// Whether each line, of `lineBytes`, lies within its pitch and all of them in the buffer.
bool HoldsLines(const ZynImage& image, uint64_t lineBytes) {
  return lineBytes <= image.linePitch &&
         uint64_t{image.linePitch} * (image.height - 1) + lineBytes <= image.imageSize;
}

bool HasPicture(const ZynImage* image) {
  return image && image->width != 0 && image->height != 0 && image->imageData;
}

}  // namespace

ZynImgProcessor* ZynDisplayCPU::ExposureColoration::CreateComponent(ZynComponent* parent) {
  return new CPUIPExposureColoration(parent);
}

void ZynDisplayCPU::ExposureColoration::DeleteComponent(ZynImgProcessor* stage) {
  delete stage;
}

CPUIPExposureColoration::CPUIPExposureColoration(ZynComponent* parentComponent)
    : Stage(parentComponent, "coloration.cpu", "CPUIPExposureColoration"), link(parentComponent) {}

CPUIPExposureColoration::~CPUIPExposureColoration() {
  link.End();
  EndParameterCalls();
  CPUIPExposureColoration::Release();
}

void CPUIPExposureColoration::Release() {
  const QTD::RMutexLock guard(lock);
  Reset();
  lowColor = highColor = 0;
  lowThreshold = highThreshold = 0;
}

bool CPUIPExposureColoration::Enable(bool on) {
  const QTD::UnpackedStage unpacked(link);  // no run reads the values meanwhile
  unpacked.Enable(on);
  const QTD::RMutexLock guard(lock);
  const bool enabled = Stage::Enable(on);
  KeepValues(unpacked.Stage(), enabled);
  return enabled;
}

// Preparing.

uint32_t CPUIPExposureColoration::Init(const ZynImage* source, const ZynImage*) {
  const QTD::UnpackedStage unpacked(link);
  const std::optional<ZynImage> values = unpacked.Info(false);
  const QTD::RMutexLock guard(lock);
  // A copy, since the caller may hand in a record of this stage, which goes now.
  const ZynImage format = source ? *source : ZynImage{};
  Release();
  if (format.width == 0 || format.height == 0) return Finish(ZYN_ERR_BAD_ARGUMENT);
  if (!QTD::IsPictureFormat(format.pixelType)) return Finish(QTD::kStageFormat);
  if (format.height > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) {
    return Finish(QTD::kStageNoMemory);
  }
  const auto height = static_cast<int32_t>(format.height);
  sourceInfo =
      QTD::ImageCreateHeader(nullptr, format.width, format.origin == 1 ? -height : height, format.pixelType);
  if (!sourceInfo) return Finish(QTD::kStageNoMemory);
  outputInfo = sourceInfo;  // in place: one record for both
  // Without the stage, or its format, this one is not ready yet.
  const uint32_t code = CodeOf([&] { return Apply(values), 0u; });
  if (code != 0) {
    Release();
    return Finish(code);
  }
  KeepValues(unpacked.Stage(), IsEnabled());
  return Finish(0);
}

// All four are parsed before one is taken: after a text without a number everything is as it was.
void CPUIPExposureColoration::ReadParameters(const ZynImage& values) {
  int numbers[4];
  for (size_t n = 0; n < 4; ++n) numbers[n] = parameters.GetInt(kDefaults[n].name, kDefaults[n].value);
  const int32_t largest = (1 << std::min(values.bitDepth, kMostDepth)) - 1;
  const int32_t most = QTD::IsRgbFormat(values.pixelType) ? 3 * largest : largest;
  lowThreshold = numbers[0] < 0 ? 1 : numbers[0];
  highThreshold = numbers[1] < 0 ? most - 1 : numbers[1];
  lowColor = static_cast<uint32_t>(numbers[2]);
  highColor = static_cast<uint32_t>(numbers[3]);
  ready = true;
}

// Reads the parameters against what the stage puts out; answers whether this stage is ready.
bool CPUIPExposureColoration::Apply(const std::optional<ZynImage>& values) {
  if (values) {
    ReadParameters(*values);
  } else {
    ready = false;
  }
  return ready;
}

// Commands.

uint32_t CPUIPExposureColoration::ExecuteCommand(const char* command) {
  const std::string_view wanted = command ? command : "";
  if (wanted == "params.apply") {
    const QTD::UnpackedStage unpacked(link);
    const std::optional<ZynImage> values = unpacked.Info(false);
    const QTD::RMutexLock guard(lock);
    return Finish(CodeOf([&] { return Apply(values) ? 0u : uint32_t{ZYN_ERR_FAILED}; }));
  }
  const QTD::RMutexLock guard(lock);
  if (wanted != "params.reset") return Finish(ZYN_ERR_NOT_SUPPORTED);
  return Finish(ResetParameters());
}

uint32_t CPUIPExposureColoration::ResetParameters() {
  ready = false;
  return CodeOf([&] { return parameters.SetAll(kDefaults), 0u; });
}

uint32_t CPUIPExposureColoration::RunCommand(const char* command, QTD::ARGUMENTS* args) {
  const std::string_view wanted = command ? command : "";
  if (wanted == "cmd.params.reset") {
    const QTD::RMutexLock guard(lock);
    return ResetParameters() == 0 ? 1 : 0;
  }
  if (wanted != "cmd.params.apply" || !args) return 0;
  const QTD::UnpackedStage unpacked(link);
  const std::optional<ZynImage> values = unpacked.Info(false);
  const QTD::RMutexLock guard(lock);
  return CodeOf([&] { return ApplyArguments(*args, values) ? 0u : uint32_t{ZYN_ERR_FAILED}; }) == 0 ? 1 : 0;
}

// All four are parsed before one is written.
bool CPUIPExposureColoration::ApplyArguments(QTD::ARGUMENTS& args, const std::optional<ZynImage>& values) {
  QTD::ArgumentView view(&args);
  int numbers[4];
  for (size_t n = 0; n < 4; ++n) {
    const QTD::Default& entry = kDefaults[n];
    numbers[n] = view.GetInt(entry.name, parameters.GetString(entry.name, entry.value));
  }
  for (size_t n = 0; n < 4; ++n) parameters.Set(kDefaults[n].name, QTD::ToText(numbers[n]));
  return Apply(values);
}

// Running.

uint32_t CPUIPExposureColoration::ProcessImage(const ZynImage* source, ZynImage*, void*) {
  const QTD::UnpackedStage unpacked(link);
  QTD::RecordHold hold;
  const ZynImage* const result = unpacked.Out(hold);
  const std::optional<ZynImage> info = unpacked.Info(false);
  const QTD::RMutexLock guard(lock);
  out = nullptr;
  try {
    ZYN_TRACE(log, "CPUIPExposureColoration::ProcessImage()");
    return Finish(Run(source, unpacked.Stage(), result, info));
  } catch (...) {
    return Finish(ZYN_ERR_FAILED);
  }
}

uint32_t CPUIPExposureColoration::Run(const ZynImage* source, ZynImgProcessor* unpacked,
                                      const ZynImage* result, const std::optional<ZynImage>& info) {
  if (!source || !source->imageData || !HasPicture(result)) return ZYN_ERR_BAD_ARGUMENT;
  if (IsEnabled()) {
    KeepValues(unpacked, true);  // from the next image on, should nobody have asked for it yet
    if (!ready) {
      try {
        ReadParameters(info ? *info : *result);
      } catch (const std::logic_error&) {  // a parameter that is no number
        return ZYN_ERR_NOT_READY;
      }
    }
    // The picture's depth counts here, not that of the values: with no low threshold, a high one above the
    // picture's own range marks nothing, even where deeper values pass it.
    const int64_t range = int64_t{1} << std::min(source->bitDepth, 32u);
    if (lowThreshold > 0 || highThreshold < range) {
      auto* const image = dynamic_cast<CPUIPImage*>(unpacked);
      QTD::RecordHold hold;
      const ZynImage* const untouched = image ? image->Untouched(hold) : nullptr;
      if (const uint32_t code = MarkPicture(*source, untouched ? *untouched : *result)) return code;
    }
  }
  out = const_cast<ZynImage*>(source);
  return 0;
}

// Works on copies of the records: what is checked is what is used, whatever a host does to its own.
uint32_t CPUIPExposureColoration::MarkPicture(ZynImage picture, ZynImage values) {
  using ColorationKernels::Values;
  if (picture.bitDepth != kByteDepth || QTD::BitsPerPixel(picture.pixelType) != kPictureBits) {
    return ZYN_ERR_FAILED;
  }
  if (picture.width == 0 || picture.height == 0) return 0;
  ColorationKernels::Job job{};
  const bool bytes = values.bitDepth == kByteDepth;
  if (QTD::IsRgbFormat(values.pixelType)) {
    job.values = bytes ? Values::kByteSum : Values::kWordSum;
  } else {
    job.values = bytes ? Values::kByte : Values::kWord;
  }
  if (!HoldsLines(picture, uint64_t{picture.width} * kPictureBytes) ||
      !HoldsLines(values, uint64_t{values.width} * ColorationKernels::BytesOf(job.values))) {
    return ZYN_ERR_FAILED;
  }
  job.source = values.imageData;
  job.sourcePitch = values.linePitch;
  job.picture = picture.imageData;
  job.picturePitch = picture.linePitch;
  job.width = std::min(picture.width, values.width);
  job.height = std::min(picture.height, values.height);
  job.low = lowThreshold;
  job.high = highThreshold;
  const bool blueFirst = QTD::IsBgrFormat(picture.pixelType);
  SplitColor(lowColor, blueFirst, job.lowColor);
  SplitColor(highColor, blueFirst, job.highColor);
  ColorationKernels::RunJob(job);
  return 0;
}

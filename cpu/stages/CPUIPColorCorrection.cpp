#include "cpu/stages/CPUIPColorCorrection.h"

#include <cmath>
#include <limits>
#include <new>
#include <string_view>

#include "QTD/frame/Logging.h"
#include "QTD/frame/Text.h"
#include "QTD/image/ImageRecord.h"
#include "QTD/image/PixelFormats.h"
#include "cpu/stages/CorrectionStep.h"

namespace {

// The parameters in the order of `Settings`.
struct Setting {
  const char* key;
  const char* atStart;       // text of the constructed stage, and the default of a missing parameter
  const char* forArguments;  // what stands for it where a command's arguments and the parameters name none
  double afterReset;
};
constexpr Setting kTable[] = {
    {"gain.r", "1", "1.", 1.0},        //
    {"gain.g", "1", "1.", 1.0},        //
    {"gain.b", "1", "1.", 1.0},        //
    {"offs.r", "0", "0.", 0.0},        //
    {"offs.g", "0", "0.", 0.0},        //
    {"offs.b", "0", "0.", 0.0},        //
    {"gamma", "1.000000", "0.", 1.0},  // 0 is no active gamma either
};

constexpr uint32_t kMostDepth = 16;

int32_t SizeOfDepth(uint32_t depth) {
  return depth <= kMostDepth ? 1 << depth : 0;
}

}  // namespace

ZynImgProcessor* ZynDisplayCPU::ColorCorrection::CreateComponent(ZynComponent* parent) {
  return new CPUIPColorCorrection(parent);
}

void ZynDisplayCPU::ColorCorrection::DeleteComponent(ZynImgProcessor* stage) {
  delete stage;
}

CPUIPColorCorrection::CPUIPColorCorrection(ZynComponent* parentComponent)
    : Stage(parentComponent, "correction.cpu", "CPUIPColorCorrection") {
  static_assert(std::size(kTable) == kSettings);
  for (const Setting& setting : kTable) parameters.Set(setting.key, setting.atStart);
}

CPUIPColorCorrection::~CPUIPColorCorrection() {
  EndParameterCalls();
  CPUIPColorCorrection::Release();
}

void CPUIPColorCorrection::Release() {
  const QTD::RMutexLock guard(lock);
  Reset();
  table.Free();
}

// Settings.

// The arguments where they are present, the parameters elsewhere. Throws for a text that is no number.
CPUIPColorCorrection::Settings CPUIPColorCorrection::ReadSettings(const QTD::ARGUMENTS* args) {
  Settings settings{};
  for (size_t n = 0; n < kSettings; ++n) {
    const Setting& setting = kTable[n];
    const auto argument = args ? args->find(setting.key) : QTD::ARGUMENTS::const_iterator();
    const char* const missing = args ? setting.forArguments : setting.atStart;
    settings[n] = args && argument != args->end() ? QTD::ParseDouble(argument->second)
                                                  : parameters.GetDouble(setting.key, missing);
  }
  return settings;
}

void CPUIPColorCorrection::Use(const Settings& settings) {
  for (size_t colour = 0; colour < ColorLUT::kColours; ++colour) {
    table.gain[colour] = settings[colour];
    table.offset[colour] = settings[ColorLUT::kColours + colour];
  }
  table.gamma = settings[kSettings - 1];
  table.Compute();
}

// Whether the tables would leave every sample as it is.
bool CPUIPColorCorrection::IsNeutral() const {
  constexpr std::array<double, ColorLUT::kColours> ones{1.0, 1.0, 1.0}, zeros{};
  return table.gain == ones && table.offset == zeros && std::abs(table.gamma - 1.0) <= 1e-7;
}

// Preparing.

uint32_t CPUIPColorCorrection::Init(const ZynImage* source, const ZynImage*) {
  const QTD::RMutexLock guard(lock);
  // A copy, since the caller may hand in a record of this stage, which goes now.
  const ZynImage format = source ? *source : ZynImage{};
  Release();
  try {
    lastError = Prepare(format);
  } catch (const std::bad_alloc&) {
    lastError = QTD::kStageNoMemory;
  } catch (...) {  // a parameter that is no number
    lastError = ZYN_ERR_FAILED;
  }
  if (lastError != 0) Release();
  ready = lastError == 0;
  return Compose(lastError);
}

uint32_t CPUIPColorCorrection::Prepare(const ZynImage& source) {
  if (source.width == 0 || source.height == 0) return ZYN_ERR_BAD_ARGUMENT;
  const uint32_t code = source.pixelType;
  if (!QTD::IsPictureFormat(code)) return QTD::kStageFormat;

  if (source.height > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) return QTD::kStageNoMemory;
  const auto height = static_cast<int32_t>(source.height);
  sourceInfo = QTD::ImageCreateHeader(nullptr, source.width, source.origin == 1 ? -height : height, code);
  outputInfo = sourceInfo;  // the format stays, and the lines' order with it
  if (!sourceInfo) return QTD::kStageNoMemory;

  table.Allocate(SizeOfDepth(source.bitDepth), QTD::IsRgbFormat(code) ? 3 : 1);
  Use(ReadSettings(nullptr));
  if (table.size == 0) return ZYN_ERR_FAILED;
  return 0;
}

// Running.

uint32_t CPUIPColorCorrection::ProcessImage(const ZynImage* source, ZynImage*, void*) {
  const QTD::RMutexLock guard(lock);
  out = nullptr;
  try {
    ZYN_TRACE(log, "CPUIPColorCorrection::ProcessImage()");
    if (!source || !source->imageData) return Finish(ZYN_ERR_BAD_ARGUMENT);
    const ZynImage image = *source;  // what is checked is what is used, whatever a host does to its record
    const uint32_t code = Run(image);
    if (code == 0) out = const_cast<ZynImage*>(source);  // handed on, corrected or as it is
    return Finish(code);
  } catch (...) {
    return Finish(ZYN_ERR_FAILED);
  }
}

uint32_t CPUIPColorCorrection::Run(const ZynImage& source) {
  if (!ready) {
    Use(ReadSettings(nullptr));
    ready = table.size != 0;
  }
  if (!ready) return ZYN_ERR_FAILED;
  if (IsNeutral()) return 0;
  if (!CorrectPixels(source, table)) return ZYN_ERR_FAILED;
  return 0;
}

// Commands.

uint32_t CPUIPColorCorrection::ExecuteCommand(const char* commandName) {
  const QTD::RMutexLock guard(lock);
  const std::string_view command = commandName ? commandName : "";
  if (command == "params.apply") return Finish(ApplyParameters());
  if (command != "params.reset") return Finish(ZYN_ERR_NOT_SUPPORTED);
  return Finish(ResetParameters() ? 0u : uint32_t{ZYN_ERR_FAILED});
}

uint32_t CPUIPColorCorrection::RunCommand(const char* commandName, QTD::ARGUMENTS* args) {
  const QTD::RMutexLock guard(lock);
  const std::string_view command = commandName ? commandName : "";
  if (command == "cmd.params.apply" && args) return ApplyArguments(args);
  return command == "cmd.params.reset" && ResetParameters() ? 1 : 0;
}

uint32_t CPUIPColorCorrection::ApplyParameters() {
  try {
    Use(ReadSettings(nullptr));
    if (table.size == 0) return ZYN_ERR_FAILED;
    return 0;
  } catch (...) {
    return ZYN_ERR_FAILED;
  }
}

uint32_t CPUIPColorCorrection::ApplyArguments(const QTD::ARGUMENTS* args) {
  try {
    const Settings settings = ReadSettings(args);
    for (size_t n = 0; n < kSettings; ++n) parameters.Set(kTable[n].key, QTD::ToText(settings[n]));
    Use(settings);
    ready = table.size != 0;
    return ready ? 1 : 0;
  } catch (...) {
    return 0;
  }
}

// The tables stay until the next image asks for them. False without memory.
bool CPUIPColorCorrection::ResetParameters() {
  ready = false;
  try {
    for (const Setting& setting : kTable) parameters.Set(setting.key, QTD::ToText(setting.afterReset));
    return true;
  } catch (...) {
    return false;
  }
}

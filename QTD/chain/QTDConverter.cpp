#include "QTD/chain/QTDConverter.h"

#include <cstring>
#include <mutex>
#include <optional>

#include "QTD/chain/PlainHeader.h"
#include "QTD/chain/QTDProcessor.h"
#include "QTD/chain/StageRun.h"
#include "QTD/chain/TurnLines.h"
#include "QTD/frame/LivePointers.h"
#include "QTD/frame/Logging.h"
#include "QTD/frame/Text.h"
#include "QTD/image/StageAnswers.h"
#include "QTD/screen/DisplaySurface.h"
#include "QTD/screen/SurfacePass.h"
#include "cpu/stages/CPUIPImage.h"
#include "gl/image/QGLImage.h"

namespace {

constexpr const char* kLastStage = "image.output";
constexpr const char* kMosaicStage = "bayer";
constexpr const char* kTextStage = "image.overlay";  // what follows it is for the window only

bool SameSize(const ZynImage* image, const ZynImage* info) {
  return image && info && info->width != 0 && info->height != 0 && image->width == info->width &&
         image->height == info->height;
}

bool IsBottomUp(const ZynImage& image) {
  return image.origin == 1;
}

// Brings the picture of an OpenGL stage into system memory, unless the stage does so by itself.
bool ReadGpu(ZynImgProcessor& stage) {
  ZynComponent* const component = stage.GetComponent();
  if (!component) return false;
  int64_t byItself = 0;
  component->GetParameterInt("readGPU", &byItself);
  return byItself != 0 || QTD::BareCode(component->ExecuteCommand("readGPU")) == 0;
}

// Whether a stage on the card has turned the picture upside down: by what its target was prepared with,
// whatever its parameters say by now. The text stage turns what lies on the card already; what comes to it in
// memory it takes line by line.
bool HasTurned(const std::string& name, ZynImgProcessor& stage, bool cameOnCard) {
  const bool turns = name == kMosaicStage || (name == kTextStage && cameOnCard);
  QGLImage* const target = turns ? AttachedImage(stage.Out()) : nullptr;
  return target && target->properties().GetInt("image.flip.vert") == 1;
}

// What the first stage says that takes anything in.
std::optional<ZynImage> FirstInfo(const StageList& stages) {
  for (int index = 0; index < stages.Count(); ++index) {
    ZynImgProcessor* const stage = stages.At(index);
    const std::optional<ZynImage> info = stage ? QTD::CopiedInfoOf(*stage, true) : std::nullopt;
    if (info) return info;
  }
  return std::nullopt;
}

}  // namespace

QTDConverter::QTDConverter(ZynDisplayProcessor* owner, bool opengl)
    : QTD::ImageProcessorData(owner ? owner->GetComponent() : nullptr), display(owner) {
  parameters.Set("class", "QTDConverter")
      .Set("parent", QTD::ToText(static_cast<const void*>(owner)))
      .Set("opengl", QTD::ToText(opengl));
}

QTDConverter::~QTDConverter() {
  EndParameterCalls();
  QTDConverter::Release();
}

ZynComponent* QTDConverter::GetComponent() {
  return this;
}
ZynImage* QTDConverter::Out() {
  return QTD::ImageProcessorData::Out();
}
ZynImage* QTDConverter::GetImageInfo(bool source) {
  return QTD::ImageProcessorData::GetImageInfo(source);
}
bool QTDConverter::Enable(bool) {
  return false;
}
bool QTDConverter::IsEnabled() {
  return false;
}

uint32_t QTDConverter::Refuse(uint32_t code) {
  lastError = code;
  return Compose(code);
}

uint32_t QTDConverter::FailRun() {
  state = kFailed;
  return Refuse(ZYN_ERR_FAILED);
}

// Both pointers are kept as texts; one that is no longer what it was counts as missing.
ZynDisplayProcessor* QTDConverter::Parent() {
  return parameters.GetPointer("parent") == static_cast<void*>(display) ? display : nullptr;
}

QTDProcessor* QTDConverter::Chain() {
  return QTD::LivePointers<QTDProcessor>::Instance().Find(DisplayPointer(Parent(), "processor"));
}

// The gate.

bool QTDConverter::OpenGate() {
  // A lock that is held means a run, and thus a grant: no reason to wait for its end.
  const std::unique_lock<QTD::RMutex> guard(lock, std::try_to_lock);
  if (!guard.owns_lock() || !ready) return false;
  uint32_t expected = kReady;
  return state.compare_exchange_strong(expected, kGranted);
}

bool QTDConverter::CloseGate() {
  const QTD::RMutexLock guard(lock);
  if (!ready) return false;
  state = kReady;
  return true;
}

// Preparing.

uint32_t QTDConverter::Init(const ZynImage* source, const ZynImage* output) {
  // Copies, since the caller may hand in records of this converter, which go now.
  const ZynImage format = source ? *source : ZynImage{};
  const ZynImage wanted = output ? *output : ZynImage{};
  const QTD::RMutexLock guard(lock);
  lastError = 0;
  Release();
  if (!source) return Refuse(ZYN_ERR_BAD_ARGUMENT);
  uint32_t code = ZYN_ERR_FAILED;
  try {
    code = Prepare(format, output ? &wanted : nullptr);
  } catch (...) {
  }
  if (code != 0) Release();
  return Refuse(code);
}

uint32_t QTDConverter::Prepare(const ZynImage& source, const ZynImage* output) {
  QTDProcessor* const chain = Chain();
  if (!chain) return ZYN_ERR_NOT_READY;
  const QTDProcessor::Walk walk(*chain);  // a host's stage may take itself out when it is asked
  ZynImgProcessor* const stage = chain->Stages().Find(kLastStage);
  const std::optional<ZynImage> given = stage ? QTD::CopiedInfoOf(*stage, true) : std::nullopt;
  if (!given || !SameSize(&source, &*given)) return ZYN_ERR_NOT_READY;
  // The chain's own record tells the code of the pictures that come in, whatever a first stage of the host's
  // says; the first stage's tells where their line 0 is.
  const ZynImage* const taken = chain->SourceRecord();
  const std::optional<ZynImage> first = FirstInfo(chain->Stages());
  const std::optional<ZynImage> last = QTD::CopiedInfoOf(*stage, false);
  if (!first || !last) return ZYN_ERR_NOT_READY;

  writer = std::make_unique<CPUIPImage>(nullptr);
  writer->SetParameterBool("external", 1);
  if (writer->Init(&*last, output) != 0) return ZYN_ERR_FAILED;
  sourceInfo = PlainHeader(*last);
  outputInfo = output ? PlainHeader(*output) : nullptr;
  if (!sourceInfo || !outputInfo) return QTD::kStageNoMemory;
  sourceType = (taken ? *taken : *first).pixelType;
  marksTurned = IsBottomUp(*first) != IsBottomUp(*last);
  state = kReady;
  ready = true;
  return 0;
}

void QTDConverter::Release() {
  const QTD::RMutexLock guard(lock);
  writer.reset();
  state = kIdle;
  Reset();
}

// Running.

uint32_t QTDConverter::ProcessImage(const ZynImage* source, ZynImage* output, void* data) {
  try {
    return Run(source, output, data);
  } catch (...) {
    return FailRun();
  }
}

bool QTDConverter::ArgumentsFit(const ZynImage* source, const ZynImage* output) const {
  return SameSize(source, sourceInfo) && SameSize(output, outputInfo) && source->pixelType == sourceType &&
         output->pixelType == outputInfo->pixelType;
}

uint32_t QTDConverter::Run(const ZynImage* source, ZynImage* output, void* data) {
  ZYN_TRACE(log, "QTDConverter::ProcessImage()");
  const QTD::RMutexLock guard(lock);
  if (!ArgumentsFit(source, output)) return Refuse(ZYN_ERR_BAD_ARGUMENT);
  out = nullptr;
  lastError = 0;
  if (state == kIdle) return Refuse(ZYN_ERR_NOT_READY);
  state = kRunning;
  QTDProcessor* const chain = Chain();
  if (!chain || !IsReady()) return FailRun();

  const QTDProcessor::Walk walk(*chain);
  const bool opengl = parameters.GetBool("opengl");
  const SurfacePass pass(opengl ? DisplaySurface(Parent()) : nullptr);
  parameters.Set("@src", QTD::ToText(static_cast<const void*>(source)))
      .Set("@out", QTD::ToText(static_cast<const void*>(output)))
      .Set("@data", QTD::ToText(static_cast<const void*>(data)));
  // Stages that run on the processor leave the lines of a bottom-up image in their order; on the card a stage
  // turns them on the way.
  bool bottomUp = IsBottomUp(*source) != (!opengl && marksTurned);
  StageRun run(chain->Stages(), source);
  if (!RunStages(run, data, opengl, bottomUp)) return FailRun();
  if (Write(run.Picture(), bottomUp, output, data)) {
    out = output;
    state = kSucceeded;
  } else {
    state = kWriteFailed;  // told by the state alone
  }
  return 0;
}

// The walk up to the last stage that a conversion needs; false when a stage fails. `bottomUp` changes with
// each turn on the card.
bool QTDConverter::RunStages(StageRun& run, void* data, bool opengl, bool& bottomUp) {
  const ZynImage* const source = run.Picture();
  bool any = false;
  while (run.Next()) {
    any = true;
    const std::string stageName = run.Name();
    const ZynImage* given = run.Picture();
    // The image that a stage made itself does not say where its line 0 is; text must know, as the lines of a
    // bottom-up image are turned at the end.
    if (!opengl && stageName == kTextStage && given != source && IsBottomUp(*given) != bottomUp) {
      marked = *given;
      marked.origin = bottomUp ? 1 : 0;
      given = &marked;
    }
    const bool onCard = opengl && AttachedTexture(given) != 0;
    if (!run.Process(given, nullptr, data)) return false;
    if (opengl && HasTurned(stageName, run.Stage(), onCard)) bottomUp = !bottomUp;
    if (stageName == kLastStage) return !opengl || (ReadGpu(run.Stage()) && run.IsIntact());
  }
  // Without the last stage the picture stays on the card.
  return any && !opengl;
}

bool QTDConverter::Write(const ZynImage* picture, bool bottomUp, ZynImage* output, void* data) {
  // Without a way between the two formats the writer is prepared for a plain copy, which fits no output of
  // another format, however its size agrees.
  if (!writer || writer->GetImageInfo(false)->pixelType != output->pixelType) return false;
  if (QTD::BareCode(writer->ProcessImage(picture, output, data)) != 0) return false;
  if (bottomUp && !TurnLines(*output)) return false;
  output->origin = 0;
  return true;
}

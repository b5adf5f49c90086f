#include "QTD/chain/QTDProcessor.h"

#include <utility>

#include "QTD/chain/PlainHeader.h"
#include "QTD/chain/StageRun.h"
#include "QTD/frame/LivePointers.h"
#include "QTD/frame/Logging.h"
#include "QTD/frame/RateMeter.h"
#include "QTD/frame/Text.h"
#include "QTD/image/StageAnswers.h"
#include "QTD/platform/Platform.h"
#include "QTD/screen/DisplaySurface.h"
#include "QTD/screen/QTDSurface.h"
#include "QTD/screen/SurfacePass.h"

QTDProcessor::QTDProcessor(ZynDisplayProcessor* owner, bool opengl)
    : QTD::ImageProcessorData(owner ? owner->GetComponent() : nullptr), display(owner), usesSurface(opengl) {
  ZYN_TRACE(log, "QTDProcessor::QTDProcessor() -> ENTER");
  parameters.Set("class", "QTDProcessor")
      .Set("display", QTD::ToText(static_cast<const void*>(owner)))
      .Set("opengl", QTD::ToText(opengl))
      .Set("image.downscale", "0");
  QTD::LivePointers<QTDProcessor>::Instance().Add(this);
  QTD::LivePointers<ZynComponent>::Instance().Add(this);  // for stages that ask their chain
  ZYN_TRACE(log, "QTDProcessor::QTDProcessor() <- EXIT");
}

QTDProcessor::~QTDProcessor() {
  EndParameterCalls();
  QTD::LivePointers<QTDProcessor>::Instance().Remove(this);
  QTD::LivePointers<ZynComponent>::Instance().Remove(this);
  QTDProcessor::Release();
}

uint32_t QTDProcessor::Fail(uint32_t code) {
  chainError = code;
  return Compose(code);
}

ZynComponent* QTDProcessor::GetComponent() {
  return this;
}

// The list.

ZynImgProcessor* QTDProcessor::GetProcessorAt(int index) {
  const QTD::RMutexLock guard(lock);
  return stages.At(index);
}

ZynImgProcessor* QTDProcessor::FindProcessor(const char* stageName) {
  const QTD::RMutexLock guard(lock);
  return stages.Find(stageName);
}

uint32_t QTDProcessor::AddProcessor(const char* stageName, ZynImgProcessor* stage) {
  return InsertProcessor(nullptr, stageName, stage);
}

uint32_t QTDProcessor::InsertProcessor(const char* before, const char* stageName, ZynImgProcessor* stage) {
  const QTD::RMutexLock guard(lock);
  return stages.Insert(before, stageName, stage);
}

uint32_t QTDProcessor::RemoveProcessor(const char* stageName) {
  std::vector<ZynImgProcessor*> freed;
  QTDSurface* surface = nullptr;
  {
    const QTD::RMutexLock guard(lock);
    if (!stages.Find(stageName)) return QTD::kStageNotFound;
    LetGo();
    // Taken out first: what the stage does while it is released meets a list without it.
    freed = Freeable({stages.Remove(stageName)});
    surface = SurfaceAtHand();
  }
  FreeStages(freed, surface);
  return 0;
}

int QTDProcessor::GetProcessorCount() {
  const QTD::RMutexLock guard(lock);
  return stages.Count();
}

void QTDProcessor::SetStagesLeaving(std::function<void()> handler) {
  const QTD::RMutexLock guard(lock);
  stagesLeaving = std::move(handler);
}

void QTDProcessor::LeaveDisplay() {
  const QTD::RMutexLock guard(lock);
  stagesLeaving = nullptr;
  const QTDSurface* const surface = DisplaySurface(display);
  lastSurface = surface ? surface->Serial() : 0;
  leftDisplay = true;
}

void QTDProcessor::LetGo() {
  QTD::RecordHold none;
  resultHold.Swap(none);
  try {
    if (stagesLeaving) stagesLeaving();
  } catch (...) {
  }
}

void QTDProcessor::FreeStage(ZynImgProcessor* stage) noexcept {
  if (!stage) return;
  try {
    stage->Release();
  } catch (...) {  // a host's stage; it goes all the same
  }
  delete stage;
}

// A host's stage that draws on the card finds its context current there, as in a run: between `begin` and
// `end` of the surface. That is on the GUI thread only; on others a stage is released without.
void QTDProcessor::FreeStages(const std::vector<ZynImgProcessor*>& leaving, QTDSurface* surface) noexcept {
  if (leaving.empty()) return;
  const SurfacePass pass(surface, SurfacePass::kDeletion);
  for (ZynImgProcessor* stage : leaving) FreeStage(stage);
}

QTDSurface* QTDProcessor::SurfaceAtHand() noexcept {
  try {
    const QTD::RMutexLock guard(lock);
    if (!usesSurface || !QTD::platform::OnGuiThread()) return nullptr;
    // A chain may outlive its display.
    if (!QTD::LivePointers<ZynDisplayProcessor>::Instance().Find(display)) return nullptr;
    QTDSurface* const surface = GetSurface();
    // The display has made another one since the chain left it.
    if (leftDisplay && surface && surface->Serial() != lastSurface) return nullptr;
    return surface;
  } catch (...) {
    return nullptr;
  }
}

// Which of the stages that have left the list may be freed now. During a walk none: they may be on the stack.
std::vector<ZynImgProcessor*> QTDProcessor::Freeable(std::vector<ZynImgProcessor*> leaving) {
  if (walks == 0) return leaving;
  left.insert(left.end(), leaving.begin(), leaving.end());
  return {};
}

void QTDProcessor::BeginUse() {
  lock.lock();
  ++walks;
}

void QTDProcessor::EndUse() {
  std::vector<ZynImgProcessor*> freed;
  QTDSurface* surface = nullptr;
  if (--walks == 0) {
    freed.swap(left);
    if (!freed.empty()) surface = SurfaceAtHand();
  }
  lock.unlock();
  FreeStages(freed, surface);  // from the unlocking on the chain may be gone
}

void QTDProcessor::Release() {
  std::vector<ZynImgProcessor*> freed;
  QTDSurface* surface = nullptr;
  {
    const QTD::RMutexLock guard(lock);
    if (stages.Count() > 0) LetGo();
    freed = Freeable(stages.TakeAll());
    if (!freed.empty()) surface = SurfaceAtHand();
    stopFlag = 0;
    Reset();
  }
  FreeStages(freed, surface);
}

// What the chain knows of its images.

// A host's stage may take itself out when it is asked, or others: the answer may be that of one that goes.

ZynImage* QTDProcessor::Out() {
  const Walk walk(*this);
  const uint32_t removals = stages.Removals();
  for (int index = stages.Count() - 1; index >= 0 && stages.Removals() == removals; --index) {
    ZynImgProcessor* const stage = stages.At(index);
    ZynImage* const image = stage ? stage->Out() : nullptr;
    if (image && stages.Removals() == removals) return image;
  }
  return nullptr;
}

ZynImage* QTDProcessor::HeldOut(QTD::RecordHold& hold) {
  const Walk walk(*this);
  for (int index = stages.Count() - 1; index >= 0 && stages.Removals() == resultRemovals; --index) {
    ZynImgProcessor* const stage = stages.At(index);
    ZynImage* const image = stage ? QTD::HeldOutOf(*stage, hold) : nullptr;
    if (image && stages.Removals() == resultRemovals) return image;
  }
  return nullptr;
}

ZynImage* QTDProcessor::GetImageInfo(bool source) {
  const Walk walk(*this);
  const uint32_t removals = stages.Removals();
  const int count = stages.Count();
  for (int step = 0; step < count && stages.Removals() == removals; ++step) {
    ZynImgProcessor* const stage = stages.At(source ? step : count - 1 - step);
    ZynImage* const info = stage ? stage->GetImageInfo(source) : nullptr;
    if (info && stages.Removals() == removals) return info;
  }
  return nullptr;
}

QTDSurface* QTDProcessor::GetSurface() {
  const QTD::RMutexLock guard(lock);
  return DisplaySurface(display);
}

bool QTDProcessor::UsesSurface() {
  const QTD::RMutexLock guard(lock);
  return usesSurface;
}

// Building.

uint32_t QTDProcessor::Init(const ZynImage* source) {
  // A copy, since the caller may hand in a record of one of the stages that go now.
  const ZynImage format = source ? *source : ZynImage{};
  Release();
  const QTD::RMutexLock guard(lock);
  chainError = 0;
  Release();  // what another thread has put in meanwhile
  if (!source) return Fail(ZYN_ERR_BAD_ARGUMENT);
  try {
    usesSurface = parameters.GetInt("opengl") != 0;
    chainError = usesSurface ? initQGL(&format, nullptr) : initCPU(&format, nullptr);
  } catch (...) {  // a parameter that is no number: the caller's matter, but no half-built chain stays
    chainError = ZYN_ERR_FAILED;
    Release();
    throw;
  }
  const ZynImage* const reached = GetImageInfo(false);
  if (chainError == 0) {
    sourceInfo = PlainHeader(format);
    outputInfo = PlainHeader(reached ? *reached : format);
    if (!sourceInfo || !outputInfo) chainError = QTD::kStageNoMemory;
  }
  ready = chainError == 0;
  timer.Reset();
  if (chainError != 0) Release();
  return Compose(chainError);
}

// Running.

uint32_t QTDProcessor::ProcessImage(const ZynImage* source, ZynImage* output, void* data) {
  try {
    return Run(source, output, data);
  } catch (...) {
    return Fail(ZYN_ERR_FAILED);
  }
}

uint32_t QTDProcessor::Run(const ZynImage* source, ZynImage* output, void* data) {
  ZYN_TRACE(log, "QTDProcessor::ProcessImage() -> ENTER");
  if (!source) {
    ZYN_TRACE(log, "QTDProcessor::ProcessImage() <- EXIT");
    return Fail(ZYN_ERR_BAD_ARGUMENT);
  }
  const Walk walk(*this);
  if (stages.Count() == 0) {
    ZYN_TRACE(log, "QTDProcessor::ProcessImage() <- EXIT");
    return Fail(ZYN_ERR_FAILED);
  }
  chainError = 0;
  timer.Start(QTD::TickMilliseconds());
  QTDSurface* const surface = usesSurface ? GetSurface() : nullptr;
  parameters.Set("@source.image", QTD::ToText(static_cast<const void*>(source)))
      .Set("@output.image", QTD::ToText(static_cast<const void*>(output)));
  switch (RunStages(surface, source, output, data)) {
    case RunResult::kFailed:
      return Fail(ZYN_ERR_FAILED);  // the stage's own code is not passed on
    case RunResult::kStopped:
      return 0;
    case RunResult::kComplete:
      break;
  }
  const double average = timer.Stop(QTD::TickMilliseconds());
  parameters.Set("time", QTD::ToText(average, "%.2f") + " ms");
  ZYN_TRACE(log, "QTDProcessor::ProcessImage() <- EXIT");
  return 0;
}

QTDProcessor::RunResult QTDProcessor::RunStages(QTDSurface* surface, const ZynImage* source, ZynImage* output,
                                                void* data) {
  const SurfacePass pass(surface);
  StageRun run(stages, source);
  while (run.Next()) {
    if (stopFlag) return RunResult::kStopped;
    ZYN_TRACE(log, "QTDProcessor::ProcessImage(): proc: %s ", run.Name());
    if (!run.Process(run.Picture(), output, data)) return RunResult::kFailed;
    ZYN_TRACE(log, "QTDProcessor::ProcessImage(): proc->Out: imageID is %llu",
              static_cast<unsigned long long>(run.Picture()->imageID));
  }
  run.PassHold(resultHold);  // the last stage may pass on the record of another one
  resultRemovals = run.Removals();
  return RunResult::kComplete;
}

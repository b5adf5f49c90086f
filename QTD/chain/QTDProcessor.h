// The chain: the ordered list of stages that turns a camera's format into a displayable picture.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "QTD/chain/RunTimer.h"
#include "QTD/chain/StageList.h"
#include "QTD/frame/ComponentImpl.h"
#include "QTD/frame/HostCodeUnderLocks.h"
#include "QTD/image/HeldRecords.h"
#include "QTD/image/ImageProcessorData.h"
#include "QTD/image/StageKeeper.h"
#include "ZynDisplay.h"

class QTDSurface;

// Built for the format of the first image by `Init`; every image then runs through the list. Chains run on
// the GUI thread; the list operations may come from any thread and wait for a run that is under way.
//
// Parameters: "display", "opengl", "image.downscale"; "@source.image" and "@output.image" from the first run
// on, "time" from the first complete one.
class QTDProcessor : public ZynImgProcessingChain,
                     public QTD::ImageProcessorData,
                     public QTD::ComponentImpl,
                     public QTD::StageKeeper,
                     public ZynDisplayCommand {
 public:
  // `owner` may be null: then no surface is used.
  QTDProcessor(ZynDisplayProcessor* owner, bool opengl);
  ~QTDProcessor() override;

  // Any thread.
  ZynImgProcessor* GetProcessorAt(int index) override;
  ZynImgProcessor* FindProcessor(const char* stageName) override;
  // A stage that was added belongs to the chain. Answer bare codes; a refused stage stays the caller's.
  uint32_t AddProcessor(const char* stageName, ZynImgProcessor* stage) override;
  uint32_t InsertProcessor(const char* before, const char* stageName, ZynImgProcessor* stage) override;
  uint32_t RemoveProcessor(const char* stageName) override;
  ZynComponent* GetComponent() override;

  // GUI thread.
  uint32_t Init(const ZynImage* source) override;
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) override;
  void Release() override;

  // Any thread; the records belong to the stages and live as long as these.
  ZynImage* Out() override;
  ZynImage* GetImageInfo(bool source) override;

  virtual int GetProcessorCount();
  // Fill the list for the format of `source`: 0 or 1. GUI thread.
  virtual uint32_t initQGL(const ZynImage* source, const ZynImage* output);
  virtual uint32_t initCPU(const ZynImage* source, const ZynImage* output);
  virtual QTDSurface* GetSurface();
  // Whether the list is for OpenGL, or will be; the display may be asked for the other variant meanwhile.
  bool UsesSurface();

  // The component's lock, held by whoever walks the list (the converter does). It stands behind the display's
  // locks and before those of stages and parameter lists.
  QTD::RMutex& ChainLock() { return lock; }
  const StageList& Stages() const { return stages; }        // hold the lock
  ZynDisplayProcessor* Display() const { return display; }  // may be null

  // One walk over the list, in which host code runs with the chain's lock held. Stages that leave meanwhile,
  // because a stage that is called takes itself or others out, are freed after its end.
  class Walk {
   public:
    explicit Walk(QTDProcessor& walkedChain) : chain(walkedChain) {
      chain.BeginUse();
      scope.emplace();
    }
    ~Walk() {
      scope.reset();
      chain.EndUse();
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

   private:
    QTDProcessor& chain;
    std::optional<QTD::HostCodeUnderLocks> scope;
  };
  void BeginUse() override;
  void EndUse() override;

  // As `Out`, and holds the record, before the stage can be prepared anew or released. Null also when a stage
  // has left since the last run: the record may have been that stage's.
  ZynImage* HeldOut(QTD::RecordHold& hold);

  // The chain's own record of the prepared source: size and code of the picture, whatever the first stage
  // makes of it. Hold the lock.
  const ZynImage* SourceRecord() const { return sourceInfo; }
  uint32_t LastError() const { return chainError; }
  const RunTimer& Timer() const { return timer; }

  // Called, with the chain's lock held, before stages leave: whoever shows or keeps a stage's picture lets go
  // of it. The stages are freed without the lock, since a host's stage may wait for other locks there.
  void SetStagesLeaving(std::function<void()> handler);

  // The display gives the chain away, to end at once or later: nobody hears of leaving stages any more, and
  // stages that lie on the card are freed on the surface that the display has now, never on another one. Any
  // thread that keeps the display.
  void LeaveDisplay();

  // Releases and deletes a stage.
  static void FreeStage(ZynImgProcessor* stage) noexcept;

 protected:
  std::atomic<uint32_t> stopFlag{0};  // ends a run before its next stage; cleared by `Release`, set by nobody

 private:
  enum class RunResult { kComplete, kStopped, kFailed };

  uint32_t Run(const ZynImage* source, ZynImage* output, void* data);
  RunResult RunStages(QTDSurface* surface, const ZynImage* source, ZynImage* output, void* data);
  void LetGo();
  std::vector<ZynImgProcessor*> Freeable(std::vector<ZynImgProcessor*> leaving);
  static void FreeStages(const std::vector<ZynImgProcessor*>& leaving, QTDSurface* surface) noexcept;
  QTDSurface* SurfaceAtHand() noexcept;
  uint32_t Fail(uint32_t code);  // stores the bare code, answers the composed one

  StageList stages;                     // guarded by the chain's lock
  std::vector<ZynImgProcessor*> left;   // stages that left during a walk; guarded by the chain's lock
  QTD::RecordHold resultHold;           // of the last run's result; guarded by the chain's lock
  uint32_t resultRemovals = 0;          // `Removals` of the list at that time; likewise
  int walks = 0;                        // walks on the stack of the lock's holder
  std::function<void()> stagesLeaving;  // guarded by the chain's lock
  std::atomic<uint32_t> chainError{0};  // the chain's own; `lastError` of the base stays 0
  RunTimer timer;
  ZynDisplayProcessor* display;
  bool leftDisplay = false;  // guarded by the chain's lock, as the next
  uint64_t lastSurface = 0;  // `Serial` of the display's when the chain left it, 0: none
  bool usesSurface;  // the list is for OpenGL: a run goes between `begin` and `end` of the display's surface
};

// Produces an image for the host without showing it: the display's chain up to "image.output", then a writer.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "QTD/frame/ComponentImpl.h"
#include "QTD/image/ImageProcessorData.h"
#include "ZynDisplay.h"

class CPUIPImage;
class QTDProcessor;
class StageRun;

// One conversion: `OpenGate` by whoever wants it, `ProcessImage` on the GUI thread, polling of the state
// until it is 8 or above, `CloseGate`. A converted picture has line 0 at the top.
//
// Parameters: "parent", "opengl"; "@src", "@out" and "@data" from the first run on. The chain is found
// through the display's parameter "processor"; whoever calls `Init` or `ProcessImage` sees to it that the
// chain lives that long.
class QTDConverter : public ZynImgProcessor,
                     public QTD::ImageProcessorData,
                     public QTD::ComponentImpl,
                     public ZynDisplayCommand {
 public:
  enum State : uint32_t {
    kIdle = 0,          // not initialised
    kReady = 1,         // ready and idle
    kGranted = 2,       // granted to one caller
    kRunning = 4,       // a run is under way
    kSucceeded = 8,     // the run ended with success
    kWriteFailed = 16,  // the last step failed
    kFailed = 32,       // a stage failed, or parent or chain are missing
  };

  QTDConverter(ZynDisplayProcessor* owner, bool opengl);
  ~QTDConverter() override;

  // `source` has the size of the chain's picture, `output` states the wanted format. Any thread.
  uint32_t Init(const ZynImage* source, const ZynImage* output) override;
  // GUI thread. 7 for images other than prepared, with the state as it was; 0 also when only the writing
  // failed.
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) override;
  void Release() override;  // waits for a run that is under way
  ZynComponent* GetComponent() override;
  ZynImage* Out() override;  // the output of the last successful run
  ZynImage* GetImageInfo(bool source) override;
  bool Enable(bool on) override;  // a converter is never enabled or disabled: false
  bool IsEnabled() override;

  // Any thread. State 2 and true when ready; false when not, and while the converter is granted to somebody
  // else.
  bool OpenGate();
  bool CloseGate();  // state 1, true when ready
  uint32_t GetState() const { return state; }
  // Ends a run that cannot come to an end by itself, so that a waiting caller goes on. Any thread.
  void Fail() { state = kFailed; }

 protected:
  std::atomic<uint32_t> state{kIdle};  // polled by the caller on another thread

 private:
  uint32_t Prepare(const ZynImage& source, const ZynImage* output);
  uint32_t Run(const ZynImage* source, ZynImage* output, void* data);
  bool RunStages(StageRun& run, void* data, bool opengl, bool& bottomUp);
  bool Write(const ZynImage* picture, bool bottomUp, ZynImage* output, void* data);
  bool ArgumentsFit(const ZynImage* source, const ZynImage* output) const;
  ZynDisplayProcessor* Parent();
  QTDProcessor* Chain();
  uint32_t Refuse(uint32_t code);  // stores the bare code, answers the composed one
  uint32_t FailRun();              // state 32, code 1

  // `lock` of the base guards what follows; it stands before the chain's lock.
  std::unique_ptr<CPUIPImage> writer;
  ZynDisplayProcessor* display;
  uint32_t sourceType = 0;   // the chain's pixel code
  bool marksTurned = false;  // the chain's stages mirror the meaning of `origin`
  ZynImage marked{};         // what the text stage got instead of an image without the source's mark
};

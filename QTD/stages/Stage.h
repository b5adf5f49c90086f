// What the stages of both variants have in common beside their state: the faces that answer from it.
#pragma once

#include <cstdint>

#include "QTD/frame/ComponentImpl.h"
#include "QTD/frame/RMutex.h"
#include "QTD/image/ImageProcessorData.h"
#include "ZynImgProcessor.h"

namespace QTD {

// A stage of the kind `Interface`. The class that derives from it writes `Init`, `ProcessImage` and
// `Release`, and calls its own `Release` in its destructor. Any thread may call any operation; the stage's
// lock is held meanwhile.
template <typename Interface>
class Stage : public Interface, public ImageProcessorData, public ComponentImpl {
 public:
  ZynComponent* GetComponent() override { return this; }
  ZynImage* Out() override {
    const RMutexLock guard(lock);
    return ImageProcessorData::Out();
  }
  ZynImage* GetImageInfo(bool source) override {
    const RMutexLock guard(lock);
    return ImageProcessorData::GetImageInfo(source);
  }
  bool Enable(bool on) override { return ImageProcessorData::Enable(on); }
  bool IsEnabled() override { return ImageProcessorData::IsEnabled(); }

 protected:
  Stage(ZynComponent* parentComponent, const char* stageName, const char* className)
      : ImageProcessorData(parentComponent) {
    name = stageName;
    parameters.Set("class", className);
  }

  // Stores a code, 0 included, and answers it composed.
  uint32_t Finish(uint32_t code) {
    lastError = code;
    return Compose(code);
  }

  // The bare code of a command's work. Commands do not throw: work that does, for a text that is no number or
  // without memory, has failed.
  template <typename Work>
  static uint32_t CodeOf(const Work& work) {
    try {
      return work();
    } catch (...) {
      return ZYN_ERR_FAILED;
    }
  }

  // "image.flip.vert" as the shaders take it, for which 1 alone turns: any number but 0 does.
  bool Flip() { return parameters.GetBool("image.flip.vert", "0"); }

  // Whether the result is marked bottom-up: the source's mark, turned by "image.flip.vert". No line is moved.
  bool IsFlipped(const ZynImage& source) { return (source.origin == 1) != Flip(); }
};

}  // namespace QTD

// The state that all image processors share.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "QTD/frame/RMutex.h"
#include "ZynComponent.h"
#include "ZynImage.h"

namespace QTD {

// Codes that stages and the chain use beside those of ZynErrorCode.
enum StageCode : uint32_t {
  kStageNotFound = 2,
  kStageFormat = 3,
  kStageExists = 4,
  kStageNoMemory = 9,
};

// The enable count and the flags may be asked from any thread; the records belong to the thread that runs the
// stage, and each lives until the next `Init` or `Release`.
class ImageProcessorData {
 public:
  explicit ImageProcessorData(ZynComponent* parentComponent = nullptr) : parent(parentComponent) {}
  ImageProcessorData(const ImageProcessorData&) = delete;
  ImageProcessorData& operator=(const ImageProcessorData&) = delete;
  virtual ~ImageProcessorData();

  virtual ZynImage* Out();
  virtual ZynImage* GetImageInfo(bool source);  // false: the output's, or the source's where there is none
  virtual bool Enable(bool on);  // counts up or down, not below 0; answers whether the stage is enabled
  virtual bool IsEnabled();
  virtual bool IsReady();
  virtual uint32_t Reset();  // frees the information records; back to the constructed state
  virtual ZynComponent* GetParent();

  // The lock of all operations, for who must keep a chain as it is over more than one call.
  RMutex& OperationLock() { return lock; }

 protected:
  std::string name;
  ZynImage* sourceInfo = nullptr;  // clone of the source's header
  ZynImage* outputInfo = nullptr;  // header of the result; may be the same record
  ZynImage* out = nullptr;         // not owned
  std::atomic<uint32_t> lastError{0};
  std::atomic<int32_t> enableCount{1};
  std::atomic<bool> ready{false};
  // Guards Init, ProcessImage, Release and the parameter commands of the stage. A stage that also takes its
  // component's lock takes this one first, in every operation.
  RMutex lock;
  ZynComponent* parent;
};

}  // namespace QTD

#include "QTD/image/StageAnswers.h"

#include <mutex>

#include "QTD/image/ImageProcessorData.h"

namespace QTD {
namespace {

// The stage's lock, where it has one: a record that it answers with stays until the lock is given up.
std::unique_lock<RMutex> LockOf(ZynImgProcessor& stage) {
  auto* const data = dynamic_cast<ImageProcessorData*>(&stage);
  return data ? std::unique_lock<RMutex>(data->OperationLock()) : std::unique_lock<RMutex>();
}

}  // namespace

ZynImage* HeldOutOf(ZynImgProcessor& stage, RecordHold& hold) {
  const std::unique_lock<RMutex> guard = LockOf(stage);
  ZynImage* const image = stage.Out();
  if (!image) return nullptr;
  RecordHold taken(image);
  hold.Swap(taken);
  return image;
}

std::optional<ZynImage> CopiedInfoOf(ZynImgProcessor& stage, bool source) {
  const std::unique_lock<RMutex> guard = LockOf(stage);
  const ZynImage* const info = stage.GetImageInfo(source);
  return info ? std::optional<ZynImage>(*info) : std::nullopt;
}

}  // namespace QTD

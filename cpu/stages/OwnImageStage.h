// What the stages have in common that turn one format into another in an image of their own, whatever the
// caller's output.
#pragma once

#include <cstdint>
#include <cstring>
#include <limits>

#include "QTD/frame/Logging.h"
#include "QTD/frame/RMutex.h"
#include "QTD/image/ImageRecord.h"
#include "QTD/stages/Stage.h"

// A class that derives from it says which formats it takes, what becomes of them, and fills the picture. A
// source that gives no picture of the prepared size makes a black one, and counts as success.
template <typename Interface>
class OwnImageStage : public QTD::Stage<Interface> {
 public:
  ~OwnImageStage() override {
    this->EndParameterCalls();
    OwnImageStage::Release();
  }

  uint32_t Init(const ZynImage* source, const ZynImage*) override {
    const QTD::RMutexLock guard(lock);
    // A copy, since the caller may hand in a record of this stage, which goes now.
    const ZynImage format = source ? *source : ZynImage{};
    Release();
    if (format.width == 0 || format.height == 0) return this->Finish(ZYN_ERR_BAD_ARGUMENT);
    if (!Takes(format.pixelType)) return this->Finish(QTD::kStageFormat);
    const uint32_t code = Prepare(format);
    if (code != 0) Release();
    this->ready = code == 0;
    return this->Finish(code);
  }

  uint32_t ProcessImage(const ZynImage* source, ZynImage*, void*) override {
    const QTD::RMutexLock guard(lock);
    out = nullptr;
    try {
      ZYN_TRACE(this->log, "%s::ProcessImage()", className);
      return this->Finish(Run(source));
    } catch (...) {
      return this->Finish(ZYN_ERR_FAILED);
    }
  }

  void Release() override {
    const QTD::RMutexLock guard(lock);
    this->Reset();
    QTD::ImageDelete(outputImage);
  }

 protected:
  OwnImageStage(ZynComponent* parentComponent, const char* stageName, const char* nameOfClass)
      : QTD::Stage<Interface>(parentComponent, stageName, nameOfClass), className(nameOfClass) {}

  virtual bool Takes(uint32_t pixelType) const = 0;
  virtual uint32_t ResultType(uint32_t pixelType) const = 0;
  // False where the source gives no picture of the output's size.
  virtual bool Fill(const ZynImage& source, const ZynImage& output) const = 0;

 private:
  using QTD::Stage<Interface>::lock;
  using QTD::Stage<Interface>::out;

  uint32_t Prepare(const ZynImage& source) {
    if (source.height > static_cast<uint32_t>(std::numeric_limits<int32_t>::max()))
      return QTD::kStageNoMemory;
    const auto height = static_cast<int32_t>(source.height);
    const int32_t markedHeight = this->IsFlipped(source) ? -height : height;
    const uint32_t resultType = ResultType(source.pixelType);
    outputImage = QTD::ImageCreate(nullptr, source.width, markedHeight, resultType);
    if (!outputImage) return QTD::kStageNoMemory;
    this->sourceInfo = QTD::ImageCloneHeader(nullptr, &source);
    this->outputInfo = QTD::ImageCreateHeader(nullptr, source.width, markedHeight, resultType);
    if (!this->sourceInfo || !this->outputInfo) return QTD::kStageNoMemory;
    out = outputImage;
    return 0;
  }

  uint32_t Run(const ZynImage* source) {
    if (!source || !outputImage || !Takes(source->pixelType)) return ZYN_ERR_FAILED;
    if (!Fill(*source, *outputImage)) std::memset(outputImage->imageData, 0, outputImage->imageSize);
    outputImage->imageID = source->imageID;
    out = outputImage;
    return 0;
  }

  const char* const className;
  ZynImage* outputImage = nullptr;  // guarded by `lock`
};

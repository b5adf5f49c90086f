// Conversion of images without showing them.
#include <QCoreApplication>
#include <chrono>
#include <thread>

#include "QTD/chain/QTDConverter.h"
#include "QTD/chain/QTDProcessor.h"
#include "QTD/display/GuiThread.h"
#include "QTD/display/LiveObjects.h"
#include "QTD/display/QTDDisplay.h"
#include "QTD/image/ImageRecord.h"

namespace {

constexpr uint32_t kCodeMask = 0xFFFF;

bool SameFormat(const ZynImage* image, const ZynImage* prepared) {
  return image && prepared && image->width != 0 && image->height != 0 && image->width == prepared->width &&
         image->height == prepared->height && image->pixelType == prepared->pixelType;
}

// A short wait in which the GUI thread goes on with its own work, so that others who wait for it come to an
// end.
void WaitABit() {
  if (QTD::IsGuiThread() && QCoreApplication::instance()) {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

}  // namespace

uint32_t QTDDisplay::InitConverter(const ZynImage* outputFormat) {
  QTD::LiveCall call(this);
  if (!call) return Compose(ZYN_ERR_NOT_READY);
  std::scoped_lock guard(convertLock, handlerLock);
  lastError = ZYN_ERR_BUSY;
  ReleaseConverter();
  // The picture's own size counts, not what a first stage made of it.
  const ZynImage* source = processor ? processor->QTD::ImageProcessorData::GetImageInfo(true) : nullptr;
  if (!source) return Fail(ZYN_ERR_NOT_READY);

  auto made = std::make_shared<QTDConverter>(this, parameters.GetInt("system.opengl") != 0);
  const ZynImage header = outputFormat ? QTD::ImageCompleted(*outputFormat) : ZynImage{};
  const uint32_t code = made->Init(source, outputFormat ? &header : nullptr) & kCodeMask;
  if (code == 0) converter = made;
  return Fail(code);
}

void QTDDisplay::ReleaseConverter() {
  std::lock_guard<std::recursive_mutex> guard(convertLock);
  converter.reset();
}

std::shared_ptr<QTDConverter> QTDDisplay::CurrentConverter() {
  std::lock_guard<std::recursive_mutex> guard(convertLock);
  return converter;
}

// One caller at a time converts. The others wait without holding a lock, and the GUI thread goes on working
// meanwhile. False for a call from inside this thread's own conversion, which could never come to its turn.
bool QTDDisplay::BeginConversion() {
  for (;;) {
    {
      std::lock_guard<std::recursive_mutex> guard(convertLock);
      if (!converting) {
        converting = true;
        convertingThread = std::this_thread::get_id();
        return true;
      }
      if (convertingThread == std::this_thread::get_id()) return false;
    }
    if (closing) return false;
    WaitABit();
  }
}

void QTDDisplay::EndConversion() {
  std::lock_guard<std::recursive_mutex> guard(convertLock);
  converting = false;
}

uint32_t QTDDisplay::ConvertImage(const ZynImage* input, ZynImage* output) {
  QTD::LiveCall call(this);
  if (!call) return Compose(ZYN_ERR_NOT_READY);
  if (!BeginConversion()) return Fail(ZYN_ERR_FAILED);
  uint32_t code = ZYN_ERR_FAILED;
  try {
    code = ConvertCompleted(input, output);
  } catch (...) {
    EndConversion();
    throw;
  }
  EndConversion();
  return Fail(code);
}

// Works on copies of the records, in which depth and channels follow from the pixel code.
uint32_t QTDDisplay::ConvertCompleted(const ZynImage* input, ZynImage* output) {
  const ZynImage completedInput = input ? QTD::ImageCompleted(*input) : ZynImage{};
  ZynImage completedOutput = output ? QTD::ImageCompleted(*output) : ZynImage{};
  const uint32_t code =
      ConvertPrepared(input ? &completedInput : nullptr, output ? &completedOutput : nullptr);
  if (code == 0) output->imageID = completedOutput.imageID;
  return code;
}

uint32_t QTDDisplay::ConvertPrepared(const ZynImage* input, ZynImage* output) {
  if (!CurrentConverter()) InitConverter(output);
  const std::shared_ptr<QTDConverter> current = CurrentConverter();
  if (!current) return ZYN_ERR_NOT_READY;
  {
    // The information belongs to the converter, which is replaced under this lock only.
    std::lock_guard<std::recursive_mutex> guard(handlerLock);
    const ZynImage* source = processor ? processor->QTD::ImageProcessorData::GetImageInfo(true) : nullptr;
    if (!SameFormat(input, source) || !SameFormat(output, current->GetImageInfo(false))) {
      return ZYN_ERR_BAD_ARGUMENT;
    }
  }
  if (!current->OpenGate()) return ZYN_ERR_FAILED;

  auto request = std::make_shared<Conversion>();
  request->input = input;
  request->output = output;
  request->converter = current;
  const uint32_t code = RunConversion(request);
  current->CloseGate();
  return code;
}

// Hands the request to the GUI thread and waits. An initialisation that takes the converter away ends a
// conversion that has not begun with 8; one that runs is waited for, since it writes into the caller's
// memory.
uint32_t QTDDisplay::RunConversion(const std::shared_ptr<Conversion>& request) {
  {
    std::lock_guard<std::recursive_mutex> guard(convertLock);
    conversion = request;
  }
  if (QTD::IsGuiThread()) {
    slotConvertImage(const_cast<ZynImage*>(request->input), request->output);
  } else {
    Q_EMIT signalConvertImage(const_cast<ZynImage*>(request->input), request->output);
  }
  while (request->state != Conversion::kDone) {
    if (closing || QCoreApplication::closingDown() || CurrentConverter() != request->converter) {
      int queued = Conversion::kQueued;
      if (request->state.compare_exchange_strong(queued, Conversion::kCancelled)) {
        request->code = ZYN_ERR_NOT_READY;
        break;
      }
    }
    WaitABit();
  }
  std::lock_guard<std::recursive_mutex> guard(convertLock);
  if (conversion == request) conversion.reset();
  return request->code;
}

void QTDDisplay::slotConvertImage(ZynImage* inputImage, ZynImage* outputImage) {
  std::shared_ptr<Conversion> request;
  {
    std::lock_guard<std::recursive_mutex> guard(convertLock);
    request = conversion;
  }
  if (!request || request->input != inputImage || request->output != outputImage) return;
  int queued = Conversion::kQueued;
  if (!request->state.compare_exchange_strong(queued, Conversion::kRunning)) return;

  uint32_t code = ZYN_ERR_NOT_READY;
  {
    // Keeps the chain in place while the converter walks it.
    std::lock_guard<std::recursive_mutex> guard(handlerLock);
    if (CurrentConverter() == request->converter) {
      code = request->converter->ProcessImage(inputImage, outputImage, nullptr) & kCodeMask;
      const uint32_t state = request->converter->GetState();
      // The outcome stands in the state; arguments that do not fit leave it untouched and have a code of
      // their own.
      if (code == 0) code = state == QTDConverter::kSucceeded ? 0u : static_cast<uint32_t>(ZYN_ERR_FAILED);
      if (state > QTDConverter::kSucceeded) code = ZYN_ERR_FAILED;
    }
  }
  lastError = code;
  request->code = code;
  request->state = Conversion::kDone;
}

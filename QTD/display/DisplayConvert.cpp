// Conversion of images without showing them.
#include <QCoreApplication>
#include <mutex>
#include <thread>

#include "QTD/chain/QTDConverter.h"
#include "QTD/chain/QTDProcessor.h"
#include "QTD/display/ChainTry.h"
#include "QTD/display/GuiThread.h"
#include "QTD/display/LiveObjects.h"
#include "QTD/display/QTDDisplay.h"
#include "QTD/display/ScopedCount.h"
#include "QTD/frame/HostCodeUnderLocks.h"
#include "QTD/image/ImageRecord.h"
#include "QTD/platform/Platform.h"

namespace {

// Whether an image has the size and code that was prepared; `Prepared` is a record or what is kept of one.
template <typename Prepared>
bool SameFormat(const ZynImage* image, const Prepared& prepared) {
  return image && image->width != 0 && image->height != 0 && image->width == prepared.width &&
         image->height == prepared.height && image->pixelType == prepared.pixelType;
}

}  // namespace

uint32_t QTDDisplay::InitConverter(const ZynImage* outputFormat) {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  if (!call) return Compose(ZYN_ERR_NOT_READY);
  for (;;) {
    {
      std::scoped_lock guard(convertLock, handlerLock);
      const QTD::ChainTry chain(processor.get());
      const QTD::HostCodeUnderLocks asked;  // the chain's stages, and one that leaves then is freed here
      if (chain) return PrepareConverter(outputFormat);
    }
    if (closing) return Fail(ZYN_ERR_NOT_READY);
    QTD::WaitABit();
  }
}

// `handlerLock` and the chain's lock are held.
uint32_t QTDDisplay::PrepareConverter(const ZynImage* outputFormat) {
  std::lock_guard<std::recursive_mutex> guard(convertLock);
  lastError = ZYN_ERR_BUSY;
  ReleaseConverter();
  // The picture's own size counts, not what a first stage made of it.
  const ZynImage* source = processor ? processor->SourceRecord() : nullptr;
  if (!source) return Fail(ZYN_ERR_NOT_READY);

  auto made = std::make_shared<QTDConverter>(this, processor->UsesSurface());
  const ZynImage header = outputFormat ? QTD::ImageCompleted(*outputFormat) : ZynImage{};
  const uint32_t code = QTD::BareCode(made->Init(source, outputFormat ? &header : nullptr));
  if (code == 0) converter = made;
  return Fail(code);
}

void QTDDisplay::ReleaseConverter() {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  if (!call) return;
  std::lock_guard<std::recursive_mutex> guard(convertLock);
  converter.reset();
}

std::shared_ptr<QTDConverter> QTDDisplay::CurrentConverter() {
  std::lock_guard<std::recursive_mutex> guard(convertLock);
  return converter;
}

// One caller at a time converts. The others wait without holding a lock, and the GUI thread goes on working
// meanwhile. A call from inside a conversion, or from a stage, fails: it could never come to its turn.
uint32_t QTDDisplay::BeginConversion() {
  for (;;) {
    {
      std::lock_guard<std::recursive_mutex> guard(convertLock);
      if (QTD::platform::OnGuiThread() && walking > 0) return ZYN_ERR_FAILED;
      if (!converting) {
        converting = true;
        convertingThread = std::this_thread::get_id();
        return 0;
      }
      if (convertingThread == std::this_thread::get_id()) return ZYN_ERR_FAILED;
    }
    if (closing) return ZYN_ERR_NOT_READY;
    QTD::WaitABit();
  }
}

// Takes the turn and sees to a converter; with `renew`, to one for this `output`. It is prepared under the
// processing lock, which the GUI thread may hold while it waits for its own turn: so the turn is given up
// when that lock, or the chain's behind it, is not free, and the GUI thread sees that somebody wants it.
uint32_t QTDDisplay::BeginConversionWithConverter(const ZynImage* output, bool renew) {
  QTD::ScopedCount waiting(preparing);
  for (;;) {
    if (const uint32_t code = BeginConversion()) return code;
    const std::shared_ptr<QTDConverter> current = CurrentConverter();
    if (current && !renew) return 0;
    const ZynImage* target = current ? current->GetImageInfo(false) : nullptr;
    if (target && SameFormat(output, *target)) return 0;
    {
      const std::unique_lock<std::recursive_mutex> guard(handlerLock, std::try_to_lock);
      const QTD::ChainTry chain(guard ? processor.get() : nullptr);
      const QTD::HostCodeUnderLocks asked;
      if (guard && chain) {
        uint32_t code = 0;
        try {
          PrepareConverter(output);
        } catch (...) {
          // Memory is short; the turn must not be kept.
          code = ZYN_ERR_FAILED;
          EndConversion();
        }
        return code;
      }
    }
    EndConversion();
    if (!QTD::platform::OnGuiThread()) waiting.Raise();
    QTD::WaitABit();
  }
}

void QTDDisplay::EndConversion() {
  std::lock_guard<std::recursive_mutex> guard(convertLock);
  converting = false;
}

uint32_t QTDDisplay::ConvertImage(const ZynImage* input, ZynImage* output) {
  return ConvertInTurn(input, output, false);
}

uint32_t QTDDisplay::ConvertImageAnew(const ZynImage* input, ZynImage* output) {
  return ConvertInTurn(input, output, true);
}

uint32_t QTDDisplay::ConvertInTurn(const ZynImage* input, ZynImage* output, bool renew) {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  if (!call) return Compose(ZYN_ERR_NOT_READY);
  if (const uint32_t code = BeginConversionWithConverter(output, renew)) return Fail(code);
  uint32_t code = ZYN_ERR_FAILED;
  try {
    code = ConvertCompleted(input, output);
  } catch (...) {
    // Memory is short; the turn must not be kept.
  }
  EndConversion();
  return Fail(code);
}

// Works on copies of the records, in which depth and channels follow from the pixel code.
uint32_t QTDDisplay::ConvertCompleted(const ZynImage* input, ZynImage* output) {
  // Stages that work in place go on pointing at the record when the conversion is over.
  convertedInput = input ? QTD::ImageCompleted(*input) : ZynImage{};
  ZynImage completedOutput = output ? QTD::ImageCompleted(*output) : ZynImage{};
  const uint32_t code =
      ConvertPrepared(input ? &convertedInput : nullptr, output ? &completedOutput : nullptr);
  if (code == 0) {
    output->imageID = completedOutput.imageID;
    output->origin = completedOutput.origin;
  }
  return code;
}

uint32_t QTDDisplay::ConvertPrepared(const ZynImage* input, ZynImage* output) {
  const uint32_t build = builds;
  const std::shared_ptr<QTDConverter> current = CurrentConverter();
  if (!current) return ZYN_ERR_NOT_READY;
  const ZynImage* outputInfo = current->GetImageInfo(false);
  if (!outputInfo || !SameFormat(input, PreparedFormat()) || !SameFormat(output, *outputInfo)) {
    return ZYN_ERR_BAD_ARGUMENT;
  }
  if (!current->OpenGate()) return ZYN_ERR_FAILED;

  auto request = std::make_shared<Conversion>();
  request->input = input;
  request->output = output;
  request->converter = current;
  request->build = build;
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
  if (QTD::platform::OnGuiThread()) {
    slotConvertImage(const_cast<ZynImage*>(request->input), request->output);
  } else {
    Q_EMIT signalConvertImage(const_cast<ZynImage*>(request->input), request->output);
  }
  while (request->state != Conversion::kDone) {
    if (closing || QCoreApplication::closingDown() || builds != request->build) {
      int queued = Conversion::kQueued;
      if (request->state.compare_exchange_strong(queued, Conversion::kCancelled)) {
        request->code = ZYN_ERR_NOT_READY;
        break;
      }
    }
    QTD::WaitABit();
  }
  std::lock_guard<std::recursive_mutex> guard(convertLock);
  if (conversion == request) conversion.reset();
  return request->code;
}

void QTDDisplay::slotConvertImage(ZynImage* inputImage, ZynImage* outputImage) {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  if (!call) return;
  std::shared_ptr<Conversion> request;
  {
    std::lock_guard<std::recursive_mutex> guard(convertLock);
    request = conversion;
  }
  if (!request || request->input != inputImage || request->output != outputImage) return;
  int queued = Conversion::kQueued;
  if (!request->state.compare_exchange_strong(queued, Conversion::kRunning)) return;

  uint32_t code = ZYN_ERR_NOT_READY;
  bool lost = false;
  {
    // Keeps the chain in place while the converter walks it.
    const QTD::HostCodeLock guard(handlerLock);
    if (builds != request->build) {
      request->converter->Fail();
    } else {
      ++walking;
      code = QTD::BareCode(request->converter->ProcessImage(inputImage, outputImage, nullptr));
      const uint32_t state = request->converter->GetState();
      // The outcome stands in the state; arguments that do not fit leave it untouched and have a code of
      // their own.
      if (code == 0) code = state == QTDConverter::kSucceeded ? 0u : static_cast<uint32_t>(ZYN_ERR_FAILED);
      if (state > QTDConverter::kSucceeded) code = ZYN_ERR_FAILED;
      code = EndWalk(code);
    }
    lost = viewerLost;
  }
  lastError = code;
  request->code = code;
  request->state = Conversion::kDone;
  if (lost) CloseLost();  // the end of a host's stage may wait for the thread that converts
}

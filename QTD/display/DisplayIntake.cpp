// The road of one image: from the host's thread into the buffer, and from there through the chain to the
// viewer.
#include <algorithm>
#include <thread>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/display/LiveObjects.h"
#include "QTD/display/QTDDisplay.h"
#include "QTD/display/ScopedFlag.h"
#include "QTD/frame/ImagePayload.h"
#include "QTD/frame/Text.h"
#include "QTD/image/ImageRecord.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"

namespace {

// Bit of the image notification flags: send "notification.image" after each processed image.
constexpr uint32_t kNotifyProcessed = 1;

constexpr uint32_t kCodeMask = 0xFFFF;

}  // namespace

QTDDisplay::Prepared QTDDisplay::PreparedFormat() {
  std::lock_guard<std::mutex> guard(preparedLock);
  return prepared;
}

void QTDDisplay::SetPrepared(const Prepared& preparedFormat) {
  std::lock_guard<std::mutex> guard(preparedLock);
  prepared = preparedFormat;
}

// Any thread. The only copy of the pixels on the road is made here; afterwards the host may reuse its buffer.
// The result tells of this image's fit; a failure of its processing comes later, with "notification.image".
uint32_t QTDDisplay::DisplayVideo(const ZynImage* image) {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  if (!call) return Compose(ZYN_ERR_NOT_READY);
  if (!image) return TakeAway();

  const ZynImage record = *image;
  if (const uint32_t code = CheckImage(record, PreparedFormat())) return Fail(code);
  {
    std::lock_guard<std::recursive_mutex> guard(incoming.SwapLock());
    // The buffers may have been made anew, for another format, before the lock was had.
    const Prepared expected = PreparedFormat();
    if (const uint32_t code = CheckImage(record, expected)) return Fail(code);
    WriteFrame(record, expected);
    // Under the lock, so that no check comes between and drops the new frame for an earlier failure.
    lastError = 0;
  }

  inputRate.Tick(true);
  QueueCheck(&QTDDisplay::signalImageReceived);
  std::this_thread::yield();
  return Compose(lastError);
}

uint32_t QTDDisplay::CheckImage(const ZynImage& image, const Prepared& expected) const {
  const bool sameSize =
      image.width == expected.width && image.height == expected.height && image.width > 0 && image.height > 0;
  // An image of another size with more bytes than expected goes on, and is dropped at the buffer.
  if (expected.exists && !sameSize && expected.imageSize >= image.imageSize) return ZYN_ERR_NOT_READY;
  if (image.width == 0 || image.height == 0 || !image.imageData) return ZYN_ERR_BAD_ARGUMENT;
  return 0;
}

// Puts pixels and record into the back buffer, the record into its last bytes. An image that does not fit is
// dropped without a word, and what the buffer holds stays.
void QTDDisplay::WriteFrame(const ZynImage& image, const Prepared& expected) {
  const int32_t tail = incoming.Size() - static_cast<int32_t>(QTD::kRecordSize);
  if (!expected.exists || tail <= 0) return;

  ZynImage record = image;
  const bool samePicture = image.width == expected.width && image.height == expected.height &&
                           image.pixelType == expected.pixelType;
  const uint64_t lineBytes = QTD::LineBytes(image);
  if (samePicture && image.linePitch > expected.linePitch && lineBytes <= expected.linePitch &&
      QTD::LinesFit(image)) {
    // Lines that are merely padded wider lose their padding.
    incoming.WriteLines(image.imageData, static_cast<int32_t>(image.linePitch),
                        static_cast<int32_t>(lineBytes), static_cast<int32_t>(image.height),
                        static_cast<int32_t>(expected.linePitch));
    record.linePitch = expected.linePitch;
    record.imageSize = expected.imageSize;
  } else if (image.imageSize <= static_cast<uint32_t>(tail)) {
    incoming.Write(image.imageData, static_cast<int32_t>(image.imageSize), 0);
  } else if (samePicture) {
    // More bytes than this picture can have: the record alone goes on, and ends the image with 7.
    incoming.Write(image.imageData, 0, 0);
  } else {
    return;
  }
  incoming.Write(&record, static_cast<int32_t>(QTD::kRecordSize), tail);
}

uint32_t QTDDisplay::TakeAway() {
  std::lock_guard<std::recursive_mutex> guard(handlerLock);
  if (format && processor && Window() && lastError == 0) viewer->setImage(nullptr, false);
  lastError = 0;
  return 0;
}

// One queued check finds whatever has come in until it runs: a host that is faster than the GUI thread does
// not pile up events.
void QTDDisplay::QueueCheck(void (QTDDisplay::*checkSignal)()) {
  if (!checkQueued.exchange(true)) Q_EMIT(this->*checkSignal)();
}

void QTDDisplay::slotCheckIncomingBuffer() {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  if (!call) return;
  checkQueued = false;
  // A receiver of "notification.image" ran the event loop: the check that is under way looks again.
  if (checking) {
    checkAgain = true;
    return;
  }
  ZynImage* shown = nullptr;
  bool hasFrame = false;
  {
    QTD::ScopedFlag flag(checking);
    std::lock_guard<std::recursive_mutex> guard(handlerLock);
    const uint32_t code = ProcessFront(&hasFrame);
    hasFrame = hasFrame && code == 0;
    if (hasFrame) {
      // No stage leaves between the question for the picture and its way to the window.
      std::lock_guard<QTD::RMutex> chain(processor->ChainLock());
      shown = processor->Out();
      viewer->setImage(shown, true);
    }
  }
  const bool again = checkAgain;
  checkAgain = false;
  if (hasFrame) Q_EMIT signalImageProcessed(shown, false);
  if (again) QueueCheck(&QTDDisplay::signalCheckIncomingBuffer);
}

bool QTDDisplay::CanProcess() const {
  return format && processor && Window() && lastError == 0;
}

// Swaps the buffers and runs the newest frame, if there is one, through the chain. The swap lock is held
// throughout, so that the host waits for at most one processing.
uint32_t QTDDisplay::ProcessFront(bool* hasFrame) {
  std::lock_guard<std::recursive_mutex> swap(incoming.SwapLock());
  incoming.Swap();
  uint32_t code = 0;
  if (!CanProcess()) {
    // An earlier failure turns the waiting checks into 8, until the next image clears it.
    code = ZYN_ERR_NOT_READY;
    lastError = code;
  } else if (incoming.FrontCount() != 0 && incoming.Size() >= 1) {
    *hasFrame = true;
    const uint32_t build = builds;
    code = RunChain();
    lastError = code;
    NotifyImage(code);
    // A receiver may have initialised the display anew: then this frame is gone.
    if (build != builds) *hasFrame = false;
  }
  incoming.ClearFrontCount();
  return code;
}

uint32_t QTDDisplay::RunChain() {
  ZynImage record;
  const uint8_t* front = incoming.Front();
  const int32_t tail = incoming.Size() - static_cast<int32_t>(QTD::kRecordSize);
  std::copy_n(front + tail, QTD::kRecordSize, reinterpret_cast<uint8_t*>(&record));

  format->imageData = incoming.Front();
  format->imageSize = record.imageSize;
  format->linePitch = record.linePitch;
  format->imageID = record.imageID;
  // A size or pitch that cannot be true for the buffer ends the image here.
  if (format->imageSize > static_cast<uint32_t>(tail) || !QTD::LinesFit(*format)) return ZYN_ERR_BAD_ARGUMENT;
  return WalkChain();
}

// `handlerLock` is held, so that no other thread sees the count above 0.
uint32_t QTDDisplay::WalkChain() {
  ++walking;
  const uint32_t code = processor->ProcessImage(format, nullptr, nullptr) & kCodeMask;
  --walking;
  return code;
}

void QTDDisplay::NotifyImage(uint32_t code) {
  if (!(imageNotificationFlags & kNotifyProcessed)) return;
  QTD::ARGUMENTS& payload = QTD::ImageNotificationPayload();
  payload["code"] = "processed";
  payload["result"] = QTD::ToText(static_cast<int>(code));
  try {
    messenger.Send("notification.image", &payload);
  } catch (...) {
    // A host's receiver threw; the image itself is all right.
  }
}

void QTDDisplay::slotImageProcessed(ZynImage* image, bool rebuild) {
  (void)image;
  outputRate.Tick(true);
  outputRateHistory.Push(outputRate.Rate());
  // A further frame may have come in during the processing.
  if (!rebuild) QueueCheck(&QTDDisplay::signalCheckIncomingBuffer);
}

// Runs the last image through the chain again, after a change of parameters. The picture on the screen
// changes with the next redraw.
void QTDDisplay::slotRebuildImage() {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  if (!call) return;
  ZynImage* rebuilt = nullptr;
  bool done = false;
  {
    std::lock_guard<std::recursive_mutex> guard(handlerLock);
    // The last image may lie in the buffer that the host writes next.
    std::lock_guard<std::recursive_mutex> swap(incoming.SwapLock());
    inputRate.Tick(true);
    if (format && format->imageData && processor) {
      const uint32_t code = WalkChain();
      lastError = code;
      done = code == 0;
      rebuilt = processor->Out();
    }
  }
  if (done) Q_EMIT signalImageProcessed(rebuilt, true);
}

// The road of one image: from the host's thread into the buffer, and from there through the chain to the
// viewer. A frame ends before the window where
//   - `DisplayVideo` refuses it with a code,
//   - a newer one is written over it (`DoubleBuffer::Write`),
//   - a check finds the display not able to process: two swaps drop what has come in (`ProcessFront`),
//   - its numbers cannot be true for the buffer (`RunChain`),
//   - a stage of the chain fails.
#include <algorithm>
#include <chrono>
#include <limits>
#include <thread>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/display/LiveObjects.h"
#include "QTD/display/QTDDisplay.h"
#include "QTD/display/ScopedFlag.h"
#include "QTD/frame/HostCodeUnderLocks.h"
#include "QTD/frame/ImagePayload.h"
#include "QTD/frame/Text.h"
#include "QTD/image/ImageRecord.h"
#include "QTD/image/PixelFormats.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"

namespace {

// Bit of the image notification flags: send "notification.image" after each processed image.
constexpr uint32_t kNotifyProcessed = 1;

// A queued check that has not come by then counts as thrown away, as hosts can do with queued events.
constexpr int64_t kQueuedMilliseconds = 1000;

// How long a check waits for threads that want the processing lock.
constexpr std::chrono::milliseconds kLetInPatience{4};

int64_t Milliseconds() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

// Lines of packed formats follow each other without padding, whatever a record's pitch says: so cameras send
// them, and so they are unpacked. Only a pitch beyond the usual rounding means lines that are really padded,
// and only where each line begins with a byte of its own can they be moved together.
bool HasPaddedPackedLines(const ZynImage& image) {
  const uint32_t bits = QTD::BitsPerPixel(image.pixelType);
  const bool pairsOfBytes = (image.pixelType & 0xF000) == 0x1000;  // "Packed": a line takes whole bytes
  const bool wholeBytes = pairsOfBytes || uint64_t{bits} * image.width % 8 == 0;
  return wholeBytes && image.linePitch > QTD::LinePitch(image.width, bits) && QTD::LinesFit(image);
}

// Whether all pixels can lie in the bytes that the record claims. Packed bytes that are missing count as 0.
bool CanBeTrue(const ZynImage& image) {
  return QTD::IsPackedFormat(image.pixelType) || QTD::LinesFit(image);
}

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
  Queue(checkQueued, &QTDDisplay::signalImageReceived);
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
  const bool packed = QTD::IsPackedFormat(image.pixelType);
  const uint64_t lineBytes = QTD::LineBytes(image);
  // One line has no next one, however far off the record puts it.
  const uint64_t pitch = image.height == 1 ? lineBytes : image.linePitch;
  const bool reachable = pitch <= static_cast<uint64_t>(std::numeric_limits<int32_t>::max());
  const bool padded = packed ? HasPaddedPackedLines(image)
                             : image.linePitch > expected.linePitch && lineBytes <= expected.linePitch &&
                                   QTD::LinesFit(image);
  if (samePicture && padded && reachable) {
    // Lines that are merely padded wider lose their padding.
    const auto step = packed ? static_cast<uint32_t>(lineBytes) : expected.linePitch;
    incoming.WriteLines(image.imageData, static_cast<int32_t>(pitch), static_cast<int32_t>(lineBytes),
                        static_cast<int32_t>(image.height), static_cast<int32_t>(step));
    record.linePitch = step;
    record.imageSize = packed ? step * image.height : expected.imageSize;
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

// One queued check finds whatever has come in until it runs, and one rebuild whatever was set: a host that is
// faster than the GUI thread does not pile up events.
void QTDDisplay::Queue(std::atomic<int64_t>& queuedSince, void (QTDDisplay::*wanted)()) {
  const int64_t now = Milliseconds();
  int64_t since = queuedSince;
  if (since != 0 && now - since < kQueuedMilliseconds) return;
  // Of several threads that come here at once, one queues.
  if (queuedSince.compare_exchange_strong(since, now)) Q_EMIT(this->*wanted)();
}

// A thread that prepares a converter tries again and again to get the processing lock, and would hardly ever
// meet the short moments between two frames that come in a row: it is given one.
void QTDDisplay::LetConverterIn() {
  const auto end = std::chrono::steady_clock::now() + kLetInPatience;
  while (preparing > 0 && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
}

void QTDDisplay::slotCheckIncomingBuffer() {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  if (!call) return;
  checkQueued = 0;
  // A receiver of "notification.image" ran the event loop: the check that is under way looks again.
  if (checking) {
    checkAgain = true;
    return;
  }
  LetConverterIn();
  ZynImage* shown = nullptr;
  bool hasFrame = false, lost = false;
  {
    QTD::ScopedFlag flag(checking);
    const QTD::HostCodeLock guard(handlerLock);
    const uint32_t code = ProcessFront(&hasFrame);
    hasFrame = hasFrame && code == 0 && viewer && !viewerLost;  // a receiver may have closed the window
    if (hasFrame) {
      // No stage leaves between the question for the picture and its way to the window.
      std::lock_guard<QTD::RMutex> chain(processor->ChainLock());
      QTD::RecordHold hold;
      shown = processor->HeldOut(hold);
      if (shown) viewer->setImage(shown, true);
    }
    lost = viewerLost;
  }
  if (lost) CloseLost();
  const bool again = checkAgain;
  checkAgain = false;
  if (hasFrame) Q_EMIT signalImageProcessed(shown, false);
  if (again) Queue(checkQueued, &QTDDisplay::signalCheckIncomingBuffer);
}

bool QTDDisplay::CanProcess() const {
  return format && processor && Window() && lastError == 0;
}

// Runs the newest frame, if there is one, through the chain. The swap lock is held throughout, so that the
// host waits for at most one processing. The buffers are swapped for a new frame only: until then the frame
// that was shown last stays in front, where a rebuild finds it and no host writes.
uint32_t QTDDisplay::ProcessFront(bool* hasFrame) {
  std::lock_guard<std::recursive_mutex> swap(incoming.SwapLock());
  const bool arrived = incoming.BackCount() != 0;
  uint32_t code = 0;
  if (!CanProcess()) {
    // What has come in is dropped: two swaps clear both counts.
    incoming.Swap();
    incoming.Swap();
    // An earlier failure turns the waiting checks into 8, until the next image clears it.
    code = ZYN_ERR_NOT_READY;
    lastError = code;
  } else if (arrived && incoming.Size() >= 1) {
    incoming.Swap();
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

  ZynImage image = *format;
  image.imageData = incoming.Front();
  image.imageSize = record.imageSize;
  image.linePitch = record.linePitch;
  image.imageID = record.imageID;
  // A size or pitch that cannot be true for the buffer ends the image here. No rebuild may believe it, and
  // the image before it has left the front buffer.
  if (image.imageSize > static_cast<uint32_t>(tail) || !CanBeTrue(image)) {
    format->imageData = nullptr;
    return ZYN_ERR_BAD_ARGUMENT;
  }
  *format = image;
  lastImageID = image.imageID;
  return WalkChain();
}

// `handlerLock` is held, so that no other thread sees the count above 0.
uint32_t QTDDisplay::WalkChain() {
  ++walking;
  return EndWalk(QTD::BareCode(processor->ProcessImage(format, nullptr, nullptr)));
}

// A walk during which the viewer went has failed. `handlerLock` is held.
uint32_t QTDDisplay::EndWalk(uint32_t code) {
  --walking;
  return viewerLost ? uint32_t{ZYN_ERR_NOT_READY} : code;
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
  if (!rebuild) Queue(checkQueued, &QTDDisplay::signalCheckIncomingBuffer);
}

// Runs the last image through the chain again, after a change of parameters. The picture on the screen
// changes with the next redraw.
void QTDDisplay::slotRebuildImage() {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), Key());
  if (!call) return;
  rebuildQueued = 0;
  ZynImage* rebuilt = nullptr;
  bool done = false, lost = false;
  {
    const QTD::HostCodeLock guard(handlerLock);
    // As while a new frame is processed: hosts wait.
    std::lock_guard<std::recursive_mutex> swap(incoming.SwapLock());
    inputRate.Tick(true);
    if (format && format->imageData && processor && !viewerLost) {
      const uint32_t code = WalkChain();
      lastError = code;
      done = code == 0;
      if (done) {
        std::lock_guard<QTD::RMutex> chain(processor->ChainLock());
        QTD::RecordHold hold;
        rebuilt = processor->HeldOut(hold);
        // A stage that was prepared anew since has another record than the one that is shown. What was taken
        // off the screen stays off.
        const ZynImage* const picture = viewer ? viewer->Picture() : nullptr;
        if (rebuilt && picture && picture != rebuilt) viewer->setImage(rebuilt, false);
      }
    }
    lost = viewerLost;
  }
  if (lost) CloseLost();
  if (done) Q_EMIT signalImageProcessed(rebuilt, true);
}

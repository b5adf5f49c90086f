// A 12-megapixel BayerRG12p frame on its whole way into a window of 1000x750, against what a user would write
// with the image library and a pixmap, buffers kept. Both end with the frame painted.
#include <QApplication>
#include <QPainter>
#include <QPixmap>
#include <QWidget>
#include <atomic>
#include <chrono>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "QTD/display/QTDDisplay.h"
#include "QTD/frame/Text.h"
#include "ZynPixelFormat.h"
#include "bench/Ratio.h"

namespace {

constexpr uint32_t kWidth = 4096, kHeight = 3000;
constexpr int kWindowWidth = 1000, kWindowHeight = 750;

// Smooth light with some texture, as the cells of an RG sensor see it, in packed 12-bit samples.
std::vector<uint8_t> Frame() {
  std::vector<uint8_t> bytes;
  bytes.reserve(size_t{kWidth} * kHeight * 3 / 2);
  for (uint32_t y = 0; y < kHeight; ++y) {
    for (uint32_t x = 0; x < kWidth; x += 2) {
      const uint32_t light = (x + y) / 2 & 0xFFF, texture = (x * 37 ^ y * 91) & 0x7F;
      const uint32_t first = (light + texture) & 0xFFF, second = (light / 2 + texture) & 0xFFF;
      bytes.push_back(static_cast<uint8_t>(first));
      bytes.push_back(static_cast<uint8_t>(first >> 8 | (second & 0xF) << 4));
      bytes.push_back(static_cast<uint8_t>(second >> 4));
    }
  }
  return bytes;
}

// The user's way.
class PlainWindow : public QWidget {
 public:
  void Show(const std::vector<uint8_t>& packed) {
    words.create(kHeight, kWidth, CV_16UC1);
    const uint8_t* from = packed.data();
    uint16_t* to = words.ptr<uint16_t>();
    for (size_t pair = 0; pair < size_t{kWidth} * kHeight / 2; ++pair, from += 3, to += 2) {
      to[0] = static_cast<uint16_t>((from[1] & 0x0F) << 8 | from[0]);
      to[1] = static_cast<uint16_t>(from[2] << 4 | from[1] >> 4);
    }
    cv::cvtColor(words, colours, cv::COLOR_BayerRG2BGR);  // the library names the patterns by another corner
    colours.convertTo(bytes, CV_8UC3, 1 / 16.0);
    pixmap = QPixmap::fromImage(QImage(bytes.data, kWidth, kHeight, QImage::Format_RGB888));
    repaint();
  }

 protected:
  void paintEvent(QPaintEvent*) override { QPainter(this).drawPixmap(rect(), pixmap); }

 private:
  cv::Mat words, colours, bytes;
  QPixmap pixmap;
};

// Counts the frames that the display has finished.
class Receiver : public ZynDisplayCommand {
 public:
  uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) override {
    if (std::string(name) == "notification.image" && args) {
      if ((*args)["result"] != "0") failed = true;
      ++images;
    }
    return 0;
  }
  std::atomic<int> images{0};
  std::atomic<bool> failed{false};
};

// Sees when the display's window has been painted.
class PaintWatch : public QObject {
 public:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::UpdateRequest) ++paints;
    return false;
  }
  int paints = 0;
};

void WholeChain(benchmark::State& state) {
  cv::setNumThreads(2);
  const std::vector<uint8_t> packed = Frame();
  ZynImage record{};
  record.structSize = 96;
  record.pixelType = ZYN_PIXEL_BAYERRG12P;
  record.width = kWidth;
  record.height = kHeight;
  record.linePitch = kWidth * 3 / 2;
  record.imageSize = static_cast<uint32_t>(packed.size());
  record.imageData = const_cast<uint8_t*>(packed.data());

  QWidget parent;
  parent.resize(kWindowWidth, kWindowHeight);
  parent.show();
  QTDDisplay display(&parent, false);
  Receiver receiver;
  if (display.Initialize(&record) != 0) return state.SkipWithError("the display refuses the format");
  display.AddNotification(&receiver);
  display.SetParameterInt("image.notification.flags.set", 1);
  PlainWindow plain;
  plain.resize(kWindowWidth, kWindowHeight);
  plain.show();
  for (int i = 0; i < 20; ++i) QApplication::processEvents();

  PaintWatch watch;
  parent.installEventFilter(&watch);
  const auto ours = [&] {
    const int image = receiver.images + 1, paint = watch.paints + 1;
    display.DisplayVideo(&record);
    while (receiver.images < image || watch.paints < paint)
      QApplication::processEvents(QEventLoop::WaitForMoreEvents);
  };
  bench::Compare(state, 3, ours, [&] { plain.Show(packed); });
  if (receiver.failed) state.SkipWithError("an image failed");
}

BENCHMARK(WholeChain)->Name("Chain/BayerRG12p_to_window")->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

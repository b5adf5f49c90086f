// Whether the user is heard while a host floods the display: the longest gap between two events that the GUI
// thread handles, with 12-megapixel frames streaming and commands coming in as fast as a host can send them.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QWheelEvent>
#include <QWidget>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <string>
#include <thread>
#include <vector>

#include "QTD/display/QTDDisplay.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "ZynPixelFormat.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr uint32_t kWidth = 4096, kHeight = 3000;  // 12 megapixels
constexpr std::chrono::seconds kDuration{4};
constexpr std::chrono::milliseconds kUserPause{5};

double Milliseconds(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

// A notch of the wheel that knows when it was turned.
class Notch : public QWheelEvent {
 public:
  explicit Notch(bool in)
      : QWheelEvent(QPointF(50, 50), QPointF(50, 50), QPoint(), QPoint(0, in ? 120 : -120), Qt::NoButton,
                    Qt::NoModifier, Qt::NoScrollPhase, false) {}
  const Clock::time_point turned = Clock::now();
};

// Sees every event of the process before its receiver does.
class Watch : public QObject {
 public:
  bool eventFilter(QObject*, QEvent* event) override {
    const Clock::time_point now = Clock::now();
    if (last != Clock::time_point()) longest = std::max(longest, now - last);
    last = now;
    if (const auto* notch = dynamic_cast<Notch*>(event)) waits.push_back(now - notch->turned);
    return false;
  }
  Clock::duration longest{};
  std::vector<Clock::duration> waits;  // of the notches

 private:
  Clock::time_point last;
};

struct Command {
  const char* name;
  QTD::ARGUMENTS args;
};

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = {
      {"cmd.display.view.zoom.in", {}},
      {"cmd.display.view.fit", {{"mode", "1"}}},
      {"cmd.display.view.translate",
       {{"pos.x", "10"}, {"pos.y", "20"}, {"cs.src", "win"}, {"cs.dst", "img"}}},
      {"cmd.display.view.at", {{"pos.x", "0.4"}, {"pos.y", "0.6"}}},
      {"cmd.display.overlay.text.add",
       {{"objectID", "text"},
        {"text.text", "Frame"},
        {"text.pos.x", "900"},
        {"text.pos.y", "700"},
        {"cs", "img"}}},
      {"cmd.display.overlay.rect.add",
       {{"objectID", "rect"},
        {"rect.x", "900"},
        {"rect.y", "700"},
        {"rect.w", "300"},
        {"rect.h", "200"},
        {"cs", "img"}}},
      {"cmd.display.view.image", {}},
      {"cmd.parameter.get", {{"name", "display.view.scale"}}},
  };
  return commands;
}

void Responsiveness(benchmark::State& state, int commanders) {
  QWidget parent;
  parent.resize(1000, 750);
  parent.show();
  QTDDisplay display(&parent, false);
  std::vector<uint8_t> pixels(size_t{kWidth} * kHeight, 0x11);
  ZynImage record{};
  record.structSize = 96;
  record.pixelType = ZYN_PIXEL_MONO8;
  record.width = kWidth;
  record.height = kHeight;
  record.linePitch = kWidth;
  record.imageSize = static_cast<uint32_t>(pixels.size());
  record.imageData = pixels.data();
  display.Initialize(&record);
  for (int i = 0; i < 3; ++i) {
    display.DisplayVideo(&record);
    QApplication::processEvents();
  }
  QTDWindow* window = display.Viewer() ? display.Viewer()->Window() : nullptr;
  if (!window) return state.SkipWithError("no window");

  for (auto _ : state) {
    std::atomic<bool> stop{false};
    std::atomic<int64_t> commands{0}, frames{0};
    std::vector<std::thread> threads;
    threads.emplace_back([&] {
      for (; !stop; ++frames) display.DisplayVideo(&record);
    });
    for (int i = 0; i < commanders; ++i) {
      threads.emplace_back([&] {
        while (!stop) {
          for (const Command& command : Commands()) {
            QTD::ARGUMENTS args = command.args;
            display.RunCommand(command.name, &args);
            ++commands;
          }
        }
      });
    }
    threads.emplace_back([&] {
      for (bool in = true; !stop; in = !in) {
        QCoreApplication::postEvent(window, new Notch(in));
        std::this_thread::sleep_for(kUserPause);
      }
    });
    Watch watch;
    qApp->installEventFilter(&watch);
    const Clock::time_point begin = Clock::now();
    while (Clock::now() - begin < kDuration) QApplication::processEvents(QEventLoop::AllEvents, 1);
    const double seconds = Milliseconds(Clock::now() - begin) / 1e3;
    qApp->removeEventFilter(&watch);
    stop = true;
    for (std::thread& thread : threads) thread.join();
    QApplication::processEvents();

    std::sort(watch.waits.begin(), watch.waits.end());
    if (!watch.waits.empty()) {
      state.counters["wheel_median_ms"] = Milliseconds(watch.waits[watch.waits.size() / 2]);
      state.counters["wheel_longest_ms"] = Milliseconds(watch.waits.back());
    }
    state.counters["gap_ms"] = Milliseconds(watch.longest);
    state.counters["commands/s"] = static_cast<double>(commands) / seconds;
    state.counters["frames/s"] = static_cast<double>(frames) / seconds;
  }
}

BENCHMARK_CAPTURE(Responsiveness, frames_alone, 0)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Responsiveness, frames_and_one_host_thread, 1)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Responsiveness, frames_and_four_host_threads, 4)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace

// The viewer's window: the display, and a status line with the rates.
#pragma once

#include <QElapsedTimer>
#include <QMainWindow>
#include <atomic>
#include <cstdint>
#include <memory>

#include "ColorControls.h"
#include "Feed.h"
#include "Options.h"
#include "ZynDisplay.h"

class QLabel;
class QTimer;

namespace zynview {

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(const Options& programOptions);
  ~MainWindow() override;

  // Opens the source and starts the frames; `error` tells what is wrong.
  bool Start(std::unique_ptr<FrameSource> source, QString* error);
  // Writes the figures to standard output and the window's picture to the file asked for.
  bool Finish();

 protected:
  void closeEvent(QCloseEvent* event) override;
  // Keys reach the display's own window: they are seen on the way there.
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  // Hears of every image that the display has processed.
  class Receiver : public ZynDisplayCommand {
   public:
    uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) override;
    std::atomic<uint64_t> shown{0}, failed{0};
    std::atomic<int> lastResult{0};
  };

  // Answers whether it was one of the viewer's keys.
  bool HandleKey(int key, bool shift);
  void ShowColors(const QString& problem);
  void ShowRates();
  bool SavePicture();

  Options options;
  Receiver receiver;
  std::unique_ptr<ZynDisplayProcessor, void (*)(ZynDisplayProcessor*)> display;
  ColorControls colors;
  std::unique_ptr<Feed> feed;
  QLabel* sourceLabel;
  QLabel* colorLabel;
  QLabel* rateLabel;
  QTimer* timer;
  QElapsedTimer clock, interval;
  uint64_t lastDelivered = 0, lastShown = 0;
};

}  // namespace zynview

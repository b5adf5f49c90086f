// The viewer's window: the display, and a status bar with the rates and what is under the mouse.
#pragma once

#include <QElapsedTimer>
#include <QMainWindow>
#include <cstdint>
#include <memory>
#include <vector>

#include "Actions.h"
#include "ColorControls.h"
#include "Feed.h"
#include "FrameKeeper.h"
#include "Notifications.h"
#include "Options.h"
#include "Overlays.h"
#include "PixelReadout.h"
#include "ZynDisplay.h"

class QLabel;
class QMenu;
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
  void MakeStatusBar();
  void PassFocusOn();
  void StartView(const ZynImage& format, const QString& name);

  void Do(Action action);
  bool IsOnNow(Action action) const;
  void Tell(const QString& text);
  void TellProblem(const QString& problem);
  void OpenMenu();
  void AddEntries(QMenu& menu);
  void SaveSoon(Action action);
  void SaveNow(Action action);
  void ShowPixel();

  void ShowColors(const QString& problem);
  void ShowRates();
  bool SavePicture();

  Options options;
  Notifications notifications;
  FrameKeeper keeper;
  std::unique_ptr<ZynDisplayProcessor, void (*)(ZynDisplayProcessor*)> display;
  ColorControls colors;
  Overlays overlays;
  PixelReadout readout;
  std::unique_ptr<Feed> feed;
  QLabel* sourceLabel;
  QLabel* pixelLabel;
  QLabel* colorLabel;
  QLabel* rateLabel;
  QTimer* timer;
  QTimer* pixelTimer;
  QElapsedTimer clock, interval;
  uint64_t lastDelivered = 0, lastShown = 0;
  bool menuIsOpen = false;

  // What waits for a frame that is newer than this one.
  struct Save {
    Action action;
    uint64_t after;
  };
  std::vector<Save> saves;
};

}  // namespace zynview

// The viewer's window: the display, with menus and panels round it, and a status bar with the rates and what
// is under the mouse.
#pragma once

#include <QElapsedTimer>
#include <QMainWindow>
#include <cstdint>
#include <memory>
#include <vector>

#include "Options.h"
#include "ZynDisplay.h"
#include "sources/Background.h"
#include "sources/Feed.h"
#include "sources/FrameKeeper.h"
#include "view/Actions.h"
#include "view/ColorControls.h"
#include "view/Notifications.h"
#include "view/Overlays.h"
#include "view/PixelReadout.h"
#include "view/RateMeter.h"
#include "view/RegionMarker.h"
#include "view/Settings.h"

class QLabel;
class QMenu;
class QTimer;

namespace zynview {

class AnalysisDock;
class CameraDock;
class HelpWindow;
class Notice;

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  // The settings are read before, into the options as well.
  MainWindow(const Options& programOptions, Settings savedSettings);
  ~MainWindow() override;

  // Opens the source and shows its frames instead of those before; `error` tells what is wrong, and then all
  // stays as it was.
  bool Start(std::unique_ptr<FrameSource> source, QString* error);
  // Writes the figures to standard output and the window's picture to the file asked for.
  int Finish();

 protected:
  void closeEvent(QCloseEvent* event) override;
  // Keys reach the display's own window: they are seen on the way there.
  bool eventFilter(QObject* object, QEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void MakeStatusBar();
  void MakeDocks();
  void PlaceWindow();
  void PassFocusOn();
  bool AreKeysOurs(const QObject* object) const;
  bool IsPicture(const QObject* object) const;  // a window of the display's
  bool TakeKey(const QObject* object, const QKeyEvent& key);
  void SaveSettings();

  // Sources: opened in the background, shown when they are open.
  void OpenFiles(const QStringList& paths);
  void OpenCamera(const QString& id, uint32_t pixelType);  // 0: what the camera delivers by itself
  void OpenLater(const Options& wanted);
  void Opened(const Options& wanted, const std::shared_ptr<std::unique_ptr<FrameSource>>& source,
              const QString& problem);
  bool Show(std::unique_ptr<FrameSource> source, QString* error);
  bool Prepare(const ZynImage& format, const QString& name, QString* error);
  bool PrepareAgain(const ZynImage& format);
  void ShowSource(const ZynImage& format, const QString& name);
  void StartFeed();
  void ChangePixelFormat(const QString& name);
  void FormatChanged(const QString& before, const QString& problem);
  void TellLoss();

  // Menu bar and dialogs.
  void MakeMenuBar();
  void AddFileEntries(QMenu& menu);
  void AddOpenGLEntry(QMenu& menu);
  void FillRecent(QMenu& menu);
  QString LastOpened() const;
  void AskForFiles();
  void AskForFolder();
  void AskForSaveFolder();
  QString SaveFolder() const;

  void Do(Action action);
  void Switch(Action action, bool on);
  bool IsOnNow(Action action) const;
  void Tell(const QString& text);
  void Complain(const QString& problem);
  void TellProblem(const QString& problem);
  void OpenMenu();
  void AddEntries(QMenu& menu);
  void SaveSoon(Action action);
  void SaveNow(Action action);
  void ShowPixel();
  void ShowMarking(bool on);

  void ShowColors(const QString& problem);
  void ShowRates();
  QString PauseText() const;
  bool SavePicture();

  Options options;
  Settings settings;
  Notifications notifications;
  FrameKeeper keeper;
  std::unique_ptr<ZynDisplayProcessor, void (*)(ZynDisplayProcessor*)> display;
  ColorControls colors;
  Overlays overlays;
  PixelReadout readout;
  Errands errands;             // of the feeds
  std::unique_ptr<Feed> feed;  // null as long as there is no source
  CameraDock* cameraDock = nullptr;
  std::unique_ptr<AnalysisDock> analysisDock;
  std::unique_ptr<RegionMarker> marker;
  HelpWindow* help = nullptr;
  Notice* notice = nullptr;
  QLabel* sourceLabel;
  QLabel* pixelLabel;
  QLabel* colorLabel;
  QLabel* rateLabel;
  QTimer* timer;
  QTimer* pixelTimer;
  QElapsedTimer clock;
  RateMeter rates;
  uint64_t lastDelivered = 0;
  bool menuIsOpen = false;
  bool hasStarted = false;   // a source was shown
  bool isPreparing = false;  // the display is being initialised, and may run the event loop
  bool isChanging = false;   // the camera is asked for another pixel format, and the feed stands still
  bool isLost = false;       // told that the source has gone

  // What waits for a frame that is newer than this one.
  struct Save {
    Action action;
    uint64_t after;
  };
  std::vector<Save> saves;

  Background cameraTalk;  // may wait for a camera that has gone
  Background background;  // both go first
};

}  // namespace zynview

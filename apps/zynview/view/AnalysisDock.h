// The panel with histogram, line profile and statistics of the frames that come.
#pragma once

#include <QDockWidget>
#include <QRect>
#include <memory>

#include "analysis/AnalysisWorker.h"
#include "sources/FrameKeeper.h"

class QCheckBox;
class QLabel;
class QTimer;

namespace zynview {

class HistogramPlot;
class ProfilePlot;
class StatisticsTable;

// Up to ten times in a second, and only while it is seen; a frame that stands still is counted once. GUI
// thread.
class AnalysisDock : public QDockWidget {
 public:
  // The keeper is not owned.
  AnalysisDock(FrameKeeper* frameKeeper, QWidget* parent);
  ~AnalysisDock() override;

  void SetRegion(const QRect& region);  // empty: the whole picture
  // The line of the profile; while it is held it stays.
  void PointAt(int line);
  void SetHeld(bool on);
  bool IsHeld() const { return held; }

  const Analysis& Shown() const { return shown; }

 protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  void AskAgain();
  void Show(const Analysis& analysis);

  FrameKeeper* keeper;
  AnalysisRequest request;
  Analysis shown;
  bool held = false;
  bool changed = true;    // the request, since the last one
  uint64_t askedFor = 0;  // serial number of the frame
  QLabel* place;
  QCheckBox* logarithmic;
  HistogramPlot* histogram;
  ProfilePlot* profile;
  StatisticsTable* table;
  QTimer* timer;
  std::unique_ptr<AnalysisWorker> worker;
};

}  // namespace zynview

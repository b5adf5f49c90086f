#include "view/AnalysisDock.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>

#include "view/HistogramPlot.h"
#include "view/ProfilePlot.h"
#include "view/StatisticsTable.h"

namespace zynview {

namespace {

constexpr int kMilliseconds = 100;

QString PlaceText(const Analysis& analysis) {
  if (analysis.depth == 0) return QStringLiteral("the format is not known");
  const QRect& region = analysis.region;
  const QString size = QStringLiteral("%1 × %2").arg(region.width()).arg(region.height());
  if (analysis.isWhole) return QStringLiteral("Whole picture, %1").arg(size);
  return QStringLiteral("Region %1 at %2, %3").arg(size).arg(region.x()).arg(region.y());
}

}  // namespace

AnalysisDock::AnalysisDock(FrameKeeper* frameKeeper, QWidget* parent)
    : QDockWidget(QStringLiteral("Histogram and statistics"), parent),
      keeper(frameKeeper),
      place(new QLabel),
      logarithmic(new QCheckBox(QStringLiteral("Logarithmic"))),
      histogram(new HistogramPlot),
      profile(new ProfilePlot),
      table(new StatisticsTable),
      timer(new QTimer(this)) {
  setObjectName(QStringLiteral("analysis"));
  auto* content = new QWidget;
  auto* layout = new QVBoxLayout(content);
  auto* line = new QHBoxLayout;
  line->addWidget(place, 1);
  line->addWidget(logarithmic);
  layout->addLayout(line);
  layout->addWidget(histogram, 1);
  layout->addWidget(profile, 1);
  layout->addWidget(table);
  // A panel that is too high for the window does not make the window higher.
  auto* scroll = new QScrollArea;
  scroll->setWidget(content);
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  setWidget(scroll);
  // The keys stay the display's.
  for (QWidget* each : {static_cast<QWidget*>(logarithmic), static_cast<QWidget*>(scroll)})
    each->setFocusPolicy(Qt::NoFocus);
  logarithmic->setToolTip(QStringLiteral("Show rare values as well"));
  profile->setObjectName(QStringLiteral("profile"));
  profile->setToolTip(QStringLiteral("The line under the mouse; a click holds it, another one lets it go"));

  connect(logarithmic, &QCheckBox::toggled, this, [this](bool on) { histogram->SetLogarithmic(on); });
  profile->onClick = [this] { SetHeld(!held); };
  connect(timer, &QTimer::timeout, this, [this] { AskAgain(); });
  worker = std::make_unique<AnalysisWorker>(keeper, [this](const Analysis& analysis) { Show(analysis); });
}

AnalysisDock::~AnalysisDock() {
  worker.reset();
}

void AnalysisDock::SetRegion(const QRect& region) {
  changed = changed || region != request.region;
  request.region = region;
}

void AnalysisDock::PointAt(int line) {
  if (held) return;
  changed = changed || line != request.line;
  request.line = line;
}

void AnalysisDock::SetHeld(bool on) {
  held = on;
  profile->SetHeld(on);
}

void AnalysisDock::showEvent(QShowEvent* event) {
  QDockWidget::showEvent(event);
  timer->start(kMilliseconds);
  AskAgain();
}

void AnalysisDock::hideEvent(QHideEvent* event) {
  QDockWidget::hideEvent(event);
  timer->stop();
}

void AnalysisDock::AskAgain() {
  keeper->Want();
  const uint64_t serial = keeper->Serial();
  if (worker->IsBusy() || serial == 0 || (serial == askedFor && !changed)) return;
  askedFor = serial;
  changed = false;
  worker->Ask(request);
}

void AnalysisDock::Show(const Analysis& analysis) {
  shown = analysis;
  place->setText(PlaceText(shown));
  histogram->Show(shown.histogram);
  profile->Show(shown.profile);
  table->Show(shown);
}

}  // namespace zynview

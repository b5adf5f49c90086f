// The scroll bars, which belong to the viewer: any thread may ask for them, only the GUI thread touches them.
#include <QMetaObject>
#include <QScrollBar>
#include <QSignalBlocker>
#include <algorithm>

#include "QTD/platform/GuiThread.h"
#include "QTD/window/QTDWindow.h"

void QTDWindow::scrollTo(int x, int y) {
  std::lock_guard<std::recursive_mutex> input(inputLock);
  if (!horzBar || !vertBar || !screen) return;
  int mask = 0;
  if (x >= 0) mask |= kHorizontal;
  if (y >= 0) mask |= kVertical;
  if (onGuiThread()) {
    const QSignalBlocker quietHorz(horzBar);
    const QSignalBlocker quietVert(vertBar);
    if (x >= 0) horzBar->setValue(x);
    if (y >= 0) vertBar->setValue(y);
  }
  screen->setScrollPos(x, y);
  syncScrollBars(mask);
  update();
}

void QTDWindow::syncScrollBars(int which) {
  if (!onGuiThread()) {
    // One waiting call sets all bars that were asked for until it runs.
    if (queuedBars.fetch_or(which) == 0) {
      QTD::platform::QueueOnGuiThread([self = QPointer<QTDWindow>(this)] {
        if (self) self->syncScrollBars(self->queuedBars.exchange(0));
      });
    }
    return;
  }
  if (!screen) return;
  const QTD::PairI position = screen->ScrollPos();
  const QTD::PairI range = screen->ScrollRange();
  const QTD::PairI page = screen->scrollPage();
  if (which & kHorizontal) syncBar(horzBar, position.first, range.first, page.first);
  if (which & kVertical) syncBar(vertBar, position.second, range.second, page.second);
}

bool QTDWindow::usesBar(int range) {
  return range >= 1 && hasImage();
}

// The bar's own signals are for the user's movements: they are blocked while it is set from here.
void QTDWindow::syncBar(QScrollBar* bar, int position, int range, int page) {
  if (!bar) return;
  const bool used = usesBar(range);
  {
    const QSignalBlocker quiet(bar);
    if (used) {
      bar->setPageStep(page);
      bar->setMinimum(0);
      bar->setMaximum(range);
      bar->setValue(std::clamp(position, 0, range));
    } else {
      bar->setMaximum(0);
    }
  }
  bar->update();
  const bool disabled = bar->testAttribute(Qt::WA_ForceDisabled);
  if (disabled == used) enableBarsSoon();
}

// Event filters of the host hear of it when a bar is enabled or disabled, and may close or delete the window:
// so that is left to the event loop, where none of the window's operations is under way.
void QTDWindow::enableBarsSoon() {
  if (enablingBars) return;
  enablingBars = true;
  QTD::platform::QueueOnGuiThread([self = QPointer<QTDWindow>(this)] {
    if (self) self->enableBars();
  });
}

void QTDWindow::enableBars() {
  enablingBars = false;
  if (!screen) return;
  const QPointer<QTDWindow> self(this);  // may go, or be shut, in a filter of the first bar
  if (horzBar) horzBar->setEnabled(usesBar(screen->ScrollRange().first));
  if (self && screen && vertBar) vertBar->setEnabled(usesBar(screen->ScrollRange().second));
}

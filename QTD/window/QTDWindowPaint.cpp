// Painting: every picture appears here and nowhere else, inside the window's own `event`.
#include <QAccessible>
#include <QExposeEvent>
#include <QFocusEvent>
#include <QResizeEvent>
#include <chrono>
#include <exception>

#include "QTD/frame/Logging.h"
#include "QTD/window/QTDWindow.h"

namespace {

long long Timestamp() {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// One pass of painting; what was begun is ended, whatever happens in between.
class PaintPass {
 public:
  PaintPass(QTDScreen& target, QTD::PROPERTIES& properties) : screen(target), list(properties) {
    screen.begin(&list);  // what fails is told by what is drawn
  }
  ~PaintPass() {
    try {
      screen.end(&list, true);
    } catch (...) {  // an attribute that cannot be read
    }
  }
  PaintPass(const PaintPass&) = delete;
  PaintPass& operator=(const PaintPass&) = delete;

 private:
  QTDScreen& screen;
  QTD::PROPERTIES& list;
};

}  // namespace

void QTDWindow::update() {
  ZYN_TRACE(log, "QTDWindow::update(): post UpdateRequest, sys timestamp %lld ns, image id %llu", Timestamp(),
            static_cast<unsigned long long>(imageID));
  QTD::UpdateEvent::Post(this, posted);
}

// No exception may travel on into Qt. A handler may have deleted this window: nothing of it is touched
// afterwards.
bool QTDWindow::event(QEvent* event) {
  try {
    if (QTD::UpdateEvent::Take(event, posted)) {
      ZYN_TRACE(log, "QTDWindow::event(): UpdateRequest event, sys timestamp %lld ns, image id %llu",
                Timestamp(), static_cast<unsigned long long>(imageID));
      render();
      return true;
    }
    if (event->type() != QEvent::FocusOut) return QWindow::event(event);
    // Qt's own handling tells assistive programs about the window after the handlers, when it may be gone.
    QAccessible::State changed;
    changed.active = true;
    QAccessibleStateChangeEvent told(this, changed);
    QAccessible::updateAccessibility(&told);
    focusOutEvent(static_cast<QFocusEvent*>(event));
  } catch (...) {
    // A handler or receiver of the host threw.
  }
  return true;
}

void QTDWindow::render() {
  if (!onGuiThread()) {
    update();
    return;
  }
  try {
    followView();
  } catch (const std::exception&) {
    // An attribute of the screen that cannot be read: overlays stay where they are.
  }
  std::lock_guard<std::recursive_mutex> painting(renderLock);
  if (!isOpen() || !isExposed()) return;

  QTD::PROPERTIES list;
  const PaintPass pass(*screen, list);
  screen->clear(false);
  if (!hasImage()) return;

  const auto id = static_cast<unsigned long long>(imageID);
  ZYN_TRACE(log, "QTDWindow::render(): draw image, sys timestamp %lld ns, id %llu", Timestamp(), id);
  screen->draw(image, &list);
  ZYN_TRACE(log, "QTDWindow::render(): image is drawn, sys timestamp %lld ns, id %llu", Timestamp(), id);
  screen->prepare(&list);
  drawObjects.setImage(image);
  drawObjects.draw(surface.get(), &list);
}

void QTDWindow::exposeEvent(QExposeEvent*) {
  noteGeometry();
  if (isExposed()) render();
}

void QTDWindow::resizeEvent(QResizeEvent* event) {
  noteGeometry();
  shownSize = event->size();
  if (isOpen()) resize(shownSize.width(), shownSize.height());
  render();
}

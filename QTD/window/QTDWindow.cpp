#include "QTD/window/QTDWindow.h"

#include <QCursor>
#include <QScreen>
#include <QScrollBar>
#include <QSurfaceFormat>
#include <QThread>
#include <QWidget>
#include <algorithm>
#include <limits>

#include "QTD/frame/Logging.h"
#include "QTD/frame/Text.h"
#include "QTD/window/QTDZoom.h"
#include "cpu/screen/CPUScreen.h"
#include "cpu/screen/CPUSurface.h"
#include "gl/screen/QGLScreen.h"
#include "gl/surface/QGLSurface.h"

using QTD::ToText;

namespace {

// Keys typed one after the other, and the command that they stand for.
struct KeySequence {
  const char* typed;
  const char* command;
};

constexpr KeySequence kKeySequences[] = {
    {"sd", "cmd.display.view.status"},
    {"si", "cmd.display.view.info"},
};
constexpr int kLongestSequence = 2;

int HeldSize(uint32_t pixels) {
  return static_cast<int>(std::min<uint32_t>(pixels, std::numeric_limits<int>::max()));
}

}  // namespace

QTDWindow::QTDWindow(QWidget* parentWidget, bool opengl) : parent(parentWidget) {
  setSurfaceType(opengl ? QSurface::OpenGLSurface : QSurface::RasterSurface);
  // That of the surface's context: with another one, such as a host's default format, no driver draws.
  if (opengl) setFormat(QSurfaceFormat());
  parameters.Set("class", "QTDWindow");
  parameters.Set("parent", ToText(static_cast<const void*>(parentWidget)));
  parameters.Set("opengl", ToText(opengl));
  connect(this, &QWindow::screenChanged, this, &QTDWindow::followScreen);
}

QTDWindow::~QTDWindow() {
  EndParameterCalls();
  // A window on its way out tells the host nothing: what the host then deleted might be on its way out, too.
  messenger = nullptr;
  Q_EMIT signalClosing();
  try {
    QTDWindow::focusLost();
    QTDWindow::close();
  } catch (...) {
    // A lock that fails; nothing leaves a destructor.
  }
  Q_EMIT signalClosed();
}

bool QTDWindow::open() {
  const bool opengl = parameters.GetInt("opengl") == 1;
  close();
  failed = false;
  {
    std::lock_guard<std::recursive_mutex> input(inputLock);
    QWindow::create();
    failed = !makeSurface(opengl);
    zoom = std::make_unique<QTDZoom>(this);
    if (!failed) failed = !makeScreen(opengl);
    if (!failed) {
      screen->setPixelRatio(devicePixelRatio());
      drawObjects.setSurface(surface.get());
      drawObjects.setViewport(0, 0, surface->size.width, surface->size.height);
      std::lock_guard<std::recursive_mutex> hold(handlersLock);
      // Each in front of those before, so that the rubber band is asked first.
      handlers.insert(handlers.begin(), static_cast<QTDInput*>(this));
      handlers.insert(handlers.begin(), zoom.get());
    }
    for (const KeySequence& sequence : kKeySequences)
      keyboard.sequences.Set(sequence.typed, sequence.command);
    keyboard.maxLength = std::max(keyboard.maxLength, kLongestSequence);
  }
  if (failed) {
    close();
    return false;
  }
  // A window that was closed and opened again while it is shown gets no further resize event.
  if (shownSize.isValid()) resize(shownSize.width(), shownSize.height());
  // The picture stays over a closing; its new screen does not know of it yet.
  QSize pictureSize;
  {
    std::lock_guard<std::mutex> hold(imageLock);
    if (image) pictureSize = QSize(HeldSize(image->width), HeldSize(image->height));
  }
  if (pictureSize.isValid()) screen->setImageSize(pictureSize.width(), pictureSize.height());
  Execute("view.changed", nullptr);
  Q_EMIT signalSurfaceChanged();
  return true;
}

bool QTDWindow::makeSurface(bool opengl) {
  std::unique_ptr<QTDSurface> made;
  if (opengl) {
    made = std::make_unique<QGLSurface>();
  } else {
    made = std::make_unique<CPUSurface>();
  }
  parameters.Set("surface", ToText(static_cast<const void*>(made.get())));
  QTD::PROPERTIES list;
  list.Set("window", ToText(static_cast<const void*>(static_cast<QWindow*>(this))));
  const bool ready = made->init(&list);
  std::lock_guard<std::recursive_mutex> painting(renderLock);
  surface = std::move(made);
  openSurface = surface.get();
  return ready;
}

bool QTDWindow::makeScreen(bool opengl) {
  std::unique_ptr<QTDScreen> made;
  if (opengl) {
    made = std::make_unique<QGLScreen>(surface.get());
  } else {
    made = std::make_unique<CPUScreen>(surface.get());
  }
  QTDScreen* created = made.get();
  {
    std::lock_guard<std::recursive_mutex> painting(renderLock);
    screen = std::move(made);
  }
  const bool ready = created->init(this, 0, 0, QTD::kFitOneToOne);
  openScreen = created;
  return ready;
}

bool QTDWindow::close() {
  if (surface || screen) Q_EMIT signalSurfaceClosing();
  DropSurface();
  Q_EMIT signalSurfaceChanged();
  return true;
}

void QTDWindow::DropSurface() {
  std::lock_guard<std::recursive_mutex> input(inputLock);
  std::lock_guard<std::recursive_mutex> painting(renderLock);
  {
    std::lock_guard<std::recursive_mutex> hold(handlersLock);
    handlers.clear();
  }
  zoom.reset();  // takes a band that is shown off the overlays
  releaseMouse();
  mouseMode = kIdle;
  rightPressed = false;
  drawObjects.setSurface(nullptr);
  openScreen = nullptr;
  openSurface = nullptr;
  // The screen paints on the surface, so it goes first.
  screen.reset();
  surface.reset();
  parameters.Set("surface", ToText(nullptr));
}

bool QTDWindow::isOpen() {
  return surface && screen;
}

bool QTDWindow::hasImage() {
  std::lock_guard<std::mutex> hold(imageLock);
  return image && image->width > 0 && image->height > 0 && image->imageData;
}

void QTDWindow::setImage(const ZynImage* picture, bool refresh) {
  std::lock_guard<std::recursive_mutex> input(inputLock);
  replaceImage(picture);
  if (!picture) return;
  ZYN_TRACE(log, "QTDWindow::setImage(): id = %llu", static_cast<unsigned long long>(imageID));
  if (screen) screen->setImageSize(HeldSize(picture->width), HeldSize(picture->height));
  followView();
  syncScrollBars(kBothBars);
  if (refresh) update();
}

void QTDWindow::replaceImage(const ZynImage* picture) {
  QTD::RecordHold hold(picture);  // in the end, with no lock held, the former one's
  std::lock_guard<std::recursive_mutex> painting(renderLock);
  // At once, since texts may be laid out before the next painting.
  const bool shows = picture && picture->width > 0 && picture->height > 0 && picture->imageData;
  drawObjects.setImage(shows ? picture : nullptr);
  std::lock_guard<std::mutex> guard(imageLock);
  image = picture;
  imageHold.Swap(hold);
  imageID = picture ? picture->imageID : 0;
}

void QTDWindow::resize(int width, int height) {
  std::lock_guard<std::recursive_mutex> input(inputLock);
  if (!isOpen()) return;
  if (onGuiThread()) screen->setPixelRatio(devicePixelRatio());
  screen->setWindowSize(width, height);
  drawObjects.setSurface(surface.get());
  drawObjects.setViewport(0, 0, width, height);
  followView();
}

// On a screen of another density the same size is another number of device pixels, and no resize event tells
// of it.
void QTDWindow::followScreen() {
  try {
    resize(width(), height());
    update();
  } catch (...) {
    // An attribute of the screen that cannot be read; nothing may leave a handler.
  }
}

bool QTDWindow::onGuiThread() const {
  return QThread::currentThread() == thread();
}

QPoint QTDWindow::cursorPos(bool global) {
  QPoint position = QCursor::pos();
  if (!global) mapFromGlobal(position);
  return position;
}

QRect QTDWindow::geometry(bool frame) {
  if (onGuiThread()) noteGeometry();
  std::lock_guard<std::mutex> hold(geometryLock);
  return frame ? seenFrame : seenInner;
}

void QTDWindow::noteGeometry() {
  QRect frame;
  QRect inner;
  if (parent) {
    const QWidget* child = parent->childAt(parent->rect().center());
    if (!child) child = parent;
    frame = parent->frameGeometry();
    inner = QRect(0, 0, child->width() - child->x(), child->height() - child->y());
  }
  std::lock_guard<std::mutex> hold(geometryLock);
  seenFrame = frame;
  seenInner = inner;
}

void QTDWindow::mapToGlobal(QPoint& point) {
  if (parent) point = parent->mapToGlobal(point);
}

void QTDWindow::mapFromGlobal(QPoint& point) {
  if (parent) point = parent->mapFromGlobal(point);
}

QWidget* QTDWindow::ParentWidget() const {
  return parent;
}

void QTDWindow::setScrollBars(QScrollBar* horizontal, QScrollBar* vertical) {
  horzBar = horizontal;
  vertBar = vertical;
}

void QTDWindow::setMessenger(QTD::Messenger* receiver) {
  messenger = receiver;
}

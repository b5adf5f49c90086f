#include "cpu/screen/CPUSurface.h"

#include <QBackingStore>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QPainter>
#include <QRegion>
#include <QThread>

#include "QTD/frame/Text.h"
#include "cpu/screen/CPUSurfaceText.h"

using QTD::ToText;

namespace {

// No window is larger than this, and no store of that many bytes is asked for: Qt and the window system would
// not survive the numbers that a careless caller may give.
constexpr int kLongestSide = 32767;
constexpr double kMostPixels = 1 << 28;

bool OnGuiThread() {
  const QCoreApplication* application = QCoreApplication::instance();
  return application && QThread::currentThread() == application->thread();
}

// The window behind a pointer that came as text, if it is a living one.
QWindow* LivingWindow(void* pointer) {
  QWindow* window = static_cast<QWindow*>(pointer);
  return window && QGuiApplication::allWindows().contains(window) ? window : nullptr;
}

}  // namespace

CPUSurface::CPUSurface() = default;

CPUSurface::~CPUSurface() {
  CPUSurface::done();
}

bool CPUSurface::init(QTD::PROPERTIES* list) {
  done();
  if (!list) return false;
  QWindow* found = LivingWindow(list->GetPointer("window"));
  if (!found) return false;

  const int width = found->width();
  const int height = found->height();
  const QTD::SizeI newSize{list->GetInt("size.x", ToText(width)), list->GetInt("size.y", ToText(height))};
  const QTD::RectD newArea{list->GetDouble("area.pos.x", "0"), list->GetDouble("area.pos.y", "0"),
                           list->GetDouble("area.dim.w", ToText(width)),
                           list->GetDouble("area.dim.h", ToText(height))};

  window = found;
  if (!window->handle()) window->create();  // a backing store works on a native window
  surfaceText = std::make_unique<CPUSurfaceText>();
  backingStore = std::make_unique<QBackingStore>(found);
  resizeBackingStore(width, height);

  const QTD::RMutexLock guard(lock);
  size = newSize;
  area = newArea;
  resized = false;
  properties.Set("window", ToText(static_cast<const void*>(found)));
  properties.Set("area", areaText());
  properties.Set("size", sizeText());
  return true;
}

bool CPUSurface::done() {
  end(nullptr, false);
  surfaceText.reset();
  backingStore.reset();
  window.clear();
  return true;
}

void CPUSurface::resize(int width, int height) {
  {
    const QTD::RMutexLock guard(lock);
    QTDSurface::resize(width, height);
    resized = true;
  }
  if (OnGuiThread() && !painter) followResize();
}

bool CPUSurface::isValid() {
  const QTD::SizeI now = currentSize();
  return backingStore && window && now.width != 0 && now.height != 0;
}

bool CPUSurface::begin(QTD::PROPERTIES*) {
  end(nullptr, false);  // a pass that was never ended
  if (!isValid()) return false;
  followResize();
  const QRect painted = paintArea();
  if (painted.isEmpty()) return false;

  backingStore->beginPaint(painted);
  QPaintDevice* device = backingStore->paintDevice();
  auto started = std::make_unique<QPainter>();
  if (!device || device->width() < 1 || !started->begin(device)) {
    backingStore->endPaint();
    return false;
  }
  painter = std::move(started);
  properties.Set("painter", ToText(static_cast<const void*>(painter.get())));
  painterText()->setTarget(painter.get());
  return true;
}

void CPUSurface::end(QTD::PROPERTIES*, bool) {
  if (!painter) return;
  painterText()->setTarget(nullptr);
  painter.reset();
  properties.Set("painter", "0");
  if (!window) {  // deleted within the pass: its store reaches for it in all that is left to do
    backingStore.reset();
    return;
  }
  backingStore->endPaint();
  followResize();
}

void CPUSurface::flush(QTD::PROPERTIES*) {
  if (!isValid()) return;
  const QRect painted = paintArea();
  if (!painted.isEmpty()) backingStore->flush(painted);
}

std::string CPUSurface::describe(const char* prefix) {
  const QTD::RMutexLock guard(lock);
  return QTDSurface::describe(prefix) + " [" + ToText(static_cast<const void*>(backingStore.get())) + "/" +
         ToText(static_cast<const void*>(painter.get())) + "]";
}

QTD::SizeI CPUSurface::currentSize() {
  const QTD::RMutexLock guard(lock);
  return size;
}

QRect CPUSurface::paintArea() {
  const QTD::SizeI now = currentSize();
  if (now.width < 1 || now.height < 1) return QRect();  // Qt would read a negative rectangle backwards
  return QRect(0, 0, now.width, now.height) & QRect(QPoint(0, 0), backingStore->size());
}

void CPUSurface::resizeBackingStore(int width, int height) {
  const double ratio = window->devicePixelRatio();
  if (width < 1 || height < 1 || width * ratio > kLongestSide || height * ratio > kLongestSide ||
      width * ratio * height * ratio > kMostPixels) {
    return;  // the store keeps its size
  }
  const QSize wanted(width, height);
  if (backingStore->size() != wanted) backingStore->resize(wanted);
}

// Not while a painter works on the store's pixels; `end` makes up for it.
void CPUSurface::followResize() {
  if (!backingStore || !window || painter) return;
  QTD::SizeI wanted;
  {
    const QTD::RMutexLock guard(lock);
    if (!resized) return;
    resized = false;
    wanted = size;
  }
  resizeBackingStore(wanted.width, wanted.height);
}

CPUSurfaceText* CPUSurface::painterText() const {
  return static_cast<CPUSurfaceText*>(surfaceText.get());
}

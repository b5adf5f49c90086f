#include "QTD/screen/QTDSurface.h"

#include <algorithm>
#include <atomic>
#include <limits>

#include "QTD/frame/LivePointers.h"
#include "QTD/frame/Text.h"
#include "QTD/screen/Numbers.h"
#include "QTD/screen/SurfaceText.h"

namespace {

// The sum, held in the range of int.
int Plus(int a, int b) {
  const int64_t sum = static_cast<int64_t>(a) + b;
  return static_cast<int>(
      std::clamp<int64_t>(sum, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

uint64_t NextSerial() {
  static std::atomic<uint64_t> last{0};
  return ++last;
}

}  // namespace

QTDSurface::QTDSurface() : serial(NextSerial()) {
  defaults["line"] = ColorValue();
  defaults["fill"] = ColorValue();
  QTD::LivePointers<QTDSurface>::Instance().Add(this);
}

QTDSurface::~QTDSurface() {
  QTD::LivePointers<QTDSurface>::Instance().Remove(this);
}

bool QTDSurface::init(QTD::PROPERTIES*) {
  return false;
}

bool QTDSurface::done() {
  return false;
}

void QTDSurface::resize(int width, int height) {
  size = {width, height};
}

void QTDSurface::text(const char* string, int x, int y, const char* font, const ColorValue* color) {
  drawn = true;
  if (!surfaceText) return;
  surfaceText->draw(string, x, y, font, color);
  if (surfaceText->getStatus() == 0) drawn = false;
}

bool QTDSurface::begin(QTD::PROPERTIES*) {
  return false;
}

void QTDSurface::end(QTD::PROPERTIES*, bool) {}

void QTDSurface::flush(QTD::PROPERTIES*) {}

bool QTDSurface::isValid() {
  return false;
}

std::string QTDSurface::describe(const char* prefix) {
  const std::string sizes = "(size=" + sizeText() + "; area=" + areaText() + ")";
  return prefix && *prefix ? std::string(prefix) + " " + sizes : sizes;
}

void QTDSurface::polyline(const Points&, const ColorValue*, int, int) {}

void QTDSurface::line(int x1, int y1, int x2, int y2, const ColorValue* color, int width, int style) {
  drawn = false;
  polyline({{x1, y1}, {x2, y2}}, color, width, style);
}

void QTDSurface::rect(int x, int y, int w, int h, const ColorValue* color, int width, int style) {
  drawn = false;
  const int half = width < 2 ? 0 : width / 2;
  const int right = Plus(x, w);
  const int bottom = Plus(y, h);
  line(x, y, right, y, color, width, style);
  line(Plus(x, half), Plus(y, -half), Plus(x, half), bottom, color, width, style);
  line(x, bottom, right, bottom, color, width, style);
  line(right, bottom, right, Plus(y, -1), color, width, style);
}

void QTDSurface::fill(int, int, int, int, const ColorValue*) {}

void QTDSurface::image(const ZynImage*, const QTD::RectD*, const QTD::RectD*) {}

double QTDSurface::toAreaX(int x) {
  return static_cast<double>(x) - Area().x;
}

double QTDSurface::toAreaY(int y) {
  return static_cast<double>(y) - Area().y;
}

int QTDSurface::fromAreaX(double x) {
  return QTD::Round(x + Area().x);
}

int QTDSurface::fromAreaY(double y) {
  return QTD::Round(y + Area().y);
}

int QTDSurface::checkError(const char*, ...) {
  return 0;
}

QTD::RectD QTDSurface::Area() const {
  std::lock_guard<std::mutex> guard(areaLock);
  return area;
}

void QTDSurface::setArea(const QTD::RectD& rectangle) {
  std::lock_guard<std::mutex> guard(areaLock);
  area = rectangle;
}

std::string QTDSurface::sizeText() const {
  return QTD::ToText(size.width) + ";" + QTD::ToText(size.height);
}

std::string QTDSurface::areaText() const {
  const QTD::RectD now = Area();
  return QTD::ToText(now.x) + ";" + QTD::ToText(now.y) + "-" + QTD::ToText(now.width) + ";" +
         QTD::ToText(now.height);
}

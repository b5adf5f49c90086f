// The drawing operations of CPUSurface, between `begin` and `end`.
#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPen>
#include <QRect>
#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "QTD/screen/Numbers.h"
#include "ZynPixelFormat.h"
#include "cpu/screen/CPUSurface.h"

namespace {

// Read in two ways: `polyline` takes the position of the style in it as the pen style, `rect` the entry at
// the style.
constexpr int kPenStyles[] = {1, 2, 3, 4, 5, 6, 6};

// Far outside any window, with room for the widest pen. The edges of rectangles are held here, so that their
// lengths stay in the range of int.
constexpr int kFarAway = 1 << 20;
constexpr int kWidestPen = 1 << 12;

int Held(int64_t edge) {
  return static_cast<int>(std::clamp<int64_t>(edge, -kFarAway, kFarAway));
}

// The edges are held, not the lengths: an edge in the window stays where it is.
QRect HeldRect(int x, int y, int w, int h) {
  const int left = Held(x), top = Held(y);
  return QRect(left, top, Held(int64_t{x} + w) - left, Held(int64_t{y} + h) - top);
}

int PenWidth(int width) {
  return std::clamp(width, 0, kWidestPen);
}

int ColorByte(double part) {
  return std::clamp(QTD::Round(part * 255), 0, 255);
}

QColor ColorOf(const ColorValue& color) {
  return QColor(ColorByte(color.redPart), ColorByte(color.greenPart), ColorByte(color.bluePart));
}

// Style 2 is solid and 1 no pen at all here: the position in the table, where `rect` takes the entry.
Qt::PenStyle PolylineStyle(int style) {
  const auto found = std::find(std::begin(kPenStyles), std::end(kPenStyles), style);
  return static_cast<Qt::PenStyle>(found == std::end(kPenStyles) ? 0 : found - std::begin(kPenStyles));
}

Qt::PenStyle RectStyle(int style) {
  return static_cast<Qt::PenStyle>(kPenStyles[std::clamp(style, 0, 6)]);
}

// The rectangle `ratio` times as large, in whole pixels.
QRectF Rounded(const QTD::RectD& rect, double ratio) {
  return QRectF(QTD::Round(rect.x * ratio), QTD::Round(rect.y * ratio),
                QTD::Round(std::fabs(rect.width) * ratio), QTD::Round(std::fabs(rect.height) * ratio));
}

// The picture in the record, its lines aligned to 32 bits. False unless it is one and lies in `imageSize`
// bytes.
bool ViewOf(const ZynImage& picture, RgbView* view) {
  if (picture.width == 0 || picture.height == 0 || !picture.imageData) return false;
  if (picture.pixelType != ZYN_PIXEL_RGB8) return false;
  const uint64_t stride = (uint64_t{picture.width} * 3 + 3) & ~uint64_t{3};
  constexpr uint64_t most = std::numeric_limits<int>::max();
  if (stride > most || picture.height > most || stride * picture.height > picture.imageSize) return false;
  *view = {picture.imageData, static_cast<int>(picture.width), static_cast<int>(picture.height),
           static_cast<ptrdiff_t>(stride)};
  return true;
}

// One axis of what a painter does with a source that reaches past the picture: the part outside is taken off,
// and off the target in proportion. A source without length runs to the picture's end. False when nothing is
// left.
bool CutSource(int limit, double* target, double* targetLength, double* source, double* sourceLength) {
  if (*sourceLength <= 0) *sourceLength = limit - *source;
  if (*source < 0) {
    const double cut = *source * *targetLength / *sourceLength;
    *target -= cut;
    *targetLength += cut;
    *sourceLength += *source;
    *source = 0;
  }
  if (*source + *sourceLength > limit) {
    const double outside = *sourceLength - (limit - *source);
    const double cut = outside * *targetLength / *sourceLength;
    *sourceLength -= outside;
    *targetLength -= cut;
  }
  return *targetLength > 0 && *sourceLength > 0;
}

// The pixels under the painter, where they may be written past it: an image of the window's own format,
// nothing cut off, nothing moved or turned.
bool CanvasOf(const QPainter& painter, Canvas* canvas) {
  QPaintDevice* device = painter.device();
  if (device->devType() != QInternal::Image || painter.hasClipping()) return false;
  if (!painter.worldTransform().isIdentity() || painter.viewTransformEnabled()) return false;
  const QImage& image = *static_cast<const QImage*>(device);
  if (image.format() != QImage::Format_RGB32 && image.format() != QImage::Format_ARGB32_Premultiplied)
    return false;
  // Not bits(): if anyone shared the image, that would part it from the pixels that the painter holds.
  void* pixels = const_cast<uchar*>(image.constBits());
  *canvas = {static_cast<uint32_t*>(pixels), image.width(), image.height(), image.bytesPerLine() / 4};
  return true;
}

}  // namespace

void CPUSurface::polyline(const Points& points, const ColorValue* color, int width, int style) {
  if (!painter) return;
  QPen pen;
  if (style != 0) pen.setStyle(PolylineStyle(style));
  if (color && !color->IsBlack()) pen.setColor(ColorOf(*color));
  if (width != 1) pen.setWidth(PenWidth(width));
  painter->setPen(pen);
  for (size_t i = 1; i < points.size(); ++i) {
    // However far they lead: the painter cuts lines itself, in real numbers, and they keep their slope.
    painter->drawLine(points[i - 1].first, points[i - 1].second, points[i].first, points[i].second);
  }
}

void CPUSurface::rect(int x, int y, int w, int h, const ColorValue* color, int width, int style) {
  if (!painter || (w == 0 && h == 0)) return;
  QPen pen;
  pen.setStyle(RectStyle(style));
  if (color) pen.setColor(ColorOf(*color));
  if (width != 0) pen.setWidth(PenWidth(width));
  painter->setPen(pen);
  painter->drawRect(HeldRect(x, y, w, h));
}

void CPUSurface::fill(int x, int y, int w, int h, const ColorValue* color) {
  if (!painter) return;
  const QTD::SizeI now = currentSize();
  if (x == -1) x = 0;
  if (y == -1) y = 0;
  if (w == -1) w = now.width;
  if (h == -1) h = now.height;
  painter->fillRect(HeldRect(x, y, w, h), ColorOf(color ? *color : defaults["fill"]));
}

void CPUSurface::image(const ZynImage* picture, const QTD::RectD* target, const QTD::RectD* source) {
  RgbView view;
  if (!painter || !picture || !ViewOf(*picture, &view)) return;
  // The target is in device pixels from here on: where there are several to a window pixel, one to one must
  // still mean one picture pixel on each.
  const double ratio = painter->device()->devicePixelRatioF();
  const QTD::SizeI now = currentSize();
  const QTD::RectD whole{0, 0, static_cast<double>(now.width), static_cast<double>(now.height)};
  QRectF to = Rounded(target ? *target : whole, ratio);
  QRectF from = source ? Rounded(*source, 1) : QRectF(0, 0, view.width, view.height);

  double x = to.x(), y = to.y(), w = to.width(), h = to.height();
  double sx = from.x(), sy = from.y(), sw = from.width(), sh = from.height();
  if (!CutSource(view.width, &x, &w, &sx, &sw) || !CutSource(view.height, &y, &h, &sy, &sh)) return;
  to = QRectF(x, y, w, h);
  from = QRectF(sx, sy, sw, sh);

  Canvas canvas;
  if (PictureBlit::canDraw(to, from) && CanvasOf(*painter, &canvas)) {
    blit.draw(view, canvas, to, from);
    return;
  }
  // All else is left to the painter. Over whole window pixels it draws the same from any format, and fetches
  // no more of it than it shows; over parts of them, which only a source that reaches past the picture leads
  // to, it takes a road of its own for the window's format.
  QImage shown(view.data, view.width, view.height, static_cast<int>(view.stride), QImage::Format_RGB888);
  if (!IsWhole(to)) shown = shown.convertToFormat(QImage::Format_RGB32);
  painter->drawImage(QRectF(x / ratio, y / ratio, w / ratio, h / ratio), shown, from);
}

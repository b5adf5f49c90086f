#include "cpu/screen/PictureBlit.h"

#include <QRect>
#include <QTransform>
#include <algorithm>
#include <cmath>
#include <cstring>

#include "cpu/screen/RgbLine.h"

namespace {

// Positions in the picture have 16 binary digits behind the point, as in Qt's raster engine.
constexpr int kFixedBits = 16;
constexpr double kFixedOne = 1 << kFixedBits;

// The longest side of a target that the raster engine's road for scaled pictures takes. Longer ones go its
// road for transformed pictures, which is followed here up to the second length.
constexpr double kLongestSide = 0x7fff;
constexpr double kHugestSide = 0xffff;

// On that road each stretch of so many window pixels is placed anew. It is walked in fixed point while the
// way from window to picture has no smaller square of a step and no longer start; and no picture pixel from
// the last number on may take part, where positions could pass the range of int.
constexpr int kStretch = 2048;
constexpr double kSmallestSquare = 1.0 / 65536;
constexpr double kLongestStart = 1e4;
constexpr double kFarthestPixel = 0x7ffe;

// Lines that one thread draws in one go, and the number of pixels from which more than one thread is worth
// waking: a smaller window is drawn sooner than a busy machine may let the second thread run.
constexpr int kBlockLines = 16;
constexpr int64_t kParallelPixels = 1 << 20;

// One axis: the picture position of the first visible window pixel and the step to the next, in fixed point.
// A window pixel stands for its centre. The first position comes from the exact ratio; the step is cut, never
// rounded up, so that no position passes the source's end.
struct Axis {
  Axis(int firstVisible, double targetStart, double targetLength, double sourceStart, double sourceLength) {
    const double exactStep = kFixedOne * (sourceLength / targetLength);
    step = static_cast<int64_t>(exactStep);
    start = static_cast<int64_t>(sourceStart * kFixedOne) +
            static_cast<int64_t>(std::ceil((firstVisible + 0.5 - targetStart) * exactStep)) - 1;
  }

  int64_t step;
  int64_t start;
};

bool IsHuge(const QRectF& target) {
  return target.width() > kLongestSide || target.height() > kLongestSide;
}

int PositionOf(int64_t fixed, int limit) {
  return static_cast<int>(std::clamp<int64_t>(fixed >> kFixedBits, 0, limit - 1));
}

// From window pixel to window pixel through the picture, on the road for transformed pictures.
class Walk {
 public:
  Walk(double start, double step, bool inFixedPoint)
      : fixed(inFixedPoint),
        real(start),
        realStep(step),
        whole(static_cast<int64_t>(start * kFixedOne)),
        wholeStep(static_cast<int64_t>(step * kFixedOne)) {}

  void next() {
    real += realStep;
    whole += wholeStep;
  }
  int pixel() const {
    return static_cast<int>(fixed ? whole >> kFixedBits : static_cast<int64_t>(std::floor(real)));
  }

 private:
  bool fixed;
  double real, realStep;
  int64_t whole, wholeStep;
};

bool IsFixed(const QTransform& way) {
  return way.m11() * way.m11() > kSmallestSquare && way.m22() * way.m22() > kSmallestSquare &&
         std::fabs(way.dx()) < kLongestStart && std::fabs(way.dy()) < kLongestStart;
}

}  // namespace

bool IsWhole(const QRectF& target) {
  const auto isWhole = [](double number) { return std::rint(number) == number; };
  return isWhole(target.x()) && isWhole(target.y()) && isWhole(target.width()) && isWhole(target.height());
}

// Which window pixels belong to a target that takes part of one differs between Qt 5 and Qt 6.
bool PictureBlit::canDraw(const QRectF& target, const QRectF& source) {
  if (!IsWhole(target)) return false;
  if (!IsHuge(target)) return true;
  return target.width() <= kHugestSide && target.height() <= kHugestSide &&
         target.width() >= source.width() && target.height() >= source.height() &&  // only enlarged
         source.right() <= kFarthestPixel && source.bottom() <= kFarthestPixel;
}

void PictureBlit::draw(const RgbView& picture, const Canvas& canvas, const QRectF& target,
                       const QRectF& source) {
  const QRect window(0, 0, canvas.width, canvas.height);
  if (source.isEmpty() || !target.intersects(window)) return;
  const QRect visible = target.toRect() & window;
  if (visible.isEmpty()) return;

  lines.resize(static_cast<size_t>(visible.height()));
  if (IsHuge(target)) {
    findPixelsOfHuge(picture, visible, target, source);
  } else {
    findPixels(picture, visible, target, source);
  }
  if (firstColumn < 0) {
    const uint32_t last = 3 * static_cast<uint32_t>(picture.width - 1);
    roomy = static_cast<size_t>(std::lower_bound(columns.begin(), columns.end(), last) - columns.begin());
  }
  drawLines(picture, canvas, visible);
}

void PictureBlit::findPixels(const RgbView& picture, const QRect& visible, const QRectF& target,
                             const QRectF& source) {
  const Axis across(visible.left(), target.left(), target.width(), source.left(), source.width());
  const Axis down(visible.top(), target.top(), target.height(), source.top(), source.height());
  int64_t position = down.start;
  for (int& line : lines) {
    line = PositionOf(position, picture.height);
    position += down.step;
  }

  const bool contiguous = across.step == static_cast<int64_t>(kFixedOne);
  firstColumn = contiguous ? PositionOf(across.start, picture.width) : -1;
  if (firstColumn > picture.width - visible.width()) firstColumn = -1;
  if (firstColumn >= 0) return;
  columns.resize(static_cast<size_t>(visible.width()));
  position = across.start;
  for (uint32_t& column : columns) {
    column = 3 * static_cast<uint32_t>(PositionOf(position, picture.width));
    position += across.step;
  }
}

// The way from window to picture is the inverse of the way back, which is taken from a point a fixed-point
// digit inside the picture, so that rounding errors fall to one side.
void PictureBlit::findPixelsOfHuge(const RgbView& picture, const QRect& visible, const QRectF& target,
                                   const QRectF& source) {
  QTransform toWindow = QTransform::fromTranslate(target.x(), target.y());
  toWindow.scale(target.width() / source.width(), target.height() / source.height());
  toWindow.translate(-source.x(), -source.y());
  const QTransform way = (QTransform::fromTranslate(1 / kFixedOne, 1 / kFixedOne) * toWindow).inverted();
  const QRect taken = source.toAlignedRect() & QRect(0, 0, picture.width, picture.height);
  const bool fixed = IsFixed(way);

  int y = visible.top();
  for (int& line : lines) {
    const Walk walk(way.m22() * (y++ + 0.5) + way.dy(), 0, fixed);
    line = std::clamp(walk.pixel(), taken.top(), taken.bottom());
  }

  firstColumn = -1;
  columns.resize(static_cast<size_t>(visible.width()));
  for (int first = 0; first < visible.width(); first += kStretch) {
    Walk walk(way.m11() * (visible.left() + first + 0.5) + way.dx(), way.m11(), fixed);
    const int end = std::min(first + kStretch, visible.width());
    for (int i = first; i < end; ++i, walk.next()) {
      const int column = std::clamp(walk.pixel(), taken.left(), taken.right());
      columns[static_cast<size_t>(i)] = 3 * static_cast<uint32_t>(column);
    }
  }
}

void PictureBlit::drawLines(const RgbView& picture, const Canvas& canvas, const QRect& visible) {
  const size_t width = static_cast<size_t>(visible.width());
  const int height = visible.height();
  const int blocks = (height + kBlockLines - 1) / kBlockLines;
  [[maybe_unused]] const bool parallel = static_cast<int64_t>(width) * height >= kParallelPixels;

#pragma omp parallel for schedule(dynamic) if (parallel)
  for (int block = 0; block < blocks; ++block) {
    const int end = std::min(height, (block + 1) * kBlockLines);
    int drawnLine = -1;
    const uint32_t* drawn = nullptr;
    for (int y = block * kBlockLines; y < end; ++y) {
      uint32_t* out = canvas.pixels + (visible.top() + y) * canvas.stride + visible.left();
      const int sourceLine = lines[static_cast<size_t>(y)];
      if (sourceLine == drawnLine) {  // an enlarged picture repeats its lines
        std::memcpy(out, drawn, width * sizeof *out);
        continue;
      }
      const uint8_t* in = picture.data + sourceLine * picture.stride;
      if (firstColumn >= 0) {
        ConvertRgbLine(in + ptrdiff_t{3} * firstColumn, out, width);
      } else {
        const int nextLine = lines[static_cast<size_t>(std::min(y + 1, height - 1))];
        GatherRgbLine(in, picture.data + nextLine * picture.stride, columns.data(), out, roomy, width);
      }
      drawnLine = sourceLine;
      drawn = out;
    }
  }
}

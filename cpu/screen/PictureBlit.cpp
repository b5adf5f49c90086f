#include "cpu/screen/PictureBlit.h"

#include <QRect>
#include <algorithm>
#include <cmath>
#include <cstring>

#include "cpu/screen/RgbLine.h"

namespace {

// Positions in the picture have 16 binary digits behind the point, as in Qt's raster engine.
constexpr int kFixedBits = 16;
constexpr double kFixedOne = 1 << kFixedBits;

// The longest side that the raster engine's own fixed-point road takes.
constexpr double kLongestSide = 0x7fff;

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

int PositionOf(int64_t fixed, int limit) {
  return static_cast<int>(std::clamp<int64_t>(fixed >> kFixedBits, 0, limit - 1));
}

}  // namespace

bool PictureBlit::canDraw(const QRectF& target) {
  return target.width() <= kLongestSide && target.height() <= kLongestSide;
}

void PictureBlit::draw(const RgbView& picture, const Canvas& canvas, const QRectF& target,
                       const QRectF& source) {
  const QRect window(0, 0, canvas.width, canvas.height);
  if (source.isEmpty() || !target.intersects(window)) return;
  const QRect visible = target.toRect() & window;
  if (visible.isEmpty()) return;

  const Axis across(visible.left(), target.left(), target.width(), source.left(), source.width());
  const Axis down(visible.top(), target.top(), target.height(), source.top(), source.height());

  const bool contiguous = across.step == static_cast<int64_t>(kFixedOne);
  firstColumn = contiguous ? PositionOf(across.start, picture.width) : -1;
  if (firstColumn > picture.width - visible.width()) firstColumn = -1;
  if (firstColumn < 0) {
    columns.resize(static_cast<size_t>(visible.width()));
    int64_t position = across.start;
    for (uint32_t& column : columns) {
      column = 3 * static_cast<uint32_t>(PositionOf(position, picture.width));
      position += across.step;
    }
    const uint32_t last = 3 * static_cast<uint32_t>(picture.width - 1);
    roomy = static_cast<size_t>(std::lower_bound(columns.begin(), columns.end(), last) - columns.begin());
  }
  drawLines(picture, canvas, visible, down.start, down.step);
}

void PictureBlit::drawLines(const RgbView& picture, const Canvas& canvas, const QRect& visible, int64_t line,
                            int64_t lineStep) {
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
      const int sourceLine = PositionOf(line + y * lineStep, picture.height);
      if (sourceLine == drawnLine) {  // an enlarged picture repeats its lines
        std::memcpy(out, drawn, width * sizeof *out);
        continue;
      }
      const uint8_t* in = picture.data + sourceLine * picture.stride;
      if (firstColumn >= 0) {
        ConvertRgbLine(in + ptrdiff_t{3} * firstColumn, out, width);
      } else {
        const int nextLine = PositionOf(line + (y + 1) * lineStep, picture.height);
        GatherRgbLine(in, picture.data + nextLine * picture.stride, columns.data(), out, roomy, width);
      }
      drawnLine = sourceLine;
      drawn = out;
    }
  }
}

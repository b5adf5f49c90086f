// The nearest-neighbour drawing of a picture. Its cost is window pixels, not picture pixels.
#pragma once

#include <QRectF>
#include <cstddef>
#include <cstdint>
#include <vector>

// 24-bit pixels, red first. Whoever makes a view vouches for its lines; the loops behind it are bare.
struct RgbView {
  const uint8_t* data = nullptr;
  int width = 0, height = 0;
  ptrdiff_t stride = 0;  // bytes from one line to the next
};

// 32-bit pixels 0xffRRGGBB to draw into.
struct Canvas {
  uint32_t* pixels = nullptr;
  int width = 0, height = 0;
  ptrdiff_t stride = 0;  // pixels from one line to the next
};

// Whether it takes whole window pixels.
bool IsWhole(const QRectF& target);

// Keeps its tables of columns and lines from one frame to the next, so that a view that stands still
// allocates nothing.
class PictureBlit {
 public:
  // Whether the drawing of `source` over `target` is known to the pixel: over whole window pixels, up to a
  // length. Beyond it Qt's raster engine takes roads that are not followed here.
  static bool canDraw(const QRectF& target, const QRectF& source);

  // Draws `source`, which lies in the picture, over `target` of the canvas; what reaches past the canvas is
  // cut.
  void draw(const RgbView& picture, const Canvas& canvas, const QRectF& target, const QRectF& source);

 private:
  void findPixels(const RgbView& picture, const QRect& visible, const QRectF& target, const QRectF& source);
  void findPixelsOfHuge(const RgbView& picture, const QRect& visible, const QRectF& target,
                        const QRectF& source);
  void drawLines(const RgbView& picture, const Canvas& canvas, const QRect& visible);

  std::vector<uint32_t> columns;  // the byte in its line of the picture pixel that each visible column shows
  std::vector<int> lines;         // the picture line that each visible line shows
  size_t roomy = 0;               // so many of them have a further byte behind their pixel in the line
  int firstColumn = -1;           // one to one: the picture column of the first visible one, else -1
};

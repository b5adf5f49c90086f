#include "pixels/PixelEncoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <string_view>

#include "pixels/PixelPackers.h"
#include "pixels/PixelTable.h"
#include "sources/FrameSource.h"

namespace zynview {

namespace {

constexpr double kTop = 65535;

using Pixel = std::array<uint16_t, 3>;

Pixel PixelAt(const ColourPicture& picture, uint32_t x, uint32_t y) {
  const uint16_t* samples = picture.Pixel(x, y);
  return {samples[0], samples[1], samples[2]};
}

Pixel Mean(const Pixel& a, const Pixel& b) {
  Pixel mean{};
  for (std::size_t i = 0; i < mean.size(); ++i) mean[i] = static_cast<uint16_t>((a[i] + b[i] + 1) / 2);
  return mean;
}

uint16_t Whole(double value) {
  return static_cast<uint16_t>(std::lround(value));
}

// ITU-R BT.709, over the whole range.
uint16_t Luminance(const Pixel& pixel) {
  return Whole(0.2126 * pixel[0] + 0.7152 * pixel[1] + 0.0722 * pixel[2]);
}

// ITU-R BT.601, 0 to 1.
double Luma(const Pixel& pixel) {
  return (0.299 * pixel[0] + 0.587 * pixel[1] + 0.114 * pixel[2]) / kTop;
}

// A level of 0 to 255 in the depth of the format.
uint16_t Level(double level, int depth) {
  return Whole(level * (1 << (depth - 8)));
}

uint16_t SampleOf(char kind, const Pixel& pixel, int depth) {
  const int shift = 16 - depth;
  const auto cut = [shift](uint16_t sample) { return static_cast<uint16_t>(sample >> shift); };
  switch (kind) {
    case 'R':
      return cut(pixel[0]);
    case 'G':
      return cut(pixel[1]);
    case 'B':
      return cut(pixel[2]);
    case 'L':
      return cut(Luminance(pixel));
    case 'W':
      return cut(static_cast<uint16_t>((pixel[0] + pixel[1] + pixel[2]) / 3));
    case 'Y':
      return Level(16 + 219 * Luma(pixel), depth);
    case 'U':
      return Level(128 + 224 * (pixel[2] / kTop - Luma(pixel)) / 1.772, depth);
    case 'V':
      return Level(128 + 224 * (pixel[0] / kTop - Luma(pixel)) / 1.402, depth);
    default:  // opaque
      return cut(0xFFFF);
  }
}

void SampleMosaicLine(const ColourPicture& picture, const PixelRow& row, uint32_t y,
                      std::vector<uint16_t>& line) {
  std::string cells;
  for (uint32_t x = 0; x < row.MosaicColumns(); ++x) cells += row.MosaicKind(x, y);
  for (uint32_t x = 0; x < picture.width; ++x)
    line.push_back(SampleOf(cells[x % cells.size()], PixelAt(picture, x, y), row.depth));
}

void SamplePixelLine(const ColourPicture& picture, const PixelRow& row, uint32_t y,
                     std::vector<uint16_t>& line) {
  const uint32_t together = row.PixelsTogether();
  for (uint32_t x = 0; x + together <= picture.width; x += together) {
    const Pixel first = PixelAt(picture, x, y), last = PixelAt(picture, x + together - 1, y);
    const Pixel mean = together == 2 ? Mean(first, last) : first;
    bool firstTaken = false;
    for (const char kind : std::string_view(row.samples)) {
      const bool own = kind == 'Y';
      line.push_back(SampleOf(kind, !own ? mean : firstTaken ? last : first, row.depth));
      firstTaken = firstTaken || own;
    }
  }
}

void StoreLine(const std::vector<uint16_t>& line, const PixelRow& row, uint8_t* target) {
  if (row.slot == kPaired) {
    StorePairs(line, static_cast<unsigned>(row.depth), target);
    return;
  }
  const std::size_t group = row.IsMosaic() ? 1 : std::string_view(row.samples).size();
  const uint32_t groupBits = row.StorageBits() * row.PixelsTogether();
  StoreSlots(line, static_cast<unsigned>(row.slot), group, groupBits, target);
}

}  // namespace

uint32_t WidthStep(uint32_t pixelType) {
  const PixelRow* row = FindPixel(pixelType);
  if (!row) return 0;
  if (row->slot == kPaired) return 1;  // a last sample without a partner takes two bytes
  uint32_t step = row->PixelsTogether();
  while (step * row->StorageBits() % 8 != 0) step *= 2;
  return step;
}

std::vector<uint8_t> EncodePicture(const ColourPicture& picture, uint32_t pixelType) {
  std::vector<uint8_t> bytes;
  EncodeLines(picture, pixelType, 0, picture.height, &bytes);
  return bytes;
}

void EncodeLines(const ColourPicture& picture, uint32_t pixelType, uint32_t first, uint32_t end,
                 std::vector<uint8_t>* bytes) {
  const PixelRow* row = FindPixel(pixelType);
  const uint32_t step = WidthStep(pixelType);
  if (!row || step == 0 || picture.width % step != 0) return;
  const std::size_t lineBytes = LineBytes(pixelType, picture.width);
  bytes->resize(lineBytes * picture.height);
  std::vector<uint16_t> line;
  for (uint32_t y = first; y < std::min(end, picture.height); ++y) {
    line.clear();
    if (row->IsMosaic()) {
      SampleMosaicLine(picture, *row, y, line);
    } else {
      SamplePixelLine(picture, *row, y, line);
    }
    StoreLine(line, *row, bytes->data() + y * lineBytes);
  }
}

}  // namespace zynview

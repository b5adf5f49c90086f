#include "PixelEncoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "FrameSource.h"
#include "PixelPackers.h"
#include "PixelTable.h"

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

// The cells of a mosaic's line, repeated along it.
std::string_view MosaicLine(std::string_view cells, uint32_t y) {
  const std::size_t columns = cells.find('/');
  const std::size_t lines = (cells.size() + 1) / (columns + 1);
  return cells.substr(y % lines * (columns + 1), columns);
}

void SampleMosaicLine(const ColourPicture& picture, const PixelRow& row, uint32_t y,
                      std::vector<uint16_t>& line) {
  const auto phase = static_cast<uint32_t>(row.phase);
  const std::string_view cells = MosaicLine(row.samples, y + (phase >> 1));
  for (uint32_t x = 0; x < picture.width; ++x) {
    const char kind = cells[(x + (phase & 1)) % cells.size()];
    line.push_back(SampleOf(kind, PixelAt(picture, x, y), row.depth));
  }
}

// Pixels that share their samples.
uint32_t PixelsTogether(const PixelRow& row) {
  const std::string_view samples(row.samples);
  return std::count(samples.begin(), samples.end(), 'Y') == 2 ? 2 : 1;
}

void SamplePixelLine(const ColourPicture& picture, const PixelRow& row, uint32_t y,
                     std::vector<uint16_t>& line) {
  const uint32_t together = PixelsTogether(row);
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
  const uint32_t groupBits = row.StorageBits() * PixelsTogether(row);
  StoreSlots(line, static_cast<unsigned>(row.slot), group, groupBits, target);
}

}  // namespace

uint32_t WidthStep(uint32_t pixelType) {
  const PixelRow* row = FindPixel(pixelType);
  if (!row) return 0;
  if (row->slot == kPaired) return 1;  // a last sample without a partner takes two bytes
  uint32_t step = PixelsTogether(*row);
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

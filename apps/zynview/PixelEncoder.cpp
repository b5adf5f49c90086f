#include "PixelEncoder.h"

#include <QString>
#include <algorithm>
#include <array>
#include <optional>

#include "FrameSource.h"
#include "PixelNames.h"
#include "ZynPixelFormat.h"

namespace zynview {

namespace {

enum class Packing { Bytes, Words, Lsb, Packed };

// How a format stores its samples.
struct Layout {
  enum Kind { Mono, Bayer, Colour, Uyvy } kind;
  int depth;
  Packing packing;
  std::array<int, 4>
      channels;  // Bayer: of the four cells; Colour: of the samples in order, -1 for alpha or none
  int samples;   // of a pixel
};

constexpr int kRed = 0, kGreen = 1, kBlue = 2, kNone = -1;

struct Order {
  const char* name;
  std::array<int, 4> cells;  // top left, top right, bottom left, bottom right
};

constexpr Order kOrders[] = {
    {"GR", {kGreen, kRed, kBlue, kGreen}},
    {"RG", {kRed, kGreen, kGreen, kBlue}},
    {"GB", {kGreen, kBlue, kRed, kGreen}},
    {"BG", {kBlue, kGreen, kGreen, kRed}},
};

std::optional<Layout> LayoutOf(uint32_t pixelType) {
  const QString name = PixelNameOf(pixelType);
  if (pixelType == ZYN_PIXEL_YUV422_8_UYVY) return Layout{Layout::Uyvy, 8, Packing::Bytes, {}, 2};
  if (name.contains(QLatin1String("Brio"), Qt::CaseInsensitive)) return std::nullopt;

  Layout layout{Layout::Mono, 8, Packing::Bytes, {kGreen, kNone, kNone, kNone}, 1};
  for (const int depth : {8, 10, 12, 14, 16}) {
    if (name.contains(QString::number(depth))) layout.depth = depth;
  }
  if (layout.depth > 8) layout.packing = Packing::Words;
  if (name.endsWith(QLatin1Char('p'))) layout.packing = Packing::Lsb;
  if (name.endsWith(QLatin1String("Packed"))) layout.packing = Packing::Packed;

  if (name.startsWith(QLatin1String("Mono"))) return layout;
  if (name.startsWith(QLatin1String("Bayer"))) {
    layout.kind = Layout::Bayer;
    for (const Order& order : kOrders) {
      if (name.mid(5, 2) == QLatin1String(order.name)) layout.channels = order.cells;
    }
    return layout;
  }
  const bool rgb = name.startsWith(QLatin1String("RGB")), bgr = name.startsWith(QLatin1String("BGR"));
  if (!rgb && !bgr) return std::nullopt;
  layout.kind = Layout::Colour;
  layout.channels =
      rgb ? std::array<int, 4>{kRed, kGreen, kBlue, kNone} : std::array<int, 4>{kBlue, kGreen, kRed, kNone};
  layout.samples = name.contains(QLatin1Char('a')) ? 4 : 3;
  return layout;
}

uint16_t Luminance(const uint16_t* pixel) {
  // ITU-R BT.709 weights.
  return static_cast<uint16_t>(0.2126 * pixel[0] + 0.7152 * pixel[1] + 0.0722 * pixel[2]);
}

// The samples of one line in the format's depth, one for each sample that is stored.
void SampleLine(const ColourPicture& picture, const Layout& layout, uint32_t y, std::vector<uint16_t>& line) {
  const int shift = 16 - layout.depth;
  line.clear();
  for (uint32_t x = 0; x < picture.width; ++x) {
    const uint16_t* pixel = picture.Pixel(x, y);
    if (layout.kind == Layout::Mono) {
      line.push_back(static_cast<uint16_t>(Luminance(pixel) >> shift));
    } else if (layout.kind == Layout::Bayer) {
      const int channel = layout.channels[(y % 2) * 2 + x % 2];
      line.push_back(static_cast<uint16_t>(pixel[channel] >> shift));
    } else {
      for (int sample = 0; sample < layout.samples; ++sample) {
        const int channel = layout.channels[static_cast<std::size_t>(sample)];
        line.push_back(static_cast<uint16_t>((channel == kNone ? 0xFFFF : pixel[channel]) >> shift));
      }
    }
  }
}

// Bytes U Y V Y of pixel pairs, ITU-R BT.601, full range.
void UyvyLine(const ColourPicture& picture, uint32_t y, uint8_t* target) {
  for (uint32_t x = 0; x + 1 < picture.width; x += 2) {
    double u = 0, v = 0;
    std::array<double, 2> luma{};
    for (uint32_t i = 0; i < 2; ++i) {
      const uint16_t* pixel = picture.Pixel(x + i, y);
      const double red = pixel[0] / 257.0, green = pixel[1] / 257.0, blue = pixel[2] / 257.0;
      luma[i] = 0.299 * red + 0.587 * green + 0.114 * blue;
      u += 0.5 * 0.564 * (blue - luma[i]);
      v += 0.5 * 0.713 * (red - luma[i]);
    }
    const auto byte = [](double value) { return static_cast<uint8_t>(std::clamp(value + 0.5, 0.0, 255.0)); };
    *target++ = byte(u + 128);
    *target++ = byte(luma[0]);
    *target++ = byte(v + 128);
    *target++ = byte(luma[1]);
  }
}

void StoreLine(const std::vector<uint16_t>& line, const Layout& layout, uint8_t* target) {
  const auto depth = static_cast<unsigned>(layout.depth);
  switch (layout.packing) {
    case Packing::Bytes:
      std::transform(line.begin(), line.end(), target, [](uint16_t v) { return static_cast<uint8_t>(v); });
      break;
    case Packing::Words:  // little-endian
      for (const uint16_t value : line) {
        *target++ = static_cast<uint8_t>(value);
        *target++ = static_cast<uint8_t>(value >> 8);
      }
      break;
    case Packing::Lsb: {  // sample after sample, lowest bit first
      uint32_t bits = 0, count = 0;
      for (const uint16_t value : line) {
        bits |= uint32_t{value} << count;
        for (count += depth; count >= 8; count -= 8, bits >>= 8) *target++ = static_cast<uint8_t>(bits);
      }
      if (count) *target = static_cast<uint8_t>(bits);
      break;
    }
    case Packing::Packed: {  // two samples in three bytes: high bits, low bits of both, high bits
      const unsigned low = depth - 8, mask = (1u << low) - 1;
      for (std::size_t i = 0; i < line.size(); i += 2) {
        const unsigned first = line[i], second = i + 1 < line.size() ? line[i + 1] : 0u;
        *target++ = static_cast<uint8_t>(first >> low);
        *target++ = static_cast<uint8_t>((first & mask) | ((second & mask) << 4));
        if (i + 1 < line.size()) *target++ = static_cast<uint8_t>(second >> low);
      }
      break;
    }
  }
}

}  // namespace

bool CanEncode(uint32_t pixelType) {
  return LayoutOf(pixelType).has_value();
}

std::vector<uint8_t> EncodePicture(const ColourPicture& picture, uint32_t pixelType) {
  const std::optional<Layout> layout = LayoutOf(pixelType);
  const std::size_t lineBytes = LineBytes(pixelType, picture.width);
  std::vector<uint8_t> bytes(lineBytes * picture.height);
  if (!layout) return bytes;
  std::vector<uint16_t> line;
  for (uint32_t y = 0; y < picture.height; ++y) {
    uint8_t* target = bytes.data() + y * lineBytes;
    if (layout->kind == Layout::Uyvy) {
      UyvyLine(picture, y, target);
    } else {
      SampleLine(picture, *layout, y, line);
      StoreLine(line, *layout, target);
    }
  }
  return bytes;
}

}  // namespace zynview

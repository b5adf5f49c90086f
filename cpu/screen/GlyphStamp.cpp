#include "cpu/screen/GlyphStamp.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "QTD/image/PixelFormats.h"

namespace {

constexpr int kBlend = 1;
constexpr int kTurnOver = 2;
constexpr int kContrast = 3;

// The weights of colour and background for each coverage: no division per pixel.
struct Weights {
  Weights() {
    for (size_t i = 0; i < alpha.size(); ++i) {
      alpha[i] = static_cast<double>(i) / 255.0;
      inverse[i] = 1.0 - static_cast<double>(i) / 255.0;
    }
  }
  std::array<double, 256> alpha, inverse;
};

const Weights& BlendWeights() {
  static const Weights weights;
  return weights;
}

template <typename Sample>
Sample Load(const uint8_t* bytes) {
  Sample sample;
  std::memcpy(&sample, bytes, sizeof sample);
  return sample;
}

template <typename Sample>
void Store(uint8_t* bytes, int value) {
  const Sample sample = static_cast<Sample>(value);
  std::memcpy(bytes, &sample, sizeof sample);
}

// One pixel under coverage a:
//
//   C0 [C1 C2] ...     its samples, 1 or 2 bytes each; further ones (alpha) stay
template <typename Sample, int kChannels>
void StampPixel(uint8_t* pixel, int a, const StampColor& color, const Weights& weights) {
  constexpr int kSample = sizeof(Sample);
  const int most = color.range - 1;
  int contrast = 0;
  if (color.mode == kContrast) {
    int sum = 0;
    for (int c = 0; c < kChannels; ++c) sum += Load<Sample>(pixel + c * kSample);
    contrast = sum < color.range / 4 ? most : 0;
  }
  for (int c = 0; c < kChannels; ++c) {
    uint8_t* sample = pixel + c * kSample;
    const int background = Load<Sample>(sample);
    const size_t index = static_cast<size_t>(a);
    int value = color.channel[c];
    if (color.mode == kBlend) {
      value = static_cast<int>(background * weights.inverse[index] + value * weights.alpha[index]);
    } else if (color.mode == kTurnOver) {
      value = std::max(most - background, 0);  // a background above the image's own depth has no opposite
    } else if (color.mode == kContrast) {
      value = contrast;
    }
    Store<Sample>(sample, value);
  }
}

template <typename Sample, int kChannels>
void Stamp(const StampTarget& target, const StampColor& color, const GlyphView& glyph, int64_t x, int64_t y) {
  const Weights& weights = BlendWeights();
  const int64_t left = std::max<int64_t>(0, -x), right = std::min<int64_t>(glyph.width, target.width - x);
  const int64_t top = std::max<int64_t>(0, -y), bottom = std::min<int64_t>(glyph.height, target.height - y);
  for (int64_t row = top; row < bottom; ++row) {
    const uint8_t* coverage = glyph.coverage + row * glyph.stride;
    uint8_t* pixels = target.firstRow + (y + row) * target.rowStep;
    for (int64_t column = left; column < right; ++column) {
      const int a = coverage[3 * column];
      if (a != 0) StampPixel<Sample, kChannels>(pixels + (x + column) * target.pixelBytes, a, color, weights);
    }
  }
}

}  // namespace

StampTarget::StampTarget(const ZynImage& image) {
  const QTD::PixelRow* row = QTD::FindPixelRow(image.pixelType);
  if (!row || !image.imageData) return;
  const uint32_t bits = image.bitDepth >= 1 && image.bitDepth <= 16 ? image.bitDepth : row->bitDepth;
  const uint32_t pixelBits = QTD::BitsPerPixel(row->code);
  const uint32_t perPixel = QTD::IsMonoFormat(image.pixelType) ? 1 : 3;
  const uint32_t perSample = bits <= 8 ? 1 : 2;
  if (pixelBits % 8 != 0 || pixelBits / 8 < perPixel * perSample) return;

  constexpr uint32_t most = std::numeric_limits<int>::max();
  if (image.width == 0 || image.height == 0 || image.width > most || image.height > most) return;
  const uint64_t lineBytes = uint64_t{image.width} * (pixelBits / 8);
  if (lineBytes > image.linePitch) return;
  if (uint64_t{image.linePitch} * (image.height - 1) + lineBytes > image.imageSize) return;

  const ptrdiff_t pitch = image.linePitch;
  const bool bottomUp = image.origin == 1;
  firstRow = bottomUp ? image.imageData + pitch * (ptrdiff_t{image.height} - 1) : image.imageData;
  rowStep = bottomUp ? -pitch : pitch;
  width = static_cast<int>(image.width);
  height = static_cast<int>(image.height);
  pixelBytes = static_cast<int>(pixelBits / 8);
  sampleBytes = static_cast<int>(perSample);
  channels = static_cast<int>(perPixel);
  depth = static_cast<int>(bits);
  blueFirst = row->channel && row->channel('B') == 0;
}

StampColor::StampColor(const ColorValue& color, const StampTarget& target) : mode(color.mode) {
  ColorValue used = color.AtDepth(target.depth);
  if (target.channels == 1) used = used.Grey();
  range = used.range;
  channel[0] = target.blueFirst ? used.blue : used.red;
  channel[1] = used.green;
  channel[2] = target.blueFirst ? used.red : used.blue;
}

void StampGlyph(const StampTarget& target, const StampColor& color, const GlyphView& glyph, int64_t x,
                int64_t y) {
  if (target.sampleBytes == 1) {
    target.channels == 1 ? Stamp<uint8_t, 1>(target, color, glyph, x, y)
                         : Stamp<uint8_t, 3>(target, color, glyph, x, y);
  } else {
    target.channels == 1 ? Stamp<uint16_t, 1>(target, color, glyph, x, y)
                         : Stamp<uint16_t, 3>(target, color, glyph, x, y);
  }
}

#include "cpu/stages/CorrectionStep.h"

#include <array>
#include <opencv2/core.hpp>

#include "QTD/image/ImageRecord.h"
#include "QTD/image/PixelFormats.h"
#include "cpu/stages/CorrectionKernels.h"

namespace {

constexpr uint32_t kByteDepth = 8;
constexpr size_t kByteEntries = (1 << kByteDepth) + 1;

// The table matrix has the 257 entries of the tables, one more than the image library accepts: it raises an
// exception before it looks at a pixel, and 8-bit images are never corrected.
bool CorrectBytes(const ZynImage& image, const ColorLUT& table, size_t channels) {
  try {
    std::array<uint8_t, kByteEntries * ColorLUT::kColours> entries{};
    for (size_t n = 0; n < kByteEntries; ++n) {
      for (size_t channel = 0; channel < channels; ++channel)
        entries[n * channels + channel] = static_cast<uint8_t>(table.tables[channel][n]);
    }
    const int type = CV_8UC(static_cast<int>(channels));
    const cv::Mat lookup(1, static_cast<int>(kByteEntries), type, entries.data());
    cv::Mat pixels(static_cast<int>(image.height), static_cast<int>(image.linePitch), type, image.imageData,
                   image.linePitch);
    cv::LUT(pixels, lookup, pixels);
    return true;
  } catch (const cv::Exception&) {
    return false;
  }
}

bool CorrectWords(const ZynImage& image, const ColorLUT& table, size_t channels) {
  const auto words = static_cast<size_t>(QTD::LineBytes(image) / sizeof(uint16_t));
  const CorrectionKernels::Lines lines{image.imageData, image.linePitch, words, image.height};
  if (channels == 1) {
    CorrectionKernels::ApplyOne(lines, table.Words(0));
  } else {
    CorrectionKernels::ApplyThree(lines, table.Words(0), table.Words(1), table.Words(2));
  }
  return true;
}

}  // namespace

bool CorrectPixels(const ZynImage& image, const ColorLUT& table) {
  const size_t channels = QTD::IsRgbFormat(image.pixelType) ? ColorLUT::kColours : 1;
  // An image of another format than prepared may ask for tables that do not exist.
  if (static_cast<size_t>(table.channels) < channels || !QTD::LinesFit(image)) return false;
  switch (image.bitDepth) {
    case kByteDepth:
      return CorrectBytes(image, table, channels);
    case 10:
    case 12:
    case 14:
    case 16:
      return CorrectWords(image, table, channels);
    default:
      return false;
  }
}

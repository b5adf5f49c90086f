#include "cpu/stages/ImageConversion.h"

#include <algorithm>

#include "QTD/image/ImageRecord.h"
#include "QTD/image/PixelFormats.h"
#include "cpu/stages/ImageKernels.h"

using ImageKernels::Step;

namespace {

constexpr uint32_t kByteDepth = 8;
constexpr uint32_t kMostShift = 15;  // a 16-bit sample has no more bits to lose

// Equal sizes, buffers, and lines that lie within them.
bool AreAlike(const ZynImage& source, const ZynImage& target) {
  return source.imageData && target.imageData && source.width != 0 && source.height != 0 &&
         source.width == target.width && source.height == target.height && QTD::LinesFit(source) &&
         QTD::LinesFit(target);
}

// From the first line's start to the last line's end, where lines are `lineBytes` long.
uint64_t BytesOfLines(const ZynImage& image, uint64_t lineBytes) {
  return uint64_t{image.height - 1} * image.linePitch + lineBytes;
}

bool HoldsLines(const ZynImage& image, uint64_t lineBytes) {
  return lineBytes <= image.linePitch && BytesOfLines(image, lineBytes) <= image.imageSize;
}

bool CopyBlock(const ZynImage& source, const ZynImage& target, SourceCopy& aside) {
  const size_t bytes = source.imageSize;
  const uint8_t* const from = aside.Detach(source.imageData, bytes, target.imageData, bytes);
  if (!from) return false;
  ImageKernels::CopyBlock(from, target.imageData, bytes);
  return true;
}

bool CopyLines(ZynImage source, ZynImage target, SourceCopy& aside) {
  const auto bytesOf = [](const ZynImage& image) {
    return std::min<uint64_t>(image.imageSize, BytesOfLines(image, image.linePitch));
  };
  const uint8_t* const from =
      aside.Detach(source.imageData, bytesOf(source), target.imageData, bytesOf(target));
  if (!from) return false;
  source.imageData = const_cast<uint8_t*>(from);
  return QTD::ImageCopy(&source, &target);
}

bool HasFewerChannels(uint32_t pixelType, uint32_t thanType) {
  const QTD::PixelRow* const row = QTD::FindPixelRow(pixelType);
  const QTD::PixelRow* const thanRow = QTD::FindPixelRow(thanType);
  return !row || !thanRow || row->channels < thanRow->channels;
}

// Whether the samples that a code stands for take up two bytes.
bool HasWords(uint32_t pixelType) {
  const QTD::PixelRow* const row = QTD::FindPixelRow(pixelType);
  return row && row->bitDepth > kByteDepth;
}

// Samples of 16 bits stay what they are, whatever their depths, where both images are deep.
Step SelectStep(const ConversionSteps& steps, bool bothDeep) {
  if (steps.toColour) return steps.reduce ? Step::kReduceSpread : bothDeep ? Step::kSpread16 : Step::kSpread8;
  if (steps.swap) return steps.reduce ? Step::kReduceSwap : bothDeep ? Step::kSwap16 : Step::kSwap8;
  return Step::kReduce;
}

// Nothing to convert after all: a plain copy, but not between buffers of unequal size and equal pitch.
bool CopyUnconverted(const ZynImage& source, const ZynImage& target, SourceCopy& aside) {
  if (source.imageSize == target.imageSize) return CopyBlock(source, target, aside);
  return source.linePitch != target.linePitch && CopyLines(source, target, aside);
}

}  // namespace

ConversionSteps StepsBetween(uint32_t sourceType, uint32_t sourceDepth, uint32_t targetType,
                             uint32_t targetDepth) {
  ConversionSteps steps;
  steps.reduce = sourceDepth > kByteDepth && targetDepth == kByteDepth;
  steps.toColour = QTD::IsMonoFormat(sourceType) && QTD::IsRgbFormat(targetType);
  steps.swap = QTD::IsBgrFormat(sourceType) != QTD::IsBgrFormat(targetType);
  return steps;
}

bool CopyPixels(const ZynImage& source, const ZynImage& target, SourceCopy& aside) {
  if (!AreAlike(source, target)) return false;
  if (source.linePitch != target.linePitch) return CopyLines(source, target, aside);
  return source.imageSize <= target.imageSize && CopyBlock(source, target, aside);
}

bool ConvertPixels(const ZynImage& source, const ZynImage& target, const ConversionLimits& limits,
                   SourceCopy& aside) {
  if (!AreAlike(source, target)) return false;
  const ConversionSteps steps =
      StepsBetween(source.pixelType, source.bitDepth, target.pixelType, target.bitDepth);
  if (!steps.Any()) return CopyUnconverted(source, target, aside);
  if (HasFewerChannels(target.pixelType, source.pixelType)) return false;

  const bool furtherSteps = steps.toColour || steps.swap;
  const uint32_t shift = steps.reduce ? source.bitDepth - kByteDepth : 0;
  if (shift > kMostShift) return false;
  if (steps.reduce && source.imageSize > limits.deepBytes) return false;
  if (steps.reduce && furtherSteps && !limits.furtherSteps) return false;

  const Step step = SelectStep(steps, source.bitDepth > kByteDepth && target.bitDepth > kByteDepth);
  const ImageKernels::PixelBytes bytes = ImageKernels::BytesOf(step);
  const uint32_t storageBits = QTD::BitsPerPixel(source.pixelType);
  // Further steps know what a pixel is made of; the reduction alone takes each line as a row of words.
  if (furtherSteps && storageBits != 8 * bytes.source) return false;
  // Bytes are not made into words: nothing says how 8 bits would be scaled to more, and lines of bytes would
  // leave half of each of the target's lines as it was.
  const bool writesWords = step == Step::kSpread16 || step == Step::kSwap16;
  if (furtherSteps && writesWords != HasWords(target.pixelType)) return false;
  const uint64_t count = furtherSteps ? source.width : (uint64_t{source.width} * storageBits + 15) / 16;
  const uint64_t sourceLine = count * bytes.source, targetLine = count * bytes.target;
  if (!HoldsLines(source, sourceLine) || !HoldsLines(target, targetLine)) return false;

  const uint8_t* const from = aside.Detach(source.imageData, BytesOfLines(source, sourceLine),
                                           target.imageData, BytesOfLines(target, targetLine));
  if (!from) return false;
  ImageKernels::RunJob({step, from, source.linePitch, target.imageData, target.linePitch,
                        static_cast<size_t>(count), source.height, shift});
  return true;
}

#include "cpu/stages/ImageConversion.h"

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

bool HoldsLines(const ZynImage& image, uint64_t lineBytes) {
  return lineBytes <= image.linePitch &&
         uint64_t{image.height - 1} * image.linePitch + lineBytes <= image.imageSize;
}

bool CopyLines(const ZynImage& source, ZynImage target) {
  return QTD::ImageCopy(&source, &target);
}

bool HasFewerChannels(uint32_t pixelType, uint32_t thanType) {
  const QTD::PixelRow* const row = QTD::FindPixelRow(pixelType);
  const QTD::PixelRow* const thanRow = QTD::FindPixelRow(thanType);
  return !row || !thanRow || row->channels < thanRow->channels;
}

// Samples of 16 bits stay what they are, whatever their depths, where both images are deep.
Step SelectStep(const ConversionSteps& steps, bool bothDeep) {
  if (steps.toColour) return steps.reduce ? Step::kReduceSpread : bothDeep ? Step::kSpread16 : Step::kSpread8;
  if (steps.swap) return steps.reduce ? Step::kReduceSwap : bothDeep ? Step::kSwap16 : Step::kSwap8;
  return Step::kReduce;
}

// Nothing to convert after all: a plain copy, but not between buffers of unequal size and equal pitch.
bool CopyUnconverted(const ZynImage& source, const ZynImage& target) {
  if (source.imageSize != target.imageSize && source.linePitch == target.linePitch) return false;
  if (source.imageSize != target.imageSize) return CopyLines(source, target);
  ImageKernels::CopyBlock(source.imageData, target.imageData, source.imageSize);
  return true;
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

bool CopyPixels(const ZynImage& source, const ZynImage& target) {
  if (!AreAlike(source, target)) return false;
  if (source.linePitch != target.linePitch) return CopyLines(source, target);
  if (source.imageSize > target.imageSize) return false;
  ImageKernels::CopyBlock(source.imageData, target.imageData, source.imageSize);
  return true;
}

bool ConvertPixels(const ZynImage& source, const ZynImage& target, const ConversionLimits& limits) {
  if (!AreAlike(source, target)) return false;
  const ConversionSteps steps =
      StepsBetween(source.pixelType, source.bitDepth, target.pixelType, target.bitDepth);
  if (!steps.Any()) return CopyUnconverted(source, target);
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
  const uint64_t count = furtherSteps ? source.width : (uint64_t{source.width} * storageBits + 15) / 16;
  if (!HoldsLines(source, count * bytes.source) || !HoldsLines(target, count * bytes.target)) return false;

  ImageKernels::Run({step, source.imageData, source.linePitch, target.imageData, target.linePitch,
                     static_cast<size_t>(count), source.height, shift});
  return true;
}

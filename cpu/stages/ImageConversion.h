// What the image stage does to an image's pixels: reduction to 8 bits, grey to colour, swap of the channel
// order.
#pragma once

#include <cstdint>

#include "ZynImage.h"
#include "cpu/stages/SourceCopy.h"

// The steps in the order in which they are done.
struct ConversionSteps {
  bool reduce = false;    // deep samples to 8 bits
  bool toColour = false;  // one channel to three
  bool swap = false;      // RGB to BGR or back; grey in three channels is not swapped

  bool Any() const { return reduce || toColour || swap; }
};

ConversionSteps StepsBetween(uint32_t sourceType, uint32_t sourceDepth, uint32_t targetType,
                             uint32_t targetDepth);

// What a stage was prepared for. All steps run in one pass, without the work images that one after the other
// would need; what those could not have held is refused all the same.
struct ConversionLimits {
  uint64_t deepBytes = 0;     // most bytes of a source that is reduced
  bool furtherSteps = false;  // whether another step may follow the reduction
};

// Copies between images of equal width and height. With equal pitches that is one block of the source's
// `imageSize` bytes. False, with the target untouched, when it does not fit.
bool CopyPixels(const ZynImage& source, const ZynImage& target, SourceCopy& aside);

// Takes the steps between the two formats. False, with the target untouched, when there is no way from one to
// the other (such as to fewer channels, or from bytes to deep samples) or a record cannot be true for its
// buffer.
bool ConvertPixels(const ZynImage& source, const ZynImage& target, const ConversionLimits& limits,
                   SourceCopy& aside);

// In both, a source that shares memory with the target is read as it was before the call. Any thread, one at
// a time with the same `aside`.

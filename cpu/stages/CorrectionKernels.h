// Tables applied to the 16-bit samples of an image, in place.
#pragma once

#include <cstddef>
#include <cstdint>

namespace CorrectionKernels {

// A checked image: `words` samples in each of `height` lines, all within the buffer. Lines may begin at any
// address. Bytes behind the samples of a line are neither read nor written.
struct Lines {
  uint8_t* bytes;
  size_t pitch;
  size_t words;
  size_t height;
};

// Tables have an entry for each of the 65536 values of a sample. Any thread; both use several of their own
// for large images and allocate nothing.

// Every sample through the one table.
void ApplyOne(const Lines& lines, const uint16_t* table);

// The samples of each pixel through a table of their own. Samples behind the last whole pixel stay.
void ApplyThree(const Lines& lines, const uint16_t* first, const uint16_t* second, const uint16_t* third);

}  // namespace CorrectionKernels

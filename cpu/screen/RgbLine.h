// Kernels over one line of a picture: its 24-bit pixels, red first, become the window's 32-bit pixels.
// Little-endian.
#pragma once

#include <cstddef>
#include <cstdint>

// pixels[i] = pixel i of `rgb`. Reads 3 * count bytes.
void ConvertRgbLine(const uint8_t* rgb, uint32_t* pixels, size_t count);

// pixels[i] = the pixel at byte `offsets[i]` of `rgb`. The first `roomy` pixels are read with the byte behind
// them, one load each; of the others nothing is read beyond their three bytes. `next` is the line that will
// be gathered after this one: the memory is asked for it now, since a reduced picture's lines lie too far
// apart for the processor to foresee.
void GatherRgbLine(const uint8_t* rgb, const uint8_t* next, const uint32_t* offsets, uint32_t* pixels,
                   size_t roomy, size_t count);

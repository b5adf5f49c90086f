// The loops of the image stage as they are on a processor without vectors.
#pragma once

#include <cstddef>
#include <cstdint>

// What `ImageKernels::RunJob` does with a job of these members, one pixel at a time whatever this processor
// could do. Knows nothing of that namespace, which it compiles under another name.
void RunJobPixelByPixel(int step, const uint8_t* source, size_t sourcePitch, uint8_t* target,
                        size_t targetPitch, size_t width, size_t height, uint32_t shift);

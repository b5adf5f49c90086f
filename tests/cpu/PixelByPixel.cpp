// Compiles the image stage's loops a second time, under another name and for no instruction set at all:
// whether the library's own build holds that form depends on the compiler.
#define HWY_COMPILE_ONLY_SCALAR
#define ImageKernels PixelByPixel
#include "cpu/stages/ImageKernels.cpp"
#undef ImageKernels

#include "tests/cpu/PixelByPixel.h"

static_assert(HWY_TARGETS == HWY_SCALAR, "no vectors here");

void RunJobPixelByPixel(int step, const uint8_t* source, size_t sourcePitch, uint8_t* target,
                        size_t targetPitch, size_t width, size_t height, uint32_t shift) {
  PixelByPixel::RunJob({static_cast<PixelByPixel::Step>(step), source, sourcePitch, target, targetPitch,
                        width, height, shift});
}

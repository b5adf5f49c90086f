// Compiles the unpack stage's loops a second time, under another name and for no instruction set at all:
// whether the library's own build holds that form depends on the compiler.
#define HWY_COMPILE_ONLY_SCALAR
#define UnpackKernels GroupByGroup
#include "cpu/stages/UnpackKernels.cpp"
#undef UnpackKernels

#include "tests/cpu/GroupByGroup.h"

static_assert(HWY_TARGETS == HWY_SCALAR, "no vectors here");

void RunJobGroupByGroup(int packing, const uint8_t* source, size_t sourceBytes, uint16_t* target,
                        size_t targetPitch, size_t width, size_t height) {
  GroupByGroup::RunJob(
      {static_cast<GroupByGroup::Packing>(packing), source, sourceBytes, target, targetPitch, width, height});
}

// The loops of the unpack stage as they are on a processor without vectors.
#pragma once

#include <cstddef>
#include <cstdint>

// What `UnpackKernels::RunJob` does with a job of these members, one group at a time whatever this processor
// could do. Knows nothing of that namespace, which it compiles under another name.
void RunJobGroupByGroup(int packing, const uint8_t* source, size_t sourceBytes, uint16_t* target,
                        size_t targetPitch, size_t width, size_t height);

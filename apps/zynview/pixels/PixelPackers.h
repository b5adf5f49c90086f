// How samples become the bytes of a line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zynview {

// One sample after the other, `slot` bits each, the lowest bit first: whole bytes, little-endian words, and
// the packed bit streams alike. After every `group` samples the line goes on at the next multiple of
// `groupBits`.
void StoreSlots(const std::vector<uint16_t>& samples, unsigned slot, std::size_t group, unsigned groupBits,
                uint8_t* target);

// Two samples in three bytes: the upper 8 bits of the first, the low bits of both, the upper 8 bits of the
// second.
void StorePairs(const std::vector<uint16_t>& samples, unsigned depth, uint8_t* target);

}  // namespace zynview

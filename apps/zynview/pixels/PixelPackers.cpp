#include "pixels/PixelPackers.h"

namespace zynview {

// Bytes of the packed slots, each one written from its highest bit to its lowest; s2[3..0] are bits 3 to 0 of
// the third sample:
//   12:  s0[7..0]   s1[3..0] s0[11..8]   s1[11..4]
//   10:  s0[7..0]   s1[5..0] s0[9..8]    s2[3..0] s1[9..6]   s3[1..0] s2[9..4]   s3[9..2]
void StoreSlots(const std::vector<uint16_t>& samples, unsigned slot, std::size_t group, unsigned groupBits,
                uint8_t* target) {
  const unsigned fill = groupBits - static_cast<unsigned>(group) * slot;
  uint64_t bits = 0;
  unsigned held = 0;
  std::size_t inGroup = 0;
  for (const uint16_t sample : samples) {
    bits |= uint64_t{sample} << held;
    held += slot;
    if (++inGroup == group) {
      inGroup = 0;
      held += fill;
    }
    for (; held >= 8; held -= 8, bits >>= 8) *target++ = static_cast<uint8_t>(bits);
  }
  if (held > 0) *target = static_cast<uint8_t>(bits);
}

// Bytes, written in the same way:
//   12:  s0[11..4]   s1[3..0] s0[3..0]           s1[11..4]
//   10:  s0[9..2]    0 0 s1[1..0] 0 0 s0[1..0]   s1[9..2]
void StorePairs(const std::vector<uint16_t>& samples, unsigned depth, uint8_t* target) {
  const unsigned low = depth - 8, mask = (1u << low) - 1;
  for (std::size_t i = 0; i < samples.size(); i += 2) {
    const bool both = i + 1 < samples.size();
    const unsigned first = samples[i], second = both ? samples[i + 1] : 0u;
    *target++ = static_cast<uint8_t>(first >> low);
    *target++ = static_cast<uint8_t>((first & mask) | (second & mask) << 4);
    if (both) *target++ = static_cast<uint8_t>(second >> low);
  }
}

}  // namespace zynview

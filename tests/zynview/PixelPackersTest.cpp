// Samples as the bytes of a line, against hand-made bytes and recorded ones.
#include "apps/zynview/pixels/PixelPackers.h"

#include <gtest/gtest.h>

#include "support/TestData.h"

using zynview::StorePairs;
using zynview::StoreSlots;

namespace {

using Samples = std::vector<uint16_t>;
using Bytes = std::vector<uint8_t>;

constexpr uint8_t kUntouched = 0xEE;

Bytes Slots(const Samples& samples, unsigned slot, std::size_t group, unsigned groupBits, std::size_t size) {
  Bytes bytes(size + 1, kUntouched);
  StoreSlots(samples, slot, group, groupBits, bytes.data());
  EXPECT_EQ(bytes.back(), kUntouched);
  bytes.pop_back();
  return bytes;
}

Bytes Pairs(const Samples& samples, unsigned depth, std::size_t size) {
  Bytes bytes(size + 1, kUntouched);
  StorePairs(samples, depth, bytes.data());
  EXPECT_EQ(bytes.back(), kUntouched);
  bytes.pop_back();
  return bytes;
}

Samples Words(const Bytes& bytes) {
  Samples words;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
    words.push_back(static_cast<uint16_t>(bytes[i] | bytes[i + 1] << 8));
  return words;
}

}  // namespace

TEST(PixelPackers, bit_streams_begin_with_the_lowest_bit) {
  EXPECT_EQ(Slots({0x2AB, 0x155, 0x3FF, 0x000}, 10, 1, 10, 5), (Bytes{0xAB, 0x56, 0xF5, 0x3F, 0x00}));
  EXPECT_EQ(Slots({0x001, 0x002, 0x003, 0x004}, 10, 1, 10, 5), (Bytes{0x01, 0x08, 0x30, 0x00, 0x01}));
  EXPECT_EQ(Slots({0xABC, 0x123}, 12, 1, 12, 3), (Bytes{0xBC, 0x3A, 0x12}));
}

TEST(PixelPackers, bytes_and_words_are_streams_of_8_and_16_bits) {
  EXPECT_EQ(Slots({0x12, 0xFF}, 8, 1, 8, 2), (Bytes{0x12, 0xFF}));
  EXPECT_EQ(Slots({0x1234, 0x0FFF}, 16, 1, 16, 4), (Bytes{0x34, 0x12, 0xFF, 0x0F}));
}

TEST(PixelPackers, a_group_is_filled_up_to_its_bits) {
  // 0x3FF | 0x001 << 10 | 0x200 << 20, and two bits of nothing.
  EXPECT_EQ(Slots({0x3FF, 0x001, 0x200}, 10, 3, 32, 4), (Bytes{0xFF, 0x07, 0x00, 0x20}));
  EXPECT_EQ(Slots({0x3FF, 0x3FF}, 10, 1, 12, 3), (Bytes{0xFF, 0xF3, 0x3F}));
}

TEST(PixelPackers, a_stream_that_ends_within_a_byte_leaves_zeros) {
  EXPECT_EQ(Slots({0xFFF}, 12, 1, 12, 2), (Bytes{0xFF, 0x0F}));
}

TEST(PixelPackers, pairs_keep_their_low_bits_in_the_middle) {
  EXPECT_EQ(Pairs({0x2AB, 0x155, 0x3FF, 0x000}, 10, 6), (Bytes{0xAA, 0x13, 0x55, 0xFF, 0x03, 0x00}));
  EXPECT_EQ(Pairs({0xABC, 0x123}, 12, 3), (Bytes{0xAB, 0x3C, 0x12}));
}

TEST(PixelPackers, a_last_sample_without_a_partner_takes_two_bytes) {
  EXPECT_EQ(Pairs({0xABC, 0x123, 0xDEF}, 12, 5), (Bytes{0xAB, 0x3C, 0x12, 0xDE, 0x0F}));
}

TEST(PixelPackers, recorded_samples_become_their_recorded_bytes) {
  for (const char* name : {"formats/dog_mono10_96x64", "formats/dog_bayergr10_96x64"}) {
    const std::string base(name);
    ZYN_DATA_OR_SKIP(words, base + ".u16le");
    ZYN_DATA_OR_SKIP(stream, base + ".10p");
    ZYN_DATA_OR_SKIP(pairs, base + ".10Packed");
    const Samples samples = Words(words);
    ASSERT_EQ(samples.size(), 96u * 64u);
    EXPECT_EQ(Slots(samples, 10, 1, 10, stream.size()), stream);
    EXPECT_EQ(Pairs(samples, 10, pairs.size()), pairs);
  }
}

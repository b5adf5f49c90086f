// The pass that unpacks bit streams, against a model that goes bit by bit. It works with integers: all
// comparisons are exact.
#include <gtest/gtest.h>

#include "PassFixture.h"
#include "gl/models/UnpackModel.h"
#include "gl/passes/QGLUnpackU3V.h"

namespace {

struct Packing {
  uint32_t packed, unpacked;
  int depth;
};

constexpr Packing kMono10p = {ZYN_PIXEL_MONO10P, ZYN_PIXEL_MONO10, 10};
constexpr Packing kMono12p = {ZYN_PIXEL_MONO12P, ZYN_PIXEL_MONO12, 12};

constexpr Packing kPackings[] = {
    kMono10p,
    kMono12p,
    {ZYN_PIXEL_BAYERGR10P, ZYN_PIXEL_BAYERGR10, 10},
    {ZYN_PIXEL_BAYERRG10P, ZYN_PIXEL_BAYERRG10, 10},
    {ZYN_PIXEL_BAYERGB10P, ZYN_PIXEL_BAYERGB10, 10},
    {ZYN_PIXEL_BAYERBG10P, ZYN_PIXEL_BAYERBG10, 10},
    {ZYN_PIXEL_BAYERGR12P, ZYN_PIXEL_BAYERGR12, 12},
    {ZYN_PIXEL_BAYERRG12P, ZYN_PIXEL_BAYERRG12, 12},
    {ZYN_PIXEL_BAYERGB12P, ZYN_PIXEL_BAYERGB12, 12},
    {ZYN_PIXEL_BAYERBG12P, ZYN_PIXEL_BAYERBG12, 12},
};

class UnpackPass : public PassFixture {
 protected:
  static int RowBytes(const Packing& packing, int width) { return width * packing.depth / 8; }

  Samples unpack(const Packing& packing, int width, int height, const std::vector<uint8_t>& bytes) {
    const int rowBytes = RowBytes(packing, width);
    makeTarget(width, height, packing.unpacked);
    RenderObjects::QGLUnpackU3V pass(surface.get());
    EXPECT_TRUE(init(pass, width, height, packing.packed,
                     {{"src.size.x", QTD::ToText(rowBytes)}, {"src.size.y", QTD::ToText(height)}}));
    const uint32_t texture = upload(rowBytes, height, 1, 8, Samples(bytes.begin(), bytes.end()));
    return render(pass, texture, 1, 16);
  }

  void expectModel(const Packing& packing, int width, int height, const std::vector<uint8_t>& bytes) {
    const Samples expected = model::UnpackedSamples(bytes, static_cast<size_t>(RowBytes(packing, width)),
                                                    static_cast<size_t>(width), static_cast<size_t>(height),
                                                    static_cast<size_t>(packing.depth));
    const Samples samples = unpack(packing, width, height, bytes);
    ASSERT_EQ(samples.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
      ASSERT_EQ(samples[i], expected[i]) << packing.depth << " bits, " << width << "x" << height
                                         << ", column " << i % static_cast<size_t>(width);
    }
  }

  static std::vector<uint8_t> Bytes(int count, uint32_t seed) {
    const Samples samples = Scattered(static_cast<size_t>(count), 255, seed);
    return {samples.begin(), samples.end()};
  }
};

}  // namespace

TEST_F(UnpackPass, takes_the_last_column_of_ten_bits_from_bytes_8_and_9) {
  const std::vector<uint8_t> bytes = {0, 0, 0, 0, 0, 0, 0, 0, 0x40, 0xA5};
  EXPECT_EQ(unpack(kMono10p, 8, 1, bytes)[7], 0x40u >> 6 | 0xA5u << 2);
}

TEST_F(UnpackPass, takes_the_second_column_of_twelve_bits_from_bytes_1_and_2) {
  EXPECT_EQ(unpack(kMono12p, 2, 1, {0x00, 0x70, 0x9C}), (Samples{0x000, 0x70 >> 4 | 0x9C << 4}));
}

TEST_F(UnpackPass, keeps_the_raw_scale_of_samples_of_all_ones) {
  EXPECT_EQ(unpack(kMono10p, 4, 1, std::vector<uint8_t>(5, 0xFF)), Samples(4, 1023));
  EXPECT_EQ(unpack(kMono12p, 2, 1, std::vector<uint8_t>(3, 0xFF)), Samples(2, 4095));
}

// One bit at a time: whatever a mask or a shift drops or adds shows.
TEST_F(UnpackPass, puts_every_bit_into_its_place) {
  for (const Packing& packing : {kMono10p, kMono12p}) {
    const int width = packing.depth == 10 ? 4 : 2;
    const int rowBytes = RowBytes(packing, width), rows = 8 * rowBytes;
    std::vector<uint8_t> bytes(static_cast<size_t>(rowBytes * rows));
    for (int bit = 0; bit < rows; ++bit) {
      bytes[static_cast<size_t>(bit * rowBytes + bit / 8)] = static_cast<uint8_t>(1 << bit % 8);
    }
    expectModel(packing, width, rows, bytes);
  }
}

TEST_F(UnpackPass, reads_every_value_of_a_byte) {
  std::vector<uint8_t> bytes;
  for (int value = 0; value < 256; ++value) {
    for (int i = 0; i < 3; ++i) bytes.push_back(static_cast<uint8_t>(value));
  }
  expectModel(kMono12p, 2, 256, bytes);
}

TEST_F(UnpackPass, unpacks_every_format_in_scattered_bytes) {
  for (const Packing& packing : kPackings) {
    expectModel(packing, 36, 7, Bytes(RowBytes(packing, 36) * 7, packing.packed));
  }
}

// Where a row's bits end within a byte, that byte is not there, and the last one stands in for it.
TEST_F(UnpackPass, unpacks_every_width_up_to_40) {
  for (const Packing& packing : {kMono10p, kMono12p}) {
    for (int width = 1; width <= 40; ++width) {
      expectModel(packing, width, 3, Bytes(RowBytes(packing, width) * 3, static_cast<uint32_t>(width)));
    }
  }
}

TEST_F(UnpackPass, hits_every_byte_of_the_longest_row) {
  const int limit = surface->properties.GetInt("gl.texture");
  ASSERT_GE(limit, 8192);
  for (const Packing& packing : {kMono10p, kMono12p}) {
    const int width = limit * 8 / packing.depth;
    ASSERT_LE(limit - RowBytes(packing, width), 1);
    expectModel(packing, width, 2, Bytes(RowBytes(packing, width) * 2, 77));
  }
}

// Lengths that are no power of two have reciprocals that are not exact.
TEST_F(UnpackPass, hits_every_byte_of_long_rows_of_odd_lengths) {
  for (const int width : {12345, 13099, 9999, 7001}) {
    expectModel(kMono10p, width, 1, Bytes(RowBytes(kMono10p, width), 5));
  }
  for (const int width : {10001, 10919, 8191, 5557}) {
    expectModel(kMono12p, width, 1, Bytes(RowBytes(kMono12p, width), 6));
  }
}

TEST_F(UnpackPass, keeps_the_rows_of_the_tallest_picture_apart) {
  const int limit = surface->properties.GetInt("gl.renderbuffer");
  expectModel(kMono12p, 2, limit, Bytes(3 * limit, 8));
}

TEST_F(UnpackPass, makes_a_target_of_the_unpacked_format_where_none_is_given) {
  for (const Packing& packing : kPackings) {
    RenderObjects::QGLUnpackU3V pass(surface.get());
    const Record image = MakeHeader(16, 4, packing.packed);
    ASSERT_TRUE(pass.Init(image.get(), nullptr));
    ASSERT_TRUE(pass.Out());
    EXPECT_EQ(pass.Out()->pixelType, packing.unpacked);
    EXPECT_EQ(pass.Out()->width, 16u);
    EXPECT_EQ(pass.Out()->height, 4u);
  }
}

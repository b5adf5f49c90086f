// Packed images on their way in: lines without padding, lines with it, and payloads that end within a byte.
#include "QTD/chain/QTDProcessor.h"
#include "tests/display/DisplayFixture.h"

namespace display_test {

namespace {

// Sample x of line y.
uint32_t Sample(uint32_t x, uint32_t y, uint32_t depth) {
  return (x * 37 + y * 411 + 5) & ((1u << depth) - 1);
}

// Samples one after the other, lowest bit first; with a pitch, each line begins at a multiple of it.
std::vector<uint8_t> Stream(uint32_t width, uint32_t height, uint32_t depth, size_t pitch = 0) {
  std::vector<uint8_t> bytes;
  size_t bit = 0;
  for (uint32_t y = 0; y < height; ++y) {
    if (pitch != 0) bit = y * pitch * 8;
    for (uint32_t x = 0; x < width; ++x) {
      for (uint32_t n = 0; n < depth; ++n, ++bit) {
        bytes.resize(std::max(bytes.size(), bit / 8 + 1), 0xEE);
        const auto mask = static_cast<uint8_t>(1u << bit % 8);
        const bool set = (Sample(x, y, depth) >> n & 1) != 0;
        bytes[bit / 8] = static_cast<uint8_t>(set ? bytes[bit / 8] | mask : bytes[bit / 8] & ~mask);
      }
    }
  }
  return bytes;
}

}  // namespace

class PackedIntake : public DisplayTest {
 protected:
  void ExpectShown(uint32_t code, uint32_t width, uint32_t height, uint32_t depth, uint32_t pitch,
                   std::vector<uint8_t> payload, uint32_t wholeSamples) {
    HostImage image(code, width, height);
    Start(image);
    image.pixels = std::move(payload);
    image.record.imageData = image.pixels.data();
    image.record.imageSize = static_cast<uint32_t>(image.pixels.size());
    image.record.linePitch = pitch;
    ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
    ASSERT_TRUE(WaitForImages(++images));
    ASSERT_EQ(receiver.LastResult(), "0");
    const ZynImage* const words = display->GetProcessor()->FindProcessor("unpack")->Out();
    ASSERT_NE(words, nullptr);
    for (uint32_t y = 0; y < height; ++y) {
      for (uint32_t x = 0; x < wholeSamples; ++x) {
        uint16_t word;
        std::memcpy(&word, words->imageData + y * words->linePitch + 2 * x, 2);
        ASSERT_EQ(word, Sample(x, y, depth)) << x << "," << y;
      }
    }
  }

  std::size_t images = 0;
};

TEST_F(PackedIntake, a_stream_without_padding_is_shown_whatever_its_pitch_says) {
  // 1938 samples are 2907 bytes, which a record rounds up to 2908.
  for (const uint32_t pitch : {2907u, 2908u, 0u})
    ExpectShown(ZYN_PIXEL_MONO12P, 1938, 4, 12, pitch, Stream(1938, 4, 12), 1938);
}

TEST_F(PackedIntake, a_stream_may_end_within_a_byte) {
  ExpectShown(ZYN_PIXEL_MONO12P, 3, 3, 12, 5, Stream(3, 3, 12), 3);  // 13.5 bytes
}

TEST_F(PackedIntake, lines_of_ten_bits_are_cut_at_whole_bytes) {
  // 50 samples are 62.5 bytes, of which a line has 62: its last sample is not whole.
  std::vector<uint8_t> payload;
  for (uint32_t y = 0; y < 4; ++y) {
    const std::vector<uint8_t> lines = Stream(50, y + 1, 10, 64);
    payload.insert(payload.end(), lines.begin() + y * 64, lines.begin() + y * 64 + 62);
  }
  ExpectShown(ZYN_PIXEL_MONO10P, 50, 4, 10, 62, payload, 49);
}

TEST_F(PackedIntake, lines_that_are_padded_wider_lose_their_padding) {
  std::vector<uint8_t> payload = Stream(1938, 4, 12, 3000);
  payload.resize(3000 * 4);
  ExpectShown(ZYN_PIXEL_MONO12P, 1938, 4, 12, 3000, payload, 1938);
  payload = Stream(20, 4, 10, 32);  // 25 bytes, made to 28
  payload.resize(32 * 4);
  ExpectShown(ZYN_PIXEL_MONO10P, 20, 4, 10, 32, payload, 20);
}

TEST_F(PackedIntake, missing_bytes_are_black) {
  std::vector<uint8_t> payload = Stream(8, 4, 12);
  payload.resize(12);
  HostImage image(ZYN_PIXEL_MONO12P, 8, 4);
  Start(image);
  image.record.imageSize = 12;
  std::copy(payload.begin(), payload.end(), image.pixels.begin());
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitForImages(1));
  EXPECT_EQ(receiver.LastResult(), "0");
  const ZynImage* const words = display->GetProcessor()->FindProcessor("unpack")->Out();
  EXPECT_NE(words->imageData[0], 0);
  for (uint32_t byte = 16; byte < words->imageSize; ++byte) ASSERT_EQ(words->imageData[byte], 0);
}

}  // namespace display_test

// One pixel of a camera image, in every format, against samples that the test itself has put there bit by
// bit.
#include "apps/zynview/pixels/RawSample.h"

#include <gtest/gtest.h>

#include <cctype>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "ZynPixelFormat.h"
#include "apps/zynview/pixels/PixelTable.h"
#include "support/FlatScene.h"

using flat_scene::EndsWith;
using flat_scene::StartsWith;
using zynview::RawSample;
using zynview::ReadSample;

namespace {

constexpr int kFormats = 133;

// An image in a block of exactly its size, so that a read beyond it is seen by the address sanitizer.
struct Block {
  ZynImage image{};
  std::unique_ptr<uint8_t[]> bytes;

  Block(uint32_t code, uint32_t width, uint32_t height, uint32_t pitch, uint32_t size) {
    bytes = std::make_unique<uint8_t[]>(size);
    image.pixelType = code;
    image.width = width;
    image.height = height;
    image.linePitch = pitch;
    image.imageSize = size;
    image.imageData = bytes.get();
  }

  void PutBit(uint64_t bit, bool value) {
    auto& byte = bytes[bit / 8];
    byte = static_cast<uint8_t>((byte & ~(1u << bit % 8)) | unsigned{value} << bit % 8);
  }
  void Put(uint64_t firstBit, int count, uint32_t value) {
    for (int i = 0; i < count; ++i) PutBit(firstBit + static_cast<uint64_t>(i), (value >> i) & 1);
  }
};

// How a format stores its samples, told by its name alone.
class Format {
 public:
  explicit Format(std::string formatName) : name(std::move(formatName)) {
    if (StartsWith(name, "TrueSense")) {
      depth = std::stoi(name.substr(name.rfind('_') + 1));
    } else {
      for (const int bits : {8, 10, 12, 14, 16}) {
        const std::string text = std::to_string(bits);
        const std::size_t found = name.rfind(text);
        if (found != std::string::npos && !std::isdigit(name[found + text.size()])) depth = bits;
      }
    }
  }

  std::string name;
  int depth = 0;

  bool IsYuv422() const { return name.find("422") != std::string::npos; }
  bool IsGrouped() const { return !StartsWith(name, "Mono") && !IsMosaic(); }
  bool IsMosaic() const { return StartsWith(name, "Bayer") || StartsWith(name, "TrueSense"); }
  bool IsPaired() const { return EndsWith(name, "Packed") && name.find("Brio") == std::string::npos; }

  // The letters of a pixel, or of two that share a group.
  std::string Letters() const {
    if (name == "YUV422_8_UYVY") return "UYVY";
    if (IsYuv422()) return "YUYV";
    if (name == "YUV444_8") return "YUVA";
    if (EndsWith(name, "a8")) return StartsWith(name, "RGB") ? "RGBA" : "BGRA";
    if (StartsWith(name, "RGB") || StartsWith(name, "BGR")) return name.substr(0, 3);
    return "L";
  }

  // Bits of a sample where it is not one of a pair.
  int Slot() const {
    if (name == "YUV422_10_PACKED" || StartsWith(name, "RGB_1")) return depth;
    if (name.find("Brio") != std::string::npos) return depth == 8 ? 8 : 12;
    if (!IsGrouped() && EndsWith(name, "p")) return depth;
    return depth == 8 ? 8 : 16;
  }
  // Bits of a pixel, or of two that share a group.
  int Group() const {
    if (name == "RGB_10_BRIO_Packed") return 32;
    if (name == "RGB_12_BRIO_Packed") return 36;
    return Slot() * static_cast<int>(Letters().size());
  }

  char Cell(uint32_t x, uint32_t y) const {
    if (StartsWith(name, "Bayer")) {
      // The first line is in the name; the second has the other two, so that green is on a diagonal.
      const char first = name[5], second = name[6];
      const bool greenFirst = first == 'G';
      const char colour = greenFirst ? second : first, other = colour == 'R' ? 'B' : 'R';
      const bool green = greenFirst == ((x + y) % 2 == 0);
      return green ? 'G' : y % 2 == 0 ? colour : other;
    }
    // TrueSense_BGGR_WBBW_1_12: the colours of the four 2x2 blocks, then the first block with its W, then the
    // phase. In each block W has the place that it has in the second name.
    const std::string blocks = name.substr(10, 4), block = name.substr(15, 4);
    const auto phase = static_cast<uint32_t>(name[20] - '0');
    const uint32_t column = (x + phase % 2) % 4, line = (y + phase / 2) % 4;
    if (block[line % 2 * 2 + column % 2] == 'W') return 'W';
    return blocks[line / 2 * 2 + column / 2];
  }
};

uint32_t Pitch(const Format& format, uint32_t width) {
  const uint32_t code = zynview::PixelCode(QString::fromStdString(format.name));
  // Two bytes more than a line needs.
  return (((code >> 16) & 0xFF) * (width + 1) + 7) / 8 + 2;
}

using Samples = std::map<char, uint32_t>;

// Fills an image with random samples and answers what each pixel has.
std::vector<Samples> Fill(Block& block, const Format& format, std::mt19937& random) {
  std::vector<Samples> all(std::size_t{block.image.width} * block.image.height);
  const auto top = (1u << format.depth) - 1;
  const uint64_t line = uint64_t{block.image.linePitch} * 8;
  for (uint32_t y = 0; y < block.image.height; ++y) {
    for (uint32_t x = 0; x < block.image.width; ++x) {
      Samples& pixel = all[std::size_t{y} * block.image.width + x];
      if (!format.IsGrouped()) {
        const auto value = static_cast<uint32_t>(random()) & top;
        pixel[format.IsMosaic() ? format.Cell(x, y) : 'L'] = value;
        if (!format.IsPaired()) {
          block.Put(line * y + uint64_t{x} * static_cast<uint64_t>(format.Slot()), format.Slot(), value);
          continue;
        }
        const int low = format.depth - 8;
        const uint64_t pair = line * y + uint64_t{x} / 2 * 24;
        block.Put(pair + (x % 2 == 0 ? 0 : 16), 8, value >> low);
        block.Put(pair + (x % 2 == 0 ? 8 : 12), 4, value & ((1u << low) - 1));
        continue;
      }
      const std::string letters = format.Letters();
      const bool second = format.IsYuv422() && x % 2 == 1;
      const uint64_t group = format.IsYuv422() ? x / 2 : x;
      if (second) {
        pixel = all[std::size_t{y} * block.image.width + x - 1];
        pixel.erase('Y');
      }
      for (std::size_t i = 0; i < letters.size(); ++i) {
        const bool secondY = letters[i] == 'Y' && letters.find('Y') != i;
        if (second != secondY) continue;
        const auto value = static_cast<uint32_t>(random()) & top;
        pixel[letters[i]] = value;
        block.Put(line * y + group * static_cast<uint64_t>(format.Group()) +
                      i * static_cast<uint64_t>(format.Slot()),
                  format.Slot(), value);
      }
    }
  }
  return all;
}

Samples AsMap(const RawSample& sample) {
  Samples samples;
  for (std::size_t i = 0; i < sample.count; ++i) samples[sample.parts[i].kind] = sample.parts[i].value;
  return samples;
}

}  // namespace

TEST(RawSample, is_what_the_camera_has_stored_in_every_format) {
  std::mt19937 random(7);
  for (int i = 0; i < kFormats; ++i) {
    const Format format(zynview::PixelRowAt(static_cast<uint32_t>(i))->name);
    SCOPED_TRACE(format.name);
    constexpr uint32_t kWidth = 10, kHeight = 5;
    const uint32_t pitch = Pitch(format, kWidth);
    Block block(zynview::PixelRowAt(static_cast<uint32_t>(i))->code, kWidth, kHeight, pitch, pitch * kHeight);
    const std::vector<Samples> wanted = Fill(block, format, random);
    for (uint32_t y = 0; y < kHeight; ++y) {
      for (uint32_t x = 0; x < kWidth; ++x) {
        RawSample sample;
        ASSERT_TRUE(ReadSample(block.image, x, y, &sample)) << x << ' ' << y;
        EXPECT_EQ(AsMap(sample), wanted[y * kWidth + x]) << x << ' ' << y;
        EXPECT_EQ(sample.depth, format.depth);
      }
    }
  }
}

TEST(RawSample, of_the_last_pixel_needs_no_byte_behind_it) {
  // Width, bytes of a line: an odd width, where samples share bytes.
  struct Row {
    uint32_t code, width, bytes;
  };
  for (const Row& row :
       {Row{ZYN_PIXEL_MONO10P, 5, 7}, Row{ZYN_PIXEL_MONO12PACKED, 2, 3}, Row{ZYN_PIXEL_MONO12P, 3, 5},
        Row{ZYN_PIXEL_MONO12PACKED, 3, 5}, Row{ZYN_PIXEL_BAYERRG10PACKED, 5, 8}, Row{ZYN_PIXEL_MONO16, 3, 6},
        Row{ZYN_PIXEL_RGB8, 3, 9}}) {
    const Block whole(row.code, row.width, 2, row.bytes, row.bytes * 2);
    RawSample sample;
    EXPECT_TRUE(ReadSample(whole.image, row.width - 1, 1, &sample)) << std::hex << row.code;
    const Block cut(row.code, row.width, 2, row.bytes, row.bytes * 2 - 1);
    EXPECT_FALSE(ReadSample(cut.image, row.width - 1, 1, &sample)) << std::hex << row.code;
    EXPECT_TRUE(ReadSample(cut.image, row.width - 1, 0, &sample)) << std::hex << row.code;
  }
}

TEST(RawSample, is_refused_off_the_picture_and_of_records_that_cannot_be) {
  Block block(ZYN_PIXEL_MONO8, 4, 3, 4, 12);
  RawSample sample;
  EXPECT_TRUE(ReadSample(block.image, 3, 2, &sample));
  EXPECT_FALSE(ReadSample(block.image, 4, 0, &sample));
  EXPECT_FALSE(ReadSample(block.image, 0, 3, &sample));
  ZynImage lying = block.image;
  lying.pixelType = 0x01080063;
  EXPECT_FALSE(ReadSample(lying, 0, 0, &sample));
  lying = block.image;
  lying.imageData = nullptr;
  EXPECT_FALSE(ReadSample(lying, 0, 0, &sample));
  lying = block.image;
  lying.width = lying.height = 0xFFFFFFFF;
  EXPECT_FALSE(ReadSample(lying, 0xFFFFFFFE, 0, &sample));
  EXPECT_FALSE(ReadSample(lying, 0, 0xFFFFFFFE, &sample));
  EXPECT_FALSE(ReadSample(lying, 4, 0, &sample)) << "a line ends where the next one begins";
  lying.linePitch = 0xFFFFFFFF;
  EXPECT_FALSE(ReadSample(lying, 12, 0, &sample));
  EXPECT_FALSE(ReadSample(lying, 0, 1, &sample));
}

TEST(RawSample, counts_lines_from_the_top_of_the_picture) {
  Block block(ZYN_PIXEL_MONO8, 1, 3, 1, 3);
  for (uint8_t i = 0; i < 3; ++i) block.bytes[i] = i;
  block.image.origin = 1;
  RawSample sample;
  for (uint32_t y = 0; y < 3; ++y) {
    ASSERT_TRUE(ReadSample(block.image, 0, y, &sample));
    EXPECT_EQ(sample.parts[0].value, 2 - y);
  }
}

TEST(RawSample, is_told_with_its_colours_and_its_range) {
  Block bayer(ZYN_PIXEL_BAYERRG12, 2, 1, 4, 4);
  bayer.bytes[2] = 0x2C;
  bayer.bytes[3] = 0x03;
  RawSample sample;
  ASSERT_TRUE(ReadSample(bayer.image, 1, 0, &sample));
  EXPECT_EQ(sample.Text(), QStringLiteral("G 812 of 4095"));
  Block bgr(ZYN_PIXEL_BGR8, 1, 1, 3, 3);
  for (uint8_t i = 0; i < 3; ++i) bgr.bytes[i] = static_cast<uint8_t>(i + 1);
  ASSERT_TRUE(ReadSample(bgr.image, 0, 0, &sample));
  EXPECT_EQ(sample.Text(), QStringLiteral("R 3  G 2  B 1 of 255"));
  Block uyvy(ZYN_PIXEL_YUV422_8_UYVY, 2, 1, 4, 4);
  for (uint8_t i = 0; i < 4; ++i) uyvy.bytes[i] = static_cast<uint8_t>(i + 1);
  ASSERT_TRUE(ReadSample(uyvy.image, 1, 0, &sample));
  EXPECT_EQ(sample.Text(), QStringLiteral("Y 4  U 1  V 3 of 255"));
  Block mono(ZYN_PIXEL_MONO16, 1, 1, 2, 2);
  ASSERT_TRUE(ReadSample(mono.image, 0, 0, &sample));
  EXPECT_EQ(sample.Text(), QStringLiteral("grey 0 of 65535"));
  EXPECT_EQ(RawSample().Text(), QString());
}

// PGM and PPM files with more than 8 bits.
#include "apps/zynview/sources/DeepNetpbm.h"

#include <gtest/gtest.h>

#include <QBuffer>

#include "ZynPixelFormat.h"

using zynview::DeepNetpbm;

namespace {

using Samples = std::vector<uint16_t>;

struct Read {
  explicit Read(const QByteArray& bytes) {
    QBuffer buffer;
    buffer.setData(bytes);
    EXPECT_TRUE(buffer.open(QIODevice::ReadOnly));
    isOne = zynview::ReadNetpbmHeader(buffer, &picture);
    good = isOne && zynview::ReadNetpbmSamples(buffer, &picture, &error);
    EXPECT_EQ(isOne && !good, !error.isEmpty()) << error.toStdString();
  }
  DeepNetpbm picture;
  QString error;
  bool isOne = false, good = false;
};

// The bytes between the quotes, zeros as well.
template <std::size_t N>
QByteArray Bytes(const char (&text)[N]) {
  return QByteArray(text, N - 1);
}

}  // namespace

TEST(DeepNetpbm, reads_samples_with_the_high_byte_first) {
  const Read grey(Bytes("P5\n2 1\n65535\n\x01\x02\xFE\xFF"));
  ASSERT_TRUE(grey.good) << grey.error.toStdString();
  EXPECT_EQ(grey.picture.width, 2u);
  EXPECT_EQ(grey.picture.height, 1u);
  EXPECT_EQ(grey.picture.samples, (Samples{0x0102, 0xFEFF}));
  const Read colour(Bytes("P6 1 1 4095 \x00\x01\x00\x02\x0F\xFF"));
  ASSERT_TRUE(colour.good) << colour.error.toStdString();
  EXPECT_EQ(colour.picture.channels, 3u);
  EXPECT_EQ(colour.picture.samples, (Samples{1, 2, 4095}));
}

TEST(DeepNetpbm, passes_comments_and_spaces_of_the_header) {
  const Read read(Bytes("P5# a camera, 99 99\r\n\t 1 #7\n\n2\n# 3 4\n 1023\n\x00\x05\x03\xFF"));
  ASSERT_TRUE(read.good) << read.error.toStdString();
  EXPECT_EQ(read.picture.width, 1u);
  EXPECT_EQ(read.picture.height, 2u);
  EXPECT_EQ(read.picture.samples, (Samples{5, 1023}));
  // One white space alone ends the header: the next byte is a sample, whatever it looks like.
  EXPECT_EQ(Read(Bytes("P5 1 1 65535\n\n\n")).picture.samples, (Samples{0x0A0A}));
}

TEST(DeepNetpbm, tells_the_format_by_the_greatest_value) {
  const auto format = [](const char* kind, uint32_t greatest) {
    DeepNetpbm picture;
    picture.channels = kind[1] == '5' ? 1 : 3;
    picture.greatest = greatest;
    return picture.PixelType();
  };
  EXPECT_EQ(format("P5", 1023), ZYN_PIXEL_MONO10);
  EXPECT_EQ(format("P5", 4095), ZYN_PIXEL_MONO12);
  EXPECT_EQ(format("P5", 16383), ZYN_PIXEL_MONO14);
  EXPECT_EQ(format("P5", 65535), ZYN_PIXEL_MONO16);
  EXPECT_EQ(format("P5", 1000), ZYN_PIXEL_MONO16);
  EXPECT_EQ(format("P6", 1023), ZYN_PIXEL_RGB10);
  EXPECT_EQ(format("P6", 4095), ZYN_PIXEL_RGB12);
  EXPECT_EQ(format("P6", 16383), ZYN_PIXEL_RGB14);
  EXPECT_EQ(format("P6", 65535), ZYN_PIXEL_RGB16);
  EXPECT_EQ(format("P6", 256), ZYN_PIXEL_RGB16);
}

TEST(DeepNetpbm, leaves_other_files_alone) {
  for (const char* text :
       {"", "P", "P5", "P5 ", "P5 1", "P5 1 1", "P5 1 1 65535", "P5 1 1 255 a", "P5 x 1 65535 ",
        "P5 -1 1 65535 ", "P4 1 1 65535 ", "P2 1 1 65535 1", "BM", "P5 1 1 0 ", "P5 1 1 65535x"})
    EXPECT_FALSE(Read(text).isOne) << text;
}

TEST(DeepNetpbm, refuses_what_its_header_claims_wrongly) {
  for (const char* text : {"P5 0 1 65535 ab", "P5 1 0 65535 ab", "P5 65536 1 1000 ab", "P5 1 1 65536 ab",
                           "P5 1 1 70000 ab", "P5 1 1 99999999999999999999 ab", "P5 4294967297 1 65535 ab",
                           "P5 65535 65535 65535 ab", "P6 30000 30000 65535 ab", "P5 1 2 65535 ab",
                           "P5 1 2 65535 abc", "P6 1 1 65535 abcde", "P5 1 1 1000 zz", "P5 1 1 65535 "}) {
    const Read read(text);
    EXPECT_TRUE(read.isOne && !read.good) << text;
    EXPECT_TRUE(read.picture.samples.size() < 3) << text << ": memory is taken for nothing";
  }
  EXPECT_TRUE(Read("P5 1 2 65535 ab").error.contains(QStringLiteral("4 bytes, but only 2")))
      << "what is there";
}

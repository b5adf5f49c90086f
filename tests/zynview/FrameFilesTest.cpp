// Pictures, raw frames and raw dumps on the disk.
#include "apps/zynview/sources/FrameFiles.h"

#include <QFileInfo>

#include <gtest/gtest.h>

#include "ZynPixelFormat.h"
#include "zynview/ViewerFiles.h"

using zynview::FileFormat;
using zynview::FrameFile;
using zynview::ListFrameFiles;
using zynview::LoadFrame;
using zynview::OwnFrame;

namespace {

constexpr char kTwoByThree[] = R"({"pixelFormat": "Mono8", "width": 2, "height": 3, "imageID": "42"})";

// The first frame of a path, and what is wrong with it.
struct Loaded {
  explicit Loaded(const QString& path, const FileFormat& format = {}, uint64_t number = 0) {
    const std::vector<FrameFile> files = ListFrameFiles({path}, format);
    EXPECT_EQ(files.size(), 1u);
    good = !files.empty() && LoadFrame(files.front(), number, format, &frame, &error);
    EXPECT_NE(good, !error.isEmpty()) << error.toStdString();
  }
  OwnFrame frame;
  QString error;
  bool good = false;
};

using Bytes = std::vector<uint8_t>;

}  // namespace

TEST(FrameFiles, opens_a_raw_frame_by_either_of_its_names) {
  const ViewerFiles files;
  const QString raw = files.Write("f.raw", "abcdef"), json = files.Write("f.json", kTwoByThree);
  for (const QString& path : {raw, json}) {
    const Loaded loaded(path);
    ASSERT_TRUE(loaded.good) << loaded.error.toStdString();
    EXPECT_EQ(loaded.frame.pixels, (Bytes{'a', 'b', 'c', 'd', 'e', 'f'}));
    EXPECT_EQ(loaded.frame.record.pixelType, ZYN_PIXEL_MONO8);
    EXPECT_EQ(loaded.frame.record.width, 2u);
    EXPECT_EQ(loaded.frame.record.height, 3u);
    EXPECT_EQ(loaded.frame.record.imageID, 42u);
  }
  EXPECT_EQ(ListFrameFiles({raw, json, raw}, {}).size(), 1u) << "one frame, named three times";
}

TEST(FrameFiles, refuses_a_raw_frame_that_is_not_as_its_sidecar_says) {
  const ViewerFiles files;
  files.Write("f.json", kTwoByThree);
  EXPECT_TRUE(Loaded(files.Path("f.json")).error.contains(QStringLiteral("f.raw"))) << "there is none";
  for (const char* bytes : {"", "abcde", "abcdefg"}) {
    const Loaded loaded(files.Write("f.raw", bytes));
    EXPECT_FALSE(loaded.good);
    EXPECT_TRUE(loaded.error.contains(QStringLiteral("3 lines of 2"))) << loaded.error.toStdString();
  }
  files.Write("f.json", R"({"pixelFormat": "Mono8", "width": 65535, "height": 65535})");
  EXPECT_FALSE(Loaded(files.Path("f.raw")).good);
  files.Write("f.json", "rubbish");
  EXPECT_TRUE(Loaded(files.Path("f.raw")).error.contains(QStringLiteral("f.json")));
  EXPECT_TRUE(Loaded(files.Write("g.raw", "abcdef")).error.contains(QStringLiteral("--format")));
}

TEST(FrameFiles, reads_dumps_of_several_frames_when_told_how) {
  const ViewerFiles files;
  const FileFormat format{ZYN_PIXEL_MONO8, QSize(2, 1), 0};
  const QString dump = files.Write("dump.bin", "abcde");
  const std::vector<FrameFile> listed = ListFrameFiles({dump}, format);
  ASSERT_EQ(listed.size(), 1u);
  EXPECT_EQ(listed.front().count, 2u) << "a half one does not count";
  EXPECT_EQ(listed.front().rest, 1u);
  EXPECT_EQ(Loaded(dump, format, 1).frame.pixels, (Bytes{'c', 'd'}));
  EXPECT_EQ(Loaded(dump, format, 1).frame.record.imageID, 2u);
  EXPECT_FALSE(Loaded(dump, format, 2).good);
  EXPECT_FALSE(Loaded(dump, FileFormat{ZYN_PIXEL_MONO8, QSize(4, 2), 0}).good) << "too short";
  EXPECT_FALSE(Loaded(dump, FileFormat{ZYN_PIXEL_MONO8, QSize(65535, 65535), 0}).good);
  EXPECT_TRUE(
      Loaded(dump, FileFormat{ZYN_PIXEL_MONO8, QSize(2, 1), 1}).error.contains(QStringLiteral("--pitch")));
  const Loaded padded(dump, FileFormat{ZYN_PIXEL_MONO8, QSize(1, 2), 2});
  EXPECT_EQ(padded.frame.record.linePitch, 2u);
  EXPECT_EQ(padded.frame.pixels, (Bytes{'a', 'b', 'c', 'd'}));
}

TEST(FrameFiles, tells_what_a_raw_dump_needs) {
  const ViewerFiles files;
  const QString dump = files.Write("dump.bin", "abcde");
  EXPECT_TRUE(Loaded(dump).error.contains(QStringLiteral("--format and --size")));
  EXPECT_TRUE(
      Loaded(dump, FileFormat{ZYN_PIXEL_MONO8, {}, 0}).error.contains(QStringLiteral("--size as well")));
  EXPECT_FALSE(Loaded(files.Path("missing.png")).error.contains(QStringLiteral("--format")));
}

TEST(FrameFiles, takes_pictures_as_grey_or_coloured_frames) {
  const ViewerFiles files;
  const Loaded grey(files.Grey("grey.png", 3, 2, 9));
  EXPECT_EQ(grey.frame.record.pixelType, ZYN_PIXEL_MONO8);
  EXPECT_EQ(grey.frame.pixels, Bytes(6, 9));
  const Loaded colour(files.Coloured("colour.png", 1, 1, qRgb(1, 2, 3)));
  EXPECT_EQ(colour.frame.record.pixelType, ZYN_PIXEL_RGB8);
  EXPECT_EQ(colour.frame.pixels, (Bytes{1, 2, 3}));
  const Loaded drawn(files.Coloured("drawn.png", 3, 1, qRgb(255, 0, 0)),
                     FileFormat{ZYN_PIXEL_MONO12P, {}, 0});
  EXPECT_EQ(drawn.frame.record.width, 2u) << "three pixels of 12 bits end within a byte";
  EXPECT_EQ(drawn.frame.pixels.size(), 3u);
}

// The samples of a frame of 16 bits each.
std::vector<int> Words(const OwnFrame& frame) {
  std::vector<int> words;
  for (std::size_t i = 0; i + 1 < frame.pixels.size(); i += 2)
    words.push_back(frame.pixels[i] | frame.pixels[i + 1] << 8);
  return words;
}

using Values = std::vector<int>;

TEST(FrameFiles, keeps_the_full_depth_of_pictures) {
  const ViewerFiles files;
  QImage grey(2, 1, QImage::Format_Grayscale16);
  auto* samples = reinterpret_cast<uint16_t*>(grey.bits());
  samples[0] = 0x1234, samples[1] = 0xABCD;
  ASSERT_TRUE(grey.save(files.Path("grey.png")));
  const Loaded mono(files.Path("grey.png"));
  EXPECT_EQ(mono.frame.record.pixelType, ZYN_PIXEL_MONO16);
  EXPECT_EQ(Words(mono.frame), (Values{0x1234, 0xABCD}));
  QImage image(1, 2, QImage::Format_RGBX64);
  image.setPixelColor(0, 0, QColor::fromRgba64(0x1234, 0x5678, 0x9ABC));
  image.setPixelColor(0, 1, QColor::fromRgba64(1, 256, 65535));
  ASSERT_TRUE(image.save(files.Path("colour.png")));
  const Loaded colour(files.Path("colour.png"));
  EXPECT_EQ(colour.frame.record.pixelType, ZYN_PIXEL_RGB16);
  EXPECT_EQ(colour.frame.record.linePitch, 6u);
  EXPECT_EQ(Words(colour.frame), (Values{0x1234, 0x5678, 0x9ABC, 1, 256, 65535}));
  const Loaded pgm(files.Write("twelve.pgm", QByteArray("P5 2 1 4095\n\x01\x23\x0F\xFF", 16)));
  EXPECT_EQ(pgm.frame.record.pixelType, ZYN_PIXEL_MONO12);
  EXPECT_EQ(Words(pgm.frame), (Values{0x123, 0xFFF}));
  const Loaded odd(files.Write("odd.pgm", QByteArray("P5 2 1 1000\n\x00\x07\x03\xE8", 16)));
  EXPECT_EQ(odd.frame.record.pixelType, ZYN_PIXEL_MONO16);
  EXPECT_EQ(Words(odd.frame), (Values{7, 1000})) << "as they stand";
  const Loaded ppm(files.Write("ten.ppm", QByteArray("P6 1 1 1023\n\x00\x01\x02\x03\x03\xFF", 18)));
  EXPECT_EQ(ppm.frame.record.pixelType, ZYN_PIXEL_RGB10);
  EXPECT_EQ(Words(ppm.frame), (Values{1, 0x203, 0x3FF}));
}

TEST(FrameFiles, draws_deep_pictures_in_other_formats_by_their_full_depth) {
  const ViewerFiles files;
  const auto drawn = [](const QString& file, uint32_t pixelType) {
    return Words(Loaded(file, FileFormat{pixelType, {}, 0}).frame);
  };
  // All values of 12 bits, in one line.
  QByteArray pgm("P5 4096 1 4095\n");
  Values all;
  for (int value = 0; value < 4096; ++value) {
    pgm += static_cast<char>(value >> 8);
    pgm += static_cast<char>(value & 0xFF);
    all.push_back(value);
  }
  const QString twelve = files.Write("twelve.pgm", pgm);
  EXPECT_EQ(drawn(twelve, ZYN_PIXEL_MONO12), all);
  Values ten;
  for (const int value : all) ten.push_back(value >> 2);
  EXPECT_EQ(drawn(twelve, ZYN_PIXEL_MONO10), ten);
  const QString sixteen = files.Write("sixteen.pgm", QByteArray("P5 2 1 65535\n\x12\x34\xAB\xCD", 17));
  EXPECT_EQ(drawn(sixteen, ZYN_PIXEL_MONO12), (Values{0x123, 0xABC}));
  EXPECT_EQ(drawn(sixteen, ZYN_PIXEL_MONO16), (Values{0x1234, 0xABCD}));
  const QString odd = files.Write("odd.pgm", QByteArray("P5 2 1 1000\n\x00\x00\x03\xE8", 16));
  EXPECT_EQ(drawn(odd, ZYN_PIXEL_MONO12), (Values{0, 4095})) << "its white is white";
  const QString colour = files.Write("c.ppm", QByteArray("P6 1 1 65535\n\x12\x34\x56\x78\x9A\xBC", 19));
  EXPECT_EQ(drawn(colour, ZYN_PIXEL_BGR12), (Values{0x9AB, 0x567, 0x123}));
}

TEST(FrameFiles, leaves_out_the_same_columns_of_each_line) {
  const ViewerFiles files;
  const QString pgm =
      files.Write("3.pgm", QByteArray("P5 3 2 65535\n\x10\0\x20\0\x30\0\x40\0\x50\0\x60\0", 25));
  // Mono12p takes two pixels in three bytes:   s0[7..0]   s1[3..0] s0[11..8]   s1[11..4]
  EXPECT_EQ(Loaded(pgm, FileFormat{ZYN_PIXEL_MONO12P, {}, 0}).frame.pixels,
            (Bytes{0x00, 0x01, 0x20, 0x00, 0x04, 0x50}));
}

TEST(FrameFiles, names_what_it_cannot_read) {
  const ViewerFiles files;
  for (const QString& path : {files.Write("broken.png", "\x89PNG\r\n\x1a\nbroken"), files.Path("missing.png"),
                              files.Write("empty.pgm", ""), files.Write("text.png", "text")}) {
    EXPECT_TRUE(Loaded(path).error.contains(path)) << path.toStdString();
  }
  const QString lying = files.Write("lying.pgm", "P5 30000 30000 65535 ab");
  EXPECT_TRUE(Loaded(lying).error.contains(lying));
  // A header of 32000 × 32000 pixels, and nothing behind it.
  const Loaded huge(files.Write("huge.pgm", "P5\n32000 32000\n255\n"));
  EXPECT_TRUE(huge.error.contains(QStringLiteral("too large"))) << huge.error.toStdString();
}

TEST(FrameFiles, finds_the_frames_of_a_folder_in_the_order_of_their_numbers) {
  const ViewerFiles files;
  files.Grey("frame-10.png", 1, 1, 0);
  files.Grey("frame-9.png", 1, 1, 0);
  files.Write("frame-8.raw", "abcdef");
  files.Write("frame-8.json", kTwoByThree);
  files.Write("notes.txt", "no frame");
  files.Write("package.json", "{}");
  ASSERT_TRUE(QDir(files.Path()).mkdir(QStringLiteral("frame-1.png")));
  QStringList names;
  for (const FrameFile& file : ListFrameFiles({files.Path()}, {})) names << QFileInfo(file.path).fileName();
  EXPECT_EQ(names, (QStringList{QStringLiteral("frame-8.raw"), QStringLiteral("frame-9.png"),
                                QStringLiteral("frame-10.png")}));
}

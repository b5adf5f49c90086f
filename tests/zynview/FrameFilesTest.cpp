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

TEST(FrameFiles, names_what_it_cannot_read) {
  const ViewerFiles files;
  for (const QString& path : {files.Write("broken.png", "\x89PNG\r\n\x1a\nbroken"), files.Path("missing.png"),
                              files.Write("empty.pgm", ""), files.Write("text.png", "text")}) {
    EXPECT_TRUE(Loaded(path).error.contains(path)) << path.toStdString();
  }
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

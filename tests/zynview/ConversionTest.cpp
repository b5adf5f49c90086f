// Frames into picture files without a window.
#include "apps/zynview/Conversion.h"

#include <gtest/gtest.h>

#include <QFileInfo>

#include "ZynPixelFormat.h"
#include "apps/zynview/sources/FileSource.h"
#include "apps/zynview/sources/SceneSource.h"
#include "zynview/ConvertingDisplay.h"
#include "zynview/FullDisk.h"
#include "zynview/ViewerFiles.h"

using zynview::FileSource;
using zynview::Options;

namespace {

struct Conversion {
  Conversion(zynview::FrameSource& source, const QString& out) {
    Options options;
    options.convert = out;
    QTextStream stream(&messages);
    code = zynview::ConvertFrames(source, &display, options, stream);
  }
  ConvertingDisplay display;
  QString messages;
  int code = -1;
};

int LevelOf(const QString& file) {
  const QImage picture(file);
  EXPECT_FALSE(picture.isNull()) << file.toStdString();
  return picture.isNull() ? -1 : qRed(picture.pixel(0, 0));
}

}  // namespace

TEST(Conversion, writes_one_frame_to_the_file) {
  const ViewerFiles files;
  FileSource source({files.Grey("in.pgm", 5, 4, 77)}, {}, 0);
  const Conversion conversion(source, files.Path("out.png"));
  EXPECT_EQ(conversion.code, 0);
  EXPECT_EQ(conversion.messages, QString());
  EXPECT_EQ(LevelOf(files.Path("out.png")), 77);
  EXPECT_EQ(QImage(files.Path("out.png")).size(), QSize(5, 4));
}

TEST(Conversion, writes_several_frames_into_a_folder_or_with_numbers) {
  const ViewerFiles files, out;
  files.Grey("a.png", 5, 4, 10);
  files.Grey("b.png", 6, 4, 20);
  FileSource source({files.Path()}, {}, 0);
  EXPECT_EQ(Conversion(source, out.Path("new/folder")).code, 0);
  EXPECT_EQ(LevelOf(out.Path("new/folder/a.png")), 10);
  EXPECT_EQ(LevelOf(out.Path("new/folder/b.png")), 20);
  EXPECT_EQ(Conversion(source, out.Path("c.png")).code, 0);
  EXPECT_EQ(LevelOf(out.Path("c-000001.png")), 10);
  EXPECT_EQ(LevelOf(out.Path("c-000002.png")), 20);
}

TEST(Conversion, takes_nothing_in_a_name_for_a_place_in_it) {
  EXPECT_EQ(zynview::PictureFileFor(QStringLiteral("a/of %2 and %3.png"), QString(), 6, 9),
            QStringLiteral("a/of %2 and %3-000007.png"));
}

TEST(Conversion, prepares_the_display_for_each_kind_of_frames) {
  const ViewerFiles files, out;
  files.Grey("1.png", 5, 4, 0);
  files.Grey("2.png", 5, 4, 0);
  files.Grey("3.png", 6, 4, 0);
  FileSource source({files.Path()}, {}, 0);
  const Conversion conversion(source, out.Path());
  EXPECT_EQ(conversion.code, 0);
  ASSERT_EQ(conversion.display.prepared.size(), 2u);
  EXPECT_EQ(conversion.display.prepared[1].width, 6u);
}

TEST(Conversion, names_what_is_missing_and_goes_on) {
  const ViewerFiles files, out;
  const QString broken = files.Write("a.png", "broken");
  files.Grey("b.png", 5, 4, 20);
  FileSource source({files.Path()}, {}, 0);
  const Conversion conversion(source, out.Path());
  EXPECT_EQ(conversion.code, 2);
  EXPECT_TRUE(conversion.messages.contains(broken)) << conversion.messages.toStdString();
  EXPECT_EQ(LevelOf(out.Path("b.png")), 20);
  FileSource missing({out.Path("nothing.png")}, {}, 0);
  EXPECT_EQ(Conversion(missing, out.Path()).code, 2);
  FileSource good({files.Path("b.png")}, {}, 0);
  EXPECT_EQ(Conversion(good, files.Path("a.png/below.png")).code, 2) << "no folder can be there";
}

TEST(Conversion, does_not_write_over_what_it_reads) {
  const ViewerFiles files;
  files.Grey("a.png", 5, 4, 20);
  FileSource source({files.Path()}, {}, 0);
  EXPECT_EQ(Conversion(source, files.Path()).code, 2);
  EXPECT_EQ(QImage(files.Path("a.png")).format(), QImage::Format_Grayscale8) << "as it was";
}

TEST(Conversion, touches_no_file_when_pictures_have_no_such_ending) {
  const ViewerFiles files;
  const QString raw = files.Write("p.raw", "abcdef");
  const QByteArray text = R"({"pixelFormat": "Mono8", "width": 2, "height": 3})";
  const QString sidecar = files.Write("p.json", text);
  FileSource source({raw}, {}, 0);
  const Conversion conversion(source, sidecar);
  EXPECT_EQ(conversion.code, 2);
  EXPECT_TRUE(conversion.messages.contains(QStringLiteral(".json"))) << conversion.messages.toStdString();
  EXPECT_TRUE(conversion.messages.contains(QStringLiteral(".png"))) << conversion.messages.toStdString();
  QFile left(sidecar);
  ASSERT_TRUE(left.open(QIODevice::ReadOnly));
  EXPECT_EQ(left.readAll(), text);
  EXPECT_EQ(Conversion(source, files.Path("new.folder/")).code, 0) << "a folder may be called anything";
}

TEST(Conversion, writes_over_no_file_that_it_has_still_to_read) {
  const ViewerFiles files;
  const QString second = files.Grey("s-000002.png", 5, 4, 20), first = files.Grey("s-000001.png", 5, 4, 10);
  FileSource source({second, first}, {}, 0);
  const Conversion conversion(source, files.Path("s.png"));
  EXPECT_EQ(conversion.code, 2);
  EXPECT_TRUE(conversion.messages.contains(QStringLiteral("s-000001.png")));
  EXPECT_TRUE(conversion.display.prepared.empty()) << "nothing is begun";
  EXPECT_EQ(LevelOf(first), 10);
  EXPECT_EQ(LevelOf(second), 20);
  ASSERT_TRUE(QFile::link(second, files.Path("link.png")));
  FileSource one({second}, {}, 0);
  EXPECT_EQ(Conversion(one, files.Path("link.png")).code, 2) << "by whatever name";
  EXPECT_EQ(QImage(second).format(), QImage::Format_Grayscale8) << "as it was";
}

TEST(Conversion, does_not_write_over_a_sidecar) {
  const ViewerFiles files;
  files.Write("p.raw", "abcdef");
  const QString sidecar = files.Write("p.json", R"({"pixelFormat": "Mono8", "width": 2, "height": 3})");
  ASSERT_TRUE(QFile::link(sidecar, files.Path("p.png")));
  FileSource source({files.Path("p.raw")}, {}, 0);
  EXPECT_EQ(Conversion(source, files.Path("p.png")).code, 2);
  FileSource again({sidecar}, {}, 0);
  EXPECT_EQ(Conversion(again, files.Path("other.png")).code, 0) << "it is still there";
}

TEST(Conversion, replaces_other_files) {
  const ViewerFiles files;
  files.Grey("out.png", 9, 9, 1);
  FileSource source({files.Grey("in.png", 5, 4, 77)}, {}, 0);
  EXPECT_EQ(Conversion(source, files.Path("out.png")).code, 0);
  EXPECT_EQ(LevelOf(files.Path("out.png")), 77);
}

TEST(Conversion, says_when_the_disk_is_full) {
  const ViewerFiles files;
  const QString out = files.Grey("out.bmp", 9, 9, 1);
  FileSource source({files.Grey("in.png", 50, 40, 77)}, {}, 0);
  {
    const FullDisk full(1000);
    EXPECT_EQ(Conversion(source, out).code, 2);
    EXPECT_EQ(Conversion(source, QStringLiteral("/dev/full")).code, 2);
  }
  EXPECT_EQ(LevelOf(out), 1) << "the old picture is still there";
}

TEST(Conversion, tells_of_bytes_that_are_no_whole_frame) {
  const ViewerFiles files;
  FileSource source({files.Write("dump.bin", "abcde")}, {ZYN_PIXEL_MONO8, QSize(2, 1), 0}, 0);
  const Conversion conversion(source, files.Path("out/"));
  EXPECT_EQ(conversion.code, 0) << "the whole ones are there";
  EXPECT_TRUE(conversion.messages.contains(QStringLiteral("last 1 bytes")));
  EXPECT_EQ(LevelOf(files.Path("out/dump-000002.png")), 'c');
}

TEST(Conversion, refuses_when_the_display_does) {
  const ViewerFiles files;
  FileSource source({files.Grey("in.png", 5, 4, 77)}, {}, 0);
  Options options;
  options.convert = files.Path("out.png");
  QString messages;
  QTextStream stream(&messages);
  ConvertingDisplay display;
  display.initCode = 0x80FF0001;
  EXPECT_EQ(zynview::ConvertFrames(source, &display, options, stream), 2);
  EXPECT_TRUE(messages.contains(QStringLiteral("0x80ff0001")));
  display.initCode = 0;
  options.color.gain = {2, 2, 2};
  EXPECT_EQ(zynview::ConvertFrames(source, &display, options, stream), 2) << "8 bits are not corrected";
  EXPECT_FALSE(QFileInfo::exists(options.convert));
}

TEST(Conversion, takes_one_frame_of_a_scene) {
  const ViewerFiles files;
  Options options;
  options.size = QSize(64, 48);
  zynview::SceneSource source(options);
  EXPECT_EQ(Conversion(source, files.Path("scene.png")).code, 0);
  EXPECT_EQ(QImage(files.Path("scene.png")).size(), QSize(64, 48));
}

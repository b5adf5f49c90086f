// Frames and pictures in files.
#include "apps/zynview/sources/FrameSaver.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include "ZynPixelFormat.h"
#include "apps/zynview/sources/Sidecar.h"
#include "zynview/ConvertingDisplay.h"
#include "zynview/FullDisk.h"

using zynview::OwnFrame;

namespace {

// Lines of 4 bytes, of which 3 are pixels: 0 1 2, 4 5 6.
OwnFrame Padded() {
  OwnFrame frame;
  frame.record = zynview::MakeRecord(ZYN_PIXEL_MONO8, 3, 2, 4, nullptr);
  frame.record.imageID = 42;
  for (uint8_t i = 0; i < 8; ++i) frame.pixels.push_back(i);
  return frame;
}

}  // namespace

TEST(FrameSaver, writes_a_raw_frame_without_its_padding) {
  const QTemporaryDir folder;
  QString name;
  EXPECT_EQ(zynview::SaveRawFrame(Padded(), folder.path(), QString(), &name), QString());
  EXPECT_EQ(name, QDir(folder.path()).filePath(QStringLiteral("zynview-000042-3x2-Mono8.raw")));
  QFile file(name);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(), QByteArray("\0\1\2\4\5\6", 6));
}

TEST(FrameSaver, describes_a_raw_frame_in_its_sidecar) {
  const QTemporaryDir folder;
  OwnFrame frame = Padded();
  frame.record.timestamp = 123456789012345678u;
  frame.record.origin = 1;
  QString name;
  EXPECT_EQ(zynview::SaveRawFrame(frame, folder.path(), QStringLiteral("a camera"), &name), QString());
  QFile file(folder.filePath(QStringLiteral("zynview-000042-3x2-Mono8.json")));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  zynview::Sidecar sidecar;
  QString error;
  ASSERT_TRUE(zynview::ReadSidecar(file.readAll(), &sidecar, &error)) << error.toStdString();
  EXPECT_EQ(sidecar.pixelType, ZYN_PIXEL_MONO8);
  EXPECT_EQ(sidecar.linePitch, 3u) << "of the file, which has no padding";
  EXPECT_EQ(sidecar.FileBytes(), 6u);
  EXPECT_EQ(sidecar.imageID, 42u);
  EXPECT_EQ(sidecar.timestamp, 123456789012345678u);
  EXPECT_EQ(sidecar.origin, 1u);
  EXPECT_EQ(sidecar.source, QStringLiteral("a camera"));
  EXPECT_FALSE(sidecar.date.isEmpty());
}

TEST(FrameSaver, leaves_a_lone_sidecar_alone) {
  const QTemporaryDir folder;
  QFile other(folder.filePath(QStringLiteral("zynview-000042-3x2-Mono8.json")));
  ASSERT_TRUE(other.open(QIODevice::WriteOnly));
  other.close();
  QString name;
  EXPECT_EQ(zynview::SaveRawFrame(Padded(), folder.path(), QString(), &name), QString());
  EXPECT_TRUE(name.endsWith(QStringLiteral("-2.raw")));
  EXPECT_EQ(other.size(), 0);
}

TEST(FrameSaver, turns_a_picture_whose_first_line_is_the_bottom_one) {
  ConvertingDisplay display;
  display.origin = 1;
  QImage picture;
  EXPECT_EQ(zynview::MakeWholePicture(Padded(), &display, &picture), QString());
  EXPECT_EQ(qRed(picture.pixel(0, 0)), 4);
  EXPECT_EQ(qRed(picture.pixel(0, 1)), 0);
}

TEST(FrameSaver, never_writes_over_a_file) {
  const QTemporaryDir folder;
  QString first, second, third;
  EXPECT_EQ(zynview::SaveRawFrame(Padded(), folder.path(), QString(), &first), QString());
  EXPECT_EQ(zynview::SaveRawFrame(Padded(), folder.path(), QString(), &second), QString());
  EXPECT_EQ(zynview::SaveRawFrame(Padded(), folder.path(), QString(), &third), QString());
  EXPECT_TRUE(second.endsWith(QStringLiteral("zynview-000042-3x2-Mono8-2.raw")));
  EXPECT_TRUE(third.endsWith(QStringLiteral("-3.raw")));
  EXPECT_EQ(QDir(folder.path()).entryList({QStringLiteral("*.raw")}, QDir::Files).size(), 3);
  EXPECT_EQ(QDir(folder.path()).entryList({QStringLiteral("*.json")}, QDir::Files).size(), 3);
}

TEST(FrameSaver, says_when_a_frame_cannot_be_written) {
  const QTemporaryDir folder;
  QString name;
  EXPECT_NE(zynview::SaveRawFrame(Padded(), folder.filePath(QStringLiteral("missing")), QString(), &name),
            QString());
  OwnFrame cut = Padded();
  cut.pixels.resize(6);
  EXPECT_NE(zynview::SaveRawFrame(cut, folder.path(), QString(), &name), QString());
  ConvertingDisplay display;
  EXPECT_NE(zynview::SaveWholePicture(Padded(), &display, folder.filePath(QStringLiteral("missing")), &name),
            QString());
}

TEST(FrameSaver, leaves_nothing_on_a_full_disk) {
  const QTemporaryDir folder;
  ConvertingDisplay display;
  QString name;
  const auto files = [&folder] { return QDir(folder.path()).entryList(QDir::Files).size(); };
  {
    const FullDisk full(0);
    EXPECT_NE(zynview::SaveRawFrame(Padded(), folder.path(), QString(), &name), QString());
    EXPECT_NE(zynview::SaveWholePicture(Padded(), &display, folder.path(), &name), QString());
  }
  EXPECT_EQ(files(), 0);
  {
    const FullDisk full(20);  // enough for 6 bytes of the frame, and not for the sidecar
    const QString problem = zynview::SaveRawFrame(Padded(), folder.path(), QString(), &name);
    EXPECT_TRUE(problem.contains(QStringLiteral(".json"))) << problem.toStdString();
  }
  EXPECT_EQ(files(), 0) << "a frame without its sidecar cannot be read";
}

TEST(FrameSaver, writes_the_picture_that_the_display_makes_of_the_frame) {
  const QTemporaryDir folder;
  ConvertingDisplay display;
  QString name;
  EXPECT_EQ(zynview::SaveWholePicture(Padded(), &display, folder.path(), &name), QString());
  EXPECT_TRUE(name.endsWith(QStringLiteral("zynview-000042.png")));
  const QImage picture(name);
  ASSERT_EQ(picture.size(), QSize(3, 2));
  EXPECT_EQ(picture.pixel(2, 0), qRgb(0, 0, 0));
  EXPECT_EQ(picture.pixel(0, 1), qRgb(4, 4, 4));
  EXPECT_EQ(display.releases, 0);
}

TEST(FrameSaver, prepares_the_converter_anew_when_it_does_not_fit) {
  const QTemporaryDir folder;
  ConvertingDisplay display;
  QString name;
  display.codes = {0x80FF0007};
  EXPECT_EQ(zynview::SaveWholePicture(Padded(), &display, folder.path(), &name), QString());
  EXPECT_EQ(display.releases, 1);
  EXPECT_EQ(display.conversions, 2);
  display.codes = {0x80FF0007, 0x80FF0007};
  EXPECT_TRUE(zynview::SaveWholePicture(Padded(), &display, folder.path(), &name)
                  .contains(QStringLiteral("code 0x80ff0007")));
  display.codes = {0x80FF0001};
  EXPECT_NE(zynview::SaveWholePicture(Padded(), &display, folder.path(), &name), QString());
  EXPECT_EQ(display.conversions, 5);
}

// Frames and pictures in files.
#include "apps/zynview/FrameSaver.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include "zynview/RecordingDisplay.h"

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

// Converts to RGB8: grey, from the first sample of each line.
struct ConvertingDisplay : RecordingDisplay {
  std::vector<uint32_t> codes;  // of the next conversions; none left: success
  int conversions = 0, releases = 0;

  void ReleaseConverter() override { ++releases; }
  uint32_t ConvertImage(const ZynImage* input, ZynImage* output) override {
    ++conversions;
    EXPECT_EQ(output->pixelType, ZYN_PIXEL_RGB8);
    EXPECT_GE(output->imageSize, output->linePitch * output->height);
    if (!codes.empty()) {
      const uint32_t code = codes.front();
      codes.erase(codes.begin());
      return code;
    }
    for (uint32_t y = 0; y < output->height; ++y) {
      for (uint32_t i = 0; i < output->width * 3; ++i)
        output->imageData[y * output->linePitch + i] = input->imageData[y * input->linePitch];
    }
    return 0;
  }
};

}  // namespace

TEST(FrameSaver, writes_a_raw_frame_without_its_padding) {
  const QTemporaryDir folder;
  QString name;
  EXPECT_EQ(zynview::SaveRawFrame(Padded(), folder.path(), &name), QString());
  EXPECT_EQ(name, QDir(folder.path()).filePath(QStringLiteral("zynview-000042-3x2-Mono8.raw")));
  QFile file(name);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(), QByteArray("\0\1\2\4\5\6", 6));
}

TEST(FrameSaver, never_writes_over_a_file) {
  const QTemporaryDir folder;
  QString first, second, third;
  EXPECT_EQ(zynview::SaveRawFrame(Padded(), folder.path(), &first), QString());
  EXPECT_EQ(zynview::SaveRawFrame(Padded(), folder.path(), &second), QString());
  EXPECT_EQ(zynview::SaveRawFrame(Padded(), folder.path(), &third), QString());
  EXPECT_TRUE(second.endsWith(QStringLiteral("zynview-000042-3x2-Mono8-2.raw")));
  EXPECT_TRUE(third.endsWith(QStringLiteral("-3.raw")));
  EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 3);
}

TEST(FrameSaver, says_when_a_frame_cannot_be_written) {
  const QTemporaryDir folder;
  QString name;
  EXPECT_NE(zynview::SaveRawFrame(Padded(), folder.filePath(QStringLiteral("missing")), &name), QString());
  OwnFrame cut = Padded();
  cut.pixels.resize(6);
  EXPECT_NE(zynview::SaveRawFrame(cut, folder.path(), &name), QString());
  ConvertingDisplay display;
  EXPECT_NE(zynview::SaveWholePicture(Padded(), &display, folder.filePath(QStringLiteral("missing")), &name),
            QString());
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

// Files that are written whole or not at all.
#include "apps/zynview/sources/SafeFile.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>

#include "zynview/FullDisk.h"
#include "zynview/ViewerFiles.h"

using zynview::Existing;
using zynview::WriteFile;
using zynview::WritePicture;

namespace {

QByteArray Bytes(const QString& name) {
  QFile file(name);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
  return file.readAll();
}

bool WriteNew(QIODevice& device) {
  return device.write("new") == 3;
}

QImage Picture() {
  QImage picture(40, 40, QImage::Format_RGB888);
  picture.fill(qRgb(1, 2, 3));
  return picture;
}

}  // namespace

TEST(SafeFile, replaces_a_file_when_the_new_one_is_whole) {
  const ViewerFiles files;
  const QString name = files.Write("a.txt", "old and longer");
  EXPECT_EQ(WriteFile(name, Existing::Replaced, WriteNew), QString());
  EXPECT_EQ(Bytes(name), "new");
  EXPECT_NE(WriteFile(name, Existing::Replaced, [](QIODevice& device) { return device.write("x") == 7; }),
            QString());
  EXPECT_EQ(Bytes(name), "new") << "what was written by halves is not there";
  EXPECT_EQ(QDir(files.Path()).entryList(QDir::Files).size(), 1) << "nor beside it";
}

TEST(SafeFile, keeps_what_is_there_when_it_is_told_to) {
  const ViewerFiles files;
  const QString name = files.Write("a.txt", "old");
  EXPECT_NE(WriteFile(name, Existing::Kept, WriteNew), QString());
  EXPECT_EQ(Bytes(name), "old");
  EXPECT_EQ(WriteFile(files.Path("b.txt"), Existing::Kept, WriteNew), QString());
  EXPECT_EQ(Bytes(files.Path("b.txt")), "new");
}

TEST(SafeFile, leaves_all_as_it_was_on_a_full_disk) {
  const ViewerFiles files;
  const QString old = files.Write("old.bmp", "old");
  {
    const FullDisk full(1000);  // a picture of 40 × 40 has 4800 bytes and a header
    for (const QString& problem :
         {WritePicture(Picture(), old), WritePicture(Picture(), files.Path("new.bmp")),
          WritePicture(Picture(), files.Path("kept.bmp"), Existing::Kept)}) {
      EXPECT_TRUE(problem.contains(QStringLiteral("File too large"))) << problem.toStdString();
    }
  }
  EXPECT_EQ(Bytes(old), "old");
  EXPECT_EQ(QDir(files.Path()).entryList(QDir::Files), QStringList{QStringLiteral("old.bmp")});
  EXPECT_EQ(WritePicture(Picture(), old), QString());
  EXPECT_EQ(QImage(old).pixel(39, 39), qRgb(1, 2, 3));
}

TEST(SafeFile, writes_to_a_device_without_taking_its_place) {
  const QString device = QStringLiteral("/dev/full");
  EXPECT_TRUE(WritePicture(Picture(), device).contains(device));
  const QFileInfo info(device);
  EXPECT_TRUE(info.exists() && !info.isFile());
  EXPECT_EQ(WritePicture(Picture(), QStringLiteral("/dev/null")), QString());
  EXPECT_FALSE(QFileInfo(QStringLiteral("/dev/null")).isFile());
}

TEST(SafeFile, takes_the_format_of_a_picture_from_the_ending) {
  const ViewerFiles files;
  EXPECT_EQ(WritePicture(Picture(), files.Path("a.BMP")), QString());
  EXPECT_TRUE(Bytes(files.Path("a.BMP")).startsWith("BM"));
  EXPECT_EQ(WritePicture(Picture(), files.Path("without")), QString());
  EXPECT_TRUE(Bytes(files.Path("without")).startsWith("\x89PNG"));
}

TEST(SafeFile, names_the_endings_that_are_possible_before_it_touches_a_file) {
  const ViewerFiles files;
  const QString old = files.Write("a.json", "{}");
  const QString problem = WritePicture(Picture(), old);
  EXPECT_TRUE(problem.contains(QStringLiteral(".json")) && problem.contains(QStringLiteral(".png")))
      << problem.toStdString();
  EXPECT_EQ(Bytes(old), "{}");
  EXPECT_EQ(zynview::PictureFormatProblem(old), problem);
  EXPECT_EQ(zynview::PictureFormatProblem(QStringLiteral("new.png")), QString());
}

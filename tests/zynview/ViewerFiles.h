// Files for the viewer's tests, written byte by byte.
#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QString>
#include <QTemporaryDir>

// A folder that goes away at the end of the test.
struct ViewerFiles {
  QTemporaryDir folder;

  QString Path(const char* name = "") const { return folder.filePath(QString::fromLatin1(name)); }
  QString Write(const char* name, const QByteArray& bytes) const {
    QFile file(Path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(file.write(bytes), bytes.size());
    return Path(name);
  }
  QString Grey(const char* name, int width, int height, int level) const {
    QImage picture(width, height, QImage::Format_Grayscale8);
    picture.fill(qRgb(level, level, level));
    EXPECT_TRUE(picture.save(Path(name)));
    return Path(name);
  }
  QString Coloured(const char* name, int width, int height, QRgb colour) const {
    QImage picture(width, height, QImage::Format_RGB888);
    picture.fill(colour);
    EXPECT_TRUE(picture.save(Path(name)));
    return Path(name);
  }
};

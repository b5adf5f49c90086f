// Pages and sources of the tree, as text.
#pragma once

#include <gtest/gtest.h>

#include <QFile>
#include <QString>

namespace guide {

// A path from the tree's root.
inline QString TextOf(const QString& path) {
  QFile file(QStringLiteral(ZYN_SOURCE_FOLDER "/") + path);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
  return QString::fromUtf8(file.readAll());
}

}  // namespace guide

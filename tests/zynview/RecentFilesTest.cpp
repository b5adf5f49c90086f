// The list of files that were opened last.
#include "apps/zynview/view/RecentFiles.h"

#include <gtest/gtest.h>

#include "zynview/ViewerFiles.h"

using zynview::RecentFiles;

TEST(RecentFiles, hold_the_newest_ten_first) {
  RecentFiles recent;
  for (int i = 1; i <= 12; ++i) recent.Add(QStringLiteral("/tmp/%1.png").arg(i));
  ASSERT_EQ(recent.Paths().size(), RecentFiles::kMost);
  EXPECT_EQ(recent.Paths().first(), QStringLiteral("/tmp/12.png"));
  EXPECT_EQ(recent.Paths().last(), QStringLiteral("/tmp/3.png"));
  EXPECT_EQ(RecentFiles(recent.Paths()).Paths(), recent.Paths());
}

TEST(RecentFiles, name_each_file_once) {
  RecentFiles recent;
  for (const char* path : {"/tmp/a", "/tmp/b", "/tmp/x/../a", "/tmp//b/"})
    recent.Add(QString::fromLatin1(path));
  EXPECT_EQ(recent.Paths(), (QStringList{QStringLiteral("/tmp/b"), QStringLiteral("/tmp/a")}));
  recent.Add(QStringLiteral("relative.png"));
  EXPECT_EQ(recent.Paths().first(), QDir::current().filePath(QStringLiteral("relative.png")));
  recent.Clear();
  EXPECT_TRUE(recent.Paths().isEmpty());
}

TEST(RecentFiles, know_what_is_gone) {
  const ViewerFiles files;
  EXPECT_TRUE(RecentFiles::IsThere(files.Write("a.png", "a")));
  EXPECT_TRUE(RecentFiles::IsThere(files.Path()));
  EXPECT_FALSE(RecentFiles::IsThere(files.Path("b.png")));
}

TEST(RecentFiles, have_labels_for_a_menu) {
  EXPECT_EQ(RecentFiles::Label(QStringLiteral("/a&b.png")), QStringLiteral("/a&&b.png"));
  const QString label = RecentFiles::Label(QStringLiteral("/home/") + QString(100, QLatin1Char('x')) +
                                           QStringLiteral("/end.png"));
  EXPECT_EQ(label.size(), 60);
  EXPECT_TRUE(label.startsWith(QStringLiteral("/home/")) && label.endsWith(QStringLiteral("/end.png")));
}

// What is remembered from one run to the next.
#include "apps/zynview/view/Settings.h"

#include <gtest/gtest.h>

#include "zynview/ViewerFiles.h"

using zynview::Options;
using zynview::Settings;

TEST(ViewerSettings, come_back_from_their_file) {
  const ViewerFiles files;
  {
    Settings settings = Settings::InFile(files.Path("zynview.ini"));
    EXPECT_TRUE(settings.AreKept());
    EXPECT_FALSE(settings.opengl || settings.statusLine || settings.overlays);
    settings.geometry = QByteArray("\0\1geometry", 10);
    settings.docks = "docks";
    settings.folder = files.Path();
    settings.recent.Add(QStringLiteral("/tmp/a.png"));
    settings.recent.Add(QStringLiteral("/tmp/b, c.png"));
    settings.opengl = settings.overlays = true;
    settings.Save();
  }
  const Settings settings = Settings::InFile(files.Path("zynview.ini"));
  EXPECT_EQ(settings.geometry, QByteArray("\0\1geometry", 10));
  EXPECT_EQ(settings.docks, QByteArray("docks"));
  EXPECT_EQ(settings.folder, files.Path());
  EXPECT_EQ(settings.recent.Paths(),
            (QStringList{QStringLiteral("/tmp/b, c.png"), QStringLiteral("/tmp/a.png")}));
  EXPECT_TRUE(settings.opengl && settings.overlays);
  EXPECT_FALSE(settings.statusLine || settings.information || settings.markExposure);
}

TEST(ViewerSettings, fill_in_what_the_command_line_leaves_open) {
  const ViewerFiles files;
  Settings settings = Settings::None();
  settings.opengl = settings.statusLine = true;
  settings.folder = files.Path();
  Options open;
  settings.Complete(&open);
  EXPECT_TRUE(open.opengl && open.statusLine);
  EXPECT_FALSE(open.overlays || open.information);
  EXPECT_EQ(open.folder, files.Path());

  Options said;
  said.processor = said.overlays = true;
  said.folder = QStringLiteral("/elsewhere");
  settings.Complete(&said);
  EXPECT_FALSE(said.opengl) << "--processor was said";
  EXPECT_TRUE(said.overlays);
  EXPECT_EQ(said.folder, QStringLiteral("/elsewhere"));
}

TEST(ViewerSettings, forget_a_folder_that_is_gone) {
  Settings settings = Settings::None();
  settings.folder = QStringLiteral("/no/such/folder");
  Options options;
  settings.Complete(&options);
  EXPECT_EQ(options.folder, QString());
}

TEST(ViewerSettings, are_nowhere_when_they_are_not_wanted) {
  Settings settings = Settings::None();
  EXPECT_FALSE(settings.AreKept());
  settings.opengl = true;
  settings.Save();
  EXPECT_FALSE(Settings::None().opengl);
}

TEST(ViewerSettings, read_a_damaged_file_as_empty) {
  const ViewerFiles files;
  const QString file = files.Write(
      "zynview.ini",
      "opengl=perhaps\n[window]\ngeometry=@Rect(1\n[view]\nstatus\n\xff\xfe[[[\nrecent=@Variant(\\0\\0)");
  const Settings settings = Settings::InFile(file);
  EXPECT_FALSE(settings.statusLine);
  EXPECT_TRUE(settings.recent.Paths().isEmpty());
}

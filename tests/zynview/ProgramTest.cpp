// The program itself, as it is started from a terminal.
#include <gtest/gtest.h>

#include <QProcess>
#include <QProcessEnvironment>
#include <algorithm>
#include <cstdlib>

#include "zynview/Viewer.h"

namespace {

struct Program {
  // Its settings have a place of their own, which is empty at first. Without a screen there is no OpenGL.
  explicit Program(const QStringList& arguments, bool withScreen = false, bool withPlatform = true) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), settings.Path());
    if (!withScreen) {
      environment.remove(QStringLiteral("LD_PRELOAD"));  // the driver of OpenGL: tools/sanitizer-environment
      environment.remove(QStringLiteral("DISPLAY"));
      environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
      environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
      if (withPlatform) environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    }
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(ZYNVIEW_PROGRAM), arguments);
    EXPECT_TRUE(process.waitForFinished(kPatienceMilliseconds));
    code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    out = QString::fromUtf8(process.readAllStandardOutput());
    messages = QString::fromUtf8(process.readAllStandardError());
  }

  ViewerFiles settings;
  int code = -1;
  QString out, messages;
};

QStringList Words(const char* line) {
  return QString::fromLatin1(line).split(QLatin1Char(' '));
}

// The largest difference of two pictures of the same size; 256 when they are not.
int DifferenceOf(const QString& a, const QString& b) {
  const QImage first(a), second(b);
  if (first.isNull() || first.size() != second.size()) return 256;
  int most = 0;
  for (int y = 0; y < first.height(); ++y) {
    for (int x = 0; x < first.width(); ++x) {
      const QRgb p = first.pixel(x, y), q = second.pixel(x, y);
      most = std::max({most, std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                       std::abs(qBlue(p) - qBlue(q))});
    }
  }
  return most;
}

}  // namespace

TEST(ViewerProgram, shows_a_file_and_tells_its_figures) {
  const ViewerFiles files;
  const Program run({files.Grey("grey.png", 40, 30, 77), QStringLiteral("--seconds"), QStringLiteral("5")});
  EXPECT_EQ(run.code, 0) << run.messages.toStdString();
  EXPECT_TRUE(run.out.contains(QStringLiteral("grey.png"))) << run.out.toStdString();
  EXPECT_TRUE(run.out.contains(QStringLiteral("0 failed"))) << run.out.toStdString();
}

TEST(ViewerProgram, ends_with_2_and_a_message_when_something_is_wrong) {
  for (const char* line : {"/no/such/file.png", "--nonsense", "--scene --format NoSuchFormat",
                           "--scene --format TrueSense_BGGR_WBBW_0_8"}) {
    const Program run(Words(line));
    EXPECT_EQ(run.code, 2) << line;
    EXPECT_TRUE(run.messages.contains(QStringLiteral("zynview: "))) << line;
  }
}

TEST(ViewerProgram, ends_with_2_when_the_picture_cannot_be_saved) {
  const Program run(Words("--scene --size 64x48 --seconds 2 --save /dev/full"));
  EXPECT_EQ(run.code, 2) << run.out.toStdString() << run.messages.toStdString();
  EXPECT_TRUE(run.out.contains(QStringLiteral("could not be saved"))) << run.out.toStdString();
}

TEST(ViewerProgram, says_what_is_wrong_where_there_is_no_screen) {
  const Program window(Words("--scene --no-settings --seconds 1"), false, false);
  EXPECT_EQ(window.code, 2);
  EXPECT_TRUE(window.messages.contains(QStringLiteral("there is no screen")))
      << window.messages.toStdString();
  const Program mistake(Words("--nonsense"), false, false);
  EXPECT_EQ(mistake.code, 2);
  EXPECT_TRUE(mistake.messages.contains(QStringLiteral("nonsense"))) << "comes first";
  EXPECT_EQ(Program(Words("--scene --no-settings --seconds 5 -platform offscreen"), false, false).code, 0);
  EXPECT_EQ(Program({QStringLiteral("--help")}, false, false).code, 0);
}

TEST(ViewerProgram, tells_help_and_version) {
  const Program help({QStringLiteral("--help")}), version({QStringLiteral("--version")});
  EXPECT_EQ(help.code, 0);
  EXPECT_TRUE(help.out.contains(QStringLiteral("--convert")));
  EXPECT_EQ(version.code, 0);
  EXPECT_TRUE(version.out.startsWith(QStringLiteral("zynview ")));
}

TEST(ViewerProgram, converts_on_the_processor_without_a_screen) {
  const ViewerFiles out;
  const Program run(Words("--scene --format BayerRG12p --size 64x48 --convert") << out.Path("a.png"));
  EXPECT_EQ(run.code, 0) << run.messages.toStdString();
  EXPECT_EQ(QImage(out.Path("a.png")).size(), QSize(64, 48));
}

TEST(ViewerProgram, says_that_shaders_want_a_screen) {
  const ViewerFiles out;
  const Program run(Words("--scene --size 64x48 --opengl --convert") << out.Path("a.png"));
  EXPECT_EQ(run.code, 2);
  EXPECT_TRUE(run.messages.contains(QStringLiteral("OpenGL cannot be had"))) << run.messages.toStdString();
  EXPECT_FALSE(QFile::exists(out.Path("a.png")));
}

TEST(ViewerProgram, converts_through_shaders_on_the_screen) {
  const ViewerFiles out;
  for (const char* format : {"Mono12", "RGB8", "BGR16", "YUV422_8_UYVY"}) {
    const QStringList scene = Words("--scene --size 64x48 --convert")
                              << out.Path("a.png") << Words("--format") << QString::fromLatin1(format);
    const Program shaders(
        QStringList(scene).replaceInStrings(QStringLiteral("a.png"), QStringLiteral("b.png"))
            << QStringLiteral("--opengl"),
        true);
    EXPECT_EQ(shaders.code, 0) << format << shaders.messages.toStdString();
    EXPECT_EQ(Program(scene).code, 0) << format;
    // One rounds where the other cuts off.
    EXPECT_LE(DifferenceOf(out.Path("a.png"), out.Path("b.png")), 1) << format;
  }
}

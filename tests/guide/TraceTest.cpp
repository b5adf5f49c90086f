// The trace, as a program has it that finds the settings file of the guide.
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "tests/guide/GuideTest.h"
#include "tests/guide/Pages.h"

namespace guide {

class Trace : public testing::Test {
 protected:
  // Runs one test of this program in `folder`, and answers what it tells of the trace.
  QString RunIn(const QString& folder, const QString& settingsFolder) {
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ZYN_LOG_DIR"), settingsFolder);
    environment.insert(QStringLiteral("ZYN_DEBUG_CHANNEL"), QStringLiteral("stderr"));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    child.setProcessEnvironment(environment);
    child.setWorkingDirectory(folder);
    child.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("--gtest_filter=Stages.exposure_marks")});
    EXPECT_TRUE(child.waitForFinished(120000));
    EXPECT_EQ(child.exitCode(), 0);
    return QString::fromLocal8Bit(child.readAllStandardError());
  }
  static void PutSettings(const QString& folder) {
    const QString source = QStringLiteral(ZYN_SOURCE_FOLDER "/tests/guide/zynlog4cpp.property");
    ASSERT_TRUE(QFile::copy(source, folder + QStringLiteral("/zynlog4cpp.property")));
  }
  static QByteArray Log(const QString& folder) {
    QFile file(folder + QStringLiteral("/zyn.log"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }

  // The sample of the page: each line from its level on, up to the first number.
  static QStringList SampleLines() {
    const QString page = TextOf(QStringLiteral("docs/trace-logging.md"));
    static const QRegularExpression line(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d [\\d:,]+ ([A-Z]+ [^\\d\\n]*)"),
                                         QRegularExpression::MultilineOption);
    QStringList lines;
    for (auto found = line.globalMatch(page); found.hasNext();) lines << found.next().captured(1).trimmed();
    return lines;
  }

  QTemporaryDir work, settings;
};

TEST_F(Trace, the_settings_are_read_from_the_folder_that_is_named) {
  PutSettings(settings.path());
  EXPECT_TRUE(RunIn(work.path(), settings.path()).contains(QStringLiteral("configure succeeded")));
  const QByteArray log = Log(work.path());
  EXPECT_TRUE(log.contains("INFO DisplayQt: -> Enter"));
  EXPECT_TRUE(log.contains("DEBUG QTDProcessor::ProcessImage() -> ENTER"));
  EXPECT_TRUE(log.contains("INFO DisplayQt: <- Exit"));
}

TEST_F(Trace, without_a_folder_the_current_one_counts) {
  PutSettings(work.path());
  // A file stands where the folder should be: it can neither be used nor made.
  const QString blocked = settings.filePath(QStringLiteral("file"));
  ASSERT_TRUE(QFile(blocked).open(QIODevice::WriteOnly));
  EXPECT_TRUE(RunIn(work.path(), blocked).contains(QStringLiteral("configure succeeded")));
  EXPECT_TRUE(Log(work.path()).contains("INFO DisplayQt: -> Enter"));
}

TEST_F(Trace, without_the_file_nothing_is_written) {
  EXPECT_TRUE(RunIn(work.path(), settings.path()).contains(QStringLiteral("logging is disabled")));
  EXPECT_TRUE(Log(work.path()).isEmpty());
}

// When the window paints is its own matter: its lines are looked up in the source.
TEST_F(Trace, the_sample_of_the_page_has_the_lines_of_an_image_in_their_order) {
  PutSettings(settings.path());
  RunIn(work.path(), settings.path());
  const QString log = QString::fromLocal8Bit(Log(work.path()));
  const QDir window(QStringLiteral(ZYN_SOURCE_FOLDER "/QTD/window"));
  QString source;
  for (const QString& name : window.entryList({QStringLiteral("*.cpp")}))
    source += TextOf(QStringLiteral("QTD/window/") + name);

  const QStringList sample = SampleLines();
  EXPECT_GT(sample.size(), 20);
  const QString painting = QStringLiteral("DEBUG QTDWindow::");
  const QString level = QStringLiteral("DEBUG ");
  QString::size_type at = 0;
  for (const QString& line : sample) {
    if (line.startsWith(painting)) {
      EXPECT_TRUE(source.contains(QLatin1Char('"') + line.mid(level.size()))) << qPrintable(line);
      continue;
    }
    const auto found = log.indexOf(line, at);
    EXPECT_GE(found, at) << qPrintable(line);
    if (found >= at) at = found + line.size();
  }
}

}  // namespace guide

// The places that the pages for contributors name are there: files, folders and tests.
#include <QDirIterator>
#include <QFileInfo>
#include <QRegularExpression>

#include "tests/guide/GuideTest.h"
#include "tests/guide/Pages.h"

namespace guide {
namespace {

// What stands in backticks.
QStringList Names(const QString& page) {
  QStringList names;
  static const QRegularExpression code(QStringLiteral("`([^`\n]+)`"));
  for (auto found = code.globalMatch(page); found.hasNext();) names << found.next().captured(1);
  return names;
}

bool IsThere(const QString& place) {
  return QFileInfo::exists(QStringLiteral(ZYN_SOURCE_FOLDER "/") + place);
}

// "TEST(Suite, name)" of all tests, as "Suite.name".
QStringList Tests() {
  QStringList tests;
  static const QRegularExpression test(QStringLiteral("\\bTEST(?:_F|_P)?\\((\\w+),\\s*(\\w+)\\)"));
  const QString folder = QStringLiteral(ZYN_SOURCE_FOLDER "/");
  QDirIterator files(folder + QStringLiteral("tests"), {QStringLiteral("*.cpp")}, QDir::Files,
                     QDirIterator::Subdirectories);
  while (files.hasNext()) {
    const QString text = TextOf(files.next().mid(folder.size()));
    for (auto found = test.globalMatch(text); found.hasNext();) {
      const QRegularExpressionMatch match = found.next();
      tests << match.captured(1) + QLatin1Char('.') + match.captured(2);
    }
  }
  return tests;
}

class Places : public testing::TestWithParam<const char*> {
 protected:
  const QStringList names = Names(TextOf(QString::fromLatin1(GetParam())));
};

}  // namespace

TEST_P(Places, that_are_files_or_folders_exist) {
  static const QRegularExpression path(QStringLiteral(
      "^(QTD|apps|bench|cmake|cpu|debian|demosaicing|docs|examples|fuzz|gl|include|tests|tools)"
      "/[\\w./-]*$"));
  int paths = 0;
  for (const QString& name : names) {
    if (!path.match(name).hasMatch()) continue;
    ++paths;
    EXPECT_TRUE(IsThere(name)) << qPrintable(name);
  }
  EXPECT_GT(paths, 5);
}

TEST_P(Places, that_are_tests_exist) {
  const QStringList tests = Tests();
  static const QRegularExpression name(QStringLiteral("^[A-Z]\\w+\\.[a-z]\\w*_\\w+$"));
  for (const QString& each : names) {
    if (!name.match(each).hasMatch()) continue;
    EXPECT_TRUE(tests.contains(each)) << qPrintable(each);
  }
}

INSTANTIATE_TEST_SUITE_P(Pages, Places, testing::Values("docs/contributing.md", "docs/architecture.md"),
                         [](const testing::TestParamInfo<const char*>& page) {
                           return page.index == 0 ? "contributing" : "architecture";
                         });

}  // namespace guide

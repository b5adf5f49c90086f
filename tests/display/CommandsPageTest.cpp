// The commands of a display, and the page of the host guide that tells them.
#include <QRegularExpression>
#include <QStringList>
#include <algorithm>
#include <set>

#include "QTD/display/QTDDisplay.h"
#include "QTD/display/ZynDisplayImpl.h"
#include "tests/guide/Pages.h"

namespace display_test {
namespace {

// The names in the first cells of the tables behind "<!-- commands -->".
QStringList ToldCommands() {
  QStringList told;
  static const QRegularExpression code(QStringLiteral("`([^`]+)`"));
  bool inTable = false;
  for (const QString& line : guide::TextOf(QStringLiteral("docs/host-guide.md")).split(QLatin1Char('\n'))) {
    if (line == QStringLiteral("<!-- commands -->")) inTable = true;
    if (line.isEmpty()) inTable = false;
    if (!inTable) continue;
    const QString cell = line.section(QLatin1Char('|'), 1, 1);
    for (auto found = code.globalMatch(cell); found.hasNext();) told << found.next().captured(1);
  }
  return told;
}

bool IsTold(const std::string& name) {
  return ToldCommands().contains(QString::fromStdString(name));
}

}  // namespace

TEST(CommandsPage, tells_every_command_of_a_controller) {
  const std::vector<std::string> names = QTDDisplay::CommandNames();
  EXPECT_GT(names.size(), 20u);
  EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), names.size());
  for (const std::string& name : names) EXPECT_TRUE(IsTold(name)) << name;
}

TEST(CommandsPage, tells_every_short_command_of_a_display) {
  const std::vector<std::string> names = ZynDisplayImpl::CommandNames();
  EXPECT_EQ(names.size(), 7u);
  for (const std::string& name : names) EXPECT_TRUE(IsTold(name)) << name;
}

TEST(CommandsPage, tells_no_other_command) {
  std::vector<std::string> names = QTDDisplay::CommandNames();
  for (const std::string& name : ZynDisplayImpl::CommandNames()) names.push_back(name);
  for (const QString& told : ToldCommands()) {
    if (told.startsWith(QLatin1Char('@'))) continue;  // a message
    EXPECT_NE(std::find(names.begin(), names.end(), told.toStdString()), names.end()) << qPrintable(told);
  }
}

}  // namespace display_test

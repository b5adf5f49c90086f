// The guide says what the examples do: its code is theirs, letter for letter, its defaults are the library's,
// and what its tables name stands in an example or a check.
#include <QDir>
#include <QRegularExpression>
#include <map>

#include "tests/guide/GuideTest.h"
#include "tests/guide/Pages.h"

namespace guide {
namespace {

using Snippets = std::map<QString, QString>;

QString GuidePage() {
  return TextOf(QStringLiteral("docs/host-guide.md"));
}

QStringList Sources() {
  QStringList texts;
  const QDir folder(QStringLiteral(ZYN_SOURCE_FOLDER "/tests/guide"));
  for (const QString& name : folder.entryList({QStringLiteral("*.cpp"), QStringLiteral("*.h")}))
    texts << TextOf(QStringLiteral("tests/guide/") + name);
  return texts;
}

// The lines without the blanks that all of them begin with.
QString Dedented(const QStringList& lines) {
  using Length = decltype(lines.front().size());  // int with Qt 5
  Length common = 1000;
  for (const QString& line : lines) {
    if (line.trimmed().isEmpty()) continue;
    Length blanks = 0;
    while (line[blanks] == QLatin1Char(' ')) ++blanks;
    common = std::min(common, blanks);
  }
  QString text;
  for (const QString& line : lines) text += line.mid(std::min(common, line.size())) + QLatin1Char('\n');
  return text;
}

// What stands between "// [name]" and "// [/name]".
Snippets FromSources() {
  Snippets snippets;
  static const QRegularExpression begin(QStringLiteral("^\\s*// \\[(\\w+)\\]$"));
  for (const QString& source : Sources()) {
    QString name;
    QStringList lines;
    for (const QString& line : source.split(QLatin1Char('\n'))) {
      const QRegularExpressionMatch match = begin.match(line);
      if (match.hasMatch()) {
        EXPECT_TRUE(name.isEmpty()) << qPrintable(name) << " has no end";
        name = match.captured(1);
        lines.clear();
      } else if (!name.isEmpty() && line.trimmed() == QStringLiteral("// [/%1]").arg(name)) {
        EXPECT_EQ(snippets.count(name), 0u) << qPrintable(name) << " stands twice";
        snippets[name] = Dedented(lines);
        name.clear();
      } else if (!name.isEmpty()) {
        lines << line;
      }
    }
    EXPECT_TRUE(name.isEmpty()) << qPrintable(name) << " has no end";
  }
  return snippets;
}

// What stands in the page's fences, of which each begins with "// name".
Snippets FromPage(const QString& page) {
  Snippets snippets;
  static const QRegularExpression fence(QStringLiteral("```cpp\n// (\\w+)\n(.*?)```\n"),
                                        QRegularExpression::DotMatchesEverythingOption);
  for (auto found = fence.globalMatch(page); found.hasNext();) {
    const QRegularExpressionMatch match = found.next();
    EXPECT_EQ(snippets.count(match.captured(1)), 0u) << qPrintable(match.captured(1)) << " stands twice";
    snippets[match.captured(1)] = match.captured(2);
  }
  EXPECT_EQ(page.count(QStringLiteral("```cpp")), static_cast<int>(snippets.size()))
      << "a fence without a name";
  return snippets;
}

struct TableRow {
  QStringList names;      // in backticks in the first cell
  QStringList arguments;  // in backticks in the others
  QStringList cells;
  int defaultColumn;  // -1: the table has none
};

// The rows of the tables behind "<!-- kind -->", or of all such tables where `kind` is empty.
std::vector<TableRow> Rows(const QString& kind) {
  std::vector<TableRow> rows;
  static const QRegularExpression mark(QStringLiteral("^<!-- (.*) -->$")), code(QStringLiteral("`([^`]+)`"));
  bool wanted = false;
  int column = -1;
  for (const QString& line : GuidePage().split(QLatin1Char('\n'))) {
    if (const QRegularExpressionMatch match = mark.match(line); match.hasMatch()) {
      wanted = kind.isEmpty() || match.captured(1) == kind;
      column = -1;
    }
    if (line.isEmpty()) wanted = false;  // the table's end
    if (!wanted || !line.startsWith(QLatin1Char('|')) || line.startsWith(QStringLiteral("|-"))) continue;
    QStringList cells = line.split(QLatin1Char('|'));
    cells.removeFirst();
    for (QString& cell : cells) cell = cell.trimmed();
    if (const auto found = cells.indexOf(QStringLiteral("default")); found >= 0)
      column = static_cast<int>(found);
    TableRow row{{}, {}, cells, column};
    for (int index = 0; index < cells.size(); ++index) {
      for (auto found = code.globalMatch(cells[index]); found.hasNext();)
        (index == 0 ? row.names : row.arguments) << found.next().captured(1);
    }
    if (!row.names.isEmpty()) rows.push_back(row);
  }
  return rows;
}

// Each parameter of the component stands in the table, and the table's defaults are its values.
void ExpectDefaults(const char* kind, ZynComponent* component) {
  QStringList told;
  for (const TableRow& row : Rows(QString::fromLatin1(kind))) {
    ASSERT_GE(row.defaultColumn, 0) << kind;
    const QString cell = row.cells[row.defaultColumn];
    for (const QString& name : row.names) {
      told << name;
      const QString value = QString::fromStdString(Parameter(component, name.toUtf8().constData()));
      if (cell.startsWith(QLatin1Char('`'))) {
        EXPECT_EQ(cell, QStringLiteral("`%1`").arg(value)) << kind << ": " << qPrintable(name);
      } else {
        EXPECT_EQ(cell.startsWith(QStringLiteral("none")), value == QStringLiteral("none"))
            << kind << ": " << qPrintable(name) << " is " << qPrintable(value);
      }
    }
  }
  for (uint32_t index = 0; index < component->GetParameterCount(); ++index) {
    char name[128];
    uint32_t size = sizeof name;
    ASSERT_EQ(component->GetParameterName(index, name, &size), 0u);
    const bool stage =
        told.count() > 0 && !told.contains(QStringLiteral("class"));  // nobody asks it for that
    if (stage && std::string(name) == "class") continue;
    EXPECT_TRUE(told.contains(QString::fromLatin1(name))) << kind << " lacks " << name;
  }
}

TEST(Document, shows_the_examples_as_they_are) {
  const Snippets written = FromSources(), shown = FromPage(GuidePage());
  for (const auto& [name, text] : shown) {
    const auto source = written.find(name);
    if (source == written.end()) {
      ADD_FAILURE() << qPrintable(name) << " is no example";
    } else {
      EXPECT_EQ(source->second.toStdString(), text.toStdString()) << qPrintable(name);
    }
  }
  for (const auto& [name, text] : written)
    EXPECT_EQ(shown.count(name), 1u) << qPrintable(name) << " is not shown";
}

TEST(Document, shows_the_settings_of_the_trace_as_they_are) {
  const QString settings = TextOf(QStringLiteral("tests/guide/zynlog4cpp.property"));
  const QString page = TextOf(QStringLiteral("docs/trace-logging.md"));
  EXPECT_TRUE(page.contains(QStringLiteral("```\n%1```\n").arg(settings)));
}

TEST(Document, every_name_in_a_table_stands_in_an_example_or_a_check) {
  const QString sources = Sources().join(QLatin1Char('\n'));
  const auto stands = [&](const QString& name) {
    return sources.contains(QLatin1Char('"') + name) || sources.contains(QStringLiteral("${") + name);
  };
  const std::vector<TableRow> rows = Rows(QString());
  EXPECT_GT(rows.size(), 60u);
  for (const TableRow& row : rows) {
    for (const QString& name : row.names) EXPECT_TRUE(stands(name)) << qPrintable(name);
  }
  static const QRegularExpression word(
      QStringLiteral("^[a-z][a-z.]*[a-zD]$"));  // others are types and values
  for (const char* kind : {"commands", "notifications", "objects"}) {
    for (const TableRow& row : Rows(QString::fromLatin1(kind))) {
      for (const QString& name : row.arguments)
        EXPECT_TRUE(!word.match(name).hasMatch() || stands(name)) << kind << ": " << qPrintable(name);
    }
  }
}

TEST(Document, tells_the_parameters_of_a_display_with_their_defaults) {
  ZynDisplay* display = ZynDisplay_CreateComponent();
  ExpectDefaults("parameters of a display", ZynDisplay_GetComponent(display));
  ZynDisplay_DeleteComponent(display);
}

TEST(Document, tells_the_parameters_of_a_controller_with_their_defaults) {
  ZynDisplayProcessor* display = ZynDisplayCPU::CreateComponent(nullptr);
  ExpectDefaults("parameters of a controller", display->GetComponent());
  ZynDisplayCPU::DeleteComponent(display);
}

TEST_F(GuideTest, the_guide_tells_the_parameters_of_the_stages_with_their_defaults) {
  Picture raw(ZYN_PIXEL_BAYERRG12, 64, 48);
  ASSERT_EQ(display->Initialize(&raw.record), 0u);
  for (const char* name : {"image.colorcorrection", "image.coloration", "bayer"}) {
    ExpectDefaults((std::string("parameters of ") + name).c_str(),
                   display->GetProcessor()->FindProcessor(name)->GetComponent());
  }
}

// A parameter that a stage reads under a name of its own, and not through a table, stands in the guide.
TEST(Document, names_every_parameter_that_a_stage_reads) {
  const QString page = GuidePage();
  static const QRegularExpression read(QStringLiteral("parameters\\.Get\\w*\\(\"([^\"]+)\""));
  QStringList names;
  for (const char* room : {"cpu/stages", "gl/stages", "QTD/stages"}) {
    const QDir folder(QStringLiteral(ZYN_SOURCE_FOLDER "/") + QLatin1String(room));
    for (const QString& name : folder.entryList({QStringLiteral("*.cpp"), QStringLiteral("*.h")})) {
      const QString text = TextOf(QLatin1String(room) + QLatin1Char('/') + name);
      for (auto found = read.globalMatch(text); found.hasNext();) names << found.next().captured(1);
    }
  }
  names.removeAll(QStringLiteral("color.depth"));  // a stage's own note
  EXPECT_GE(names.size(), 10);
  for (const QString& name : names)
    EXPECT_TRUE(page.contains(QStringLiteral("`%1`").arg(name))) << qPrintable(name);
}

}  // namespace
}  // namespace guide

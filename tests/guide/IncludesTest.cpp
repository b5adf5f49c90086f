// Rooms include only what lies downhill, and public headers nothing but public ones.
#include <QDirIterator>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>

#include "tests/guide/Pages.h"

namespace guide {
namespace {

constexpr int kAlone = -1;

// A room includes its own files, public headers, and files of the rooms of a lower level. Rooms of one level
// never include each other. A room that stands alone has no level: nobody includes it, and it includes no
// other room.
struct Room {
  int level;
  QStringList folders;
  QString also = {};                // a single file of another room
  bool includesFromFolder = false;  // by paths from its own folder, not from the tree's root
};

const Room kRooms[] = {
    {0, {QStringLiteral("QTD/frame"), QStringLiteral("QTD/platform")}},
    {1, {QStringLiteral("QTD/image")}},
    {2, {QStringLiteral("QTD/screen")}},
    {3, {QStringLiteral("QTD/stages")}},
    {4, {QStringLiteral("cpu")}},
    {4, {QStringLiteral("gl")}},
    {5, {QStringLiteral("QTD/chain")}},
    {6, {QStringLiteral("QTD/window")}},
    {7, {QStringLiteral("QTD/display")}},
    {kAlone, {QStringLiteral("include")}},
    {kAlone, {QStringLiteral("demosaicing")}, QStringLiteral("QTD/frame/ParallelSlices.h")},
    {kAlone, {QStringLiteral("apps/zynview")}, {}, true},
    {kAlone, {QStringLiteral("examples")}},
};

const char* const kGenerated = "ShaderTexts.inc";  // made by the build

const Room* RoomOf(const QString& path) {
  for (const Room& room : kRooms) {
    for (const QString& folder : room.folders) {
      if (path.startsWith(folder + QLatin1Char('/'))) return &room;
    }
  }
  return nullptr;
}

bool IsThere(const QString& path) {
  return QFileInfo::exists(QStringLiteral(ZYN_SOURCE_FOLDER "/") + path);
}

// The path of an included file from the tree's root; empty for one that does not belong to the tree.
QString InTree(const QString& included, const Room& includer) {
  const QString publicHeader = QStringLiteral("include/") + included;
  if (IsThere(publicHeader)) return publicHeader;
  const QString own = includer.folders.first() + QLatin1Char('/') + included;
  if (includer.includesFromFolder && IsThere(own)) return own;
  return RoomOf(included) ? included : QString();
}

bool MayInclude(const Room& includer, const QString& path) {
  const Room* const included = RoomOf(path);
  if (included == &includer || path == includer.also || path.startsWith(QLatin1String("include/")))
    return true;
  return included->level != kAlone && included->level < includer.level;
}

// What is wrong with a line of a file; empty when nothing is.
QString Mistake(const QString& file, const QString& line) {
  static const QRegularExpression include(QStringLiteral("^\\s*#\\s*include\\s*([<\"])([^>\"]+)[>\"]"));
  const QRegularExpressionMatch match = include.match(line);
  if (!match.hasMatch()) return {};
  const Room* const room = RoomOf(file);
  if (!room) return file + QStringLiteral(" is of no room");
  const QString included = match.captured(2);
  const QString path = InTree(included, *room);
  if (path.isEmpty()) {
    const bool known = match.captured(1) == QLatin1String("<") || included == QLatin1String(kGenerated);
    return known ? QString() : file + QStringLiteral(" includes what is not there: ") + included;
  }
  return MayInclude(*room, path) ? QString() : file + QStringLiteral(" includes ") + path;
}

class Includes : public testing::TestWithParam<QString> {};

QStringList Folders() {
  QStringList folders;
  for (const Room& room : kRooms) folders << room.folders;
  return folders;
}

}  // namespace

TEST_P(Includes, run_downhill) {
  const QString root = QStringLiteral(ZYN_SOURCE_FOLDER "/");
  QDirIterator files(root + GetParam(), {QStringLiteral("*.h"), QStringLiteral("*.cpp")}, QDir::Files,
                     QDirIterator::Subdirectories);
  int seen = 0;
  while (files.hasNext()) {
    const QString file = files.next().mid(root.size());
    const QStringList lines = TextOf(file).split(QLatin1Char('\n'));
    for (const QString& line : lines) {
      const QString mistake = Mistake(file, line);
      EXPECT_TRUE(mistake.isEmpty()) << qPrintable(mistake);
      if (line.contains(QLatin1String("#include"))) ++seen;
    }
  }
  EXPECT_GT(seen, 3);
}

INSTANTIATE_TEST_SUITE_P(
    Of, Includes, testing::ValuesIn(Folders()), [](const testing::TestParamInfo<QString>& folder) {
      return QString(folder.param).replace(QLatin1Char('/'), QLatin1Char('_')).toStdString();
    });

TEST(Include, uphill_or_between_twins_is_a_mistake) {
  struct Case {
    const char* file;
    const char* line;
    bool good;
  };
  const Case cases[] = {
      {"QTD/image/PixelFormat.cpp", "#include \"QTD/frame/Properties.h\"", true},
      {"QTD/frame/Text.cpp", "#include \"QTD/image/PixelFormat.h\"", false},
      {"QTD/frame/Text.cpp", "#include <QTD/image/PixelFormat.h>", false},
      {"QTD/platform/System.cpp", "#include \"QTD/frame/Text.h\"", true},
      {"QTD/frame/Text.cpp", "#include \"Text.h\"", false},
      {"QTD/screen/QTDScreen.h", "  #  include \"QTD/window/QTDWindow.h\"", false},
      {"QTD/stages/Stage.h", "#include \"cpu/stages/CPUIPImage.h\"", false},
      {"cpu/stages/CPUIPImage.cpp", "#include \"gl/stages/QGLIPImage.h\"", false},
      {"gl/stages/QGLIPImage.cpp", "#include \"cpu/stages/CPUIPImage.h\"", false},
      {"gl/stages/QGLIPImage.cpp", "#include \"gl/image/QGLImage.h\"", true},
      {"gl/passes/ShaderSources.cpp", "#include \"ShaderTexts.inc\"", true},
      {"QTD/chain/CpuChain.cpp", "#include \"cpu/stages/CPUIPImage.h\"", true},
      {"QTD/window/QTDWindow.cpp", "#include \"QTD/display/QTDDisplay.h\"", false},
      {"QTD/window/QTDWindow.cpp", "#include \"NotThere.h\"", false},
      {"cpu/stages/CPUIPBayer.cpp", "#include \"ZynDemosaicing.h\"", true},
      {"cpu/stages/CPUIPBayer.cpp", "#include \"demosaicing/Bayer.h\"", false},
      {"demosaicing/Bayer.cpp", "#include \"demosaicing/Method.h\"", true},
      {"demosaicing/Bayer.cpp", "#include \"QTD/frame/ParallelSlices.h\"", true},
      {"demosaicing/Bayer.cpp", "#include \"QTD/frame/Text.h\"", false},
      {"QTD/display/Module.cpp", "#include \"examples/minimal.cpp\"", false},
      {"include/ZynDisplay.h", "#include \"ZynImage.h\"", true},
      {"include/ZynDisplay.h", "#include <vector>", true},
      {"include/ZynDisplay.h", "#include \"QTD/frame/ParallelSlices.h\"", false},
      {"apps/zynview/main.cpp", "#include \"Options.h\"", true},
      {"apps/zynview/main.cpp", "#include \"ZynDisplay.h\"", true},
      {"apps/zynview/main.cpp", "#include \"QTD/image/PixelFormats.h\"", false},
  };
  for (const Case& each : cases) {
    const QString mistake = Mistake(QString::fromLatin1(each.file), QString::fromLatin1(each.line));
    EXPECT_EQ(mistake.isEmpty(), each.good) << each.file << ": " << each.line;
  }
}

}  // namespace guide

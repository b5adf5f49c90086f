// The page of the pixel formats holds every format with its code, and what it says that the two variants make
// of a format is what they do.
#include <QRegularExpression>
#include <map>
#include <memory>

#include "tests/guide/GuideTest.h"
#include "tests/guide/Pages.h"

namespace guide {
namespace {

constexpr uint32_t kWidth = 16, kHeight = 8;
constexpr uint32_t kRefused = 0x80FF0001;

// What the page tells of a format.
struct Told {
  QString code;
  QStringList cells;  // behind the code: bits, storage, samples, processor, OpenGL; of the grids, none
};
using Formats = std::map<QString, Told>;

// What the library's own table says.
struct Row {
  QString name;
  QString samples;  // empty where the table has a name for them
  uint32_t code;
};

QStringList CellsOf(const QString& line) {
  QStringList cells = line.split(QLatin1Char('|'));
  cells.removeFirst();
  cells.removeLast();
  for (QString& cell : cells) cell = cell.trimmed();
  return cells;
}

// The text in backticks, empty without.
QString Code(const QString& cell) {
  const bool quoted = cell.size() > 2 && cell.startsWith(QLatin1Char('`')) && cell.endsWith(QLatin1Char('`'));
  return quoted ? cell.mid(1, cell.size() - 2) : QString();
}

// A table with the title "format" has a format in each line. In a grid a name is made of two titles: of the
// column's and the line's for "BayerGR" and "10p", the other way round for "TrueSense_BGGR_WBBW_0_" and "8".
Formats FormatsOfPage() {
  Formats formats;
  QStringList titles;
  for (const QString& line : TextOf(QStringLiteral("docs/pixel-formats.md")).split(QLatin1Char('\n'))) {
    if (!line.startsWith(QLatin1Char('|'))) {
      titles.clear();
      continue;
    }
    const QStringList cells = CellsOf(line);
    const QString own = Code(cells[0]);
    if (titles.isEmpty()) titles = cells;
    if (own.isEmpty()) continue;
    if (titles[0] == QStringLiteral("format")) {
      EXPECT_EQ(formats.count(own), 0u) << qPrintable(own) << " stands twice";
      formats[own] = {cells[1], cells.mid(2)};
      continue;
    }
    for (int column = 1; column < cells.size(); ++column) {
      const QString title = Code(titles[column]);
      if (title.isEmpty()) continue;
      const QString name = own.startsWith(QStringLiteral("TrueSense")) ? own + title : title + own;
      EXPECT_EQ(formats.count(name), 0u) << qPrintable(name) << " stands twice";
      formats[name] = {cells[column], {}};
    }
  }
  return formats;
}

std::vector<Row> RowsOfLibrary() {
  std::vector<Row> rows;
  static const QRegularExpression row(
      QStringLiteral("\\{\"(\\w+)\",\\s+(?:\"([^\"]*)\"|k\\w+),.*0x([0-9A-F]{8})\\}"));
  const QString table = TextOf(QStringLiteral("QTD/image/PixelFormatTable.cpp"));
  for (auto found = row.globalMatch(table); found.hasNext();) {
    const QRegularExpressionMatch match = found.next();
    rows.push_back({match.captured(1), match.captured(2), match.captured(3).toUInt(nullptr, 16)});
  }
  return rows;
}

// By the code: see ZynPixelFormat.h.
uint32_t Bits(uint32_t code) {
  return 6 + 2 * (code >> 8 & 0xF);
}
uint32_t Storage(uint32_t code) {
  return code >> 16 & 0xFF;
}
QString Packing(uint32_t code) {
  switch (code >> 12 & 0xF) {
    case 0:
      return Bits(code) == 8 ? QStringLiteral("bytes") : QStringLiteral("words");
    case 1:
      return QStringLiteral("pairs");
    case 2:
      return QStringLiteral("stream");
    default:
      return QStringLiteral("Brio");
  }
}

bool IsGrid(const QString& name) {
  return name.startsWith(QStringLiteral("Bayer")) || name.startsWith(QStringLiteral("TrueSense"));
}

// The page says it of the whole grid.
QString ToldOf(const QString& name, const Told& told, int cell) {
  if (name.startsWith(QStringLiteral("Bayer"))) return QStringLiteral("shown");
  if (name.startsWith(QStringLiteral("TrueSense"))) return QStringLiteral("refused");
  return told.cells.value(cell);
}

// A white picture.
struct White {
  explicit White(uint32_t code) {
    record.structSize = sizeof record;
    record.pixelType = code;
    record.bitDepth = Bits(code);
    record.pixelGroup = code & 0xFF00;
    record.channels = 1;
    record.bitsPerPixel = Storage(code);
    record.width = kWidth;
    record.height = kHeight;
    record.linePitch = (Storage(code) * kWidth + 31) / 8 / 4 * 4;
    record.imageSize = record.linePitch * kHeight;
    bytes.assign(record.imageSize, 0xFF);
    record.imageData = bytes.data();
  }

  ZynImage record{};
  std::vector<uint8_t> bytes;
};

bool Refuses(ZynDisplayProcessor& display, const ZynImage& format) {
  const uint32_t code = display.Initialize(&format);
  EXPECT_TRUE(code == 0 || code == kRefused) << std::hex << code;
  return code != 0;
}

bool Runs(ZynDisplayProcessor& display, const ZynImage& image) {
  ZynImgProcessingChain* const chain = display.GetProcessor();
  return chain && (chain->ProcessImage(&image, nullptr, nullptr) & 0xFFFF) == 0;
}

// Of pixels that no stage has read there are too few samples for the picture: its lines end black.
bool EndsBlack(const ZynImage& picture) {
  const uint8_t* const line = picture.imageData + size_t{picture.height - 1} * picture.linePitch;
  const uint8_t* const last = line + size_t{picture.width - 1} * 3;
  return std::all_of(last, last + 3, [](uint8_t sample) { return sample == 0; });
}

QString OnProcessor(ZynDisplayProcessor& display, uint32_t code) {
  const White white(code);
  if (Refuses(display, white.record)) return QStringLiteral("refused");
  if (!Runs(display, white.record)) return QStringLiteral("code 1");
  const ZynImage* const shown = display.GetProcessor()->FindProcessor("image.display")->Out();
  if (!shown) return QStringLiteral("no picture");
  if (shown->pixelType != ZYN_PIXEL_RGB8) return QStringLiteral("unread: empty window");
  return EndsBlack(*shown) ? QStringLiteral("unread: words as pixels") : QStringLiteral("shown");
}

QString OnCard(ZynDisplayProcessor& display, uint32_t code) {
  const White white(code);
  if (Refuses(display, white.record)) return QStringLiteral("refused");
  return Runs(display, white.record) ? QStringLiteral("shown") : QStringLiteral("code 1");
}

}  // namespace

TEST(PixelFormatsPage, holds_every_format_with_its_code_and_no_other) {
  const Formats formats = FormatsOfPage();
  const std::vector<Row> rows = RowsOfLibrary();
  const QString header = TextOf(QStringLiteral("include/ZynPixelFormat.h"));
  EXPECT_EQ(rows.size(), 133u);
  EXPECT_EQ(formats.size(), rows.size());
  for (const Row& row : rows) {
    const QString code = QStringLiteral("0x%1").arg(row.code, 8, 16, QLatin1Char('0'));
    const auto told = formats.find(row.name);
    ASSERT_NE(told, formats.end()) << qPrintable(row.name);
    EXPECT_EQ(told->second.code.toLower(), code) << qPrintable(row.name);
    EXPECT_TRUE(
        header.contains(QStringLiteral("ZYN_PIXEL_%1 = %2;").arg(row.name.toUpper(), told->second.code)))
        << qPrintable(row.name);
  }
}

TEST(PixelFormatsPage, tells_how_the_samples_are_stored) {
  Formats formats = FormatsOfPage();
  for (const Row& row : RowsOfLibrary()) {
    if (IsGrid(row.name)) continue;
    const Told& told = formats[row.name];
    EXPECT_EQ(told.cells.value(0), QString::number(Bits(row.code))) << qPrintable(row.name);
    EXPECT_EQ(told.cells.value(1), QStringLiteral("%1, %2").arg(Storage(row.code)).arg(Packing(row.code)))
        << qPrintable(row.name);
    EXPECT_EQ(told.cells.value(2), row.samples) << qPrintable(row.name);
  }
}

TEST_F(GuideTest, the_page_of_the_formats_tells_what_the_processor_makes_of_them) {
  settings->SetParameterBool("system.silent", 0);
  for (const auto& [name, told] : FormatsOfPage()) {
    const uint32_t code = told.code.toUInt(nullptr, 16);
    EXPECT_EQ(OnProcessor(*display, code), ToldOf(name, told, 3)) << qPrintable(name);
  }
}

// Where no OpenGL is to be had, nothing can be said. Of the grids, whose formats differ by their order alone,
// one order and one phase.
TEST(PixelFormatsPage, tells_what_the_card_makes_of_them) {
  QWidget widget;
  widget.resize(420, 320);
  widget.show();
  const std::unique_ptr<ZynDisplayProcessor, void (*)(ZynDisplayProcessor*)> display(
      ZynDisplayQGL::CreateComponent(&widget), ZynDisplayQGL::DeleteComponent);
  display->GetComponent()->SetParameterBool("system.silent", 0);
  if (Refuses(*display, White(ZYN_PIXEL_MONO8).record)) return;
  static const QRegularExpression leftOut(QStringLiteral("^Bayer(GR|GB|BG)|^TrueSense_\\w+_[123]_"));
  for (const auto& [name, told] : FormatsOfPage()) {
    if (leftOut.match(name).hasMatch()) continue;
    const uint32_t code = told.code.toUInt(nullptr, 16);
    EXPECT_EQ(OnCard(*display, code), ToldOf(name, told, 4)) << qPrintable(name);
  }
}

}  // namespace guide

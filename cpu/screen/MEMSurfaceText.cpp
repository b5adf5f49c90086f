#include "cpu/screen/MEMSurfaceText.h"

#include <QColor>
#include <QFont>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <QString>
#include <algorithm>
#include <map>
#include <mutex>

#include "QTD/frame/Text.h"
#include "cpu/screen/GlyphStamp.h"
#include "cpu/screen/TextLine.h"

namespace {

constexpr int kFirstCode = 32;
constexpr int kLastCode = 255;

// A sheet of more bytes belongs to no font that a picture could hold; such a font draws nothing.
constexpr int64_t kMostSheetBytes = int64_t{64} << 20;

// The gap between glyphs, as "intv" holds it: the sheet's cells already contain the room on both sides of a
// glyph.
const char* const kNoGap = "0;0";

QString Letter(int code) {
  return QString(QChar(code));
}

// The characters of a UTF-8 text as codes of the sheet: those outside Latin-1 are "?", control characters are
// spaces.
std::vector<int> SheetCodes(const std::string& text) {
  std::vector<int> codes;
  for (const uint character : QString::fromUtf8(text.c_str()).toUcs4()) {
    codes.push_back(character > kLastCode ? '?' : std::max(static_cast<int>(character), kFirstCode));
  }
  return codes;
}

}  // namespace

MEMSurfaceText::MEMSurfaceText() {
  addStandardFonts();
}

MEMSurfaceText::~MEMSurfaceText() {
  clearFonts();
}

int MEMSurfaceText::addFont(const char* fontName, const char* face, int size, bool bold, bool italic) {
  const std::lock_guard<std::recursive_mutex> guard(fontsLock);
  const int count = enterFont(fontName, face, size, bold, italic);
  if (count < 0) return count;
  Made made = makeSheet(makeFont(face, size, bold, italic));
  const QImage* const sheet = made.sheet.isNull() ? nullptr : new QImage(made.sheet);
  sheets.Set(fontName, QTD::ToText(static_cast<const void*>(sheet)));
  intervals[fontName] = std::move(made.glyphs);
  findFont(fontName)->Set("intv", kNoGap);
  return count;
}

void MEMSurfaceText::removeFont(const char* fontName) {
  if (!fontName || !*fontName) return;
  const std::lock_guard<std::recursive_mutex> guard(fontsLock);
  if (sheets.Has(fontName)) {
    delete static_cast<QImage*>(sheets.GetPointer(fontName));
    QTD::PROPERTIES others;  // a list lets no single item go
    for (int i = 0; i < sheets.Count(); ++i) {
      const std::string name = sheets.NameAt(i);
      if (name != fontName) others.Set(name, sheets.GetString(name));
    }
    sheets = others;
  }
  intervals.erase(fontName);
  SurfaceText::removeFont(fontName);
}

// Every chain has a surface of this kind, with the same few fonts: painting them anew each time would take
// longer than an image does. The pixels of a sheet are shared.
MEMSurfaceText::Made MEMSurfaceText::makeSheet(const QFont& font) {
  constexpr size_t kMostKept = 16;
  static std::mutex keptLock;  // guards `kept`
  static std::map<QString, Made> kept;
  // The metrics tell of a screen with another resolution.
  const QFontMetrics metrics(font);
  const QString key = QStringLiteral("%1;%2;%3")
                          .arg(font.toString(), QString::number(metrics.height()),
                               QString::number(metrics.averageCharWidth()));
  const std::lock_guard<std::mutex> guard(keptLock);
  const auto found = kept.find(key);
  if (found != kept.end()) return found->second;
  Made made;
  made.glyphs = layGlyphs(font);
  made.sheet = paintSheet(font, made.glyphs);
  if (kept.size() >= kMostKept) kept.clear();
  return kept[key] = made;
}

// All glyphs left to right in one row. A space is as wide as an "i".
std::vector<MEMSurfaceText::Glyph> MEMSurfaceText::layGlyphs(const QFont& font) {
  std::vector<Glyph> glyphs;
  int x = 0;
  for (int code = kFirstCode; code <= kLastCode; ++code) {
    Glyph glyph;
    glyph.x = x;
    glyph.width = textSize(font, Letter(code == kFirstCode ? 'i' : code).toUtf8().constData(), &glyph.height);
    glyph.width = std::max(glyph.width, 0);
    glyph.height = std::max(glyph.height, 0);
    x += glyph.width;
    glyphs.push_back(glyph);
  }
  return glyphs;
}

// The sheet, white on black; null when there is nothing to paint or it would be too large.
QImage MEMSurfaceText::paintSheet(const QFont& font, const std::vector<Glyph>& glyphs) {
  const Glyph& last = glyphs.back();
  const int64_t width = (((int64_t{last.x} + last.width) * 8 + 31) & ~int64_t{31}) / 8;
  int height = 0;
  for (const Glyph& glyph : glyphs) height = std::max(height, glyph.height);
  if (width <= 0 || height <= 0 || 3 * width * height > kMostSheetBytes) return {};
  QImage sheet(static_cast<int>(width), height, QImage::Format_RGB888);
  if (sheet.isNull()) return {};
  sheet.fill(Qt::black);

  QFont plain = font;
  plain.setStyleStrategy(QFont::NoSubpixelAntialias);  // the coverage is one number for all channels
  const int descent = QFontMetrics(font).descent();
  for (size_t i = 0; i < glyphs.size(); ++i) {
    const Glyph& glyph = glyphs[i];
    if (glyph.width == 0 || glyph.height == 0) continue;
    // A painter for each cell: a glyph that leans out of its cell must not show in its neighbour's, and a
    // long sheet passes the coordinates that a painter can draw at.
    QImage cell(sheet.bits() + ptrdiff_t{3} * glyph.x, glyph.width, glyph.height, sheet.bytesPerLine(),
                QImage::Format_RGB888);
    QPainter painter(&cell);
    painter.setFont(plain);
    painter.setPen(Qt::white);
    painter.drawText(0, std::max(glyph.height - descent, 0), Letter(kFirstCode + static_cast<int>(i)));
  }
  return sheet;
}

void MEMSurfaceText::drawLine(const char* text, int x, int y, const char* fontName, const ColorValue* color) {
  const std::lock_guard<std::recursive_mutex> guard(fontsLock);
  QTD::PROPERTIES* list = findFont(fontName);
  if (!target || !list || !text || !*text) return;
  const std::string key = list->GetString("name");
  const QImage* sheet = static_cast<const QImage*>(sheets.GetPointer(key));
  const auto found = intervals.find(key);
  const StampTarget pixels(*target);
  if (!sheet || found == intervals.end() || !pixels.isValid()) return;

  const TextLine line(text);
  const StampColor stamped(color ? *color : defaultColor, pixels);
  const int gap = list->GetInt("intv");  // the first of its two numbers
  int64_t left = x;
  for (const int code : SheetCodes(line.piece)) {
    if (left >= pixels.width) break;
    const Glyph& glyph = found->second[static_cast<size_t>(code - kFirstCode)];
    const GlyphView view{sheet->constScanLine(glyph.y) + ptrdiff_t{3} * glyph.x, sheet->bytesPerLine(),
                         glyph.width, glyph.height};
    StampGlyph(pixels, stamped, view, left, y);
    left += glyph.width + (code == kFirstCode ? 0 : gap);
  }

  int next = 0;
  if (line.rest.empty()) return;
  const QFont font = makeFont(list->GetString("face").c_str(), list->GetInt("size"), list->GetBool("bold"),
                              list->GetBool("italic"));
  if (!NextTabStop(x, textSize(font, line.piece.c_str(), nullptr), list->GetInt("height"), &next)) return;
  // Font name and rest change places, as in text through a painter.
  drawLine(fontName, next, y, line.rest.c_str(), color);
}

bool MEMSurfaceText::isValid() {
  return target != nullptr;
}

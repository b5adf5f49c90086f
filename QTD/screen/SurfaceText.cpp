#include "QTD/screen/SurfaceText.h"

#include <QFont>
#include <QFontMetrics>
#include <QString>
#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>
#include <vector>

#include "QTD/frame/Text.h"

namespace QTD {

namespace {

struct StandardFont {
  const char* name;
  const char* face;
  int size;
  bool bold;
  bool italic;
};

constexpr StandardFont kStandardFonts[] = {
    {"default", "Cambria", 11, false, false}, {"fixed", "Courier New", 12, false, false},
    {"bold", "Cambria", 12, true, false},     {"medium", "Calibri", 13, false, false},
    {"large", "Cambria", 15, false, false},
};

// Above this point size a glyph alone would pass the size of any window.
constexpr int kMaxPointSize = 2000;

bool IsEmpty(const char* text) {
  return !text || !*text;
}

int Held(int64_t value) {
  return static_cast<int>(
      std::clamp<int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

// The pieces between the separators; a text without one is one piece, empty pieces count.
std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> pieces;
  size_t start = 0;
  for (size_t end; (end = text.find(separator, start)) != std::string::npos; start = end + 1) {
    pieces.push_back(text.substr(start, end - start));
  }
  pieces.push_back(text.substr(start));
  return pieces;
}

// A font of its own for each measurement: a shared QFont keeps glyph data of the thread that used it last.
QFont OwnFont(PROPERTIES& font) {
  return SurfaceText::makeFont(font.GetString("face").c_str(), font.GetInt("size", "12"),
                               font.GetBool("bold", "0"), font.GetBool("italic", "0"));
}

}  // namespace

SurfaceText::SurfaceText() = default;

SurfaceText::~SurfaceText() {
  SurfaceText::clearFonts();
}

int64_t SurfaceText::getStatus() {
  return status;
}

void SurfaceText::clearFonts() {
  std::lock_guard<std::recursive_mutex> guard(fontsLock);
  while (!fonts.empty()) {
    const size_t before = fonts.size();
    const std::string first = fonts.begin()->first;
    removeFont(first.c_str());
    if (fonts.size() >= before) return;  // a subclass that keeps its font must not hold us here
  }
}

int SurfaceText::addFont(const char* fontName, const char* face, int, bool, bool) {
  return IsEmpty(fontName) || IsEmpty(face) ? -1 : 0;
}

void SurfaceText::removeFont(const char* fontName) {
  if (IsEmpty(fontName)) return;
  std::lock_guard<std::recursive_mutex> guard(fontsLock);
  const auto found = fonts.find(fontName);
  if (found == fonts.end()) return;
  delete static_cast<QFont*>(found->second.GetPointer("font"));
  fonts.erase(found);
}

void SurfaceText::draw(const char* text, int x, int y, const char* fontName, const ColorValue* color) {
  std::lock_guard<std::recursive_mutex> guard(fontsLock);
  PROPERTIES* font = findFont(fontName);
  if (!isValid() || !font || IsEmpty(text)) return;
  const ColorValue& used = color ? *color : defaultColor;
  const std::vector<std::string> lines = Split(text, '\n');
  const int64_t height = font->GetInt("height", "0");
  int64_t top = y;
  for (const std::string& line : lines) {
    drawLine(line.c_str(), x, Held(top), fontName, &used);
    top += height;
  }
}

void SurfaceText::drawLine(const char*, int, int, const char*, const ColorValue*) {}

void SurfaceText::measure(const char* fontName, const char* text, int* width, int* height) {
  std::lock_guard<std::recursive_mutex> guard(fontsLock);
  const std::vector<std::string> lines = Split(text ? text : "", '\n');
  if (lines.size() < 2) return measureLine(fontName, text, width, height);

  PROPERTIES* font = findFont(fontName);
  int widest = 0;
  int64_t total = font ? font->GetInt("height", "0") : 0;
  for (const std::string& line : lines) {
    int lineWidth = 0;
    int lineHeight = 0;
    measureLine(fontName, line.c_str(), &lineWidth, &lineHeight);
    widest = std::max(widest, lineWidth);
    total += lineHeight;
  }
  if (width) *width = widest;
  if (height) *height = Held(total);
}

void SurfaceText::measureLine(const char* fontName, const char* text, int* width, int* height) {
  std::lock_guard<std::recursive_mutex> guard(fontsLock);
  PROPERTIES* font = findFont(fontName);
  const int fontHeight = font ? font->GetInt("height", "0") : 0;
  int64_t lineWidth = 0;
  int lineHeight = fontHeight;
  if (font && !IsEmpty(text)) {
    const QFont own = OwnFont(*font);
    const int64_t tab = 4 * static_cast<int64_t>(fontHeight);
    const std::vector<std::string> pieces = Split(text, '\t');
    for (size_t i = 0; i < pieces.size(); ++i) {
      // The height is that of the first piece; the others begin at tab stops, which are multiples of `tab`.
      if (i > 0 && tab > 0) lineWidth = (lineWidth / tab + 1) * tab;
      if (pieces[i].empty()) continue;
      lineWidth += textSize(own, pieces[i].c_str(), i == 0 ? &lineHeight : nullptr);
    }
  }
  if (width) *width = Held(lineWidth);
  if (height) *height = lineHeight;
}

bool SurfaceText::isValid() {
  return false;
}

int SurfaceText::textSize(const QFont& font, const char* text, int* height) {
  const QRect bounds = QFontMetrics(font).boundingRect(QString::fromUtf8(text ? text : ""));
  if (height) *height = bounds.height();
  return bounds.width();
}

QFont SurfaceText::makeFont(const char* face, int size, bool bold, bool italic) {
  const int64_t points = std::min<int64_t>(std::llabs(static_cast<long long>(size)), kMaxPointSize);
  return QFont(QString::fromUtf8(face ? face : ""), static_cast<int>(points),
               bold ? QFont::Bold : QFont::Normal, italic);
}

int SurfaceText::enterFont(const char* fontName, const char* face, int size, bool bold, bool italic) {
  if (IsEmpty(fontName) || IsEmpty(face)) return -1;
  const std::string key = fontName;
  auto font = std::make_unique<QFont>(makeFont(face, size, bold, italic));
  const QFontMetrics metrics(*font);
  int measured = 0;
  textSize(*font, "A", &measured);

  std::lock_guard<std::recursive_mutex> guard(fontsLock);
  removeFont(key.c_str());
  PROPERTIES& list = fonts[key];
  list.Set("name", key);
  list.Set("face", face);
  list.Set("size", ToText(size));
  list.Set("bold", ToText(bold ? 1 : 0));
  list.Set("italic", ToText(italic ? 1 : 0));
  list.Set("height", ToText(measured - metrics.descent() / 2));
  list.Set("ascent", ToText(metrics.ascent()));
  list.Set("descent", ToText(metrics.descent()));
  list.Set("font", ToText(static_cast<const void*>(font.release())));
  return static_cast<int>(fonts.size());
}

PROPERTIES* SurfaceText::findFont(const char* fontName) {
  std::lock_guard<std::recursive_mutex> guard(fontsLock);
  const auto found = IsEmpty(fontName) ? fonts.begin() : fonts.find(fontName);
  return found == fonts.end() ? nullptr : &found->second;
}

void SurfaceText::addStandardFonts() {
  for (const StandardFont& font : kStandardFonts)
    addFont(font.name, font.face, font.size, font.bold, font.italic);
}

}  // namespace QTD

#include "gl/screen/QGLSurfaceText.h"

#include <GL/gl.h>

#include <QFont>
#include <QFontMetrics>
#include <QOpenGLContext>
#include <QPainter>
#include <QString>
#include <algorithm>
#include <limits>
#include <mutex>

#include "QTD/frame/Text.h"

namespace {

constexpr int kFirstCode = 32;
constexpr int kLastCode = 255;

// A strip of more bytes belongs to no font that a window could hold; such a font draws nothing.
constexpr int64_t kMostStripBytes = int64_t{64} << 20;

// "intv", as in text on memory images. Nothing is left between the glyphs here.
const char* const kNoGap = "0;0";

QString Letter(int code) {
  return QString(QChar(code));
}

// The characters of a UTF-8 text as codes of the strip: those outside Latin-1 are "?", control characters,
// the tab among them, are blanks.
std::vector<int> StripCodes(const std::string& text) {
  std::vector<int> codes;
  for (const uint character : QString::fromUtf8(text.c_str()).toUcs4()) {
    codes.push_back(character > kLastCode ? '?' : std::max(static_cast<int>(character), kFirstCode));
  }
  return codes;
}

// The first tab stop behind `x` for a piece of `width` pixels: stops lie four font heights apart. False when
// there are none, or none in the range of int.
bool NextTabStop(int64_t x, int width, int fontHeight, int* stop) {
  const int64_t distance = int64_t{4} * fontHeight;
  if (distance <= 0) return false;
  const int64_t next = (width / distance + 1) * distance + x;
  if (next > std::numeric_limits<int>::max()) return false;
  *stop = static_cast<int>(next);
  return true;
}

}  // namespace

QGLSurfaceText::QGLSurfaceText() {
  addStandardFonts();
  for (size_t i = 0; i < alphaTable.size(); ++i) alphaTable[i] = static_cast<float>(i) / 255.0f;
}

QGLSurfaceText::~QGLSurfaceText() {
  clearFonts();
}

int QGLSurfaceText::addFont(const char* fontName, const char* face, int size, bool bold, bool italic) {
  const std::lock_guard<std::recursive_mutex> guard(fontsLock);
  const int count = enterFont(fontName, face, size, bold, italic);  // frees what an earlier font had
  if (count < 0) return count;
  Made made = makeStrip(makeFont(face, size, bold, italic));
  const QImage* const strip = made.strip.isNull() ? nullptr : new QImage(made.strip);
  glyphStrip.Set(fontName, QTD::ToText(static_cast<const void*>(strip)));
  glyphRects[fontName] = std::move(made.rects);
  findFont(fontName)->Set("intv", kNoGap);
  return count;
}

void QGLSurfaceText::removeFont(const char* fontName) {
  if (!fontName || !*fontName) return;
  const std::lock_guard<std::recursive_mutex> guard(fontsLock);
  SurfaceText::removeFont(fontName);
  if (glyphStrip.Has(fontName)) {
    delete static_cast<QImage*>(glyphStrip.GetPointer(fontName));
    QTD::PROPERTIES others;  // a list lets no single item go
    for (int i = 0; i < glyphStrip.Count(); ++i) {
      const std::string name = glyphStrip.NameAt(i);
      if (name != fontName) others.Set(name, glyphStrip.GetString(name));
    }
    glyphStrip = others;
  }
  glyphRects.erase(fontName);
}

// Every surface and every stage that draws into a texture has an object of this kind, with the same few
// fonts. The pixels of a strip are shared.
QGLSurfaceText::Made QGLSurfaceText::makeStrip(const QFont& font) {
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
  made.rects = layGlyphs(font);
  made.strip = paintStrip(font, made.rects);
  if (kept.size() >= kMostKept) kept.clear();
  return kept[key] = made;
}

// All glyphs left to right in one row, each one pixel higher than it measures. A blank is as wide as an "i".
std::vector<QTD::RectI> QGLSurfaceText::layGlyphs(const QFont& font) {
  std::vector<QTD::RectI> rects;
  int x = 0;
  for (int code = kFirstCode; code <= kLastCode; ++code) {
    int height = 0;
    const int width = textSize(font, Letter(code == kFirstCode ? 'i' : code).toUtf8().constData(), &height);
    rects.push_back({x, 0, std::max(width, 0), std::max(height, 0) + 1});
    x += rects.back().width;
  }
  return rects;
}

// The strip, white on black; null when there is nothing to paint or it would be too large.
QImage QGLSurfaceText::paintStrip(const QFont& font, const std::vector<QTD::RectI>& rects) {
  const int64_t sum = int64_t{rects.back().x} + rects.back().width;
  const int64_t width = (sum + 3) / 4 * 4;
  int height = 0;
  for (const QTD::RectI& rect : rects) height = std::max(height, rect.height);
  if (sum <= 0 || 3 * width * height > kMostStripBytes) return {};
  QImage strip(static_cast<int>(width), height, QImage::Format_RGB888);
  if (strip.isNull()) return {};
  strip.fill(Qt::black);

  QFont plain = font;
  plain.setStyleStrategy(QFont::NoSubpixelAntialias);  // one channel is read as the coverage
  const int descent = QFontMetrics(font).descent();
  for (size_t i = 0; i < rects.size(); ++i) {
    const QTD::RectI& rect = rects[i];
    if (rect.width == 0) continue;
    // A painter for each cell: a glyph that leans out of its cell must not show in its neighbour's, and a
    // long strip passes the coordinates that a painter can draw at.
    QImage cell(strip.bits() + ptrdiff_t{3} * rect.x, rect.width, rect.height, strip.bytesPerLine(),
                QImage::Format_RGB888);
    QPainter painter(&cell);
    painter.setFont(plain);
    painter.setPen(Qt::white);
    painter.drawText(0, rect.height - descent, Letter(kFirstCode + static_cast<int>(i)));
  }
  return strip;
}

void QGLSurfaceText::drawLine(const char* text, int x, int y, const char* fontName, const ColorValue* color) {
  const std::lock_guard<std::recursive_mutex> guard(fontsLock);
  QTD::PROPERTIES* const list = findFont(fontName);
  if (!list || !text || !*text || !QOpenGLContext::currentContext()) return;
  const auto* const font = static_cast<const QFont*>(list->GetPointer("font"));
  if (!font) return;
  // Under the name as it was given: an empty one finds the first font, but no strip.
  const std::string name = fontName ? fontName : "";
  const auto* const strip = static_cast<const QImage*>(glyphStrip.GetPointer(name));
  const auto rects = glyphRects.find(name);
  if (!strip || rects == glyphRects.end()) return;

  const std::string line = text;
  int64_t left = x;
  const std::vector<int> codes = StripCodes(line);
  glEnable(GL_BLEND);
  glPushAttrib(GL_LINE_BIT);
  glPushAttrib(GL_CURRENT_BIT);
  glBegin(GL_QUADS);
  for (const int code : codes) left += drawGlyph(code, left, y, *strip, rects->second, color);
  glEnd();
  glPopAttrib();
  glPopAttrib();
  glDisable(GL_BLEND);

  const size_t tab = line.find('\t');
  if (tab == std::string::npos) return;
  int next = 0;
  const int width = textSize(*font, line.substr(0, tab).c_str(), nullptr);
  if (!NextTabStop(left, width, list->GetInt("height"), &next)) return;
  // The rest is drawn already, behind a blank. Here font name and rest change places: nothing more is seen,
  // unless the rest is the name of a font, in which the name of this font is then drawn.
  drawLine(fontName, next, y, line.substr(tab + 1).c_str(), color);
}

// The strip's pixel (x + c, r) of a glyph stands for the window's square
//
//    (x + c, y - r) ------ (x + c + 1, y - r)          y runs upward, rows of the strip downward
//          |                       |
//  (x + c, y - r - 1) -- (x + c + 1, y - r - 1)
int QGLSurfaceText::drawGlyph(int code, int64_t x, int64_t y, const QImage& strip,
                              const std::vector<QTD::RectI>& rects, const ColorValue* color) {
  const size_t index = static_cast<size_t>(code - kFirstCode);
  if (index >= rects.size()) return 0;
  const QTD::RectI& rect = rects[index];
  const float red = color ? static_cast<float>(color->redPart) : 0.0f;
  const float green = color ? static_cast<float>(color->greenPart) : 0.0f;
  const float blue = color ? static_cast<float>(color->bluePart) : 0.0f;
  for (int row = 0; row < rect.height; ++row) {
    const uchar* pixel = strip.constScanLine(row) + ptrdiff_t{3} * rect.x;
    const float top = static_cast<float>(y - row), bottom = static_cast<float>(y - row - 1);
    for (int column = 0; column < rect.width; ++column, pixel += 3) {
      if (*pixel == 0) continue;
      const float near = static_cast<float>(x + column), far = static_cast<float>(x + column + 1);
      glColor4f(red, green, blue, alphaTable[*pixel]);
      glVertex2f(near, top);
      glVertex2f(far, top);
      glVertex2f(far, bottom);
      glVertex2f(near, bottom);
    }
  }
  return rect.width;
}

bool QGLSurfaceText::isValid() {
  const std::lock_guard<std::recursive_mutex> guard(fontsLock);
  return !fonts.empty();
}

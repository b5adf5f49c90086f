// Text from strips of glyphs, prepared once for each font: one small square for each lit pixel.
#pragma once

#include <QImage>
#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "QTD/screen/QTDScreen.h"
#include "QTD/screen/SurfaceText.h"

// Drawing: GUI thread, between `begin` and `end` of the surface. Positions are OpenGL's: y runs upward, and
// is that of the top of a line; the second line of a text stands above the first. Draws the characters of
// Latin-1; any other is drawn as "?". An empty font name draws nothing.
class QGLSurfaceText : public QTD::SurfaceText {
 public:
  QGLSurfaceText();
  ~QGLSurfaceText() override;

  int addFont(const char* fontName, const char* face, int size, bool bold, bool italic) override;
  void removeFont(const char* fontName) override;
  void drawLine(const char* text, int x, int y, const char* fontName, const ColorValue* color) override;
  bool isValid() override;  // there is a font

 protected:
  // Guarded by `fontsLock`, the first two.
  QTD::PROPERTIES glyphStrip;                                 // font name to its `QImage*`, owned
  std::map<std::string, std::vector<QTD::RectI>> glyphRects;  // for the codes 32 to 255, at index code - 32
  std::array<float, 256> alphaTable{};                        // value / 255

 private:
  struct Made {
    std::vector<QTD::RectI> rects;
    QImage strip;  // null when nothing can be drawn with the font
  };
  // From those that this process has made before, where the font is among them. Any thread.
  Made makeStrip(const QFont& font);
  std::vector<QTD::RectI> layGlyphs(const QFont& font);
  static QImage paintStrip(const QFont& font, const std::vector<QTD::RectI>& rects);
  // Within glBegin of GL_QUADS; the advance.
  int drawGlyph(int code, int64_t x, int64_t y, const QImage& strip, const std::vector<QTD::RectI>& rects,
                const ColorValue* color);
};

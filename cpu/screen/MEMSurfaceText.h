// Text stamped into the pixels of an image, from a glyph sheet that is made once for each font.
#pragma once

#include <QImage>
#include <map>
#include <string>
#include <vector>

#include "QTD/screen/SurfaceText.h"
#include "ZynImage.h"

// Draws the characters of Latin-1; any other is drawn as "?". The font table: any thread. Drawing: the thread
// that holds the image, within the surface's paint pass.
class MEMSurfaceText : public QTD::SurfaceText {
 public:
  MEMSurfaceText();
  ~MEMSurfaceText() override;

  int addFont(const char* fontName, const char* face, int size, bool bold, bool italic) override;
  void removeFont(const char* fontName) override;
  void drawLine(const char* text, int x, int y, const char* fontName, const ColorValue* color) override;
  bool isValid() override;

  void setTarget(ZynImage* image) { target = image; }

 private:
  struct Glyph {
    int32_t x = 0, y = 0, width = 0, height = 0;  // in the sheet
  };

  struct Made {
    std::vector<Glyph> glyphs;
    QImage sheet;  // null when nothing can be drawn with the font
  };
  // From those that this process has made before, where the font is among them. Any thread.
  Made makeSheet(const QFont& font);
  std::vector<Glyph> layGlyphs(const QFont& font);
  static QImage paintSheet(const QFont& font, const std::vector<Glyph>& glyphs);

  ZynImage* target = nullptr;  // not owned; only between the surface's begin and end
  // The glyphs of each font for the codes 32 to 255, at index code - 32; guarded by `fontsLock`, like
  // `sheets`.
  std::map<std::string, std::vector<Glyph>> intervals;
  QTD::PROPERTIES sheets;  // the pointer of each font's sheet, owned, under its name
};

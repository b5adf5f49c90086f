// The text engine of a surface: named fonts with their metrics, measuring, and drawing line by line.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "QTD/frame/Properties.h"
#include "QTD/screen/ColorValue.h"

class QFont;

namespace QTD {

// An empty font name means the first font in the order of names; a null colour means `defaultColor`. Text is
// UTF-8. Measuring and the font table: any thread. Drawing: the thread that paints the surface, between its
// begin and end. Destructors of subclasses call `clearFonts` first, while their own
// `removeFont` still answers.
class SurfaceText {
 public:
  SurfaceText();
  SurfaceText(const SurfaceText&) = delete;
  SurfaceText& operator=(const SurfaceText&) = delete;
  virtual ~SurfaceText();

  virtual int64_t getStatus();
  virtual void clearFonts();  // calls `removeFont` on the first font until none is left
  // The new number of fonts; -1 for an empty or null name or face. A known name is replaced.
  virtual int addFont(const char* fontName, const char* face, int size, bool bold, bool italic);
  virtual void removeFont(const char* fontName);  // frees the QFont too
  virtual void draw(const char* text, int x, int y, const char* fontName, const ColorValue* color);
  virtual void drawLine(const char* text, int x, int y, const char* fontName, const ColorValue* color);
  virtual void measure(const char* fontName, const char* text, int* width, int* height);
  virtual void measureLine(const char* fontName, const char* text, int* width, int* height);
  virtual bool isValid();
  virtual int textSize(const QFont& font, const char* text, int* height);

  // The font of these attributes; Qt gets the size without its sign. A fresh one for each caller, so that no
  // two threads share the glyph data that a QFont keeps.
  static QFont makeFont(const char* face, int size, bool bold, bool italic);

 protected:
  // What `addFont` of every kind of text begins with: makes and measures the QFont and enters its list in
  // `fonts`, in the place of an earlier one of that name. Answers as `addFont`.
  int enterFont(const char* fontName, const char* face, int size, bool bold, bool italic);
  // The list of a font, or null; with an empty name that of the first font. Good while `fontsLock` is held.
  PROPERTIES* findFont(const char* fontName);
  void addStandardFonts();  // called by the constructors of subclasses

  int64_t status = 0;
  ColorValue defaultColor;
  std::map<std::string, PROPERTIES> fonts;
  std::recursive_mutex fontsLock;  // guards `fonts`
  PROPERTIES properties;
};

}  // namespace QTD

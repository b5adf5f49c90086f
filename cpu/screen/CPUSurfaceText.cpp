#include "cpu/screen/CPUSurfaceText.h"

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QString>
#include <mutex>

#include "cpu/screen/TextLine.h"

CPUSurfaceText::CPUSurfaceText() {
  addStandardFonts();
}

CPUSurfaceText::~CPUSurfaceText() {
  clearFonts();
}

int CPUSurfaceText::addFont(const char* fontName, const char* face, int size, bool bold, bool italic) {
  return enterFont(fontName, face, size, bold, italic);
}

void CPUSurfaceText::removeFont(const char* fontName) {
  SurfaceText::removeFont(fontName);
}

void CPUSurfaceText::drawLine(const char* text, int x, int y, const char* fontName, const ColorValue* color) {
  const std::lock_guard<std::recursive_mutex> guard(fontsLock);
  QTD::PROPERTIES* list = findFont(fontName);
  if (!target || !list || !text || !*text) return;
  const QFont* font = static_cast<const QFont*>(list->GetPointer("font"));
  if (!font) return;

  const TextLine line(text);
  const int height = list->GetInt("height");
  const ColorValue used = (color ? *color : defaultColor).AtDepth(8);
  target->setFont(*font);
  target->setPen(QColor(used.red, used.green, used.blue, 255));
  target->drawText(QPointF(x, static_cast<double>(y) + height), QString::fromUtf8(line.piece.c_str()));

  int next = 0;
  if (line.rest.empty() || !NextTabStop(x, textSize(*font, line.piece.c_str(), nullptr), height, &next))
    return;
  // Font name and rest change places: the rest stays unseen, unless it is the name of a font, in which the
  // name of this font is then drawn.
  drawLine(fontName, next, y, line.rest.c_str(), color);
}

bool CPUSurfaceText::isValid() {
  return target != nullptr;
}

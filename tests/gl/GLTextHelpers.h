// Fonts as the table of fonts describes them, and a text object whose tables tests can see.
#pragma once

#include <QFont>
#include <QFontMetrics>
#include <QImage>

#include "gl/screen/QGLSurfaceText.h"

inline QFont FontOf(const char* face, int size, bool bold = false) {
  return QFont(QString::fromUtf8(face), size, bold ? QFont::Bold : QFont::Normal, false);
}

inline QRect BoundsOf(const QFont& font, const QString& text) {
  return QFontMetrics(font).boundingRect(text);
}

inline int HeightOf(const QFont& font) {
  return BoundsOf(font, QStringLiteral("A")).height() - QFontMetrics(font).descent() / 2;
}

// Opens the fonts' tables to tests.
class OpenText : public QGLSurfaceText {
 public:
  using QGLSurfaceText::alphaTable;
  using QGLSurfaceText::findFont;
  using QGLSurfaceText::glyphRects;
  using QGLSurfaceText::glyphStrip;

  const QImage* strip(const char* name) { return static_cast<const QImage*>(glyphStrip.GetPointer(name)); }
};

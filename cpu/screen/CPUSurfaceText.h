// Text through a painter.
#pragma once

#include "QTD/screen/SurfaceText.h"

class QPainter;

// Drawing: GUI thread, within the surface's paint pass.
class CPUSurfaceText : public QTD::SurfaceText {
 public:
  CPUSurfaceText();
  ~CPUSurfaceText() override;

  int addFont(const char* fontName, const char* face, int size, bool bold, bool italic) override;
  void removeFont(const char* fontName) override;
  void drawLine(const char* text, int x, int y, const char* fontName, const ColorValue* color) override;
  bool isValid() override;

  void setTarget(QPainter* painter) { target = painter; }

 private:
  QPainter* target = nullptr;  // not owned; only between the surface's begin and end
};

// A store whose fields tests can see, and a surface that notes what is painted on it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "QTD/screen/DrawObjects.h"
#include "QTD/screen/QTDSurface.h"
#include "QTD/screen/SurfaceText.h"

// Measures every text as the size that the test chose.
class FixedText : public QTD::SurfaceText {
 public:
  void measure(const char* font, const char* text, int* width, int* height) override {
    measured.push_back(std::string(font) + ":" + text);
    *width = textWidth;
    *height = textHeight;
  }
  int textWidth = 13;
  int textHeight = 15;
  std::vector<std::string> measured;
};

class PaintedSurface : public QTDSurface {
 public:
  PaintedSurface() : engine(new FixedText) { surfaceText.reset(engine); }

  void text(const char* string, int x, int y, const char* font, const ColorValue* color) override {
    Note("text", {x, y});
    log.back() += std::string(" ") + font + " " + string;
    colors.push_back(*color);
  }
  void rect(int x, int y, int w, int h, const ColorValue* color, int width, int style) override {
    Note("rect", {x, y, w, h, width, style});
    colors.push_back(*color);
  }
  void fill(int x, int y, int w, int h, const ColorValue* color) override {
    Note("fill", {x, y, w, h});
    colors.push_back(*color);
  }
  void polyline(const Points&, const ColorValue*, int, int) override { log.push_back("polyline"); }
  void image(const ZynImage*, const QTD::RectD*, const QTD::RectD*) override { log.push_back("image"); }

  FixedText* engine;
  std::vector<std::string> log;
  std::vector<ColorValue> colors;

 private:
  void Note(const char* what, const std::vector<int>& numbers) {
    log.push_back(what);
    for (int number : numbers) log.back() += " " + std::to_string(number);
  }
};

class Store : public QTD::DrawObjects {
 public:
  std::string value(const std::string& id, const char* key) {
    QTD::PROPERTIES list;
    return get(id, &list) ? list.GetString(key, "absent") : "no object";
  }
  using DrawObjects::color;
  using DrawObjects::drawLock;
  using DrawObjects::lock;
  using DrawObjects::mono;
  using DrawObjects::objects;
  using DrawObjects::serial;
};

inline QTD::PROPERTIES List(const std::vector<std::pair<const char*, const char*>>& items) {
  QTD::PROPERTIES list;
  for (const auto& [key, value] : items) list.Set(key, value);
  return list;
}

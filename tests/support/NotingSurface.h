// A surface for the tests of screens.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "QTD/screen/QTDSurface.h"

// Writes down what it is told to do.
class NotingSurface : public QTDSurface {
 public:
  struct Fill {
    int x, y, w, h;
    ColorValue color;
  };

  explicit NotingSurface(const char* limit = "16384") { properties.Set("gl.viewport", limit); }

  bool begin(QTD::PROPERTIES* list) override {
    order += 'b';
    given = list;
    return canBegin;
  }
  void end(QTD::PROPERTIES* list, bool) override {
    order += 'e';
    given = list;
  }
  void flush(QTD::PROPERTIES* list) override {
    order += 'F';
    flushed = list;
  }
  void fill(int x, int y, int w, int h, const ColorValue* color) override {
    fills.push_back({x, y, w, h, *color});
    order += 'f';
  }
  void image(const ZynImage* picture, const QTD::RectD* to, const QTD::RectD* from) override {
    drawn = picture;
    target = *to;
    source = *from;
    order += 'i';
  }

  bool canBegin = true;
  std::string order;
  QTD::PROPERTIES* given = nullptr;
  QTD::PROPERTIES* flushed = nullptr;
  std::vector<Fill> fills;
  const ZynImage* drawn = nullptr;
  QTD::RectD target, source;
};

inline void ExpectWhole(const NotingSurface::Fill& fill, int red, int green, int blue) {
  EXPECT_EQ(fill.x, -1);
  EXPECT_EQ(fill.y, -1);
  EXPECT_EQ(fill.w, -1);
  EXPECT_EQ(fill.h, -1);
  EXPECT_EQ(fill.color.range, 256);
  EXPECT_EQ(fill.color.red, red);
  EXPECT_EQ(fill.color.green, green);
  EXPECT_EQ(fill.color.blue, blue);
}

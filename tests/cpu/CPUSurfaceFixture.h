// A CPUSurface on a window of its own, with a look at the pixels that it paints. Sizes and positions are
// window pixels, whatever the ratio of device pixels to them is.
#pragma once

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QWindow>
#include <memory>

#include "QTD/frame/Text.h"
#include "cpu/screen/CPUSurface.h"

constexpr int kSurfaceWidth = 120;
constexpr int kSurfaceHeight = 90;
constexpr QRgb kBlank = 0xff123456;

class CPUSurfaceFixture : public testing::Test {
 protected:
  CPUSurfaceFixture() : window(std::make_unique<QWindow>()) {
    window->setSurfaceType(QSurface::RasterSurface);
    window->resize(kSurfaceWidth, kSurfaceHeight);
    window->create();
    window->resize(kSurfaceWidth, kSurfaceHeight);  // a scale factor may have changed it
    list.Set("window", QTD::ToText(static_cast<const void*>(window.get())));
  }

  void SetUp() override { ASSERT_TRUE(surface.init(&list)); }
  void TearDown() override { surface.done(); }

  QPainter* painter() { return static_cast<QPainter*>(surface.properties.GetPointer("painter")); }
  QImage& canvas() { return *static_cast<QImage*>(painter()->device()); }

  QSize canvasSize() { return canvas().size() / canvas().devicePixelRatioF(); }
  // The colour at the top left of a window pixel.
  QRgb at(int x, int y) {
    const double ratio = canvas().devicePixelRatioF();
    return canvas().pixel(qRound(x * ratio), qRound(y * ratio));
  }

  // Begins a paint pass on pixels of one colour.
  void beginBlank(QRgb color = kBlank) {
    ASSERT_TRUE(surface.begin(nullptr));
    ASSERT_EQ(painter()->device()->devType(), static_cast<int>(QInternal::Image));
    canvas().fill(color);
  }
  QImage blank(QRgb color = kBlank) {
    QImage image(canvas().size(), canvas().format());
    image.setDevicePixelRatio(canvas().devicePixelRatio());
    image.fill(color);
    return image;
  }

  std::unique_ptr<QWindow> window;
  QTD::PROPERTIES list;
  CPUSurface surface;
};

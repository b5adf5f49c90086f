// A CPUSurface on a window of its own, with a look at the pixels that it paints.
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

class CPUSurfaceFixture : public testing::Test {
 protected:
  CPUSurfaceFixture() : window(std::make_unique<QWindow>()) {
    window->setSurfaceType(QSurface::RasterSurface);
    window->resize(kSurfaceWidth, kSurfaceHeight);
    window->create();
    list.Set("window", QTD::ToText(static_cast<const void*>(window.get())));
  }

  void SetUp() override { ASSERT_TRUE(surface.init(&list)); }
  void TearDown() override { surface.done(); }

  QPainter* painter() { return static_cast<QPainter*>(surface.properties.GetPointer("painter")); }
  QImage& canvas() { return *static_cast<QImage*>(painter()->device()); }

  // Begins a paint pass on pixels of one colour.
  void beginBlank(QRgb color = 0xff123456) {
    ASSERT_TRUE(surface.begin(nullptr));
    ASSERT_EQ(painter()->device()->devType(), static_cast<int>(QInternal::Image));
    canvas().fill(color);
  }
  QImage blank(QRgb color = 0xff123456) {
    QImage image(canvas().size(), canvas().format());
    image.setDevicePixelRatio(canvas().devicePixelRatio());
    image.fill(color);
    return image;
  }

  std::unique_ptr<QWindow> window;
  QTD::PROPERTIES list;
  CPUSurface surface;
};

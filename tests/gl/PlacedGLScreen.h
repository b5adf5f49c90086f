// A screen whose geometry tests set without the arithmetic of a view.
#pragma once

#include "gl/screen/QGLScreen.h"

class PlacedGLScreen : public QGLScreen {
 public:
  using QGLScreen::QGLScreen;

  void setWindow(double width, double height) {
    windowWidth = width;
    windowHeight = height;
    windowCenterX = width / 2;
    windowCenterY = height / 2;
  }
  void place(double x, double y, double width, double height) {
    pictureX = x;
    pictureY = y;
    pictureWidth = width;
    pictureHeight = height;
  }
};

// A screen whose fields tests can see, and an owner that notes what it is told.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "QTD/frame/CommandProcessor.h"
#include "QTD/screen/QTDScreen.h"

class Owner : public QTD::CommandProcessor {
 public:
  void Execute(const char* name, QTD::PROPERTIES* properties) override {
    told.push_back(name);
    if (properties) ++lists;
    if (then) then();
  }
  std::string GetValue(const char*, const char* fallback) override { return fallback; }
  void SetValue(const char*, const char*, bool) override {}

  // How often it was told since the last call.
  size_t Count() {
    const size_t count = told.size();
    told.clear();
    return count;
  }

  std::vector<std::string> told;
  int lists = 0;
  std::function<void()> then;
};

class TestScreen : public QTDScreen {
 public:
  using QTDScreen::centerFractionX;
  using QTDScreen::centerFractionY;
  using QTDScreen::dragFractionX;
  using QTDScreen::dragFractionY;
  using QTDScreen::dragX;
  using QTDScreen::dragY;
  using QTDScreen::imageHeight;
  using QTDScreen::imageWidth;
  using QTDScreen::notify;
  using QTDScreen::pictureHeight;
  using QTDScreen::pictureWidth;
  using QTDScreen::pictureX;
  using QTDScreen::pictureY;
  using QTDScreen::QTDScreen;
  using QTDScreen::scale;
  using QTDScreen::scrollPosX;
  using QTDScreen::scrollPosY;
  using QTDScreen::scrollRangeX;
  using QTDScreen::scrollRangeY;
  using QTDScreen::update;
  using QTDScreen::windowCenterX;
  using QTDScreen::windowCenterY;
  using QTDScreen::windowHeight;
  using QTDScreen::windowWidth;
};

// A surface, a screen on it and the screen's owner, with a window and a picture.
struct View {
  View() : screen(&surface) { screen.init(&owner, 0, 0, 3); }
  View(int windowWidth, int windowHeight, int imageWidth, int imageHeight, int fit) : View() {
    screen.setFit(fit, false);
    screen.setWindowSize(windowWidth, windowHeight);
    screen.setImageSize(imageWidth, imageHeight);
    owner.Count();
  }

  std::string Text(const char* key) { return screen.properties.GetString(key, "absent"); }

  QTDSurface surface;
  Owner owner;
  TestScreen screen;
};

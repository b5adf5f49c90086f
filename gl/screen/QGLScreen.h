// The screen of a window that OpenGL paints.
#pragma once

#include <vector>

#include "QTD/screen/QTDScreen.h"

// GUI thread for all that paints; geometry as in QTDScreen. A picture that is zoomed beyond the driver's
// viewport limit is drawn as far as the window shows it. All lengths are pixels of the window; only the
// viewport counts in device pixels.
class QGLScreen : public QTDScreen {
 public:
  explicit QGLScreen(QTDSurface* targetSurface);
  ~QGLScreen() override;

  bool init(QTD::CommandProcessor* owner, int width, int height, int fit) override;
  bool done(bool takeLock) override;
  void clear(bool flush) override;  // in the screen's "color"
  void flush() override;
  // Nests; each is ended, unless it throws. False without a window size or a surface; whether the surface
  // could begin plays no part.
  bool begin(QTD::PROPERTIES* list) override;
  // Viewport and projection of the picture; for one beyond the limit, also the surface's area. False only
  // without a surface.
  bool prepare(QTD::PROPERTIES* list) override;
  void end(QTD::PROPERTIES* list, bool flush) override;  // flushes first
  // The background, then the picture in its rectangle, or what the window shows of it. False only without a
  // surface.
  bool draw(const ZynImage* image, QTD::PROPERTIES* list) override;
  bool isReady() override;

 private:
  // The geometry at one moment.
  struct View {
    QTD::RectD picture;  // y runs downward
    double windowWidth = 0, windowHeight = 0;
    double windowCenterX = 0, windowCenterY = 0;
    double ratio = 1;
  };
  View view();
  void leave(QTD::PROPERTIES* list, bool flush);
  double viewportLimit(double ratio);  // "gl.viewport" of the surface, in pixels of the window
  ColorValue background();

  std::vector<bool> passes;  // those that are under way: whether the surface has begun with them
};

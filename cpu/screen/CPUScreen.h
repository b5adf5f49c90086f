// The screen of a window that the processor paints.
#pragma once

#include "QTD/screen/QTDScreen.h"

// GUI thread for all that paints; geometry as in QTDScreen.
class CPUScreen : public QTDScreen {
 public:
  explicit CPUScreen(QTDSurface* targetSurface);
  ~CPUScreen() override;

  bool init(QTD::CommandProcessor* owner, int width, int height, int fit) override;
  bool done(bool takeLock) override;
  void clear(bool flush) override;  // in mid grey; `flush` and "color" play no part
  void flush() override;
  // The background, then the picture in its rectangle. False only without a surface.
  bool draw(const ZynImage* image, QTD::PROPERTIES* list) override;

 private:
  ColorValue background();
};

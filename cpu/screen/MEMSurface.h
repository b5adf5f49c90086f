// A surface on a memory image: text only.
#pragma once

#include "QTD/screen/QTDSurface.h"

// Used by one thread at a time: the one that holds its owner's lock.
class MEMSurface : public QTDSurface {
 public:
  ~MEMSurface() override;

  bool init(QTD::PROPERTIES* list) override;
  bool done() override;
  bool begin(QTD::PROPERTIES* list) override;  // takes the image from "image" of the list
  void end(QTD::PROPERTIES* list, bool flush) override;
  bool isValid() override;
  void rect(int x, int y, int w, int h, const ColorValue* color, int width, int style) override;
};

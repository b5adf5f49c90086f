// The texts that show the state of the display in the picture: the status line and the information text.
#pragma once

#include <cstdint>
#include <string>

#include "QTD/frame/Properties.h"

class QTDScreen;
class QTDSurface;

namespace QTD {

// What the items of the status line are made of.
struct StatusSource {
  bool hasFormat = false;
  uint32_t width = 0, height = 0;  // of the images expected
  uint64_t imageID = 0;            // of the last image
  int64_t received = 0, processed = 0;
  double rate = 0;              // images processed per second, averaged
  PROPERTIES* chain = nullptr;  // parameters of the processing chain, null without one
  QTDScreen* screen = nullptr;  // null without one
};

// Brings the seven items up to date: appended the first time, overwritten afterwards, so that their order
// stays. Any thread.
void RefreshStatus(PROPERTIES& items, const StatusSource& source);

// The items of the information text; `surface` may be null. Any thread.
PROPERTIES InfoItems(const std::string& objectID, bool opengl, QTDSurface* surface);

// name="value" name="value" ..., up to the first item without a name.
std::string StatusText(PROPERTIES& items);

// The text of a number without its trailing zeros, but for the one right behind the point.
std::string WithoutTrailingZeros(std::string text);

}  // namespace QTD

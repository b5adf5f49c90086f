// Numbers and pointers as the texts that the library's commands take, and a few common questions to a
// display.
#pragma once

#include <QRect>
#include <cstdint>
#include <optional>
#include <string>

#include "ZynDisplay.h"

namespace zynview {

std::string Number(double value);
double Number(const std::string& text);  // 0 where it is none
std::string PointerText(const void* pointer);
void* PointerFrom(const std::string& text);  // null where it is none

// Runs a command, with arguments that nobody reads afterwards.
bool Run(ZynDisplayProcessor* display, const char* name, QTD::ARGUMENTS arguments = {});

// Whether a switch among the display's parameters is on; one that is not there is off.
bool IsOn(ZynDisplayProcessor* display, const char* parameter);

// Where a point of the display's window, in its own pixels as Qt counts them, lies on the picture: in image
// pixels with fractions. Nothing without a window.
struct ImagePoint {
  double x, y;
  bool isOnPicture;
};
std::optional<ImagePoint> WindowToImage(ZynDisplayProcessor* display, double x, double y);

// Draws a rectangle round image pixels, which moves with the picture; one with this id goes. Red is in the
// colour's lowest byte. False when the display refuses it.
bool DrawImageRect(ZynDisplayProcessor* display, const char* id, const QRect& rect, int pen, uint32_t colour);

}  // namespace zynview

// Numbers and pointers as the texts that the library's commands take, and a few common questions to a
// display.
#pragma once

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

}  // namespace zynview

// Bottom-up pictures into top-down ones.
#pragma once

#include "ZynImage.h"

// Exchanges the lines of the picture, the first with the last and so on; padding stays where it is. False,
// with nothing done, when the record's lines don't lie within its buffer.
bool TurnLines(const ZynImage& image);

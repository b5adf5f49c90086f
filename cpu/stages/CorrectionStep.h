// Correction of an image's pixels by tables.
#pragma once

#include "ZynImage.h"
#include "cpu/stages/ColorLUT.h"

// Applies the tables to the pixels, in place: three tables to RGB and BGR images, the first one to every
// sample of all others. False, with the image untouched, for 8-bit images, for depths that have no tables,
// and for a record that cannot be true for its buffer. `table` has tables. Any thread.
bool CorrectPixels(const ZynImage& image, const ColorLUT& table);

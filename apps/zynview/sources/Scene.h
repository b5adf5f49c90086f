// The built-in test scene: resolution wedges, colour patches, gradients, and a part that moves.
#pragma once

#include <cstdint>

#include "pixels/PixelEncoder.h"

namespace zynview {

// The scene without its moving part.
ColourPicture DrawBackground(uint32_t width, uint32_t height);

struct Lines {
  uint32_t first, end;  // without `end`
};

// Puts the moving part into a background; `phase` 0..1 is its place on its way round. Answers the lines that
// it has changed.
Lines DrawPart(ColourPicture& picture, double phase);

}  // namespace zynview

// The built-in test scene: resolution wedges, colour patches, gradients, and a part that moves.
#pragma once

#include <cstdint>

#include "PixelEncoder.h"

namespace zynview {

// `phase` 0..1 is the place of the moving part on its way round.
ColourPicture DrawScene(uint32_t width, uint32_t height, double phase);

}  // namespace zynview

// The data of the 133 pixel formats, in the order of the codes' low byte; read it through PixelFormats.h.
#pragma once

#include "QTD/image/PixelFormats.h"

namespace QTD {

extern const PixelRow kPixelTable[kPixelRows];

}  // namespace QTD

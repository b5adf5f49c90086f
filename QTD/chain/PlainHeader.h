// Information records of chain and converter.
#pragma once

#include "ZynImage.h"

// A fresh record of the image's size and code, top-down and with the lines of a made record; null when there
// is no such picture. Free it with QTD::ImageDelete.
ZynImage* PlainHeader(const ZynImage& image);

// Lines of pixels between memory and the card, at any pitch.
#pragma once

#include <cstdint>

#include "ZynImage.h"
#include "gl/image/GLPixels.h"

class QGLSurface;

// Whether `height` lines of `lineBytes` bytes at the record's pitch lie within its `imageSize`, and each line
// within the pitch.
bool LinesLieWithin(const ZynImage& image, uint64_t lineBytes, uint32_t height);

// Into the texture that is bound. The lines were checked.
void UploadLines(QGLSurface& surface, const GLPixels& pixels, int width, int height, const uint8_t* data,
                 uint32_t pitch);

// From the framebuffer that is bound for reading. The buffer was checked; bytes between the lines stay.
void ReadLines(QGLSurface& surface, const GLPixels& pixels, int width, int height, uint8_t* data,
               uint64_t pitch);

#include "sources/DeepNetpbm.h"

#include <QtEndian>
#include <algorithm>
#include <cctype>

#include "ZynPixelFormat.h"
#include "sources/Sidecar.h"

namespace zynview {

namespace {

constexpr uint32_t kMostSide = 65535, kShallow = 255, kDeepest = 65535;
constexpr uint32_t kBeyond = 1000000;  // larger numbers are as wrong as this one
constexpr qint64 kMostHeaderBytes = 1 << 16;

struct Depth {
  uint32_t greatest, grey, colour;
};

constexpr Depth kDepths[] = {
    {1023, ZYN_PIXEL_MONO10, ZYN_PIXEL_RGB10},
    {4095, ZYN_PIXEL_MONO12, ZYN_PIXEL_RGB12},
    {16383, ZYN_PIXEL_MONO14, ZYN_PIXEL_RGB14},
};

bool IsSpace(char letter) {
  return std::isspace(static_cast<unsigned char>(letter)) != 0;
}

// The number at `place`, behind spaces and comments; `place` goes behind it. False where there is none.
bool ReadNumber(const QByteArray& text, int* place, uint32_t* number) {
  const auto letter = [&text, place] { return *place < text.size() ? text[*place] : '\0'; };
  while (IsSpace(letter()) || letter() == '#') {
    if (letter() == '#') {
      while (*place < text.size() && letter() != '\n' && letter() != '\r') ++*place;
    } else {
      ++*place;
    }
  }
  const int start = *place;
  for (*number = 0; letter() >= '0' && letter() <= '9'; ++*place)
    *number = std::min(*number * 10 + static_cast<uint32_t>(letter() - '0'), kBeyond);
  return *place > start;
}

}  // namespace

uint32_t DeepNetpbm::PixelType() const {
  for (const Depth& depth : kDepths) {
    if (depth.greatest == greatest) return channels == 1 ? depth.grey : depth.colour;
  }
  return channels == 1 ? ZYN_PIXEL_MONO16 : ZYN_PIXEL_RGB16;
}

// P5 or P6, then width, height and the greatest value, and one white space before the samples.
bool ReadNetpbmHeader(QIODevice& input, DeepNetpbm* picture) {
  const QByteArray text = input.peek(kMostHeaderBytes);
  const bool grey = text.startsWith("P5"), colour = text.startsWith("P6");
  int place = 2;
  if (!(grey || colour) || !ReadNumber(text, &place, &picture->width) ||
      !ReadNumber(text, &place, &picture->height) || !ReadNumber(text, &place, &picture->greatest) ||
      place >= text.size() || !IsSpace(text[place])) {
    return false;
  }
  picture->channels = grey ? 1 : 3;
  return picture->greatest > kShallow && input.seek(place + 1);
}

bool ReadNetpbmSamples(QIODevice& input, DeepNetpbm* picture, QString* error) {
  const uint64_t count = uint64_t{picture->width} * picture->height * picture->channels;
  const QString size = QStringLiteral("a picture of %1 × %2").arg(picture->width).arg(picture->height);
  const std::size_t bytes = count * 2;
  const auto length = static_cast<qint64>(bytes);
  if (picture->greatest > kDeepest) {
    *error = QStringLiteral("the greatest value of its header is more than %1").arg(kDeepest);
  } else if (picture->width == 0 || picture->height == 0) {
    *error = size + QStringLiteral(" is empty");
  } else if (picture->width > kMostSide || picture->height > kMostSide || bytes > kMostFrameBytes) {
    *error = size + QStringLiteral(" is too large");
  } else if (input.bytesAvailable() < length) {
    *error = QStringLiteral("%1 has %2 bytes, but only %3 are there")
                 .arg(size)
                 .arg(bytes)
                 .arg(input.bytesAvailable());
  }
  if (!error->isEmpty()) return false;
  picture->samples.resize(count);
  if (input.read(reinterpret_cast<char*>(picture->samples.data()), length) != length) {
    *error = input.errorString();
    return false;
  }
  for (uint16_t& sample : picture->samples) {
    sample = qFromBigEndian(sample);
    if (sample <= picture->greatest) continue;
    *error = QStringLiteral("a sample of %1 is above the greatest value of the header, %2")
                 .arg(sample)
                 .arg(picture->greatest);
    return false;
  }
  return true;
}

}  // namespace zynview

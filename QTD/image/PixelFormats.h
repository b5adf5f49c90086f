// The 133 pixel codes: table, sets and mappings. Constant data: any thread.
#pragma once

#include <cstdint>

namespace QTD {

// One row of the table. A code is 0xFFBBGGII: family, storage bits, group, row number.
struct PixelRow {
  const char* name;
  const char* layout;  // order of the samples, such as "R G B" or "G R G2 B"
  uint32_t channels;
  uint32_t bitDepth;
  int (*channel)(char letter);  // index of a sample in a pixel, -1 for any other letter
  uint32_t phase;
  uint32_t code;
};

constexpr uint32_t kPixelRows = 133;

const PixelRow* FindPixelRow(uint32_t pixelType);      // by the low byte alone; null when unknown
const PixelRow* FindPixelRowByName(const char* name);  // by the whole name, as written in the table

inline uint32_t PixelGroup(uint32_t pixelType) {
  return pixelType & 0xFF00;
}
inline uint32_t BitsPerPixel(uint32_t pixelType) {
  return (pixelType >> 16) & 0xFF;
}

bool IsPackedFormat(uint32_t pixelType);
bool IsMonoFormat(uint32_t pixelType);
bool IsRgbFormat(uint32_t pixelType);
bool IsBgrFormat(uint32_t pixelType);
bool IsBayerFormat(uint32_t pixelType);
bool IsCfaFormat(uint32_t pixelType);
bool IsTrueSenseFormat(uint32_t pixelType);
bool IsYuvFormat(uint32_t pixelType);
bool IsUyvyFormat(uint32_t pixelType);  // "YUV422_8_UYVY" alone

// What the head of a chain turns into whole samples first: the packed formats and UYVY.
bool IsTransportFormat(uint32_t pixelType);
// Whether the stages that work on pixels take it: anything but transport formats and mosaics.
bool IsPictureFormat(uint32_t pixelType);

uint32_t UnpackedFormat(uint32_t pixelType);              // others map to themselves
uint32_t DemosaicedFormat(uint32_t pixelType, bool bgr);  // packed Bayer codes: 0; others map to themselves
uint32_t EightBitFormat(
    uint32_t pixelType);  // packed monochrome and YUV: 0; RGB and others map to themselves

// Positions in the ordered sets, -1 when not a member.

// 36 codes: the plain ones by depth 8 to 16, each GR, RG, BG, GB; then 10Packed, 12Packed, 10p and 12p, each
// GR, RG, GB, BG.
int BayerPosition(uint32_t pixelType);
constexpr int kFirstPackedBayer = 20;  // the position of BayerGR10Packed
constexpr int kFirst10pBayer = 28;     // BayerGR10p
constexpr int kFirst12pBayer = 32;     // BayerGR12p

int TrueSensePosition(uint32_t pixelType);  // in the list of 16 or of 48
// The inverse of `TrueSensePosition`; 0 where the list has no such position.
uint32_t TrueSenseCode(bool eightBits, int position);

}  // namespace QTD

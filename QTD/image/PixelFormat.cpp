#include "QTD/image/PixelFormat.h"

#include <cmath>
#include <cstdlib>
#include <iterator>
#include <limits>

#include "QTD/image/PixelFormats.h"
#include "ZynPixelFormat.h"

namespace QTD {
namespace {

constexpr char kUsb[] = "usb";

// Formats that are decoded by their code alone.
struct KnownCode {
  uint32_t code;
  PixelFormat::Family family;
  uint32_t pattern;
};

constexpr KnownCode kKnownCodes[] = {
    {ZYN_PIXEL_MONO8, PixelFormat::Mono, 0},   {ZYN_PIXEL_MONO10, PixelFormat::Mono, 0},
    {ZYN_PIXEL_MONO10P, PixelFormat::Mono, 0}, {ZYN_PIXEL_MONO12, PixelFormat::Mono, 0},
    {ZYN_PIXEL_MONO12P, PixelFormat::Mono, 0}, {ZYN_PIXEL_MONO14, PixelFormat::Mono, 0},
    {ZYN_PIXEL_MONO16, PixelFormat::Mono, 0},  {ZYN_PIXEL_RGB8, PixelFormat::Rgb, 0},
    {ZYN_PIXEL_RGB10, PixelFormat::Rgb, 0},    {ZYN_PIXEL_RGB12, PixelFormat::Rgb, 0},
    {ZYN_PIXEL_RGB14, PixelFormat::Rgb, 0},    {ZYN_PIXEL_RGB16, PixelFormat::Rgb, 0},
    {ZYN_PIXEL_BGR8, PixelFormat::Rgb, 1},     {ZYN_PIXEL_BGR10, PixelFormat::Rgb, 1},
    {ZYN_PIXEL_BGR12, PixelFormat::Rgb, 1},    {ZYN_PIXEL_BGR14, PixelFormat::Rgb, 1},
    {ZYN_PIXEL_BGR16, PixelFormat::Rgb, 1},    {ZYN_PIXEL_RGBA8, PixelFormat::Rgba, 0},
    {ZYN_PIXEL_BGRA8, PixelFormat::Rgba, 1},   {ZYN_PIXEL_YUV422_8_UYVY, PixelFormat::Yuv, 0},
};

// What a group says of depth and packing; other groups are 8 bits deep.
struct GroupDepth {
  uint32_t group;
  int32_t depth;
  const char* packing;
};

constexpr GroupDepth kGroupDepths[] = {
    {0x2200, 10, kUsb}, {0x2300, 12, kUsb}, {0x0200, 10, ""},
    {0x0300, 12, ""},   {0x0400, 14, ""},   {0x0500, 16, ""},
};

// What a family looks like at a depth, in the two packings or the two orders; the last row is for all other
// depths.
struct DepthCodes {
  int32_t depth;
  uint32_t first;
  uint32_t second;
};

constexpr int32_t kOtherDepth = -1;

constexpr DepthCodes kMonoCodes[] = {
    // plain, "usb"
    {10, ZYN_PIXEL_MONO10, ZYN_PIXEL_MONO10P},       {12, ZYN_PIXEL_MONO12, ZYN_PIXEL_MONO12P},
    {14, ZYN_PIXEL_MONO14, ZYN_PIXEL_MONO14},        {16, ZYN_PIXEL_MONO16, ZYN_PIXEL_MONO16},
    {kOtherDepth, ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8},
};

constexpr DepthCodes kRgbCodes[] = {
    // RGB, BGR
    {8, ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR8},
    {10, ZYN_PIXEL_RGB10, ZYN_PIXEL_BGR10},
    {12, ZYN_PIXEL_RGB12, ZYN_PIXEL_BGR12},
    {14, ZYN_PIXEL_RGB14, ZYN_PIXEL_BGR14},
    {kOtherDepth, ZYN_PIXEL_RGB16, ZYN_PIXEL_BGR16},
};

template <size_t N>
uint32_t CodeOfDepth(const DepthCodes (&codes)[N], int32_t depth, bool second) {
  for (const DepthCodes& row : codes) {
    if (row.depth == depth || row.depth == kOtherDepth) return second ? row.second : row.first;
  }
  return 0;
}

// The GR order, of which the low half counts: group and row number.
constexpr DepthCodes kBayerCodes[] = {
    // plain, "usb"
    {10, ZYN_PIXEL_BAYERGR10, ZYN_PIXEL_BAYERGR10P},
    {12, ZYN_PIXEL_BAYERGR12, ZYN_PIXEL_BAYERGR12P},
    {14, ZYN_PIXEL_BAYERGR14, 0},
    {16, ZYN_PIXEL_BAYERGR16, 0},
    {kOtherDepth, ZYN_PIXEL_BAYERGR8, 0},
};

// Family byte 1, and a storage byte that can differ from the table's: of such a code only the storage byte
// and the row number are used. Other orders than GR count up one by one, also where the table's rows step by
// two.
uint32_t EncodeBayer(uint32_t pattern, int32_t depth, bool usb) {
  constexpr uint32_t kOrderOffsets[] = {0, 1, 3, 2};
  if (pattern >= std::size(kOrderOffsets)) return 0;
  const bool deep = depth > 8;
  const uint32_t top = !deep ? 0x01080000 : usb ? 0x010C0000 : 0x01100000;
  const uint32_t low = CodeOfDepth(kBayerCodes, depth, deep && usb) & 0xFFFF;
  return low == 0 ? top
                  : top | (low + kOrderOffsets[pattern]);  // a deep "usb" format without rows: bare top bytes
}

// Position of a depth in the TrueSense lists, -1 for a depth that has none.
int TrueSenseBlock(int32_t depth) {
  switch (depth) {
    case 10:
      return 0;
    case 12:
      return 1;
    case 14:
      return 2;
    default:
      return -1;
  }
}

uint32_t EncodeTrueSense(uint32_t pattern, int32_t depth) {
  if (pattern >= 16) return 0;
  const int position = static_cast<int>(pattern);
  if (depth == 8) return TrueSenseCode(true, position);
  const int block = TrueSenseBlock(depth);
  return block < 0 ? 0 : TrueSenseCode(false, block * 16 + position);
}

}  // namespace

PixelFormat::PixelFormat(uint32_t code) {
  Decode(code);
}

PixelFormat::~PixelFormat() {
  Clear();
}

void PixelFormat::SetDefault() {
  Clear();
  family = Mono;
  depth = 8;
}

void PixelFormat::Clear() {
  family = Unknown;
  pattern = 0;
  depth = 0;
  packing.clear();
}

void PixelFormat::Decode(uint32_t code) {
  Clear();
  depth = 8;
  if (IsBayerFormat(code)) {
    DecodeBayer(BayerPosition(code));
  } else if (IsTrueSenseFormat(code)) {
    DecodeTrueSense(code);
  } else {
    DecodeByGroup(code);
  }
}

void PixelFormat::DecodeBayer(int position) {
  constexpr uint32_t kPackedPatterns[] = {0, 1, 3, 2};  // listed GR, RG, GB, BG
  if (position < kFirstPackedBayer) {
    family = Bayer;
    pattern = static_cast<uint32_t>(position % 4);
    depth = 8 + 2 * (position / 4);
  } else if (position >= kFirst10pBayer) {  // not 10Packed and 12Packed
    family = Bayer;
    pattern = kPackedPatterns[position % 4];
    depth = position < kFirst12pBayer ? 10 : 12;
    packing = kUsb;
  }
}

void PixelFormat::DecodeTrueSense(uint32_t code) {
  const int position = TrueSensePosition(code);
  family = TrueSense;
  pattern = static_cast<uint32_t>(position % 16);
  const bool eightBits = TrueSenseCode(true, position) == code;
  depth = eightBits ? 8 : 10 + 2 * (position / 16);
}

void PixelFormat::DecodeByGroup(uint32_t code) {
  for (const KnownCode& known : kKnownCodes) {
    if (known.code != code) continue;
    family = known.family;
    pattern = known.pattern;
  }
  for (const GroupDepth& group : kGroupDepths) {
    if (group.group != PixelGroup(code)) continue;
    depth = group.depth;
    packing = group.packing;
  }
}

bool PixelFormat::IsBitStream() const {
  return packing == kUsb;
}

uint32_t PixelFormat::Encode() const {
  switch (family) {
    case Mono:
      return CodeOfDepth(kMonoCodes, depth, IsBitStream());
    case Rgb:
      return CodeOfDepth(kRgbCodes, depth, pattern != 0);
    case Rgba:
      if (depth != 8) return 0;
      return pattern != 0 ? ZYN_PIXEL_BGRA8 : ZYN_PIXEL_RGBA8;
    case Bayer:
      return EncodeBayer(pattern, depth, IsBitStream());
    case TrueSense:
      return EncodeTrueSense(pattern, depth);
    case Yuv:
      return depth == 8 && pattern == 0 ? ZYN_PIXEL_YUV422_8_UYVY : 0;
    default:
      return 0;
  }
}

int PixelFormat::LineBytes(int width) const {
  if (width < 1) return 0;
  const int64_t pixels = width;
  int64_t bytes;
  if (IsBitStream()) {
    bytes = depth == 10 ? pixels * 5 / 4 : pixels * 3 / 2;
  } else {
    const int64_t container = depth == 8 ? 8 : 16;
    const int64_t channels = family == Rgb ? 3 : family == Rgba ? 4 : 1;
    bytes = (container * channels * pixels + 31) / 32 * 4;
  }
  return bytes <= std::numeric_limits<int>::max() ? static_cast<int>(bytes) : 0;
}

double PixelFormat::ColorScale(int targetBits) const {
  const int64_t difference = int64_t{targetBits} - depth;
  const int64_t distance = std::llabs(difference);
  const uint32_t power = distance < 32 ? uint32_t{1} << distance : 0;
  if (difference >= 0) return power;
  return power == 0 ? 0.0 : 1.0 / power;
}

}  // namespace QTD

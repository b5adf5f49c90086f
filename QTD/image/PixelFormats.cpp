#include "QTD/image/PixelFormats.h"

#include <cstring>
#include <iterator>

#include "QTD/image/PixelFormatTable.h"
#include "ZynPixelFormat.h"

namespace QTD {
namespace {

// clang-format off
constexpr uint32_t kPacked[] = {
    ZYN_PIXEL_MONO10PACKED, ZYN_PIXEL_MONO12PACKED, ZYN_PIXEL_MONO10P, ZYN_PIXEL_MONO12P,
    ZYN_PIXEL_BAYERGR10PACKED, ZYN_PIXEL_BAYERRG10PACKED, ZYN_PIXEL_BAYERGB10PACKED, ZYN_PIXEL_BAYERBG10PACKED,
    ZYN_PIXEL_BAYERGR12PACKED, ZYN_PIXEL_BAYERRG12PACKED, ZYN_PIXEL_BAYERGB12PACKED, ZYN_PIXEL_BAYERBG12PACKED,
    ZYN_PIXEL_BAYERGR10P, ZYN_PIXEL_BAYERRG10P, ZYN_PIXEL_BAYERGB10P, ZYN_PIXEL_BAYERBG10P,
    ZYN_PIXEL_BAYERGR12P, ZYN_PIXEL_BAYERRG12P, ZYN_PIXEL_BAYERGB12P, ZYN_PIXEL_BAYERBG12P,
};

// What the members of kPacked become, position by position.
constexpr uint32_t kUnpacked[] = {
    ZYN_PIXEL_MONO10, ZYN_PIXEL_MONO12, ZYN_PIXEL_MONO10, ZYN_PIXEL_MONO12,
    ZYN_PIXEL_BAYERGR10, ZYN_PIXEL_BAYERRG10, ZYN_PIXEL_BAYERGB10, ZYN_PIXEL_BAYERBG10,
    ZYN_PIXEL_BAYERGR12, ZYN_PIXEL_BAYERRG12, ZYN_PIXEL_BAYERGB12, ZYN_PIXEL_BAYERBG12,
    ZYN_PIXEL_BAYERGR10, ZYN_PIXEL_BAYERRG10, ZYN_PIXEL_BAYERGB10, ZYN_PIXEL_BAYERBG10,
    ZYN_PIXEL_BAYERGR12, ZYN_PIXEL_BAYERRG12, ZYN_PIXEL_BAYERGB12, ZYN_PIXEL_BAYERBG12,
};

constexpr uint32_t kMono[] = {
    ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO10, ZYN_PIXEL_MONO12, ZYN_PIXEL_MONO14, ZYN_PIXEL_MONO16,
    ZYN_PIXEL_MONO10PACKED, ZYN_PIXEL_MONO12PACKED, ZYN_PIXEL_MONO10P, ZYN_PIXEL_MONO12P,
};

constexpr uint32_t kPlainMono[] = {
    ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO10, ZYN_PIXEL_MONO12, ZYN_PIXEL_MONO14, ZYN_PIXEL_MONO16,
};

// By depth: 8, 10, 12, 14, 16.
constexpr uint32_t kRgb[] = {
    ZYN_PIXEL_RGB8, ZYN_PIXEL_RGB10, ZYN_PIXEL_RGB12, ZYN_PIXEL_RGB14, ZYN_PIXEL_RGB16,
};
constexpr uint32_t kBgr[] = {
    ZYN_PIXEL_BGR8, ZYN_PIXEL_BGR10, ZYN_PIXEL_BGR12, ZYN_PIXEL_BGR14, ZYN_PIXEL_BGR16,
};

// The plain codes run GR, RG, BG, GB; the packed ones GR, RG, GB, BG.
constexpr uint32_t kBayer[] = {
    ZYN_PIXEL_BAYERGR8, ZYN_PIXEL_BAYERRG8, ZYN_PIXEL_BAYERBG8, ZYN_PIXEL_BAYERGB8,
    ZYN_PIXEL_BAYERGR10, ZYN_PIXEL_BAYERRG10, ZYN_PIXEL_BAYERBG10, ZYN_PIXEL_BAYERGB10,
    ZYN_PIXEL_BAYERGR12, ZYN_PIXEL_BAYERRG12, ZYN_PIXEL_BAYERBG12, ZYN_PIXEL_BAYERGB12,
    ZYN_PIXEL_BAYERGR14, ZYN_PIXEL_BAYERRG14, ZYN_PIXEL_BAYERBG14, ZYN_PIXEL_BAYERGB14,
    ZYN_PIXEL_BAYERGR16, ZYN_PIXEL_BAYERRG16, ZYN_PIXEL_BAYERBG16, ZYN_PIXEL_BAYERGB16,
    ZYN_PIXEL_BAYERGR10PACKED, ZYN_PIXEL_BAYERRG10PACKED, ZYN_PIXEL_BAYERGB10PACKED, ZYN_PIXEL_BAYERBG10PACKED,
    ZYN_PIXEL_BAYERGR12PACKED, ZYN_PIXEL_BAYERRG12PACKED, ZYN_PIXEL_BAYERGB12PACKED, ZYN_PIXEL_BAYERBG12PACKED,
    ZYN_PIXEL_BAYERGR10P, ZYN_PIXEL_BAYERRG10P, ZYN_PIXEL_BAYERGB10P, ZYN_PIXEL_BAYERBG10P,
    ZYN_PIXEL_BAYERGR12P, ZYN_PIXEL_BAYERRG12P, ZYN_PIXEL_BAYERGB12P, ZYN_PIXEL_BAYERBG12P,
};

// One depth of TrueSense: BGGR 0 1, GBRG 0 1, BGGR 2 3, GBRG 2 3, GRBG 0 1, RGGB 0 1, GRBG 2 3, RGGB 2 3.
#define TRUESENSE_DEPTH(depth)                                                              \
    ZYN_PIXEL_TRUESENSE_BGGR_WBBW_0_##depth, ZYN_PIXEL_TRUESENSE_BGGR_WBBW_1_##depth,       \
    ZYN_PIXEL_TRUESENSE_GBRG_WGGW_0_##depth, ZYN_PIXEL_TRUESENSE_GBRG_WGGW_1_##depth,       \
    ZYN_PIXEL_TRUESENSE_BGGR_WBBW_2_##depth, ZYN_PIXEL_TRUESENSE_BGGR_WBBW_3_##depth,       \
    ZYN_PIXEL_TRUESENSE_GBRG_WGGW_2_##depth, ZYN_PIXEL_TRUESENSE_GBRG_WGGW_3_##depth,       \
    ZYN_PIXEL_TRUESENSE_GRBG_WGGW_0_##depth, ZYN_PIXEL_TRUESENSE_GRBG_WGGW_1_##depth,       \
    ZYN_PIXEL_TRUESENSE_RGGB_WRRW_0_##depth, ZYN_PIXEL_TRUESENSE_RGGB_WRRW_1_##depth,       \
    ZYN_PIXEL_TRUESENSE_GRBG_WGGW_2_##depth, ZYN_PIXEL_TRUESENSE_GRBG_WGGW_3_##depth,       \
    ZYN_PIXEL_TRUESENSE_RGGB_WRRW_2_##depth, ZYN_PIXEL_TRUESENSE_RGGB_WRRW_3_##depth

constexpr uint32_t kTrueSense8[] = {TRUESENSE_DEPTH(8)};
constexpr uint32_t kTrueSenseDeep[] = {TRUESENSE_DEPTH(10), TRUESENSE_DEPTH(12), TRUESENSE_DEPTH(14)};

#undef TRUESENSE_DEPTH

constexpr uint32_t kYuv[] = {
    ZYN_PIXEL_YUV422_8_UYVY, ZYN_PIXEL_YUV422_8, ZYN_PIXEL_YUV422_10,
    ZYN_PIXEL_YUV422_10_PACKED, ZYN_PIXEL_YUV444_8, ZYN_PIXEL_YCBCR422_8,
};
// clang-format on

static_assert(std::size(kPacked) == 20 && std::size(kUnpacked) == 20 && std::size(kMono) == 9, "list sizes");
static_assert(std::size(kBayer) == 36 && std::size(kTrueSense8) == 16 && std::size(kTrueSenseDeep) == 48,
              "list sizes");

static_assert(kBayer[kFirstPackedBayer] == ZYN_PIXEL_BAYERGR10PACKED &&
                  kBayer[kFirst10pBayer] == ZYN_PIXEL_BAYERGR10P &&
                  kBayer[kFirst12pBayer] == ZYN_PIXEL_BAYERGR12P,
              "positions");

constexpr uint32_t kTrueSenseEightBits = 0x80000;  // the bit of a code that chooses the list

template <size_t N>
int IndexOf(const uint32_t (&codes)[N], uint32_t pixelType) {
  for (size_t index = 0; index < N; ++index) {
    if (codes[index] == pixelType) return static_cast<int>(index);
  }
  return -1;
}

template <size_t N>
bool Contains(const uint32_t (&codes)[N], uint32_t pixelType) {
  return IndexOf(codes, pixelType) >= 0;
}

}  // namespace

const PixelRow* FindPixelRow(uint32_t pixelType) {
  const uint32_t row = pixelType & 0xFF;
  return row >= 1 && row <= kPixelRows ? &kPixelTable[row - 1] : nullptr;
}

const PixelRow* FindPixelRowByName(const char* name) {
  if (name == nullptr) return nullptr;
  for (const PixelRow& row : kPixelTable) {
    if (std::strcmp(row.name, name) == 0) return &row;
  }
  return nullptr;
}

bool IsPackedFormat(uint32_t pixelType) {
  return Contains(kPacked, pixelType);
}
bool IsMonoFormat(uint32_t pixelType) {
  return Contains(kMono, pixelType);
}
bool IsRgbFormat(uint32_t pixelType) {
  return Contains(kRgb, pixelType) || Contains(kBgr, pixelType);
}
bool IsBgrFormat(uint32_t pixelType) {
  return Contains(kBgr, pixelType);
}
bool IsBayerFormat(uint32_t pixelType) {
  return Contains(kBayer, pixelType);
}
bool IsCfaFormat(uint32_t pixelType) {
  return IsBayerFormat(pixelType) || IsTrueSenseFormat(pixelType);
}
bool IsTrueSenseFormat(uint32_t pixelType) {
  return TrueSensePosition(pixelType) >= 0;
}
bool IsYuvFormat(uint32_t pixelType) {
  return Contains(kYuv, pixelType);
}
bool IsUyvyFormat(uint32_t pixelType) {
  return pixelType == ZYN_PIXEL_YUV422_8_UYVY;
}
bool IsTransportFormat(uint32_t pixelType) {
  return IsPackedFormat(pixelType) || IsUyvyFormat(pixelType);
}
bool IsPictureFormat(uint32_t pixelType) {
  return !IsTransportFormat(pixelType) && !IsCfaFormat(pixelType);
}

uint32_t UnpackedFormat(uint32_t pixelType) {
  const int position = IndexOf(kPacked, pixelType);
  return position >= 0 ? kUnpacked[position] : pixelType;
}

uint32_t DemosaicedFormat(uint32_t pixelType, bool bgr) {
  const int position = BayerPosition(pixelType);
  if (position < 0) return pixelType;
  if (position >= kFirstPackedBayer) return 0;
  return (bgr ? kBgr : kRgb)[position / 4];
}

uint32_t EightBitFormat(uint32_t pixelType) {
  if (Contains(kPlainMono, pixelType)) return ZYN_PIXEL_MONO8;
  // Packed codes are listed in another order than plain ones, so packed GB becomes BG and packed BG becomes
  // GB.
  const int bayer = BayerPosition(pixelType);
  if (bayer >= 0) return kBayer[bayer % 4];
  const int trueSense = IndexOf(kTrueSenseDeep, pixelType);
  if (trueSense >= 0) return kTrueSense8[trueSense % 16];
  if (IsPackedFormat(pixelType) || IsYuvFormat(pixelType)) return 0;
  return pixelType;
}

int BayerPosition(uint32_t pixelType) {
  return IndexOf(kBayer, pixelType);
}

int TrueSensePosition(uint32_t pixelType) {
  return (pixelType & kTrueSenseEightBits) != 0 ? IndexOf(kTrueSense8, pixelType)
                                                : IndexOf(kTrueSenseDeep, pixelType);
}

uint32_t TrueSenseCode(bool eightBits, int position) {
  if (position < 0) return 0;
  const size_t index = static_cast<size_t>(position);
  if (eightBits) return index < std::size(kTrueSense8) ? kTrueSense8[index] : 0;
  return index < std::size(kTrueSenseDeep) ? kTrueSenseDeep[index] : 0;
}

}  // namespace QTD

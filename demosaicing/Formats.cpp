#include "demosaicing/Formats.h"

#include <algorithm>
#include <iterator>

#include "ZynPixelFormat.h"

namespace Demosaicing {
namespace {

// A name gives the first two places of the first line; the second line holds the other two colours.
//
//   GR: G R    RG: R G    GB: G B    BG: B G
//       B G        G B        R G        G R
constexpr BayerFormat kBayerFormats[] = {
    // code, depth, red at x, y
    {ZYN_PIXEL_BAYERGR8, 8, 1, 0},   {ZYN_PIXEL_BAYERRG8, 8, 0, 0},   {ZYN_PIXEL_BAYERGB8, 8, 0, 1},
    {ZYN_PIXEL_BAYERBG8, 8, 1, 1},   {ZYN_PIXEL_BAYERGR10, 10, 1, 0}, {ZYN_PIXEL_BAYERRG10, 10, 0, 0},
    {ZYN_PIXEL_BAYERGB10, 10, 0, 1}, {ZYN_PIXEL_BAYERBG10, 10, 1, 1}, {ZYN_PIXEL_BAYERGR12, 12, 1, 0},
    {ZYN_PIXEL_BAYERRG12, 12, 0, 0}, {ZYN_PIXEL_BAYERGB12, 12, 0, 1}, {ZYN_PIXEL_BAYERBG12, 12, 1, 1},
    {ZYN_PIXEL_BAYERGR14, 14, 1, 0}, {ZYN_PIXEL_BAYERRG14, 14, 0, 0}, {ZYN_PIXEL_BAYERGB14, 14, 0, 1},
    {ZYN_PIXEL_BAYERBG14, 14, 1, 1}, {ZYN_PIXEL_BAYERGR16, 16, 1, 0}, {ZYN_PIXEL_BAYERRG16, 16, 0, 0},
    {ZYN_PIXEL_BAYERGB16, 16, 0, 1}, {ZYN_PIXEL_BAYERBG16, 16, 1, 1},
};

constexpr ColorFormat kColorFormats[] = {
    // code, depth, blue first
    {ZYN_PIXEL_RGB8, 8, false},   {ZYN_PIXEL_BGR8, 8, true},    //
    {ZYN_PIXEL_RGB10, 10, false}, {ZYN_PIXEL_BGR10, 10, true},  //
    {ZYN_PIXEL_RGB12, 12, false}, {ZYN_PIXEL_BGR12, 12, true},  //
    {ZYN_PIXEL_RGB14, 14, false}, {ZYN_PIXEL_BGR14, 14, true},  //
    {ZYN_PIXEL_RGB16, 16, false}, {ZYN_PIXEL_BGR16, 16, true},
};

template <typename Format, size_t kCount>
const Format* Find(const Format (&table)[kCount], uint32_t pixelType) {
  const auto* const row = std::find_if(std::begin(table), std::end(table),
                                       [&](const Format& format) { return format.pixelType == pixelType; });
  return row == std::end(table) ? nullptr : row;
}

}  // namespace

const BayerFormat* FindBayerFormat(uint32_t pixelType) {
  return Find(kBayerFormats, pixelType);
}

const ColorFormat* FindColorFormat(uint32_t pixelType) {
  return Find(kColorFormats, pixelType);
}

}  // namespace Demosaicing

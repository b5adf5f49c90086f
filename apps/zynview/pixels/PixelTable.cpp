#include "pixels/PixelTable.h"

#include <QLatin1String>
#include <algorithm>
#include <iterator>

#include "ZynPixelFormat.h"

namespace zynview {

namespace {

constexpr uint32_t kBrioGroup = 3;

constexpr const char *kGR = "GR/BG", *kRG = "RG/GB", *kGB = "GB/RG", *kBG = "BG/GR";
constexpr const char* kBGGR = "WBWG/BWGW/WGWR/GWRW";
constexpr const char* kGBRG = "WGWB/GWBW/WRWG/RWGW";
constexpr const char* kGRBG = "WGWR/GWRW/WBWG/BWGW";
constexpr const char* kRGGB = "WRWG/RWGW/WGWB/GWBW";

// The formats that no stage of the library reads (Brio, YUV other than UYVY, alpha) come as plain streams of
// their samples, filled up to the storage bits that the code names.
// clang-format off
constexpr PixelRow kRows[] = {
    // name, code, samples, depth, slot, phase
    {"Mono8", ZYN_PIXEL_MONO8, "L", 8, 8, 0},
    {"Mono10", ZYN_PIXEL_MONO10, "L", 10, 16, 0},
    {"Mono10p", ZYN_PIXEL_MONO10P, "L", 10, 10, 0},
    {"Mono10Packed", ZYN_PIXEL_MONO10PACKED, "L", 10, kPaired, 0},
    {"Mono10_BrioPacked", ZYN_PIXEL_MONO10_BRIOPACKED, "L", 10, 12, 0},
    {"Mono12", ZYN_PIXEL_MONO12, "L", 12, 16, 0},
    {"Mono12p", ZYN_PIXEL_MONO12P, "L", 12, 12, 0},
    {"Mono12Packed", ZYN_PIXEL_MONO12PACKED, "L", 12, kPaired, 0},
    {"Mono12_BrioPacked", ZYN_PIXEL_MONO12_BRIOPACKED, "L", 12, 12, 0},
    {"Mono14", ZYN_PIXEL_MONO14, "L", 14, 16, 0},
    {"Mono16", ZYN_PIXEL_MONO16, "L", 16, 16, 0},
    {"Mono8_BrioPacked", ZYN_PIXEL_MONO8_BRIOPACKED, "L", 8, 8, 0},
    {"BayerGR8", ZYN_PIXEL_BAYERGR8, kGR, 8, 8, 0},
    {"BayerRG8", ZYN_PIXEL_BAYERRG8, kRG, 8, 8, 0},
    {"BayerGB8", ZYN_PIXEL_BAYERGB8, kGB, 8, 8, 0},
    {"BayerBG8", ZYN_PIXEL_BAYERBG8, kBG, 8, 8, 0},
    {"BayerGR10", ZYN_PIXEL_BAYERGR10, kGR, 10, 16, 0},
    {"BayerRG10", ZYN_PIXEL_BAYERRG10, kRG, 10, 16, 0},
    {"BayerGB10", ZYN_PIXEL_BAYERGB10, kGB, 10, 16, 0},
    {"BayerBG10", ZYN_PIXEL_BAYERBG10, kBG, 10, 16, 0},
    {"BayerGR12", ZYN_PIXEL_BAYERGR12, kGR, 12, 16, 0},
    {"BayerRG12", ZYN_PIXEL_BAYERRG12, kRG, 12, 16, 0},
    {"BayerGB12", ZYN_PIXEL_BAYERGB12, kGB, 12, 16, 0},
    {"BayerBG12", ZYN_PIXEL_BAYERBG12, kBG, 12, 16, 0},
    {"BayerGR10p", ZYN_PIXEL_BAYERGR10P, kGR, 10, 10, 0},
    {"BayerGR10Packed", ZYN_PIXEL_BAYERGR10PACKED, kGR, 10, kPaired, 0},
    {"BayerRG10p", ZYN_PIXEL_BAYERRG10P, kRG, 10, 10, 0},
    {"BayerRG10Packed", ZYN_PIXEL_BAYERRG10PACKED, kRG, 10, kPaired, 0},
    {"BayerGB10p", ZYN_PIXEL_BAYERGB10P, kGB, 10, 10, 0},
    {"BayerGB10Packed", ZYN_PIXEL_BAYERGB10PACKED, kGB, 10, kPaired, 0},
    {"BayerBG10p", ZYN_PIXEL_BAYERBG10P, kBG, 10, 10, 0},
    {"BayerBG10Packed", ZYN_PIXEL_BAYERBG10PACKED, kBG, 10, kPaired, 0},
    {"BayerGR12p", ZYN_PIXEL_BAYERGR12P, kGR, 12, 12, 0},
    {"BayerGR12Packed", ZYN_PIXEL_BAYERGR12PACKED, kGR, 12, kPaired, 0},
    {"BayerRG12p", ZYN_PIXEL_BAYERRG12P, kRG, 12, 12, 0},
    {"BayerRG12Packed", ZYN_PIXEL_BAYERRG12PACKED, kRG, 12, kPaired, 0},
    {"BayerGB12p", ZYN_PIXEL_BAYERGB12P, kGB, 12, 12, 0},
    {"BayerGB12Packed", ZYN_PIXEL_BAYERGB12PACKED, kGB, 12, kPaired, 0},
    {"BayerBG12p", ZYN_PIXEL_BAYERBG12P, kBG, 12, 12, 0},
    {"BayerBG12Packed", ZYN_PIXEL_BAYERBG12PACKED, kBG, 12, kPaired, 0},
    {"BayerGR14", ZYN_PIXEL_BAYERGR14, kGR, 14, 16, 0},
    {"BayerRG14", ZYN_PIXEL_BAYERRG14, kRG, 14, 16, 0},
    {"BayerGB14", ZYN_PIXEL_BAYERGB14, kGB, 14, 16, 0},
    {"BayerBG14", ZYN_PIXEL_BAYERBG14, kBG, 14, 16, 0},
    {"BayerGR16", ZYN_PIXEL_BAYERGR16, kGR, 16, 16, 0},
    {"BayerRG16", ZYN_PIXEL_BAYERRG16, kRG, 16, 16, 0},
    {"BayerGB16", ZYN_PIXEL_BAYERGB16, kGB, 16, 16, 0},
    {"BayerBG16", ZYN_PIXEL_BAYERBG16, kBG, 16, 16, 0},
    {"TrueSense_BGGR_WBBW_0_8", ZYN_PIXEL_TRUESENSE_BGGR_WBBW_0_8, kBGGR, 8, 8, 0},
    {"TrueSense_BGGR_WBBW_1_8", ZYN_PIXEL_TRUESENSE_BGGR_WBBW_1_8, kBGGR, 8, 8, 1},
    {"TrueSense_BGGR_WBBW_2_8", ZYN_PIXEL_TRUESENSE_BGGR_WBBW_2_8, kBGGR, 8, 8, 2},
    {"TrueSense_BGGR_WBBW_3_8", ZYN_PIXEL_TRUESENSE_BGGR_WBBW_3_8, kBGGR, 8, 8, 3},
    {"TrueSense_GBRG_WGGW_0_8", ZYN_PIXEL_TRUESENSE_GBRG_WGGW_0_8, kGBRG, 8, 8, 0},
    {"TrueSense_GBRG_WGGW_1_8", ZYN_PIXEL_TRUESENSE_GBRG_WGGW_1_8, kGBRG, 8, 8, 1},
    {"TrueSense_GBRG_WGGW_2_8", ZYN_PIXEL_TRUESENSE_GBRG_WGGW_2_8, kGBRG, 8, 8, 2},
    {"TrueSense_GBRG_WGGW_3_8", ZYN_PIXEL_TRUESENSE_GBRG_WGGW_3_8, kGBRG, 8, 8, 3},
    {"TrueSense_GRBG_WGGW_0_8", ZYN_PIXEL_TRUESENSE_GRBG_WGGW_0_8, kGRBG, 8, 8, 0},
    {"TrueSense_GRBG_WGGW_1_8", ZYN_PIXEL_TRUESENSE_GRBG_WGGW_1_8, kGRBG, 8, 8, 1},
    {"TrueSense_GRBG_WGGW_2_8", ZYN_PIXEL_TRUESENSE_GRBG_WGGW_2_8, kGRBG, 8, 8, 2},
    {"TrueSense_GRBG_WGGW_3_8", ZYN_PIXEL_TRUESENSE_GRBG_WGGW_3_8, kGRBG, 8, 8, 3},
    {"TrueSense_RGGB_WRRW_0_8", ZYN_PIXEL_TRUESENSE_RGGB_WRRW_0_8, kRGGB, 8, 8, 0},
    {"TrueSense_RGGB_WRRW_1_8", ZYN_PIXEL_TRUESENSE_RGGB_WRRW_1_8, kRGGB, 8, 8, 1},
    {"TrueSense_RGGB_WRRW_2_8", ZYN_PIXEL_TRUESENSE_RGGB_WRRW_2_8, kRGGB, 8, 8, 2},
    {"TrueSense_RGGB_WRRW_3_8", ZYN_PIXEL_TRUESENSE_RGGB_WRRW_3_8, kRGGB, 8, 8, 3},
    {"TrueSense_BGGR_WBBW_0_10", ZYN_PIXEL_TRUESENSE_BGGR_WBBW_0_10, kBGGR, 10, 16, 0},
    {"TrueSense_BGGR_WBBW_1_10", ZYN_PIXEL_TRUESENSE_BGGR_WBBW_1_10, kBGGR, 10, 16, 1},
    {"TrueSense_BGGR_WBBW_2_10", ZYN_PIXEL_TRUESENSE_BGGR_WBBW_2_10, kBGGR, 10, 16, 2},
    {"TrueSense_BGGR_WBBW_3_10", ZYN_PIXEL_TRUESENSE_BGGR_WBBW_3_10, kBGGR, 10, 16, 3},
    {"TrueSense_GBRG_WGGW_0_10", ZYN_PIXEL_TRUESENSE_GBRG_WGGW_0_10, kGBRG, 10, 16, 0},
    {"TrueSense_GBRG_WGGW_1_10", ZYN_PIXEL_TRUESENSE_GBRG_WGGW_1_10, kGBRG, 10, 16, 1},
    {"TrueSense_GBRG_WGGW_2_10", ZYN_PIXEL_TRUESENSE_GBRG_WGGW_2_10, kGBRG, 10, 16, 2},
    {"TrueSense_GBRG_WGGW_3_10", ZYN_PIXEL_TRUESENSE_GBRG_WGGW_3_10, kGBRG, 10, 16, 3},
    {"TrueSense_GRBG_WGGW_0_10", ZYN_PIXEL_TRUESENSE_GRBG_WGGW_0_10, kGRBG, 10, 16, 0},
    {"TrueSense_GRBG_WGGW_1_10", ZYN_PIXEL_TRUESENSE_GRBG_WGGW_1_10, kGRBG, 10, 16, 1},
    {"TrueSense_GRBG_WGGW_2_10", ZYN_PIXEL_TRUESENSE_GRBG_WGGW_2_10, kGRBG, 10, 16, 2},
    {"TrueSense_GRBG_WGGW_3_10", ZYN_PIXEL_TRUESENSE_GRBG_WGGW_3_10, kGRBG, 10, 16, 3},
    {"TrueSense_RGGB_WRRW_0_10", ZYN_PIXEL_TRUESENSE_RGGB_WRRW_0_10, kRGGB, 10, 16, 0},
    {"TrueSense_RGGB_WRRW_1_10", ZYN_PIXEL_TRUESENSE_RGGB_WRRW_1_10, kRGGB, 10, 16, 1},
    {"TrueSense_RGGB_WRRW_2_10", ZYN_PIXEL_TRUESENSE_RGGB_WRRW_2_10, kRGGB, 10, 16, 2},
    {"TrueSense_RGGB_WRRW_3_10", ZYN_PIXEL_TRUESENSE_RGGB_WRRW_3_10, kRGGB, 10, 16, 3},
    {"TrueSense_BGGR_WBBW_0_12", ZYN_PIXEL_TRUESENSE_BGGR_WBBW_0_12, kBGGR, 12, 16, 0},
    {"TrueSense_BGGR_WBBW_1_12", ZYN_PIXEL_TRUESENSE_BGGR_WBBW_1_12, kBGGR, 12, 16, 1},
    {"TrueSense_BGGR_WBBW_2_12", ZYN_PIXEL_TRUESENSE_BGGR_WBBW_2_12, kBGGR, 12, 16, 2},
    {"TrueSense_BGGR_WBBW_3_12", ZYN_PIXEL_TRUESENSE_BGGR_WBBW_3_12, kBGGR, 12, 16, 3},
    {"TrueSense_GBRG_WGGW_0_12", ZYN_PIXEL_TRUESENSE_GBRG_WGGW_0_12, kGBRG, 12, 16, 0},
    {"TrueSense_GBRG_WGGW_1_12", ZYN_PIXEL_TRUESENSE_GBRG_WGGW_1_12, kGBRG, 12, 16, 1},
    {"TrueSense_GBRG_WGGW_2_12", ZYN_PIXEL_TRUESENSE_GBRG_WGGW_2_12, kGBRG, 12, 16, 2},
    {"TrueSense_GBRG_WGGW_3_12", ZYN_PIXEL_TRUESENSE_GBRG_WGGW_3_12, kGBRG, 12, 16, 3},
    {"TrueSense_GRBG_WGGW_0_12", ZYN_PIXEL_TRUESENSE_GRBG_WGGW_0_12, kGRBG, 12, 16, 0},
    {"TrueSense_GRBG_WGGW_1_12", ZYN_PIXEL_TRUESENSE_GRBG_WGGW_1_12, kGRBG, 12, 16, 1},
    {"TrueSense_GRBG_WGGW_2_12", ZYN_PIXEL_TRUESENSE_GRBG_WGGW_2_12, kGRBG, 12, 16, 2},
    {"TrueSense_GRBG_WGGW_3_12", ZYN_PIXEL_TRUESENSE_GRBG_WGGW_3_12, kGRBG, 12, 16, 3},
    {"TrueSense_RGGB_WRRW_0_12", ZYN_PIXEL_TRUESENSE_RGGB_WRRW_0_12, kRGGB, 12, 16, 0},
    {"TrueSense_RGGB_WRRW_1_12", ZYN_PIXEL_TRUESENSE_RGGB_WRRW_1_12, kRGGB, 12, 16, 1},
    {"TrueSense_RGGB_WRRW_2_12", ZYN_PIXEL_TRUESENSE_RGGB_WRRW_2_12, kRGGB, 12, 16, 2},
    {"TrueSense_RGGB_WRRW_3_12", ZYN_PIXEL_TRUESENSE_RGGB_WRRW_3_12, kRGGB, 12, 16, 3},
    {"TrueSense_BGGR_WBBW_0_14", ZYN_PIXEL_TRUESENSE_BGGR_WBBW_0_14, kBGGR, 14, 16, 0},
    {"TrueSense_BGGR_WBBW_1_14", ZYN_PIXEL_TRUESENSE_BGGR_WBBW_1_14, kBGGR, 14, 16, 1},
    {"TrueSense_BGGR_WBBW_2_14", ZYN_PIXEL_TRUESENSE_BGGR_WBBW_2_14, kBGGR, 14, 16, 2},
    {"TrueSense_BGGR_WBBW_3_14", ZYN_PIXEL_TRUESENSE_BGGR_WBBW_3_14, kBGGR, 14, 16, 3},
    {"TrueSense_GBRG_WGGW_0_14", ZYN_PIXEL_TRUESENSE_GBRG_WGGW_0_14, kGBRG, 14, 16, 0},
    {"TrueSense_GBRG_WGGW_1_14", ZYN_PIXEL_TRUESENSE_GBRG_WGGW_1_14, kGBRG, 14, 16, 1},
    {"TrueSense_GBRG_WGGW_2_14", ZYN_PIXEL_TRUESENSE_GBRG_WGGW_2_14, kGBRG, 14, 16, 2},
    {"TrueSense_GBRG_WGGW_3_14", ZYN_PIXEL_TRUESENSE_GBRG_WGGW_3_14, kGBRG, 14, 16, 3},
    {"TrueSense_GRBG_WGGW_0_14", ZYN_PIXEL_TRUESENSE_GRBG_WGGW_0_14, kGRBG, 14, 16, 0},
    {"TrueSense_GRBG_WGGW_1_14", ZYN_PIXEL_TRUESENSE_GRBG_WGGW_1_14, kGRBG, 14, 16, 1},
    {"TrueSense_GRBG_WGGW_2_14", ZYN_PIXEL_TRUESENSE_GRBG_WGGW_2_14, kGRBG, 14, 16, 2},
    {"TrueSense_GRBG_WGGW_3_14", ZYN_PIXEL_TRUESENSE_GRBG_WGGW_3_14, kGRBG, 14, 16, 3},
    {"TrueSense_RGGB_WRRW_0_14", ZYN_PIXEL_TRUESENSE_RGGB_WRRW_0_14, kRGGB, 14, 16, 0},
    {"TrueSense_RGGB_WRRW_1_14", ZYN_PIXEL_TRUESENSE_RGGB_WRRW_1_14, kRGGB, 14, 16, 1},
    {"TrueSense_RGGB_WRRW_2_14", ZYN_PIXEL_TRUESENSE_RGGB_WRRW_2_14, kRGGB, 14, 16, 2},
    {"TrueSense_RGGB_WRRW_3_14", ZYN_PIXEL_TRUESENSE_RGGB_WRRW_3_14, kRGGB, 14, 16, 3},
    {"RGB8", ZYN_PIXEL_RGB8, "RGB", 8, 8, 0},
    {"BGR8", ZYN_PIXEL_BGR8, "BGR", 8, 8, 0},
    {"RGBa8", ZYN_PIXEL_RGBA8, "RGBA", 8, 8, 0},
    {"BGRa8", ZYN_PIXEL_BGRA8, "BGRA", 8, 8, 0},
    {"RGB10", ZYN_PIXEL_RGB10, "RGB", 10, 16, 0},
    {"BGR10", ZYN_PIXEL_BGR10, "BGR", 10, 16, 0},
    {"RGB12", ZYN_PIXEL_RGB12, "RGB", 12, 16, 0},
    {"BGR12", ZYN_PIXEL_BGR12, "BGR", 12, 16, 0},
    {"RGB14", ZYN_PIXEL_RGB14, "RGB", 14, 16, 0},
    {"BGR14", ZYN_PIXEL_BGR14, "BGR", 14, 16, 0},
    {"RGB16", ZYN_PIXEL_RGB16, "RGB", 16, 16, 0},
    {"BGR16", ZYN_PIXEL_BGR16, "BGR", 16, 16, 0},
    {"RGB_8_BRIO_Packed", ZYN_PIXEL_RGB_8_BRIO_PACKED, "RGB", 8, 8, 0},
    {"RGB_10_BRIO_Packed", ZYN_PIXEL_RGB_10_BRIO_PACKED, "RGB", 10, 10, 0},
    {"RGB_12_BRIO_Packed", ZYN_PIXEL_RGB_12_BRIO_PACKED, "RGB", 12, 12, 0},
    {"YUV422_8_UYVY", ZYN_PIXEL_YUV422_8_UYVY, "UYVY", 8, 8, 0},
    {"YUV422_8", ZYN_PIXEL_YUV422_8, "YUYV", 8, 8, 0},
    {"YUV422_10", ZYN_PIXEL_YUV422_10, "YUYV", 10, 16, 0},
    {"YUV422_10_PACKED", ZYN_PIXEL_YUV422_10_PACKED, "YUYV", 10, 10, 0},
    {"YUV444_8", ZYN_PIXEL_YUV444_8, "YUVA", 8, 8, 0},
    {"YCbCr422_8", ZYN_PIXEL_YCBCR422_8, "YUYV", 8, 8, 0},
};
// clang-format on

}  // namespace

bool PixelRow::IsPlain() const {
  const std::string_view kind(samples);
  const bool brio = ((code >> 12) & 0xF) == kBrioGroup;
  return !brio && (slot == 8 || slot == 16) && (kind == "L" || kind == "RGB" || kind == "BGR");
}

uint32_t PixelRow::PixelsTogether() const {
  const std::string_view kinds(samples);
  return std::count(kinds.begin(), kinds.end(), 'Y') == 2 ? 2 : 1;
}

uint32_t PixelRow::MosaicColumns() const {
  return static_cast<uint32_t>(std::string_view(samples).find('/'));
}

char PixelRow::MosaicKind(uint32_t x, uint32_t y) const {
  const std::string_view cells(samples);
  const std::size_t columns = MosaicColumns(), lines = (cells.size() + 1) / (columns + 1);
  const auto begin = static_cast<uint32_t>(phase);
  return cells[(y + (begin >> 1)) % lines * (columns + 1) + (x + (begin & 1)) % columns];
}

const PixelRow* FindPixel(uint32_t code) {
  const auto* found = std::find_if(std::begin(kRows), std::end(kRows),
                                   [code](const PixelRow& row) { return row.code == code; });
  return found == std::end(kRows) ? nullptr : found;
}

uint32_t PixelCode(const QString& name) {
  const auto* found = std::find_if(std::begin(kRows), std::end(kRows), [&name](const PixelRow& row) {
    return name.compare(QLatin1String(row.name), Qt::CaseInsensitive) == 0;
  });
  return found == std::end(kRows) ? 0 : found->code;
}

QString PixelNameOf(uint32_t code) {
  const PixelRow* row = FindPixel(code);
  return row ? QString::fromLatin1(row->name) : QStringLiteral("0x%1").arg(code, 8, 16, QLatin1Char('0'));
}

const PixelRow* PixelRowAt(uint32_t index) {
  return index < std::size(kRows) ? &kRows[index] : nullptr;
}

}  // namespace zynview

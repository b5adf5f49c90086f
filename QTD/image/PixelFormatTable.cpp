#include "QTD/image/PixelFormatTable.h"

namespace QTD {
namespace {

constexpr char kBayerGR[] = "G R G2 B";
constexpr char kBayerRG[] = "R G B G2";
constexpr char kBayerGB[] = "G B G2 R";
constexpr char kBayerBG[] = "B G R G2";
constexpr char kSenseBGGR[] = "W B W G B W G W W G W R G W R W";
constexpr char kSenseGBRG[] = "W G W B G W B W W R W G R W G W";
constexpr char kSenseGRBG[] = "W G W R G W R W W B W G B W G W";
constexpr char kSenseRGGB[] = "W R W G R W G W W G W B G W B W";

// The index of a letter in `letters`, -1 for any other.
int IndexIn(const char* letters, char letter) {
  for (int index = 0; letters[index] != 0; ++index) {
    if (letters[index] == letter) return index;
  }
  return -1;
}

// The channel maps.
int Y(char letter) {
  return IndexIn("Y", letter);
}
int RGB(char letter) {
  return IndexIn("RGB", letter);
}
int BGR(char letter) {
  return IndexIn("BGR", letter);
}
int RGBA(char letter) {
  return IndexIn("RGBA", letter);
}
int BGRA(char letter) {
  return IndexIn("BGRA", letter);
}
int YUV(char letter) {
  return IndexIn("YUV", letter);
}

}  // namespace

// clang-format off
const PixelRow kPixelTable[kPixelRows] = {
    // name, layout, channels, bit depth, channel map, phase, code
    // monochrome
    {"Mono8",                    "Y",         1, 8,  Y,    0, 0x01080101},
    {"Mono10",                   "Y",         1, 10, Y,    0, 0x01100202},
    {"Mono10p",                  "Y",         1, 10, Y,    0, 0x010A2203},
    {"Mono10Packed",             "Y",         1, 10, Y,    0, 0x010C1204},
    {"Mono10_BrioPacked",        "Y",         1, 10, Y,    0, 0x010C3205},
    {"Mono12",                   "Y",         1, 12, Y,    0, 0x01100306},
    {"Mono12p",                  "Y",         1, 10, Y,    0, 0x010C2307},  // 10, not 12: records of this format report it
    {"Mono12Packed",             "Y",         1, 12, Y,    0, 0x010C1308},
    {"Mono12_BrioPacked",        "Y",         1, 12, Y,    0, 0x010C3309},
    {"Mono14",                   "Y",         1, 14, Y,    0, 0x0110040A},
    {"Mono16",                   "Y",         1, 16, Y,    0, 0x0110050B},
    {"Mono8_BrioPacked",         "Y",         1, 8,  Y,    0, 0x0108310C},
    // Bayer; the rows "p" and "Packed" take turns
    {"BayerGR8",                 kBayerGR,    1, 8,  Y,    0, 0x0308010D},
    {"BayerRG8",                 kBayerRG,    1, 8,  Y,    0, 0x0308010E},
    {"BayerGB8",                 kBayerGB,    1, 8,  Y,    0, 0x0308010F},
    {"BayerBG8",                 kBayerBG,    1, 8,  Y,    0, 0x03080110},
    {"BayerGR10",                kBayerGR,    1, 10, Y,    0, 0x03100211},
    {"BayerRG10",                kBayerRG,    1, 10, Y,    0, 0x03100212},
    {"BayerGB10",                kBayerGB,    1, 10, Y,    0, 0x03100213},
    {"BayerBG10",                kBayerBG,    1, 10, Y,    0, 0x03100214},
    {"BayerGR12",                kBayerGR,    1, 12, Y,    0, 0x03100315},
    {"BayerRG12",                kBayerRG,    1, 12, Y,    0, 0x03100316},
    {"BayerGB12",                kBayerGB,    1, 12, Y,    0, 0x03100317},
    {"BayerBG12",                kBayerBG,    1, 12, Y,    0, 0x03100318},
    {"BayerGR10p",               kBayerGR,    1, 10, Y,    0, 0x030A2219},
    {"BayerGR10Packed",          kBayerGR,    1, 10, Y,    0, 0x030C121A},
    {"BayerRG10p",               kBayerRG,    1, 10, Y,    0, 0x030A221B},
    {"BayerRG10Packed",          kBayerRG,    1, 10, Y,    0, 0x030C121C},
    {"BayerGB10p",               kBayerGB,    1, 10, Y,    0, 0x030A221D},
    {"BayerGB10Packed",          kBayerGB,    1, 10, Y,    0, 0x030C121E},
    {"BayerBG10p",               kBayerBG,    1, 10, Y,    0, 0x030A221F},
    {"BayerBG10Packed",          kBayerBG,    1, 10, Y,    0, 0x030C1220},
    {"BayerGR12p",               kBayerGR,    1, 12, Y,    0, 0x030C2321},
    {"BayerGR12Packed",          kBayerGR,    1, 12, Y,    0, 0x030C1322},
    {"BayerRG12p",               kBayerRG,    1, 12, Y,    0, 0x030C2323},
    {"BayerRG12Packed",          kBayerRG,    1, 12, Y,    0, 0x030C1324},
    {"BayerGB12p",               kBayerGB,    1, 12, Y,    0, 0x030C2325},
    {"BayerGB12Packed",          kBayerGB,    1, 12, Y,    0, 0x030C1326},
    {"BayerBG12p",               kBayerBG,    1, 12, Y,    0, 0x030C2327},
    {"BayerBG12Packed",          kBayerBG,    1, 12, Y,    0, 0x030C1328},
    {"BayerGR14",                kBayerGR,    1, 14, Y,    0, 0x03100429},
    {"BayerRG14",                kBayerRG,    1, 14, Y,    0, 0x0310042A},
    {"BayerGB14",                kBayerGB,    1, 14, Y,    0, 0x0310042B},
    {"BayerBG14",                kBayerBG,    1, 14, Y,    0, 0x0310042C},
    {"BayerGR16",                kBayerGR,    1, 16, Y,    0, 0x0310052D},
    {"BayerRG16",                kBayerRG,    1, 16, Y,    0, 0x0310052E},
    {"BayerGB16",                kBayerGB,    1, 16, Y,    0, 0x0310052F},
    {"BayerBG16",                kBayerBG,    1, 16, Y,    0, 0x03100530},
    // TrueSense: four orders, and within an order the phases 0 to 3
    {"TrueSense_BGGR_WBBW_0_8",  kSenseBGGR,  1, 8,  Y,    0, 0x04080131},
    {"TrueSense_BGGR_WBBW_1_8",  kSenseBGGR,  1, 8,  Y,    1, 0x04080132},
    {"TrueSense_BGGR_WBBW_2_8",  kSenseBGGR,  1, 8,  Y,    2, 0x04080133},
    {"TrueSense_BGGR_WBBW_3_8",  kSenseBGGR,  1, 8,  Y,    3, 0x04080134},
    {"TrueSense_GBRG_WGGW_0_8",  kSenseGBRG,  1, 8,  Y,    0, 0x04080135},
    {"TrueSense_GBRG_WGGW_1_8",  kSenseGBRG,  1, 8,  Y,    1, 0x04080136},
    {"TrueSense_GBRG_WGGW_2_8",  kSenseGBRG,  1, 8,  Y,    2, 0x04080137},
    {"TrueSense_GBRG_WGGW_3_8",  kSenseGBRG,  1, 8,  Y,    3, 0x04080138},
    {"TrueSense_GRBG_WGGW_0_8",  kSenseGRBG,  1, 8,  Y,    0, 0x04080139},
    {"TrueSense_GRBG_WGGW_1_8",  kSenseGRBG,  1, 8,  Y,    1, 0x0408013A},
    {"TrueSense_GRBG_WGGW_2_8",  kSenseGRBG,  1, 8,  Y,    2, 0x0408013B},
    {"TrueSense_GRBG_WGGW_3_8",  kSenseGRBG,  1, 8,  Y,    3, 0x0408013C},
    {"TrueSense_RGGB_WRRW_0_8",  kSenseRGGB,  1, 8,  Y,    0, 0x0408013D},
    {"TrueSense_RGGB_WRRW_1_8",  kSenseRGGB,  1, 8,  Y,    1, 0x0408013E},
    {"TrueSense_RGGB_WRRW_2_8",  kSenseRGGB,  1, 8,  Y,    2, 0x0408013F},
    {"TrueSense_RGGB_WRRW_3_8",  kSenseRGGB,  1, 8,  Y,    3, 0x04080140},
    {"TrueSense_BGGR_WBBW_0_10", kSenseBGGR,  1, 10, Y,    0, 0x04100241},
    {"TrueSense_BGGR_WBBW_1_10", kSenseBGGR,  1, 10, Y,    1, 0x04100242},
    {"TrueSense_BGGR_WBBW_2_10", kSenseBGGR,  1, 10, Y,    2, 0x04100243},
    {"TrueSense_BGGR_WBBW_3_10", kSenseBGGR,  1, 10, Y,    3, 0x04100244},
    {"TrueSense_GBRG_WGGW_0_10", kSenseGBRG,  1, 10, Y,    0, 0x04100245},
    {"TrueSense_GBRG_WGGW_1_10", kSenseGBRG,  1, 10, Y,    1, 0x04100246},
    {"TrueSense_GBRG_WGGW_2_10", kSenseGBRG,  1, 10, Y,    2, 0x04100247},
    {"TrueSense_GBRG_WGGW_3_10", kSenseGBRG,  1, 10, Y,    3, 0x04100248},
    {"TrueSense_GRBG_WGGW_0_10", kSenseGRBG,  1, 10, Y,    0, 0x04100249},
    {"TrueSense_GRBG_WGGW_1_10", kSenseGRBG,  1, 10, Y,    1, 0x0410024A},
    {"TrueSense_GRBG_WGGW_2_10", kSenseGRBG,  1, 10, Y,    2, 0x0410024B},
    {"TrueSense_GRBG_WGGW_3_10", kSenseGRBG,  1, 10, Y,    3, 0x0410024C},
    {"TrueSense_RGGB_WRRW_0_10", kSenseRGGB,  1, 10, Y,    0, 0x0410024D},
    {"TrueSense_RGGB_WRRW_1_10", kSenseRGGB,  1, 10, Y,    1, 0x0410024E},
    {"TrueSense_RGGB_WRRW_2_10", kSenseRGGB,  1, 10, Y,    2, 0x0410024F},
    {"TrueSense_RGGB_WRRW_3_10", kSenseRGGB,  1, 10, Y,    3, 0x04100250},
    {"TrueSense_BGGR_WBBW_0_12", kSenseBGGR,  1, 12, Y,    0, 0x04100351},
    {"TrueSense_BGGR_WBBW_1_12", kSenseBGGR,  1, 12, Y,    1, 0x04100352},
    {"TrueSense_BGGR_WBBW_2_12", kSenseBGGR,  1, 12, Y,    2, 0x04100353},
    {"TrueSense_BGGR_WBBW_3_12", kSenseBGGR,  1, 12, Y,    3, 0x04100354},
    {"TrueSense_GBRG_WGGW_0_12", kSenseGBRG,  1, 12, Y,    0, 0x04100355},
    {"TrueSense_GBRG_WGGW_1_12", kSenseGBRG,  1, 12, Y,    1, 0x04100356},
    {"TrueSense_GBRG_WGGW_2_12", kSenseGBRG,  1, 12, Y,    2, 0x04100357},
    {"TrueSense_GBRG_WGGW_3_12", kSenseGBRG,  1, 12, Y,    3, 0x04100358},
    {"TrueSense_GRBG_WGGW_0_12", kSenseGRBG,  1, 12, Y,    0, 0x04100359},
    {"TrueSense_GRBG_WGGW_1_12", kSenseGRBG,  1, 12, Y,    1, 0x0410035A},
    {"TrueSense_GRBG_WGGW_2_12", kSenseGRBG,  1, 12, Y,    2, 0x0410035B},
    {"TrueSense_GRBG_WGGW_3_12", kSenseGRBG,  1, 12, Y,    3, 0x0410035C},
    {"TrueSense_RGGB_WRRW_0_12", kSenseRGGB,  1, 12, Y,    0, 0x0410035D},
    {"TrueSense_RGGB_WRRW_1_12", kSenseRGGB,  1, 12, Y,    1, 0x0410035E},
    {"TrueSense_RGGB_WRRW_2_12", kSenseRGGB,  1, 12, Y,    2, 0x0410035F},
    {"TrueSense_RGGB_WRRW_3_12", kSenseRGGB,  1, 12, Y,    3, 0x04100360},
    {"TrueSense_BGGR_WBBW_0_14", kSenseBGGR,  1, 14, Y,    0, 0x04100461},
    {"TrueSense_BGGR_WBBW_1_14", kSenseBGGR,  1, 14, Y,    1, 0x04100462},
    {"TrueSense_BGGR_WBBW_2_14", kSenseBGGR,  1, 14, Y,    2, 0x04100463},
    {"TrueSense_BGGR_WBBW_3_14", kSenseBGGR,  1, 14, Y,    3, 0x04100464},
    {"TrueSense_GBRG_WGGW_0_14", kSenseGBRG,  1, 14, Y,    0, 0x04100465},
    {"TrueSense_GBRG_WGGW_1_14", kSenseGBRG,  1, 14, Y,    1, 0x04100466},
    {"TrueSense_GBRG_WGGW_2_14", kSenseGBRG,  1, 14, Y,    2, 0x04100467},
    {"TrueSense_GBRG_WGGW_3_14", kSenseGBRG,  1, 14, Y,    3, 0x04100468},
    {"TrueSense_GRBG_WGGW_0_14", kSenseGRBG,  1, 14, Y,    0, 0x04100469},
    {"TrueSense_GRBG_WGGW_1_14", kSenseGRBG,  1, 14, Y,    1, 0x0410046A},
    {"TrueSense_GRBG_WGGW_2_14", kSenseGRBG,  1, 14, Y,    2, 0x0410046B},
    {"TrueSense_GRBG_WGGW_3_14", kSenseGRBG,  1, 14, Y,    3, 0x0410046C},
    {"TrueSense_RGGB_WRRW_0_14", kSenseRGGB,  1, 14, Y,    0, 0x0410046D},
    {"TrueSense_RGGB_WRRW_1_14", kSenseRGGB,  1, 14, Y,    1, 0x0410046E},
    {"TrueSense_RGGB_WRRW_2_14", kSenseRGGB,  1, 14, Y,    2, 0x0410046F},
    {"TrueSense_RGGB_WRRW_3_14", kSenseRGGB,  1, 14, Y,    3, 0x04100470},
    // RGB
    {"RGB8",                     "R G B",     3, 8,  RGB,  0, 0x02180171},
    {"BGR8",                     "B G R",     3, 8,  BGR,  0, 0x02180172},
    {"RGBa8",                    "R G B A",   4, 8,  RGBA, 0, 0x02200173},
    {"BGRa8",                    "B G R A",   4, 8,  BGRA, 0, 0x02200174},
    {"RGB10",                    "R G B",     3, 10, RGB,  0, 0x02300275},
    {"BGR10",                    "B G R",     3, 10, BGR,  0, 0x02300276},
    {"RGB12",                    "R G B",     3, 12, RGB,  0, 0x02300377},
    {"BGR12",                    "B G R",     3, 12, BGR,  0, 0x02300378},
    {"RGB14",                    "R G B",     3, 14, RGB,  0, 0x02300479},
    {"BGR14",                    "B G R",     3, 14, BGR,  0, 0x0230047A},
    {"RGB16",                    "R G B",     3, 16, RGB,  0, 0x0230057B},
    {"BGR16",                    "B G R",     3, 16, BGR,  0, 0x0230057C},
    {"RGB_8_BRIO_Packed",        "R G B",     3, 8,  RGB,  0, 0x0218317D},
    {"RGB_10_BRIO_Packed",       "R G B",     3, 10, RGB,  0, 0x0220327E},
    {"RGB_12_BRIO_Packed",       "R G B",     3, 12, RGB,  0, 0x0224337F},
    // YUV
    {"YUV422_8_UYVY",            "U Y V Y",   3, 8,  YUV,  0, 0x05100180},
    {"YUV422_8",                 "Y U Y V",   3, 8,  YUV,  0, 0x05100181},
    {"YUV422_10",                "Y U Y V",   3, 10, YUV,  0, 0x05200282},
    {"YUV422_10_PACKED",         "Y U Y V",   3, 10, YUV,  0, 0x05143283},
    {"YUV444_8",                 "Y U V A",   4, 8,  YUV,  0, 0x05200184},
    {"YCbCr422_8",               "Y Cb Y Cr", 3, 8,  YUV,  0, 0x05100185},
};
// clang-format on

}  // namespace QTD

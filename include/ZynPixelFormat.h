/// @file
/// The pixel codes of the library, named after their formats.
///
/// A code is 0xFFBBGGII: FF the family (1 monochrome, 2 RGB, 3 Bayer, 4 TrueSense, 5 YUV), BB the storage
/// bits of one pixel, GG the group (depth and packing), II the running number. Cameras speak of formats by
/// other, public codes: a host translates by name.
///
/// In the names: a number is the bits of one sample; 10, 12 and 14 bits without a suffix lie in the low bits
/// of 16-bit words, little end first. "P" samples follow each other bit by bit; "PACKED" ones lie two in
/// three bytes. A Bayer order names the first two places of the first line: in RG, red comes first and green
/// second.
#pragma once

#include <cstdint>

/// @name Monochrome
/// @{

/// One sample for each pixel. Shown and converted, but not the ones called BRIOPACKED: on the processor they
/// pass a display unread, and with OpenGL each of their images fails with code 1.
constexpr uint32_t ZYN_PIXEL_MONO8 = 0x01080101;
constexpr uint32_t ZYN_PIXEL_MONO10 = 0x01100202;
constexpr uint32_t ZYN_PIXEL_MONO10P = 0x010A2203;
constexpr uint32_t ZYN_PIXEL_MONO10PACKED = 0x010C1204;
constexpr uint32_t ZYN_PIXEL_MONO10_BRIOPACKED = 0x010C3205;
constexpr uint32_t ZYN_PIXEL_MONO12 = 0x01100306;
constexpr uint32_t ZYN_PIXEL_MONO12P = 0x010C2307;
constexpr uint32_t ZYN_PIXEL_MONO12PACKED = 0x010C1308;
constexpr uint32_t ZYN_PIXEL_MONO12_BRIOPACKED = 0x010C3309;
constexpr uint32_t ZYN_PIXEL_MONO14 = 0x0110040A;
constexpr uint32_t ZYN_PIXEL_MONO16 = 0x0110050B;
constexpr uint32_t ZYN_PIXEL_MONO8_BRIOPACKED = 0x0108310C;
/// @}

/// @name Bayer
/// @{

/// One sample for each pixel, of the colour that its place sees. Shown and converted in all orders, depths
/// and packings.
constexpr uint32_t ZYN_PIXEL_BAYERGR8 = 0x0308010D;
constexpr uint32_t ZYN_PIXEL_BAYERRG8 = 0x0308010E;
constexpr uint32_t ZYN_PIXEL_BAYERGB8 = 0x0308010F;
constexpr uint32_t ZYN_PIXEL_BAYERBG8 = 0x03080110;
constexpr uint32_t ZYN_PIXEL_BAYERGR10 = 0x03100211;
constexpr uint32_t ZYN_PIXEL_BAYERRG10 = 0x03100212;
constexpr uint32_t ZYN_PIXEL_BAYERGB10 = 0x03100213;
constexpr uint32_t ZYN_PIXEL_BAYERBG10 = 0x03100214;
constexpr uint32_t ZYN_PIXEL_BAYERGR12 = 0x03100315;
constexpr uint32_t ZYN_PIXEL_BAYERRG12 = 0x03100316;
constexpr uint32_t ZYN_PIXEL_BAYERGB12 = 0x03100317;
constexpr uint32_t ZYN_PIXEL_BAYERBG12 = 0x03100318;
constexpr uint32_t ZYN_PIXEL_BAYERGR10P = 0x030A2219;
constexpr uint32_t ZYN_PIXEL_BAYERGR10PACKED = 0x030C121A;
constexpr uint32_t ZYN_PIXEL_BAYERRG10P = 0x030A221B;
constexpr uint32_t ZYN_PIXEL_BAYERRG10PACKED = 0x030C121C;
constexpr uint32_t ZYN_PIXEL_BAYERGB10P = 0x030A221D;
constexpr uint32_t ZYN_PIXEL_BAYERGB10PACKED = 0x030C121E;
constexpr uint32_t ZYN_PIXEL_BAYERBG10P = 0x030A221F;
constexpr uint32_t ZYN_PIXEL_BAYERBG10PACKED = 0x030C1220;
constexpr uint32_t ZYN_PIXEL_BAYERGR12P = 0x030C2321;
constexpr uint32_t ZYN_PIXEL_BAYERGR12PACKED = 0x030C1322;
constexpr uint32_t ZYN_PIXEL_BAYERRG12P = 0x030C2323;
constexpr uint32_t ZYN_PIXEL_BAYERRG12PACKED = 0x030C1324;
constexpr uint32_t ZYN_PIXEL_BAYERGB12P = 0x030C2325;
constexpr uint32_t ZYN_PIXEL_BAYERGB12PACKED = 0x030C1326;
constexpr uint32_t ZYN_PIXEL_BAYERBG12P = 0x030C2327;
constexpr uint32_t ZYN_PIXEL_BAYERBG12PACKED = 0x030C1328;
constexpr uint32_t ZYN_PIXEL_BAYERGR14 = 0x03100429;
constexpr uint32_t ZYN_PIXEL_BAYERRG14 = 0x0310042A;
constexpr uint32_t ZYN_PIXEL_BAYERGB14 = 0x0310042B;
constexpr uint32_t ZYN_PIXEL_BAYERBG14 = 0x0310042C;
constexpr uint32_t ZYN_PIXEL_BAYERGR16 = 0x0310052D;
constexpr uint32_t ZYN_PIXEL_BAYERRG16 = 0x0310052E;
constexpr uint32_t ZYN_PIXEL_BAYERGB16 = 0x0310052F;
constexpr uint32_t ZYN_PIXEL_BAYERBG16 = 0x03100530;
/// @}

/// @name TrueSense
/// @{

/// One sample for each pixel, with white places among the colours. Refused by displays and stages.
constexpr uint32_t ZYN_PIXEL_TRUESENSE_BGGR_WBBW_0_8 = 0x04080131;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_BGGR_WBBW_1_8 = 0x04080132;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_BGGR_WBBW_2_8 = 0x04080133;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_BGGR_WBBW_3_8 = 0x04080134;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GBRG_WGGW_0_8 = 0x04080135;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GBRG_WGGW_1_8 = 0x04080136;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GBRG_WGGW_2_8 = 0x04080137;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GBRG_WGGW_3_8 = 0x04080138;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GRBG_WGGW_0_8 = 0x04080139;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GRBG_WGGW_1_8 = 0x0408013A;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GRBG_WGGW_2_8 = 0x0408013B;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GRBG_WGGW_3_8 = 0x0408013C;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_RGGB_WRRW_0_8 = 0x0408013D;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_RGGB_WRRW_1_8 = 0x0408013E;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_RGGB_WRRW_2_8 = 0x0408013F;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_RGGB_WRRW_3_8 = 0x04080140;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_BGGR_WBBW_0_10 = 0x04100241;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_BGGR_WBBW_1_10 = 0x04100242;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_BGGR_WBBW_2_10 = 0x04100243;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_BGGR_WBBW_3_10 = 0x04100244;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GBRG_WGGW_0_10 = 0x04100245;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GBRG_WGGW_1_10 = 0x04100246;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GBRG_WGGW_2_10 = 0x04100247;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GBRG_WGGW_3_10 = 0x04100248;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GRBG_WGGW_0_10 = 0x04100249;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GRBG_WGGW_1_10 = 0x0410024A;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GRBG_WGGW_2_10 = 0x0410024B;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GRBG_WGGW_3_10 = 0x0410024C;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_RGGB_WRRW_0_10 = 0x0410024D;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_RGGB_WRRW_1_10 = 0x0410024E;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_RGGB_WRRW_2_10 = 0x0410024F;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_RGGB_WRRW_3_10 = 0x04100250;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_BGGR_WBBW_0_12 = 0x04100351;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_BGGR_WBBW_1_12 = 0x04100352;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_BGGR_WBBW_2_12 = 0x04100353;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_BGGR_WBBW_3_12 = 0x04100354;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GBRG_WGGW_0_12 = 0x04100355;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GBRG_WGGW_1_12 = 0x04100356;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GBRG_WGGW_2_12 = 0x04100357;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GBRG_WGGW_3_12 = 0x04100358;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GRBG_WGGW_0_12 = 0x04100359;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GRBG_WGGW_1_12 = 0x0410035A;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GRBG_WGGW_2_12 = 0x0410035B;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GRBG_WGGW_3_12 = 0x0410035C;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_RGGB_WRRW_0_12 = 0x0410035D;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_RGGB_WRRW_1_12 = 0x0410035E;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_RGGB_WRRW_2_12 = 0x0410035F;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_RGGB_WRRW_3_12 = 0x04100360;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_BGGR_WBBW_0_14 = 0x04100461;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_BGGR_WBBW_1_14 = 0x04100462;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_BGGR_WBBW_2_14 = 0x04100463;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_BGGR_WBBW_3_14 = 0x04100464;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GBRG_WGGW_0_14 = 0x04100465;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GBRG_WGGW_1_14 = 0x04100466;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GBRG_WGGW_2_14 = 0x04100467;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GBRG_WGGW_3_14 = 0x04100468;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GRBG_WGGW_0_14 = 0x04100469;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GRBG_WGGW_1_14 = 0x0410046A;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GRBG_WGGW_2_14 = 0x0410046B;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_GRBG_WGGW_3_14 = 0x0410046C;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_RGGB_WRRW_0_14 = 0x0410046D;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_RGGB_WRRW_1_14 = 0x0410046E;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_RGGB_WRRW_2_14 = 0x0410046F;
constexpr uint32_t ZYN_PIXEL_TRUESENSE_RGGB_WRRW_3_14 = 0x04100470;
/// @}

/// @name RGB and BGR
/// @{

/// Three samples for each pixel in the order of the name, or four with alpha. Shown and converted, but not
/// those with alpha, which pass a display unread on the processor, and are shown with OpenGL; nor the ones
/// called BRIO, which pass unread on the processor, and of which each image fails with code 1 with OpenGL.
constexpr uint32_t ZYN_PIXEL_RGB8 = 0x02180171;
constexpr uint32_t ZYN_PIXEL_BGR8 = 0x02180172;
constexpr uint32_t ZYN_PIXEL_RGBA8 = 0x02200173;
constexpr uint32_t ZYN_PIXEL_BGRA8 = 0x02200174;
constexpr uint32_t ZYN_PIXEL_RGB10 = 0x02300275;
constexpr uint32_t ZYN_PIXEL_BGR10 = 0x02300276;
constexpr uint32_t ZYN_PIXEL_RGB12 = 0x02300377;
constexpr uint32_t ZYN_PIXEL_BGR12 = 0x02300378;
constexpr uint32_t ZYN_PIXEL_RGB14 = 0x02300479;
constexpr uint32_t ZYN_PIXEL_BGR14 = 0x0230047A;
constexpr uint32_t ZYN_PIXEL_RGB16 = 0x0230057B;
constexpr uint32_t ZYN_PIXEL_BGR16 = 0x0230057C;
constexpr uint32_t ZYN_PIXEL_RGB_8_BRIO_PACKED = 0x0218317D;
constexpr uint32_t ZYN_PIXEL_RGB_10_BRIO_PACKED = 0x0220327E;
constexpr uint32_t ZYN_PIXEL_RGB_12_BRIO_PACKED = 0x0224337F;
/// @}

/// @name YUV
/// @{

/// Brightness for each pixel, colour for two, in the order U Y V Y for UYVY, else Y U Y V; YUV444_8 has all
/// for each pixel. UYVY is shown and converted; the others pass a display unread on the processor, and with
/// OpenGL each of their images fails with code 1.
constexpr uint32_t ZYN_PIXEL_YUV422_8_UYVY = 0x05100180;
constexpr uint32_t ZYN_PIXEL_YUV422_8 = 0x05100181;
constexpr uint32_t ZYN_PIXEL_YUV422_10 = 0x05200282;
constexpr uint32_t ZYN_PIXEL_YUV422_10_PACKED = 0x05143283;
constexpr uint32_t ZYN_PIXEL_YUV444_8 = 0x05200184;
constexpr uint32_t ZYN_PIXEL_YCBCR422_8 = 0x05100185;

/// @}

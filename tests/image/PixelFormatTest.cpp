#include "QTD/image/PixelFormat.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <map>
#include <string>

#include "QTD/image/PixelFormats.h"
#include "ZynPixelFormat.h"

namespace {

using QTD::PixelFormat;

struct Decoded {
  uint32_t family;
  uint32_t pattern;
  int depth;
  std::string packing;
};

void ExpectDecoded(uint32_t code, const Decoded& expected) {
  const PixelFormat format(code);
  const QTD::PixelRow* row = QTD::FindPixelRow(code);
  const std::string name = row != nullptr ? row->name : std::to_string(code);
  EXPECT_EQ(format.family, expected.family) << name;
  EXPECT_EQ(format.pattern, expected.pattern) << name;
  EXPECT_EQ(format.depth, expected.depth) << name;
  EXPECT_EQ(format.packing, expected.packing) << name;
  EXPECT_EQ(format.IsBitStream(), expected.packing == "usb") << name;
}

PixelFormat Format(uint32_t family, uint32_t pattern, int depth, const std::string& packing = "") {
  PixelFormat format(0);
  format.family = family;
  format.pattern = pattern;
  format.depth = depth;
  format.packing = packing;
  return format;
}

uint32_t Encoded(uint32_t family, uint32_t pattern, int depth, const std::string& packing = "") {
  return Format(family, pattern, depth, packing).Encode();
}

bool Begins(const std::string& name, const std::string& start) {
  return name.rfind(start, 0) == 0;
}

bool Ends(const std::string& name, const std::string& end) {
  return name.size() >= end.size() && name.compare(name.size() - end.size(), end.size(), end) == 0;
}

// What a code's name and group say of it.
Decoded Model(uint32_t code, const std::string& name) {
  const std::map<std::string, uint32_t> orders = {{"GR", 0}, {"RG", 1}, {"BG", 2}, {"GB", 3}};
  // Position in a depth's list, by order and phase.
  const std::map<std::string, std::array<uint32_t, 4>> trueSense = {
      {"BGGR", {0, 1, 4, 5}}, {"GBRG", {2, 3, 6, 7}}, {"GRBG", {8, 9, 12, 13}}, {"RGGB", {10, 11, 14, 15}}};
  if (Begins(name, "Bayer")) {
    if (Ends(name, "Packed")) return {0, 0, 8, ""};
    return {16, orders.at(name.substr(5, 2)), std::stoi(name.substr(7)), Ends(name, "p") ? "usb" : ""};
  }
  if (Begins(name, "TrueSense")) {
    const size_t phase = static_cast<size_t>(name[20] - '0');
    return {32, trueSense.at(name.substr(10, 4)).at(phase), std::stoi(name.substr(22)), ""};
  }
  Decoded result{0, 0, 8, ""};
  if (Begins(name, "Mono") && name.find("acked") == std::string::npos) result.family = 1;
  if ((Begins(name, "RGB") || Begins(name, "BGR")) && name.find('_') == std::string::npos) {
    result.family = name.find('a') == std::string::npos ? 2 : 4;
    result.pattern = Begins(name, "BGR") ? 1 : 0;
  }
  if (name == "YUV422_8_UYVY") result.family = 160;
  switch ((code >> 8) & 0xFF) {
    case 0x22:
      result.depth = 10;
      result.packing = "usb";
      break;
    case 0x23:
      result.depth = 12;
      result.packing = "usb";
      break;
    case 0x02:
      result.depth = 10;
      break;
    case 0x03:
      result.depth = 12;
      break;
    case 0x04:
      result.depth = 14;
      break;
    case 0x05:
      result.depth = 16;
      break;
    default:
      break;
  }
  return result;
}

TEST(PixelFormat, decodes_every_row_of_the_table) {
  for (uint32_t row = 1; row <= 133; ++row) {
    const QTD::PixelRow* entry = QTD::FindPixelRow(row);
    ExpectDecoded(entry->code, Model(entry->code, entry->name));
  }
}

TEST(PixelFormat, decodes_some_by_hand) {
  ExpectDecoded(ZYN_PIXEL_MONO12PACKED, {0, 0, 8, ""});
  ExpectDecoded(ZYN_PIXEL_BAYERBG10PACKED, {0, 0, 8, ""});
  ExpectDecoded(ZYN_PIXEL_BAYERBG10P, {16, 2, 10, "usb"});
  ExpectDecoded(ZYN_PIXEL_BAYERGB12P, {16, 3, 12, "usb"});
  ExpectDecoded(ZYN_PIXEL_BAYERGB16, {16, 3, 16, ""});
  ExpectDecoded(ZYN_PIXEL_TRUESENSE_GBRG_WGGW_2_12, {32, 6, 12, ""});
  ExpectDecoded(ZYN_PIXEL_BGRA8, {4, 1, 8, ""});
  ExpectDecoded(ZYN_PIXEL_YUV422_10, {0, 0, 10, ""});
  ExpectDecoded(0, {0, 0, 8, ""});
  ExpectDecoded(0x77002299, {0, 0, 10, "usb"});  // the group speaks even for unknown codes
}

TEST(PixelFormat, decoding_again_forgets_what_was_before) {
  PixelFormat format(ZYN_PIXEL_BAYERGB12P);
  format.Decode(ZYN_PIXEL_BAYERGB12PACKED);
  EXPECT_EQ(format.family, 0u);
  EXPECT_EQ(format.pattern, 0u);
  EXPECT_EQ(format.depth, 8);
  EXPECT_EQ(format.packing, "");
}

TEST(PixelFormat, a_record_of_Mono12p_says_10_bits_and_the_decoded_form_12) {
  EXPECT_EQ(QTD::FindPixelRow(ZYN_PIXEL_MONO12P)->bitDepth, 10u);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_MONO12P).depth, 12);
}

TEST(PixelFormat, default_and_cleared_forms) {
  PixelFormat format(ZYN_PIXEL_BAYERBG10P);
  format.SetDefault();
  EXPECT_EQ(format.family, 1u);
  EXPECT_EQ(format.pattern, 0u);
  EXPECT_EQ(format.depth, 8);
  EXPECT_EQ(format.packing, "");
  format.Decode(ZYN_PIXEL_BAYERBG10P);
  format.Clear();
  EXPECT_EQ(format.family, 0u);
  EXPECT_EQ(format.pattern, 0u);
  EXPECT_EQ(format.depth, 0);
  EXPECT_EQ(format.packing, "");
  EXPECT_EQ(format.properties.Count(), 0);
  EXPECT_EQ(format.text, "");
}

TEST(PixelFormat, encodes_back_what_it_can) {
  for (uint32_t row = 1; row <= 133; ++row) {
    const uint32_t code = QTD::FindPixelRow(row)->code;
    const PixelFormat format(code);
    if (format.family == PixelFormat::Bayer) continue;
    EXPECT_EQ(format.Encode(), format.family == PixelFormat::Unknown ? 0 : code);
  }
}

TEST(PixelFormat, encodes_monochrome_by_depth_and_packing) {
  EXPECT_EQ(Encoded(1, 0, 10, "usb"), ZYN_PIXEL_MONO10P);
  EXPECT_EQ(Encoded(1, 0, 12, "usb"), ZYN_PIXEL_MONO12P);
  EXPECT_EQ(Encoded(1, 0, 14, "usb"), ZYN_PIXEL_MONO14);
  EXPECT_EQ(Encoded(1, 0, 16, "usb"), ZYN_PIXEL_MONO16);
  EXPECT_EQ(Encoded(1, 0, 8, "usb"), ZYN_PIXEL_MONO8);
  EXPECT_EQ(Encoded(1, 7, 9), ZYN_PIXEL_MONO8);
}

TEST(PixelFormat, encodes_colour_families) {
  EXPECT_EQ(Encoded(2, 0, 9), ZYN_PIXEL_RGB16);
  EXPECT_EQ(Encoded(2, 5, 16), ZYN_PIXEL_BGR16);
  EXPECT_EQ(Encoded(2, 5, 8), ZYN_PIXEL_BGR8);
  EXPECT_EQ(Encoded(4, 3, 8), ZYN_PIXEL_BGRA8);
  EXPECT_EQ(Encoded(4, 0, 10), 0u);
  EXPECT_EQ(Encoded(160, 0, 10), 0u);
  EXPECT_EQ(Encoded(160, 1, 8), 0u);
  EXPECT_EQ(Encoded(3, 0, 8), 0u);
}

TEST(PixelFormat, encodes_TrueSense_within_its_list_only) {
  EXPECT_EQ(Encoded(32, 15, 14), ZYN_PIXEL_TRUESENSE_RGGB_WRRW_3_14);
  EXPECT_EQ(Encoded(32, 4, 8), ZYN_PIXEL_TRUESENSE_BGGR_WBBW_2_8);
  EXPECT_EQ(Encoded(32, 0, 16), 0u);
  EXPECT_EQ(Encoded(32, 0, 9), 0u);
  for (uint32_t pattern : {16u, 17u, 18u, 1000u, 0xFFFFFFFFu}) EXPECT_EQ(Encoded(32, pattern, 8), 0u);
}

TEST(PixelFormat, builds_Bayer_codes_with_a_family_byte_of_1) {
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_BAYERGR8).Encode(), 0x0108010Du);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_BAYERBG8).Encode(), 0x01080110u);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_BAYERGB8).Encode(), 0x0108010Fu);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_BAYERRG10).Encode(), 0x01100212u);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_BAYERGR12).Encode(), 0x01100315u);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_BAYERBG14).Encode(), 0x0110042Cu);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_BAYERGB16).Encode(), 0x0110052Fu);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_BAYERGR10P).Encode(), 0x010C2219u);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_BAYERBG10P).Encode(), 0x010C221Cu);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_BAYERRG12P).Encode(), 0x010C2322u);
  EXPECT_EQ(Encoded(16, 0, 6), 0x0108010Du);
  EXPECT_EQ(Encoded(16, 1, 8, "usb"), 0x0108010Eu);
  EXPECT_EQ(Encoded(16, 0, 9), 0x0110010Du);
  EXPECT_EQ(Encoded(16, 0, 14, "usb"), 0x010C0000u);
  EXPECT_EQ(Encoded(16, 3, 16, "usb"), 0x010C0000u);
  EXPECT_EQ(Encoded(16, 2, 9, "usb"), 0x010C0000u);
  EXPECT_EQ(Encoded(16, 4, 8), 0u);
}

TEST(PixelFormat, counts_the_bytes_of_a_line) {
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_MONO10P).LineBytes(100), 125);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_MONO12P).LineBytes(100), 150);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_MONO10).LineBytes(100), 200);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_RGB8).LineBytes(100), 300);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_RGB12).LineBytes(3), 20);  // 18 rounded up to fours
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_RGBA8).LineBytes(5), 20);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_MONO8).LineBytes(1), 4);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_BAYERGR16).LineBytes(3), 8);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_MONO10P).LineBytes(3), 3);  // 3.75 truncated
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_MONO12P).LineBytes(3), 4);
  EXPECT_EQ(Format(1, 0, 8, "usb").LineBytes(100), 150);
}

TEST(PixelFormat, counts_no_bytes_for_absurd_widths) {
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_MONO8).LineBytes(0), 0);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_MONO10P).LineBytes(-8), 0);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_RGB16).LineBytes(INT_MIN), 0);
  EXPECT_EQ(PixelFormat(ZYN_PIXEL_RGB16).LineBytes(INT_MAX), 0);
}

TEST(PixelFormat, scales_colours_by_powers_of_2) {
  const PixelFormat ten(ZYN_PIXEL_MONO10);
  EXPECT_EQ(ten.ColorScale(16), 64.0);
  EXPECT_EQ(ten.ColorScale(8), 0.25);
  EXPECT_EQ(ten.ColorScale(10), 1.0);
  EXPECT_EQ(ten.ColorScale(41), 2147483648.0);
  EXPECT_EQ(ten.ColorScale(42), 0.0);  // 33 bits do not fit
  EXPECT_EQ(ten.ColorScale(-22), 0.0);
  EXPECT_EQ(ten.ColorScale(INT_MIN), 0.0);
  EXPECT_EQ(ten.ColorScale(INT_MAX), 0.0);
}

}  // namespace

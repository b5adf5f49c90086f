// The table against the rules that it follows, computed here on their own.
#include "QTD/image/PixelFormats.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "ZynPixelFormat.h"
#include "image/PixelConstants.h"

namespace {

using QTD::FindPixelRow;
using QTD::FindPixelRowByName;
using QTD::PixelRow;

uint32_t CodeOf(const std::string& name) {
  const PixelRow* row = FindPixelRowByName(name.c_str());
  return row != nullptr ? row->code : 0;
}

std::vector<uint32_t> CodesOf(const std::vector<std::string>& names) {
  std::vector<uint32_t> codes;
  for (const std::string& name : names) {
    codes.push_back(CodeOf(name));
    EXPECT_NE(codes.back(), 0u) << name;
  }
  return codes;
}

std::vector<uint32_t> AllCodes() {
  std::vector<uint32_t> codes;
  for (uint32_t row = 1; row <= 133; ++row) codes.push_back(FindPixelRow(row)->code);
  return codes;
}

// Members of the set by asking for each of the 133 codes, and for neighbours that only look like one.
void ExpectSet(bool (*isMember)(uint32_t), const std::vector<std::string>& names) {
  const std::vector<uint32_t> list = CodesOf(names);
  const std::set<uint32_t> members(list.begin(), list.end());
  EXPECT_EQ(members.size(), names.size());
  for (uint32_t code : AllCodes()) {
    EXPECT_EQ(isMember(code), members.count(code) == 1) << FindPixelRow(code)->name;
    EXPECT_FALSE(isMember(code & 0xFF)) << "the row number alone is no code";
    EXPECT_FALSE(isMember(code ^ 0x80000000));
  }
  EXPECT_FALSE(isMember(0));
}

std::vector<std::string> Names(const std::string& before, const std::vector<std::string>& middles,
                               const std::vector<std::string>& afters) {
  std::vector<std::string> names;
  for (const std::string& after : afters) {
    for (const std::string& middle : middles) names.push_back(before + middle + after);
  }
  return names;
}

std::vector<std::string> operator+(std::vector<std::string> one, const std::vector<std::string>& two) {
  one.insert(one.end(), two.begin(), two.end());
  return one;
}

const std::vector<std::string> kPlainDepths = {"8", "10", "12", "14", "16"};
const std::vector<std::string> kPackings = {"10Packed", "12Packed", "10p", "12p"};

std::vector<std::string> PackedMono() {
  return {"Mono10Packed", "Mono12Packed", "Mono10p", "Mono12p"};
}
std::vector<std::string> PackedBayer() {
  return Names("Bayer", {"GR", "RG", "GB", "BG"}, kPackings);
}
std::vector<std::string> PlainBayer() {
  return Names("Bayer", {"GR", "RG", "BG", "GB"}, kPlainDepths);
}

std::vector<std::string> TrueSense(const std::string& depth) {
  std::vector<std::string> names;
  for (const char* middle :
       {"BGGR_WBBW_0", "BGGR_WBBW_1", "GBRG_WGGW_0", "GBRG_WGGW_1", "BGGR_WBBW_2", "BGGR_WBBW_3",
        "GBRG_WGGW_2", "GBRG_WGGW_3", "GRBG_WGGW_0", "GRBG_WGGW_1", "RGGB_WRRW_0", "RGGB_WRRW_1",
        "GRBG_WGGW_2", "GRBG_WGGW_3", "RGGB_WRRW_2", "RGGB_WRRW_3"}) {
    names.push_back("TrueSense_" + std::string(middle) + "_" + depth);
  }
  return names;
}

struct Row {
  std::string name;
  std::string layout;
  uint32_t channels;
  uint32_t depth;
  std::string letters;  // of the channel map, in index order
  uint32_t phase;
  uint32_t code;
};

void AddBayer(std::vector<Row>& rows, const std::vector<std::pair<std::string, uint32_t>>& kinds,
              uint32_t depth) {
  const char* const orders[] = {"GR", "RG", "GB", "BG"};
  const char* const layouts[] = {"G R G2 B", "R G B G2", "G B G2 R", "B G R G2"};
  const uint32_t step = static_cast<uint32_t>(kinds.size());
  for (uint32_t order = 0; order < 4; ++order) {
    for (const auto& [kind, first] : kinds) {
      rows.push_back({std::string("Bayer") + orders[order] + kind, layouts[order], 1, depth, "Y", 0,
                      first + order * step});
    }
  }
}

void AddTrueSense(std::vector<Row>& rows, uint32_t depth, uint32_t first) {
  const char* const orders[] = {"BGGR_WBBW", "GBRG_WGGW", "GRBG_WGGW", "RGGB_WRRW"};
  const char* const layouts[] = {"W B W G B W G W W G W R G W R W", "W G W B G W B W W R W G R W G W",
                                 "W G W R G W R W W B W G B W G W", "W R W G R W G W W G W B G W B W"};
  for (uint32_t at = 0; at < 16; ++at) {
    const std::string name = "TrueSense_" + std::string(orders[at / 4]) + "_" + std::to_string(at % 4) + "_" +
                             std::to_string(depth);
    rows.push_back({name, layouts[at / 4], 1, depth, "Y", at % 4, first + at});
  }
}

std::vector<Row> RuledRows() {
  std::vector<Row> rows = {
      {"Mono8", "Y", 1, 8, "Y", 0, 0x01080101},
      {"Mono10", "Y", 1, 10, "Y", 0, 0x01100202},
      {"Mono10p", "Y", 1, 10, "Y", 0, 0x010A2203},
      {"Mono10Packed", "Y", 1, 10, "Y", 0, 0x010C1204},
      {"Mono10_BrioPacked", "Y", 1, 10, "Y", 0, 0x010C3205},
      {"Mono12", "Y", 1, 12, "Y", 0, 0x01100306},
      {"Mono12p", "Y", 1, 10, "Y", 0, 0x010C2307},
      {"Mono12Packed", "Y", 1, 12, "Y", 0, 0x010C1308},
      {"Mono12_BrioPacked", "Y", 1, 12, "Y", 0, 0x010C3309},
      {"Mono14", "Y", 1, 14, "Y", 0, 0x0110040A},
      {"Mono16", "Y", 1, 16, "Y", 0, 0x0110050B},
      {"Mono8_BrioPacked", "Y", 1, 8, "Y", 0, 0x0108310C},
  };
  AddBayer(rows, {{"8", 0x0308010D}}, 8);
  AddBayer(rows, {{"10", 0x03100211}}, 10);
  AddBayer(rows, {{"12", 0x03100315}}, 12);
  AddBayer(rows, {{"10p", 0x030A2219}, {"10Packed", 0x030C121A}}, 10);
  AddBayer(rows, {{"12p", 0x030C2321}, {"12Packed", 0x030C1322}}, 12);
  AddBayer(rows, {{"14", 0x03100429}}, 14);
  AddBayer(rows, {{"16", 0x0310052D}}, 16);
  AddTrueSense(rows, 8, 0x04080131);
  AddTrueSense(rows, 10, 0x04100241);
  AddTrueSense(rows, 12, 0x04100351);
  AddTrueSense(rows, 14, 0x04100461);
  const Row last[] = {
      {"RGB8", "R G B", 3, 8, "RGB", 0, 0x02180171},
      {"BGR8", "B G R", 3, 8, "BGR", 0, 0x02180172},
      {"RGBa8", "R G B A", 4, 8, "RGBA", 0, 0x02200173},
      {"BGRa8", "B G R A", 4, 8, "BGRA", 0, 0x02200174},
      {"RGB10", "R G B", 3, 10, "RGB", 0, 0x02300275},
      {"BGR10", "B G R", 3, 10, "BGR", 0, 0x02300276},
      {"RGB12", "R G B", 3, 12, "RGB", 0, 0x02300377},
      {"BGR12", "B G R", 3, 12, "BGR", 0, 0x02300378},
      {"RGB14", "R G B", 3, 14, "RGB", 0, 0x02300479},
      {"BGR14", "B G R", 3, 14, "BGR", 0, 0x0230047A},
      {"RGB16", "R G B", 3, 16, "RGB", 0, 0x0230057B},
      {"BGR16", "B G R", 3, 16, "BGR", 0, 0x0230057C},
      {"RGB_8_BRIO_Packed", "R G B", 3, 8, "RGB", 0, 0x0218317D},
      {"RGB_10_BRIO_Packed", "R G B", 3, 10, "RGB", 0, 0x0220327E},
      {"RGB_12_BRIO_Packed", "R G B", 3, 12, "RGB", 0, 0x0224337F},
      {"YUV422_8_UYVY", "U Y V Y", 3, 8, "YUV", 0, 0x05100180},
      {"YUV422_8", "Y U Y V", 3, 8, "YUV", 0, 0x05100181},
      {"YUV422_10", "Y U Y V", 3, 10, "YUV", 0, 0x05200282},
      {"YUV422_10_PACKED", "Y U Y V", 3, 10, "YUV", 0, 0x05143283},
      {"YUV444_8", "Y U V A", 4, 8, "YUV", 0, 0x05200184},
      {"YCbCr422_8", "Y Cb Y Cr", 3, 8, "YUV", 0, 0x05100185},
  };
  rows.insert(rows.end(), std::begin(last), std::end(last));
  return rows;
}

TEST(PixelTable, follows_the_rules_row_by_row) {
  const std::vector<Row> rows = RuledRows();
  ASSERT_EQ(rows.size(), 133u);
  ASSERT_EQ(QTD::kPixelRows, 133u);
  for (uint32_t at = 0; at < 133; ++at) {
    const Row& expected = rows[at];
    const PixelRow* row = FindPixelRow(at + 1);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->name, expected.name);
    EXPECT_EQ(row->layout, expected.layout) << expected.name;
    EXPECT_EQ(row->channels, expected.channels) << expected.name;
    EXPECT_EQ(row->bitDepth, expected.depth) << expected.name;
    EXPECT_EQ(row->phase, expected.phase) << expected.name;
    EXPECT_EQ(row->code, expected.code) << expected.name;
    EXPECT_EQ(row->code & 0xFF, at + 1) << expected.name;
  }
}

TEST(PixelTable, codes_equal_the_public_constants) {
  ASSERT_EQ(std::size(kConstants), 133u);
  for (uint32_t row = 1; row <= 133; ++row) EXPECT_EQ(FindPixelRow(row)->code, kConstants[row - 1]) << row;
}

TEST(PixelTable, channel_maps_know_their_letters_and_no_other) {
  const std::vector<Row> rows = RuledRows();
  for (uint32_t at = 0; at < 133; ++at) {
    const PixelRow* row = FindPixelRow(at + 1);
    for (int letter = 0; letter < 256; ++letter) {
      const size_t found = rows[at].letters.find(static_cast<char>(letter));
      const int expected = found == std::string::npos ? -1 : static_cast<int>(found);
      EXPECT_EQ(row->channel(static_cast<char>(letter)), expected) << row->name << " " << letter;
    }
  }
}

TEST(PixelTable, is_looked_up_by_the_low_byte_alone) {
  EXPECT_EQ(FindPixelRow(0xFFFFFF71)->name, std::string("RGB8"));
  EXPECT_EQ(FindPixelRow(0x71)->name, std::string("RGB8"));
  EXPECT_EQ(FindPixelRow(0), nullptr);
  EXPECT_EQ(FindPixelRow(0x01080100), nullptr);
  EXPECT_NE(FindPixelRow(133), nullptr);
  EXPECT_EQ(FindPixelRow(134), nullptr);
  EXPECT_EQ(FindPixelRow(0x010801FF), nullptr);
}

TEST(PixelTable, finds_rows_by_exact_name) {
  EXPECT_EQ(CodeOf("BayerRG12p"), 0x030C2323u);
  EXPECT_EQ(FindPixelRowByName("bayerrg12p"), nullptr);
  EXPECT_EQ(FindPixelRowByName("Mono"), nullptr);
  EXPECT_EQ(FindPixelRowByName(""), nullptr);
  EXPECT_EQ(FindPixelRowByName(nullptr), nullptr);
}

TEST(PixelTable, splits_group_and_storage_bits_off_a_code) {
  EXPECT_EQ(QTD::PixelGroup(0x030A2219), 0x2200u);
  EXPECT_EQ(QTD::BitsPerPixel(0x030A2219), 10u);
}

TEST(FormatSets, hold_their_members_only) {
  const std::vector<std::string> mono = {"Mono8", "Mono10", "Mono12", "Mono14", "Mono16"};
  const std::vector<std::string> bgr = Names("BGR", {""}, kPlainDepths);
  const std::vector<std::string> bayer = PlainBayer() + PackedBayer();
  const std::vector<std::string> trueSense =
      TrueSense("8") + TrueSense("10") + TrueSense("12") + TrueSense("14");
  ExpectSet(QTD::IsPackedFormat, PackedMono() + PackedBayer());
  ExpectSet(QTD::IsMonoFormat, mono + PackedMono());
  ExpectSet(QTD::IsBgrFormat, bgr);
  ExpectSet(QTD::IsRgbFormat, bgr + Names("RGB", {""}, kPlainDepths));
  ExpectSet(QTD::IsBayerFormat, bayer);
  ExpectSet(QTD::IsTrueSenseFormat, trueSense);
  ExpectSet(QTD::IsCfaFormat, bayer + trueSense);
  ExpectSet(QTD::IsYuvFormat,
            {"YUV422_8_UYVY", "YUV422_8", "YUV422_10", "YUV422_10_PACKED", "YUV444_8", "YCbCr422_8"});
}

TEST(FormatSets, tell_what_a_chain_makes_whole_first_and_what_its_later_stages_take) {
  ExpectSet(QTD::IsUyvyFormat, {"YUV422_8_UYVY"});
  ExpectSet(QTD::IsTransportFormat, PackedMono() + PackedBayer() + std::vector<std::string>{"YUV422_8_UYVY"});
  for (const uint32_t code : AllCodes()) {
    const std::string name = FindPixelRow(code)->name;
    const bool mosaic = name.rfind("Bayer", 0) == 0 || name.rfind("TrueSense", 0) == 0;
    const std::vector<std::string> packed = PackedMono();
    const bool transport =
        name == "YUV422_8_UYVY" || std::find(packed.begin(), packed.end(), name) != packed.end();
    EXPECT_EQ(QTD::IsPictureFormat(code), !mosaic && !transport) << name;
  }
}

TEST(FormatSets, give_the_positions_of_their_lists) {
  const std::vector<uint32_t> bayer = CodesOf(PlainBayer() + PackedBayer());
  ASSERT_EQ(bayer.size(), 36u);
  for (size_t at = 0; at < bayer.size(); ++at) EXPECT_EQ(QTD::BayerPosition(bayer[at]), static_cast<int>(at));
  EXPECT_EQ(QTD::BayerPosition(ZYN_PIXEL_BAYERGR10PACKED), QTD::kFirstPackedBayer);
  EXPECT_EQ(QTD::BayerPosition(ZYN_PIXEL_BAYERGR10P), QTD::kFirst10pBayer);
  EXPECT_EQ(QTD::BayerPosition(ZYN_PIXEL_BAYERGR12P), QTD::kFirst12pBayer);
  EXPECT_EQ(QTD::BayerPosition(ZYN_PIXEL_MONO8), -1);
  EXPECT_EQ(QTD::BayerPosition(0), -1);

  const std::vector<uint32_t> eight = CodesOf(TrueSense("8"));
  const std::vector<uint32_t> deep = CodesOf(TrueSense("10") + TrueSense("12") + TrueSense("14"));
  for (size_t at = 0; at < eight.size(); ++at) {
    EXPECT_EQ(QTD::TrueSensePosition(eight[at]), static_cast<int>(at));
    EXPECT_EQ(QTD::TrueSenseCode(true, static_cast<int>(at)), eight[at]);
  }
  for (size_t at = 0; at < deep.size(); ++at) {
    EXPECT_EQ(QTD::TrueSensePosition(deep[at]), static_cast<int>(at));
    EXPECT_EQ(QTD::TrueSenseCode(false, static_cast<int>(at)), deep[at]);
  }
  EXPECT_EQ(QTD::TrueSensePosition(ZYN_PIXEL_BAYERGR8), -1);
  EXPECT_EQ(QTD::TrueSenseCode(true, 16), 0u);
  EXPECT_EQ(QTD::TrueSenseCode(false, 48), 0u);
  EXPECT_EQ(QTD::TrueSenseCode(true, -1), 0u);
}

TEST(FormatMappings, unpack_keeps_depth_and_order) {
  for (uint32_t code : AllCodes()) {
    std::string name = FindPixelRow(code)->name;
    const bool packed = name.rfind("Mono", 0) == 0 || name.rfind("Bayer", 0) == 0;
    if (packed && name.find("Brio") == std::string::npos) {
      for (const std::string ending : {"Packed", "p"}) {
        const size_t at = name.rfind(ending);
        if (at != std::string::npos && at + ending.size() == name.size()) name.erase(at);
      }
    }
    EXPECT_EQ(QTD::UnpackedFormat(code), CodeOf(name)) << name;
  }
  EXPECT_EQ(QTD::UnpackedFormat(0), 0u);
  EXPECT_EQ(QTD::UnpackedFormat(0xDEADBEEF), 0xDEADBEEFu);
}

TEST(FormatMappings, demosaicing_keeps_the_depth_and_refuses_packed_codes) {
  for (uint32_t code : AllCodes()) {
    const std::string name = FindPixelRow(code)->name;
    uint32_t rgb = code;
    uint32_t bgr = code;
    if (name.rfind("Bayer", 0) == 0) {
      const bool packed = name.back() == 'p' || name.back() == 'd';
      rgb = packed ? 0 : CodeOf("RGB" + name.substr(7));
      bgr = packed ? 0 : CodeOf("BGR" + name.substr(7));
    }
    EXPECT_EQ(QTD::DemosaicedFormat(code, false), rgb) << name;
    EXPECT_EQ(QTD::DemosaicedFormat(code, true), bgr) << name;
  }
  EXPECT_EQ(QTD::DemosaicedFormat(0x12345678, true), 0x12345678u);
}

TEST(FormatMappings, eight_bits_keep_the_family) {
  const std::set<uint32_t> zero = {ZYN_PIXEL_MONO10P,
                                   ZYN_PIXEL_MONO12P,
                                   ZYN_PIXEL_MONO10PACKED,
                                   ZYN_PIXEL_MONO12PACKED,
                                   0x05100180,
                                   0x05100181,
                                   0x05200282,
                                   0x05143283,
                                   0x05200184,
                                   0x05100185};
  const std::set<uint32_t> mono = {ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO10, ZYN_PIXEL_MONO12, ZYN_PIXEL_MONO14,
                                   ZYN_PIXEL_MONO16};
  for (uint32_t code : AllCodes()) {
    const std::string name = FindPixelRow(code)->name;
    uint32_t expected = code;
    if (zero.count(code) == 1) expected = 0;
    if (mono.count(code) == 1) expected = ZYN_PIXEL_MONO8;
    if (name.rfind("TrueSense", 0) == 0) expected = CodeOf(name.substr(0, name.rfind('_')) + "_8");
    if (name.rfind("Bayer", 0) == 0) {
      std::string order = name.substr(5, 2);
      // The lists of packed codes run in another order: GB and BG change places.
      const bool packed = name.back() == 'p' || name.back() == 'd';
      if (packed && order == "GB") {
        order = "BG";
      } else if (packed && order == "BG") {
        order = "GB";
      }
      expected = CodeOf("Bayer" + order + "8");
    }
    EXPECT_EQ(QTD::EightBitFormat(code), expected) << name;
  }
  EXPECT_EQ(QTD::EightBitFormat(ZYN_PIXEL_RGB12), ZYN_PIXEL_RGB12);
  EXPECT_EQ(QTD::EightBitFormat(0x12345678), 0x12345678u);
}

}  // namespace

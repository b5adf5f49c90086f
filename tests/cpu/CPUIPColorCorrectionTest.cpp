// The colour correction stage: what it takes and what becomes of the pixels.
#include "cpu/stages/CPUIPColorCorrection.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "ZynPixelFormat.h"
#include "tests/chain/TraceCapture.h"
#include "tests/cpu/CorrectionStage.h"

namespace {

std::vector<uint16_t> WordsOf(const StagePicture& picture) {
  std::vector<uint16_t> words(picture.record.imageSize / 2);
  for (size_t n = 0; n < words.size(); ++n) words[n] = WordAt(picture, n);
  return words;
}

void PutWords(StagePicture& picture, const std::vector<uint16_t>& words) {
  std::memcpy(picture.record.imageData, words.data(), 2 * words.size());
}

// Samples that use no more bits than the depth.
void LimitTo(StagePicture& picture, uint32_t depth) {
  std::vector<uint16_t> words = WordsOf(picture);
  for (uint16_t& word : words) word = static_cast<uint16_t>(word & ((1u << depth) - 1));
  PutWords(picture, words);
}

TEST(CPUIPColorCorrection, bears_its_names) {
  CorrectionStage stage;
  EXPECT_EQ(stage.Name(), "correction.cpu");
  EXPECT_EQ(stage.Text("class"), "CPUIPColorCorrection");
  EXPECT_EQ(stage.GetComponent(), static_cast<ZynComponent*>(&stage));
  for (const char* key : {"gain.r", "gain.g", "gain.b"}) EXPECT_EQ(stage.Text(key), "1");
  for (const char* key : {"offs.r", "offs.g", "offs.b"}) EXPECT_EQ(stage.Text(key), "0");
  EXPECT_EQ(stage.Text("gamma"), "1.000000");
  EXPECT_EQ(stage.GetParameterCount(), 8u);
}

TEST(CPUIPColorCorrection, factories_make_and_delete_a_stage) {
  CPUIPColorCorrection parent(nullptr);
  ZynImgProcessor* const stage = ZynDisplayCPU::ColorCorrection::CreateComponent(&parent);
  ASSERT_NE(dynamic_cast<CPUIPColorCorrection*>(stage), nullptr);
  EXPECT_EQ(dynamic_cast<CPUIPColorCorrection*>(stage)->GetParent(), static_cast<ZynComponent*>(&parent));
  ZynDisplayCPU::ColorCorrection::DeleteComponent(stage);
  ZynDisplayCPU::ColorCorrection::DeleteComponent(nullptr);
}

TEST(CPUIPColorCorrection, refuses_an_empty_source) {
  CorrectionStage stage;
  EXPECT_EQ(stage.Init(nullptr, nullptr), kBadArgument);
  EXPECT_EQ(stage.LastError(), 7u);
  for (const bool wide : {false, true}) {
    const ZynImage source = Header(ZYN_PIXEL_MONO12, wide ? 8 : 0, wide ? 0 : 4);
    EXPECT_EQ(stage.Init(&source, nullptr), kBadArgument);
    EXPECT_FALSE(stage.IsReady());
  }
}

TEST(CPUIPColorCorrection, refuses_packed_mosaic_and_uyvy_formats_alone) {
  int refused = 0;
  for (uint32_t number = 1; number <= QTD::kPixelRows; ++number) {
    const QTD::PixelRow* const row = QTD::FindPixelRow(number);
    const std::string rowName = row->name;
    const bool packedMono = rowName.find("Mono") == 0 && rowName.find("Brio") == std::string::npos &&
                            (rowName.back() == 'p' || rowName.find("Packed") != std::string::npos);
    const bool expected = packedMono || rowName.find("Bayer") == 0 || rowName.find("TrueSense") == 0 ||
                          rowName == "YUV422_8_UYVY";
    CorrectionStage stage;
    const ZynImage source = Header(row->code);
    EXPECT_EQ(stage.Init(&source, nullptr), expected ? kFormat : 0u) << rowName;
    EXPECT_EQ(stage.IsReady(), !expected) << rowName;
    refused += expected;
  }
  EXPECT_EQ(refused, 4 + 36 + 64 + 1);
}

TEST(CPUIPColorCorrection, one_record_tells_source_and_result_and_follows_the_origin_alone) {
  for (const uint32_t origin : {0u, 1u, 2u}) {
    for (const bool turned : {false, true}) {
      CorrectionStage stage;
      stage.SetParameterBool("image.flip.vert", turned);
      StagePicture picture(ZYN_PIXEL_MONO12, 9, 5, 40);
      picture.record.origin = origin;
      ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
      const ZynImage* const info = stage.GetImageInfo(true);
      EXPECT_EQ(stage.GetImageInfo(false), info);
      EXPECT_EQ(info->width, 9u);
      EXPECT_EQ(info->height, 5u);
      EXPECT_EQ(info->pixelType, ZYN_PIXEL_MONO12);
      EXPECT_EQ(info->origin, origin == 1 ? 1u : 0u);
      EXPECT_EQ(stage.Out(), nullptr);
    }
  }
}

TEST(CPUIPColorCorrection, a_source_that_gets_no_record_is_refused) {
  CorrectionStage stage;
  for (const uint32_t height : {1u << 20, 0x80000000u, 0xFFFFFFFFu}) {
    ZynImage source = Header(ZYN_PIXEL_MONO12);
    source.width = 1u << 20;
    source.height = height;
    EXPECT_EQ(stage.Init(&source, nullptr), kNoMemory);
  }
  ZynImage source = Header(ZYN_PIXEL_MONO12);
  source.pixelType = 0;
  EXPECT_EQ(stage.Init(&source, nullptr), kNoMemory);
  EXPECT_FALSE(stage.IsReady());
  EXPECT_EQ(stage.GetImageInfo(true), nullptr);
}

TEST(CPUIPColorCorrection, a_depth_without_tables_is_refused) {
  for (const uint32_t depth : {0u, 1u, 7u, 9u, 11u, 13u, 15u, 17u, 31u, 32u, 33u, 0xFFFFFFFFu}) {
    CorrectionStage stage;
    ZynImage source = Header(ZYN_PIXEL_MONO12);
    source.bitDepth = depth;
    EXPECT_EQ(stage.Init(&source, nullptr), kFailed) << depth;
    EXPECT_EQ(stage.LastError(), 1u);
    EXPECT_FALSE(stage.IsReady());
    EXPECT_EQ(stage.GetImageInfo(true), nullptr);
  }
}

TEST(CPUIPColorCorrection, before_init_nothing_is_corrected) {
  CorrectionStage stage;
  StagePicture picture(ZYN_PIXEL_MONO12, 8, 4);
  EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), kFailed);
  EXPECT_EQ(stage.Out(), nullptr);
  EXPECT_EQ(stage.ProcessImage(nullptr, nullptr, nullptr), kBadArgument);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  stage.Release();
  EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), kFailed);
  EXPECT_EQ(stage.LastError(), 1u);
  EXPECT_EQ(stage.GetImageInfo(false), nullptr);
}

TEST(CPUIPColorCorrection, an_image_without_pixels_is_refused) {
  CorrectionStage stage;
  StagePicture picture(ZYN_PIXEL_MONO12, 8, 4);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  EXPECT_EQ(stage.ProcessImage(nullptr, nullptr, nullptr), kBadArgument);
  EXPECT_EQ(stage.Out(), nullptr);
  picture.record.imageData = nullptr;
  EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), kBadArgument);
  EXPECT_EQ(stage.LastError(), 7u);
}

TEST(CPUIPColorCorrection, the_default_touches_no_image_and_hands_it_on) {
  for (const uint32_t code : {ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO12, ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR16,
                              ZYN_PIXEL_RGBA8, ZYN_PIXEL_YUV422_8, ZYN_PIXEL_YUV422_10}) {
    CorrectionStage stage;
    StagePicture picture(code, 8, 4);  // noise with bits above the depth
    const auto before = picture.Copy();
    ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
    StagePicture output(code, 8, 4);
    EXPECT_EQ(stage.ProcessImage(&picture.record, &output.record, nullptr), 0u);
    EXPECT_EQ(stage.Out(), &picture.record);
    EXPECT_EQ(picture.Copy(), before);
  }
}

TEST(CPUIPColorCorrection, a_gamma_next_to_1_counts_as_the_default) {
  CorrectionStage stage;
  StagePicture picture(ZYN_PIXEL_MONO8, 8, 4);  // where anything else fails
  stage.SetParameter("gamma", "1.00000009");
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  for (const char* gamma : {"1.0000002", "0.9999998", "0"}) {
    stage.SetParameter("gamma", gamma);
    ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
    EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), kFailed) << gamma;
  }
}

TEST(CPUIPColorCorrection, any_gain_or_offset_beside_the_default_is_a_correction) {
  const StagePicture picture(ZYN_PIXEL_MONO8, 8, 4);
  for (const char* key : {"gain.r", "gain.g", "gain.b", "offs.r", "offs.g", "offs.b"}) {
    CorrectionStage stage;
    stage.SetParameter(key, key[0] == 'g' ? "1.0000000001" : "1e-10");
    ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
    EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), kFailed) << key;
  }
}

TEST(CPUIPColorCorrection, gain_2_on_Mono12_doubles_and_clamps) {
  CorrectionStage stage;
  stage.SetParameterDouble("gain.r", 2);
  StagePicture picture(ZYN_PIXEL_MONO12, 64, 64);
  std::vector<uint16_t> words(4096);
  for (size_t n = 0; n < words.size(); ++n) words[n] = static_cast<uint16_t>(n);
  PutWords(picture, words);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  EXPECT_EQ(stage.Out(), &picture.record);
  for (size_t n = 0; n < words.size(); ++n) ASSERT_EQ(WordAt(picture, n), n <= 2047 ? 2 * n : 4095);
}

TEST(CPUIPColorCorrection, offset_on_the_green_of_RGB16) {
  CorrectionStage stage;
  stage.SetParameterDouble("offs.g", 0.5);
  StagePicture picture(ZYN_PIXEL_RGB16, 50, 20);
  const auto before = WordsOf(picture);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  for (size_t n = 0; n < before.size(); ++n) {
    const uint32_t expected = n % 3 == 1 ? std::min(before[n] + 32768u, 65535u) : before[n];
    ASSERT_EQ(WordAt(picture, n), expected) << n;
  }
}

TEST(CPUIPColorCorrection, active_correction_of_8_bits_fails_and_leaves_the_image) {
  for (const uint32_t code :
       {ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR8, ZYN_PIXEL_RGBA8, ZYN_PIXEL_YUV422_8}) {
    for (const uint32_t height : {1u, 4u}) {
      CorrectionStage stage;
      stage.SetParameterDouble("gain.r", 2);
      StagePicture picture(code, 8, height);
      const auto before = picture.Copy();
      ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
      EXPECT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), kFailed) << code;
      EXPECT_EQ(stage.LastError(), 1u);
      EXPECT_EQ(stage.Out(), nullptr);
      EXPECT_EQ(picture.Copy(), before);
    }
  }
}

TEST(CPUIPColorCorrection, Mono14_has_one_table_of_its_depth) {
  CorrectionStage stage;
  stage.SetParameterDouble("gain.r", 3);
  stage.SetParameterDouble("gain.g", 0);  // of no concern
  StagePicture picture(ZYN_PIXEL_MONO14, 100, 10);
  LimitTo(picture, 14);
  const auto before = WordsOf(picture);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  for (size_t n = 0; n < before.size(); ++n)
    ASSERT_EQ(WordAt(picture, n), std::min<uint32_t>(3u * before[n], 16383));
}

TEST(CPUIPColorCorrection, every_colour_depth_has_three_tables_in_the_order_of_the_samples) {
  const std::array<uint32_t, 2> codes[] = {{ZYN_PIXEL_RGB10, ZYN_PIXEL_BGR10},
                                           {ZYN_PIXEL_RGB12, ZYN_PIXEL_BGR12},
                                           {ZYN_PIXEL_RGB14, ZYN_PIXEL_BGR14},
                                           {ZYN_PIXEL_RGB16, ZYN_PIXEL_BGR16}};
  uint32_t depth = 10;
  for (const auto& pair : codes) {
    for (const uint32_t code : pair) {
      CorrectionStage stage;
      stage.SetParameterDouble("gain.r", 2);  // the first sample, which is blue in BGR
      stage.SetParameterDouble("gain.b", 0.5);
      StagePicture picture(code, 30, 7);
      LimitTo(picture, depth);
      const auto before = WordsOf(picture);
      ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
      ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
      const uint32_t top = (1u << depth) - 1;
      for (size_t n = 0; n < before.size(); ++n) {
        const uint32_t expected[] = {std::min(2u * before[n], top), before[n], (before[n] + 1u) / 2};
        ASSERT_EQ(WordAt(picture, n), expected[n % 3]) << depth << " " << n;
      }
    }
    depth += 2;
  }
}

TEST(CPUIPColorCorrection, samples_above_the_depth_take_the_last_entry) {
  CorrectionStage stage;
  stage.SetParameterDouble("gain.r", 0.5);
  StagePicture picture(ZYN_PIXEL_MONO12, 6, 1);
  PutWords(picture, {0, 4094, 4095, 4096, 4097, 65535});
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  EXPECT_EQ(WordsOf(picture), std::vector<uint16_t>({0, 2047, 2048, 2048, 2048, 2048}));
}

TEST(CPUIPColorCorrection, other_deep_formats_take_the_first_table_for_every_sample) {
  CorrectionStage stage;
  stage.SetParameterDouble("offs.r", 1);
  stage.SetParameterDouble("gain.g", 0);
  StagePicture picture(ZYN_PIXEL_YUV422_10, 8, 4);  // two words a pixel
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  EXPECT_EQ(WordsOf(picture), std::vector<uint16_t>(64, 1023));
}

TEST(CPUIPColorCorrection, only_pixels_of_the_width_are_corrected) {
  for (const uint32_t code : {ZYN_PIXEL_MONO12, ZYN_PIXEL_RGB12}) {
    CorrectionStage stage;
    stage.SetParameterDouble("offs.r", 1);
    stage.SetParameterDouble("offs.g", 1);
    stage.SetParameterDouble("offs.b", 1);
    for (const uint32_t pitch : {61u, 64u, 100u}) {
      StagePicture picture(code, 9, 5, pitch);
      picture.record.height = 4;  // and bytes behind the last line
      const auto before = picture.Copy();
      ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
      ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
      const size_t lineBytes = 9 * picture.record.bitsPerPixel / 8;
      for (size_t n = 0; n < before.size(); ++n) {
        const bool pixel = n / pitch < 4 && n % pitch < lineBytes;
        const uint8_t expected = !pixel ? before[n] : n % pitch % 2 == 0 ? 0xFF : 0x0F;
        ASSERT_EQ(picture.record.imageData[n], expected) << pitch << " " << n;
      }
    }
  }
}

TEST(CPUIPColorCorrection, gamma_works_on_the_stored_values) {
  CorrectionStage stage;
  stage.SetParameterDouble("gamma", 2);
  StagePicture picture(ZYN_PIXEL_MONO16, 4, 1);
  PutWords(picture, {0, 16, 255, 256});
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  ASSERT_EQ(stage.ProcessImage(&picture.record, nullptr, nullptr), 0u);
  EXPECT_EQ(WordsOf(picture), std::vector<uint16_t>({0, 256, 65025, 65535}));
}

// What the stage was prepared for only decides about the tables.
TEST(CPUIPColorCorrection, images_of_another_format_or_size_than_prepared_do_no_harm) {
  for (const uint32_t prepared : {ZYN_PIXEL_MONO12, ZYN_PIXEL_RGB12, ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB16}) {
    const ZynImage format = Header(prepared);
    CorrectionStage stage;
    stage.SetParameterDouble("gain.r", 2);
    ASSERT_EQ(stage.Init(&format, nullptr), 0u);
    for (uint32_t number = 1; number <= QTD::kPixelRows; ++number) {
      StagePicture other(QTD::FindPixelRow(number)->code, 7, 3);
      for (const uint32_t depth : {other.record.bitDepth, 0u, 8u, 9u, 12u, 16u, 40u, 0xFFFFFFFFu}) {
        other.record.bitDepth = depth;
        const auto before = other.Copy();
        const uint32_t code = stage.ProcessImage(&other.record, nullptr, nullptr);
        ASSERT_TRUE(code == 0 || code == kFailed) << number;
        if (code != 0) {
          ASSERT_EQ(other.Copy(), before);
        }
        ASSERT_EQ(stage.Out(), code == 0 ? &other.record : nullptr);
      }
    }
  }
  // Three tables are asked for where there is one.
  const ZynImage format = Header(ZYN_PIXEL_MONO12);
  CorrectionStage stage;
  stage.SetParameterDouble("gain.r", 2);
  ASSERT_EQ(stage.Init(&format, nullptr), 0u);
  StagePicture colour(ZYN_PIXEL_RGB12, 8, 4);
  EXPECT_EQ(stage.ProcessImage(&colour.record, nullptr, nullptr), kFailed);
  StagePicture larger(ZYN_PIXEL_MONO12, 80, 40);
  EXPECT_EQ(stage.ProcessImage(&larger.record, nullptr, nullptr), 0u);
}

TEST(CPUIPColorCorrection, records_that_lie_about_their_buffer_are_refused) {
  for (const uint32_t code : {ZYN_PIXEL_MONO12, ZYN_PIXEL_RGB12, ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8}) {
    CorrectionStage stage;
    stage.SetParameterDouble("gain.r", 2);
    const StagePicture picture(code, 9, 4);
    const auto before = picture.Copy();
    ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
    const auto refuses = [&](uint32_t ZynImage::*field, uint32_t value) {
      ZynImage lying = picture.record;
      lying.*field = value;
      EXPECT_EQ(stage.ProcessImage(&lying, nullptr, nullptr), kFailed) << value;
      EXPECT_EQ(stage.Out(), nullptr);
    };
    for (const uint32_t pitch : {0u, 1u, 8u, picture.record.linePitch * 2, 0x7FFFFFFFu, 0xFFFFFFFFu})
      refuses(&ZynImage::linePitch, pitch);
    for (const uint32_t size : {0u, 1u, picture.record.linePitch * 3}) refuses(&ZynImage::imageSize, size);
    for (const uint32_t height : {5u, 1u << 20, 0xFFFFFFFFu}) refuses(&ZynImage::height, height);
    for (const uint32_t width : {16u, 1u << 20, 0xFFFFFFFFu}) refuses(&ZynImage::width, width);
    EXPECT_EQ(picture.Copy(), before);
  }
}

TEST(CPUIPColorCorrection, a_second_init_rebuilds_and_may_take_the_stages_own_record) {
  CorrectionStage stage;
  const ZynImage source = Header(ZYN_PIXEL_MONO12);
  ASSERT_EQ(stage.Init(&source, nullptr), 0u);
  stage.Enable(false);
  ASSERT_EQ(stage.Init(stage.GetImageInfo(false), nullptr), 0u);
  EXPECT_EQ(stage.GetImageInfo(true)->pixelType, ZYN_PIXEL_MONO12);
  EXPECT_TRUE(stage.IsEnabled());
}

TEST(CPUIPColorCorrection, each_image_leaves_a_line_in_the_trace) {
  CorrectionStage stage;
  const StagePicture picture(ZYN_PIXEL_MONO12, 8, 4);
  ASSERT_EQ(stage.Init(&picture.record, nullptr), 0u);
  chain_test::TraceCapture trace;
  stage.ProcessImage(&picture.record, nullptr, nullptr);
  stage.ProcessImage(nullptr, nullptr, nullptr);
  EXPECT_EQ(trace.lines, std::vector<std::string>(2, "CPUIPColorCorrection::ProcessImage()"));
}

}  // namespace

// Marking pictures.
#include "cpu/stages/CPUIPExposureColoration.h"

#include "tests/chain/TraceCapture.h"
#include "tests/cpu/ColorationFixture.h"

namespace {

TEST_F(ColorationTest, mono8_marks_black_green_and_white_red) {
  Values(ZYN_PIXEL_MONO8, {0, 1, 100, 254, 255});
  Ready();
  ASSERT_EQ(Run(), 0u);
  EXPECT_EQ(Marks(), "g...r");
  EXPECT_EQ(stage.Out(), &picture->record);
}

TEST_F(ColorationTest, mono12_is_over_exposed_above_4094) {
  Values(ZYN_PIXEL_MONO12, {0, 1, 255, 256, 4094, 4095});
  Ready();
  ASSERT_EQ(Run(), 0u);
  EXPECT_EQ(Marks(), "g....r");
}

TEST_F(ColorationTest, rgb8_compares_the_sum_with_764) {
  Values(ZYN_PIXEL_RGB8, {0, 0, 0, 1, 0, 0, 0, 0, 1, 255, 255, 254, 255, 255, 255});
  Ready();
  ASSERT_EQ(Run(), 0u);
  EXPECT_EQ(Marks(), "g...r");
}

TEST_F(ColorationTest, every_format_has_its_own_range) {
  const struct {
    uint32_t code;
    uint32_t largest;
    uint32_t samples;
  } kRows[] = {{ZYN_PIXEL_MONO8, 255, 1},      {ZYN_PIXEL_MONO10, 1023, 1},  {ZYN_PIXEL_MONO12, 4095, 1},
               {ZYN_PIXEL_MONO14, 16383, 1},   {ZYN_PIXEL_MONO16, 65535, 1}, {ZYN_PIXEL_BAYERRG8, 255, 1},
               {ZYN_PIXEL_BAYERGB12, 4095, 1}, {ZYN_PIXEL_RGB8, 255, 3},     {ZYN_PIXEL_BGR8, 255, 3},
               {ZYN_PIXEL_RGB10, 1023, 3},     {ZYN_PIXEL_BGR10, 1023, 3},   {ZYN_PIXEL_RGB12, 4095, 3},
               {ZYN_PIXEL_BGR12, 4095, 3},     {ZYN_PIXEL_RGB14, 16383, 3},  {ZYN_PIXEL_BGR14, 16383, 3},
               {ZYN_PIXEL_RGB16, 65535, 3},    {ZYN_PIXEL_BGR16, 65535, 3}};
  for (const auto& row : kRows) {
    // Dark, one above, one below the brightest, the brightest.
    std::vector<uint32_t> samples;
    for (uint32_t pixel = 0; pixel < 4; ++pixel) {
      for (uint32_t n = 0; n < row.samples; ++n) {
        const uint32_t bright = pixel == 2 && n == 0 ? row.largest - 1 : row.largest;
        samples.push_back(pixel >= 2 ? bright : pixel == 1 && n == 0 ? 1 : 0);
      }
    }
    Values(row.code, samples);
    Ready();
    ASSERT_EQ(Run(), 0u);
    EXPECT_EQ(Marks(), "g..r") << std::hex << row.code;
  }
}

TEST_F(ColorationTest, colours_follow_the_order_of_the_pictures_samples) {
  Values(ZYN_PIXEL_MONO8, {10, 50, 200});
  stage.SetParameterInt("thres.lo", 20);
  stage.SetParameterInt("thres.hi", 100);
  stage.SetParameterInt("color.lo", 0x112233);  // blue 0x11, green 0x22, red 0x33
  stage.SetParameterInt("color.hi", 0x445566);
  Ready();
  ASSERT_EQ(Run(), 0u);
  EXPECT_EQ(Pixel(0), (std::array<uint8_t, 3>{0x33, 0x22, 0x11}));
  EXPECT_EQ(Pixel(1), kGrey);
  EXPECT_EQ(Pixel(2), (std::array<uint8_t, 3>{0x66, 0x55, 0x44}));
  pictureCode = ZYN_PIXEL_BGR8;
  Ready();
  ASSERT_EQ(Run(), 0u);
  EXPECT_EQ(Pixel(0), (std::array<uint8_t, 3>{0x11, 0x22, 0x33}));
  EXPECT_EQ(Pixel(2), (std::array<uint8_t, 3>{0x44, 0x55, 0x66}));
}

TEST_F(ColorationTest, a_disabled_stage_hands_the_picture_on) {
  Values(ZYN_PIXEL_MONO8, {0, 255});
  Ready();
  stage.Enable(false);
  const auto before = picture->Copy();
  ASSERT_EQ(Run(false), 0u);
  EXPECT_EQ(stage.Out(), &picture->record);
  EXPECT_EQ(picture->Copy(), before);
  stage.Enable(true);
  ASSERT_EQ(Run(), 0u);
  EXPECT_EQ(Marks(), "gr");
}

TEST_F(ColorationTest, a_picture_of_another_depth_or_pixel_size_fails) {
  Values(ZYN_PIXEL_MONO8, {0, 255});
  Ready();
  ASSERT_EQ(Run(), 0u);
  for (const uint32_t code : {ZYN_PIXEL_RGB16, ZYN_PIXEL_RGB10, ZYN_PIXEL_RGBA8, ZYN_PIXEL_MONO8}) {
    StagePicture other(code, 2, 1);
    const auto before = other.Copy();
    EXPECT_EQ(stage.ProcessImage(&other.record, nullptr, nullptr), kFailed) << std::hex << code;
    EXPECT_EQ(stage.Out(), nullptr);
    EXPECT_EQ(other.Copy(), before);
  }
}

TEST_F(ColorationTest, nothing_to_mark_is_a_success_for_any_picture) {
  Values(ZYN_PIXEL_MONO12, {0, 4095});
  stage.SetParameterInt("thres.lo", 0);
  stage.SetParameterInt("thres.hi", 256);
  Ready();
  ASSERT_EQ(Run(), 0u);
  EXPECT_EQ(Marks(), "..");  // the picture's 8 bits decide, although 4095 lies above 256
  stage.SetParameterInt("thres.hi", 255);
  Ready();
  ASSERT_EQ(Run(), 0u);
  EXPECT_EQ(Marks(), ".r");
  stage.SetParameterInt("thres.hi", 65536);
  Ready();
  StagePicture deep(ZYN_PIXEL_RGB16, 2, 1);
  EXPECT_EQ(stage.ProcessImage(&deep.record, nullptr, nullptr), 0u);
  EXPECT_EQ(stage.Out(), &deep.record);
  deep.record.bitDepth = 0xFFFFFFFF;
  EXPECT_EQ(stage.ProcessImage(&deep.record, nullptr, nullptr), kFailed);
}

TEST_F(ColorationTest, marks_the_smaller_of_both_sizes) {
  Values(ZYN_PIXEL_MONO8, {0, 0, 0, 0, 0, 0}, 3, 2);
  Ready();
  for (const auto& [width, height] : {std::pair<uint32_t, uint32_t>{5, 4}, {2, 1}, {2, 4}, {5, 1}}) {
    StagePicture other(ZYN_PIXEL_RGB8, width, height);
    std::memset(other.record.imageData, 128, other.record.imageSize);
    ASSERT_EQ(stage.ProcessImage(&other.record, nullptr, nullptr), 0u);
    for (uint32_t y = 0; y < height; ++y) {
      for (uint32_t x = 0; x < width; ++x) {
        const uint8_t* pixel = other.record.imageData + y * other.record.linePitch + 3 * x;
        EXPECT_EQ(pixel[0], x < 3 && y < 2 ? 0 : 128) << width << " " << height << " " << x << " " << y;
      }
    }
  }
}

TEST_F(ColorationTest, missing_pictures_and_values_are_bad_arguments) {
  Values(ZYN_PIXEL_MONO8, {0, 255});
  Ready();
  const auto refused = [&](const ZynImage* given) {
    const bool bad = stage.ProcessImage(given, nullptr, nullptr) == kBadArgument && !stage.Out();
    return bad && Run() == 0;
  };
  EXPECT_TRUE(refused(nullptr));
  ZynImage empty = picture->record;
  empty.imageData = nullptr;
  EXPECT_TRUE(refused(&empty));

  const auto refusedValues = [&](ZynImage values) {
    unpacked.out = &values;
    const bool bad = Run() == kBadArgument && !stage.Out();
    unpacked.out = &source->record;
    return bad && Run() == 0;
  };
  for (uint32_t ZynImage::*size : {&ZynImage::width, &ZynImage::height}) {
    ZynImage values = source->record;
    values.*size = 0;
    EXPECT_TRUE(refusedValues(values));
  }
  ZynImage values = source->record;
  values.imageData = nullptr;
  EXPECT_TRUE(refusedValues(values));
  unpacked.out = nullptr;
  EXPECT_EQ(Run(), kBadArgument);
  chain.RemoveProcessor("image.unpacked");
  EXPECT_EQ(Run(), kBadArgument);
  stage.Enable(false);  // also of a disabled stage
  EXPECT_EQ(Run(), kBadArgument);
}

TEST_F(ColorationTest, records_that_lie_about_their_buffer_fail) {
  struct Row {
    const char* what;
    void (*change)(ZynImage&);
  };
  const Row kRows[] = {{"size", [](ZynImage& r) { r.imageSize -= r.linePitch; }},
                       {"no size", [](ZynImage& r) { r.imageSize = 0; }},
                       {"pitch", [](ZynImage& r) { r.linePitch = 0xFFFFFFFF; }},
                       {"no pitch", [](ZynImage& r) { r.linePitch = 0; }},
                       {"width", [](ZynImage& r) { r.width = 0xFFFFFFFF; }},
                       {"height", [](ZynImage& r) { r.height = 0xFFFFFFFF; }}};
  for (const uint32_t code : {ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO16, ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR12}) {
    const size_t samples = QTD::IsRgbFormat(code) ? 3 : 1;
    Values(code, std::vector<uint32_t>(8 * samples), 4, 2);
    Ready();
    ASSERT_EQ(Run(), 0u);
    for (const Row& row : kRows) {
      ZynImage values = source->record;
      row.change(values);
      unpacked.out = &values;
      const auto before = picture->Copy();
      EXPECT_EQ(Run(false), kFailed) << row.what;
      EXPECT_EQ(picture->Copy(), before);
      unpacked.out = &source->record;
      ZynImage shown = picture->record;
      row.change(shown);
      EXPECT_EQ(stage.ProcessImage(&shown, nullptr, nullptr), kFailed) << row.what;
      EXPECT_EQ(picture->Copy(), before);
    }
    // Words that the code has no room for.
    ZynImage values = source->record;
    values.bitDepth = 12;
    unpacked.out = &values;
    EXPECT_EQ(Run(), code == ZYN_PIXEL_MONO8 || code == ZYN_PIXEL_RGB8 ? kFailed : 0u);
    unpacked.out = nullptr;
  }
}

TEST_F(ColorationTest, a_picture_without_size_is_handed_on) {
  Values(ZYN_PIXEL_MONO8, {0, 255});
  Ready();
  ZynImage flat = picture->record;
  flat.height = 0;
  EXPECT_EQ(stage.ProcessImage(&flat, nullptr, nullptr), 0u);
  EXPECT_EQ(stage.Out(), &flat);
}

TEST_F(ColorationTest, becomes_ready_with_the_first_picture) {
  Values(ZYN_PIXEL_MONO12, {0, 4094, 4095});
  chain.RemoveProcessor("image.unpacked");
  Ready();
  EXPECT_FALSE(stage.IsReady());
  EXPECT_EQ(Run(), kBadArgument);
  chain.AddProcessor("image.unpacked", &unpacked);
  ASSERT_EQ(Run(), 0u);
  EXPECT_EQ(Marks(), "g.r");
  EXPECT_TRUE(stage.IsReady());
}

TEST_F(ColorationTest, parameters_that_are_no_numbers_keep_it_from_getting_ready) {
  Values(ZYN_PIXEL_MONO8, {0, 255});
  unpacked.outputInfo = nullptr;
  Ready();
  stage.SetParameterString("color.lo", "green");
  EXPECT_EQ(Run(), kNotReady);
  EXPECT_EQ(stage.Out(), nullptr);
  stage.Enable(false);  // asks for none
  EXPECT_EQ(Run(), 0u);
}

TEST_F(ColorationTest, the_output_of_the_stage_gives_the_depth) {
  // "image.unpacked" reduces: 8-bit values of a 12-bit source.
  CPUIPImage reducing(nullptr);
  StagePicture deep(ZYN_PIXEL_MONO12, 4, 1);
  const uint16_t words[] = {0x000F, 0x0010, 0x0FEF, 0x0FF0};
  std::memcpy(deep.record.imageData, words, sizeof words);
  reducing.SetParameterInt("depth", 8);
  ASSERT_EQ(reducing.Init(&deep.record, nullptr), 0u);
  ASSERT_EQ(reducing.ProcessImage(&deep.record, nullptr, nullptr), 0u);
  chain.AddProcessor("image.unpacked", &reducing);
  MakePicture(4, 1);
  Ready();
  ASSERT_EQ(Run(), 0u);
  EXPECT_EQ(Marks(), "g..r");
}

// Correction and overlay change the image of "image.unpacked" itself.
TEST_F(ColorationTest, values_are_those_before_stages_that_work_in_place) {
  for (const bool enabled : {true, false}) {
    for (const uint32_t code : {ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO12, ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR8}) {
      const uint32_t largest = code == ZYN_PIXEL_MONO12 ? 4095 : 255;
      const size_t samples = QTD::IsRgbFormat(code) ? 3 : 1;
      std::vector<uint32_t> values(3 * samples, 0);
      std::fill(values.end() - static_cast<ptrdiff_t>(samples), values.end(), largest);
      std::fill_n(values.begin() + static_cast<ptrdiff_t>(samples), samples, 100);
      Values(code, values);
      CPUIPImage image(nullptr);
      ASSERT_EQ(image.Init(&source->record, nullptr), 0u);
      chain.AddProcessor("image.unpacked", &image);
      image.Enable(enabled);
      if (!enabled) image.Enable(false);
      Ready();
      ASSERT_EQ(image.ProcessImage(&source->record, nullptr, nullptr), 0u);
      std::memset(image.Out()->imageData, 77, image.Out()->imageSize);
      ASSERT_EQ(Run(), 0u);
      EXPECT_EQ(Marks(), "g.r") << std::hex << code;
      chain.RemoveProcessor("image.unpacked");
    }
  }
}

TEST_F(ColorationTest, a_coloration_in_the_place_of_the_values_is_none) {
  Values(ZYN_PIXEL_MONO8, {0, 255});
  Ready();
  chain.AddProcessor("image.unpacked", &stage);
  EXPECT_EQ(Run(), kBadArgument);
  EXPECT_TRUE(stage.Enable(true));
}

TEST_F(ColorationTest, a_chain_that_throws_is_a_chain_without_the_stage) {
  Values(ZYN_PIXEL_MONO8, {0, 255});
  Ready();
  chain.throwing = true;
  EXPECT_EQ(Run(), kBadArgument);
  EXPECT_TRUE(stage.Enable(true));
}

TEST_F(ColorationTest, without_a_chain_no_picture_passes) {
  Values(ZYN_PIXEL_MONO8, {0, 255});
  QTD::ComponentImpl component;
  for (ZynComponent* parent : {static_cast<ZynComponent*>(nullptr), static_cast<ZynComponent*>(&component)}) {
    CPUIPExposureColoration lonely(parent);
    EXPECT_EQ(lonely.Init(&picture->record, nullptr), 0u);
    EXPECT_FALSE(lonely.IsReady());
    EXPECT_EQ(lonely.ProcessImage(&picture->record, nullptr, nullptr), kBadArgument);
    EXPECT_FALSE(lonely.Enable(false));
    EXPECT_EQ(lonely.ExecuteCommand("params.apply"), kFailed);
  }
}

TEST_F(ColorationTest, each_image_leaves_a_line_in_the_trace) {
  Values(ZYN_PIXEL_MONO8, {1});
  chain_test::TraceCapture trace;
  EXPECT_EQ(Run(), 0u);
  EXPECT_EQ(trace.lines, std::vector<std::string>{"CPUIPExposureColoration::ProcessImage()"});
}

}  // namespace

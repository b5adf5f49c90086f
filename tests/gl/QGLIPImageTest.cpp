// The image stage on the card: uploads, plain copies, and the change into the form that is shown.
#include "gl/stages/QGLIPImage.h"

#include "StageFixture.h"

namespace {

constexpr uint32_t kWidth = 7, kHeight = 5;

struct Sort {
  const char* name;
  uint32_t code;
};

uint32_t Depth(uint32_t code) {
  return QTD::FindPixelRow(code)->bitDepth;
}
uint32_t Channels(uint32_t code) {
  return QTD::IsRgbFormat(code) ? 3 : 1;
}
Samples SamplesFor(uint32_t code) {
  return Scattered(kWidth * kHeight * Channels(code), (1u << Depth(code)) - 1);
}
// The order of a texture is always red, green, blue.
Samples InOrder(Samples samples, uint32_t code) {
  if (QTD::IsBgrFormat(code))
    for (size_t i = 0; i + 2 < samples.size(); i += 3) std::swap(samples[i], samples[i + 2]);
  return samples;
}

class QGLIPImageFormats : public StageFixture, public testing::WithParamInterface<Sort> {
 protected:
  const uint32_t code = GetParam().code;
  const Samples samples = SamplesFor(code);
  const Record picture = MakeRecord(kWidth, kHeight, code, samples);
};

TEST_P(QGLIPImageFormats, uploads_every_value_as_it_is) {
  QGLIPImage stage(&display);
  ASSERT_EQ(Init(stage, picture), 0u);
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_EQ(Texels(stage), InOrder(samples, code));
  EXPECT_EQ(stage.Out()->pixelType, code);
  ASSERT_EQ(stage.ExecuteCommand("readGPU"), 0u);
  EXPECT_EQ(SamplesOf(*stage.Out()), samples);
}

TEST_P(QGLIPImageFormats, passes_a_texture_on_with_factor_1) {
  OnCard first(&display, picture);
  QGLIPImage stage(&display);
  // None of these acts on a stage with one image.
  stage.SetParameterDouble("image.color.coef", 3);
  stage.SetParameterInt("image.color.mono", 1);
  ASSERT_EQ(Init(stage, picture), 0u);
  ASSERT_EQ(Run(stage, first.record()), 0u);
  EXPECT_NE(stage.Out(), first.record());
  EXPECT_EQ(Texels(stage), InOrder(samples, code));
}

// "image.display" of a deep or an 8-bit chain: the full range, red spread for monochrome, turned in the
// second image.
TEST_P(QGLIPImageFormats, becomes_what_is_shown) {
  const bool bytes = Depth(code) == 8;
  const Record wanted = MakeRecord(kWidth, kHeight, bytes ? ZYN_PIXEL_RGB8 : ZYN_PIXEL_RGB16);
  const uint32_t scale = bytes ? 1 : 1u << (16 - Depth(code));
  for (const bool flip : {false, true}) {
    for (const bool onCard : {true, false}) {
      SCOPED_TRACE(std::string(flip ? "turned, " : "") + (onCard ? "from a texture" : "from memory"));
      if (flip && !onCard) continue;  // mirrors the host's lines: see below
      QGLIPImage stage(&display);
      stage.SetParameterInt("image.flip.vert", flip);
      ASSERT_EQ(Init(stage, picture, wanted.get()), 0u);
      OnCard first(&display, picture);
      ASSERT_EQ(Run(stage, onCard ? first.record() : picture.get()), 0u);
      Samples expected;
      for (const uint32_t sample : InOrder(samples, code)) {
        for (uint32_t copy = 0; copy < (Channels(code) == 1 ? 3u : 1u); ++copy)
          expected.push_back(sample * scale);
      }
      EXPECT_EQ(Texels(stage), flip ? Turned(expected, kHeight) : expected);
      EXPECT_EQ(stage.Out()->pixelType, wanted->pixelType);
    }
  }
}

TEST_P(QGLIPImageFormats, honours_the_pitch) {
  const size_t line = samples.size() / kHeight * (Depth(code) > 8 ? 2 : 1);
  for (const size_t pitch : {line, line + 2, line + 5, line + 48}) {
    std::vector<uint8_t> bytes(pitch * (kHeight - 1) + line, 0xEE);
    for (uint32_t y = 0; y < kHeight; ++y)
      std::copy_n(picture->imageData + size_t{y} * picture->linePitch, line, bytes.data() + y * pitch);
    ZynImage padded = *picture;
    padded.imageData = bytes.data();
    padded.linePitch = static_cast<uint32_t>(pitch);
    padded.imageSize = static_cast<uint32_t>(bytes.size());
    QGLIPImage stage(&display);
    ASSERT_EQ(Init(stage, picture), 0u);
    ASSERT_EQ(Run(stage, &padded), 0u) << pitch;
    EXPECT_EQ(Texels(stage), InOrder(samples, code)) << pitch;
    --padded.imageSize;
    EXPECT_EQ(Run(stage, &padded), Composed(1)) << pitch;
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, QGLIPImageFormats,
                         testing::Values(Sort{"Mono8", ZYN_PIXEL_MONO8}, Sort{"Mono10", ZYN_PIXEL_MONO10},
                                         Sort{"Mono12", ZYN_PIXEL_MONO12}, Sort{"Mono14", ZYN_PIXEL_MONO14},
                                         Sort{"Mono16", ZYN_PIXEL_MONO16}, Sort{"RGB8", ZYN_PIXEL_RGB8},
                                         Sort{"BGR8", ZYN_PIXEL_BGR8}, Sort{"RGB10", ZYN_PIXEL_RGB10},
                                         Sort{"BGR12", ZYN_PIXEL_BGR12}, Sort{"RGB16", ZYN_PIXEL_RGB16}),
                         [](const testing::TestParamInfo<Sort>& kind) { return kind.param.name; });

class QGLIPImageTest : public StageFixture {
 protected:
  const Samples samples = SamplesFor(ZYN_PIXEL_RGB8);
  const Record picture = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, samples);
  const Record mono12 = MakeRecord(kWidth, kHeight, ZYN_PIXEL_MONO12, SamplesFor(ZYN_PIXEL_MONO12));
};

TEST_F(QGLIPImageTest, writes_its_parameters_back) {
  struct Row {
    uint32_t from, to;
    const char* coef;
    const char* mono;
  };
  const Row rows[] = {{ZYN_PIXEL_MONO12, ZYN_PIXEL_RGB16, "16.000000", "1"},
                      {ZYN_PIXEL_RGB10, ZYN_PIXEL_RGB16, "64.000000", "0"},
                      {ZYN_PIXEL_RGB8, ZYN_PIXEL_RGB8, "1.000000", "0"},
                      {ZYN_PIXEL_RGB16, ZYN_PIXEL_RGB10, "0.015625", "0"},
                      {ZYN_PIXEL_MONO10, ZYN_PIXEL_RGB8, "64.000000", "1"},
                      {ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB14, "0.250000", "1"},
                      {ZYN_PIXEL_MONO14, 0, "1.000000", "1"}};
  for (const Row& row : rows) {
    const Record from = MakeRecord(kWidth, kHeight, row.from);
    const Record to = row.to ? MakeRecord(kWidth, kHeight, row.to) : nullptr;
    QGLIPImage stage(&display);
    ASSERT_EQ(Init(stage, from, to.get()), 0u);
    EXPECT_EQ(stage.Parameters().GetString("image.color.coef"), row.coef);
    EXPECT_EQ(stage.Parameters().GetString("image.color.mono"), row.mono);
  }
}

TEST_F(QGLIPImageTest, keeps_the_parameters_that_it_finds) {
  const Record wanted = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB16);
  QGLIPImage stage(&display);
  stage.SetParameterInt("image.color.coef", 2);
  stage.SetParameterInt("image.color.mono", 0);
  ASSERT_EQ(Init(stage, mono12, wanted.get()), 0u);
  ASSERT_EQ(Run(stage, mono12.get()), 0u);
  const Samples source = SamplesOf(*mono12), result = Texels(stage);
  for (size_t i = 0; i < source.size(); ++i) {
    ASSERT_EQ(result[3 * i], 2 * source[i]);
    ASSERT_EQ(result[3 * i + 1], 0u);
    ASSERT_EQ(result[3 * i + 2], 0u);
  }
}

TEST_F(QGLIPImageTest, a_factor_of_0_counts_as_not_set) {
  const Record wanted = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB16);
  QGLIPImage stage(&display);
  stage.SetParameterInt("image.color.coef", 0);
  ASSERT_EQ(Init(stage, mono12, wanted.get()), 0u);
  ASSERT_EQ(Run(stage, mono12.get()), 0u);
  EXPECT_EQ(Texels(stage)[0], 16 * SamplesOf(*mono12)[0]);  // from 12 bits to 16
}

TEST_F(QGLIPImageTest, has_a_second_image_for_another_code_or_a_turn_only) {
  const GLNames before = names();
  QGLIPImage one(&display);
  ASSERT_EQ(Init(one, picture), 0u);
  EXPECT_EQ(names().framebuffers, before.framebuffers + 1);
  ASSERT_EQ(Init(one, picture, picture.get()), 0u);
  EXPECT_EQ(names().framebuffers, before.framebuffers + 1);
  const Record bgr = MakeRecord(kWidth, kHeight, ZYN_PIXEL_BGR8);
  ASSERT_EQ(Init(one, picture, bgr.get()), 0u);
  EXPECT_EQ(names().framebuffers, before.framebuffers + 2);
  one.SetParameterInt("image.flip.vert", 1);
  ASSERT_EQ(Init(one, picture, picture.get()), 0u);
  EXPECT_EQ(names().framebuffers, before.framebuffers + 2);
}

// RGB of a strict chain stands upright, too.
TEST_F(QGLIPImageTest, turns_a_texture_of_its_own_code) {
  QGLIPImage stage(&display);
  stage.SetParameterInt("image.flip.vert", 1);
  ASSERT_EQ(Init(stage, picture, picture.get()), 0u);
  OnCard first(&display, picture);
  ASSERT_EQ(Run(stage, first.record()), 0u);
  EXPECT_EQ(Texels(stage), Turned(samples, kHeight));
}

// Bytes of a line are mirrored as if each were a pixel, in the host's own buffer. Kept.
TEST_F(QGLIPImageTest, a_turn_mirrors_the_lines_of_a_picture_in_memory) {
  QGLIPImage stage(&display);
  stage.SetParameterInt("image.flip.vert", 1);
  const Samples grey = SamplesFor(ZYN_PIXEL_MONO8);
  const Record source = MakeRecord(kWidth, kHeight, ZYN_PIXEL_MONO8, grey);
  ASSERT_EQ(Init(stage, source), 0u);
  ASSERT_EQ(Run(stage, source.get()), 0u);
  Samples mirrored;
  for (uint32_t y = 0; y < kHeight; ++y)
    for (uint32_t x = kWidth; x-- > 0;) mirrored.push_back(grey[y * kWidth + x]);
  EXPECT_EQ(SamplesOf(*source), mirrored);
}

TEST_F(QGLIPImageTest, marks_its_result_by_origin_and_turn) {
  for (const bool bottomUp : {false, true}) {
    for (const bool flip : {false, true}) {
      const Record source = MakeRecord(kWidth, kHeight, ZYN_PIXEL_MONO8, bottomUp);
      QGLIPImage stage(&display);
      stage.SetParameterInt("image.flip.vert", flip);
      ASSERT_EQ(Init(stage, source, picture.get()), 0u);
      EXPECT_EQ(stage.GetImageInfo(true)->origin, bottomUp ? 1u : 0u);
      EXPECT_EQ(stage.GetImageInfo(true)->pixelType, ZYN_PIXEL_MONO8);
      EXPECT_EQ(stage.GetImageInfo(false)->origin, bottomUp != flip ? 1u : 0u);
      EXPECT_EQ(stage.GetImageInfo(false)->pixelType, ZYN_PIXEL_RGB8);
    }
  }
}

TEST_F(QGLIPImageTest, reads_each_result_back_where_readGPU_says_so) {
  QGLIPImage stage(&display);
  const Record grey = MakeRecord(kWidth, kHeight, ZYN_PIXEL_MONO8, SamplesFor(ZYN_PIXEL_MONO8));
  ASSERT_EQ(Init(stage, grey, picture.get()), 0u);
  ASSERT_EQ(Run(stage, grey.get()), 0u);
  EXPECT_EQ(SamplesOf(*stage.Out()), Samples(samples.size(), 0));  // stale
  stage.SetParameterInt("readGPU", 1);
  ASSERT_EQ(Run(stage, grey.get()), 0u);
  EXPECT_EQ(SamplesOf(*stage.Out()), Texels(stage));
}

TEST_F(QGLIPImageTest, reads_a_deep_monochrome_second_image) {
  const Record wanted = MakeRecord(kWidth, kHeight, ZYN_PIXEL_MONO16);
  QGLIPImage stage(&display);
  stage.SetParameterInt("readGPU", 1);
  ASSERT_EQ(Init(stage, mono12, wanted.get()), 0u);
  ASSERT_EQ(Run(stage, mono12.get()), 0u);
  Samples expected = SamplesOf(*mono12);
  for (uint32_t& sample : expected) sample *= 16;
  EXPECT_EQ(SamplesOf(*stage.Out()), expected);
}

TEST_F(QGLIPImageTest, a_read_that_fails_fails_the_stage) {
  // Bayer samples have no way back.
  const Record bayer = MakeRecord(kWidth, kHeight, ZYN_PIXEL_BAYERRG8);
  QGLIPImage stage(&display);
  ASSERT_EQ(Init(stage, bayer), 0u);
  EXPECT_EQ(Run(stage, bayer.get()), 0u);
  EXPECT_EQ(stage.ExecuteCommand("readGPU"), Composed(1));
  stage.SetParameterInt("readGPU", 1);
  EXPECT_EQ(Run(stage, bayer.get()), Composed(1));
  EXPECT_EQ(stage.Out(), nullptr);
}

TEST_F(QGLIPImageTest, knows_one_command) {
  QGLIPImage stage(&display);
  EXPECT_EQ(stage.ExecuteCommand("readGPU"), Composed(1));
  EXPECT_EQ(stage.ExecuteCommand("params.apply"), 0u);
  EXPECT_EQ(stage.ExecuteCommand(""), 0u);
  EXPECT_EQ(stage.ExecuteCommand(nullptr), 0u);
}

TEST_F(QGLIPImageTest, a_code_that_the_card_does_not_hold_is_told_at_the_first_picture) {
  QGLIPImage stage(&display);
  const Record uyvy = MakeRecord(8, kHeight, ZYN_PIXEL_YUV422_8_UYVY);
  EXPECT_EQ(Init(stage, uyvy), 0u);
  EXPECT_EQ(Run(stage, uyvy.get()), Composed(8));
  while (glError() != GL_NO_ERROR) continue;
  surface->properties.Set("error", "");
}

TEST_F(QGLIPImageTest, a_parameter_that_is_no_number_ends_with_1) {
  QGLIPImage stage(&display);
  stage.SetParameterString("image.flip.vert", "down");
  EXPECT_EQ(Init(stage, picture), Composed(1));
  stage.SetParameterInt("image.flip.vert", 0);
  ASSERT_EQ(Init(stage, picture), 0u);
  stage.SetParameterString("readGPU", "yes");
  EXPECT_EQ(Run(stage, picture.get()), Composed(1));
}

TEST_F(QGLIPImageTest, may_be_prepared_from_its_own_records) {
  QGLIPImage stage(&display);
  ASSERT_EQ(Init(stage, picture), 0u);
  ASSERT_EQ(stage.Init(stage.GetImageInfo(true), stage.GetImageInfo(false)), 0u);
  ASSERT_EQ(stage.Init(stage.Out(), nullptr), 0u);
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_EQ(Texels(stage), samples);
}

}  // namespace

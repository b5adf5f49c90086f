// The unpack stage: every sample exactly, against bits that are taken out one by one.
#include "gl/stages/QGLIPUnpack.h"

#include "StageFixture.h"
#include "gl/models/UnpackModel.h"

namespace {

struct Packed {
  const char* name;
  uint32_t code, unpacked, depth;
};

class QGLIPUnpackTest : public StageFixture {
 protected:
  // Width, height, depth; all samples of the model for the record's rows at `pitch`.
  static Samples Expected(const ZynImage& record, uint32_t depth, size_t pitch) {
    const size_t rowBytes = record.width * depth / 8;
    std::vector<uint8_t> bytes;
    for (uint32_t y = 0; y < record.height; ++y)
      bytes.insert(bytes.end(), record.imageData + y * pitch, record.imageData + y * pitch + rowBytes);
    return model::UnpackedSamples(bytes, rowBytes, record.width, record.height, depth);
  }
};

class QGLIPUnpackFormats : public QGLIPUnpackTest, public testing::WithParamInterface<Packed> {};

TEST_P(QGLIPUnpackFormats, takes_out_every_sample_exactly) {
  const Packed& kind = GetParam();
  for (const auto& [width, height] :
       {std::pair{8u, 3u}, {4u, 1u}, {12u, 5u}, {64u, 33u}, {1u, 1u}, {7u, 4u}}) {
    SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
    const Record record =
        MakeRecord(width, height, kind.code, Scattered(width * height, (1u << kind.depth) - 1, width));
    QGLIPUnpack stage(&display);
    ASSERT_EQ(Init(stage, record), 0u);
    ASSERT_EQ(Run(stage, record.get()), 0u);
    ASSERT_EQ(stage.Out()->pixelType, kind.unpacked);
    EXPECT_EQ(Texels(stage), Expected(*record, kind.depth, width * kind.depth / 8));
  }
}

TEST_P(QGLIPUnpackFormats, all_ones_keep_the_raw_scale) {
  const Packed& kind = GetParam();
  const Record record = MakeRecord(8, 2, kind.code, Samples(16, (1u << kind.depth) - 1));
  QGLIPUnpack stage(&display);
  ASSERT_EQ(Init(stage, record), 0u);
  ASSERT_EQ(Run(stage, record.get()), 0u);
  EXPECT_EQ(Texels(stage), Samples(16, kind.depth == 10 ? 1023 : 4095));
}

TEST_P(QGLIPUnpackFormats, tells_bytes_of_a_row_in_and_samples_out) {
  const Packed& kind = GetParam();
  for (const bool bottomUp : {false, true}) {
    for (const bool flip : {false, true}) {
      const Record record = MakeRecord(8, 3, kind.code, bottomUp);
      QGLIPUnpack stage(&display);
      stage.SetParameterInt("image.flip.vert", flip);
      ASSERT_EQ(Init(stage, record), 0u);
      const ZynImage* const source = stage.GetImageInfo(true);
      const ZynImage* const output = stage.GetImageInfo(false);
      ASSERT_TRUE(source && output);
      EXPECT_EQ(source->width, kind.depth == 10 ? 10u : 12u);
      EXPECT_EQ(source->height, 3u);
      EXPECT_EQ(source->pixelType, kind.code);
      EXPECT_EQ(source->origin, bottomUp ? 1u : 0u);
      EXPECT_EQ(output->width, 8u);
      EXPECT_EQ(output->height, 3u);
      EXPECT_EQ(output->pixelType, kind.unpacked);
      EXPECT_EQ(output->origin, bottomUp != flip ? 1u : 0u);
    }
  }
}

// A record's pitch is rounded up to 4 bytes; the rows follow each other all the same.
TEST_P(QGLIPUnpackFormats, rows_follow_each_other_unless_the_pitch_is_truly_wider) {
  const Packed& kind = GetParam();
  const uint32_t width = 20, height = 4;  // rows of 25 or 30 bytes
  const Samples samples = Scattered(width * height, (1u << kind.depth) - 1);
  const Record tight = MakeRecord(width, height, kind.code, samples);
  const uint32_t rowBytes = width * kind.depth / 8;
  ASSERT_GT(tight->linePitch, rowBytes);
  QGLIPUnpack stage(&display);
  ASSERT_EQ(Init(stage, tight), 0u);
  ZynImage picture = *tight;
  for (const uint32_t pitch : {tight->linePitch, rowBytes, 0u}) {
    picture.linePitch = pitch;
    picture.imageSize = rowBytes * height;
    ASSERT_EQ(Run(stage, &picture), 0u) << pitch;
    EXPECT_EQ(Texels(stage), samples) << pitch;
  }
  const uint32_t wide = 41;
  std::vector<uint8_t> padded(wide * height, 0xEE);
  for (uint32_t y = 0; y < height; ++y)
    std::copy_n(tight->imageData + y * rowBytes, rowBytes, padded.data() + y * wide);
  picture.imageData = padded.data();
  picture.linePitch = wide;
  picture.imageSize = wide * (height - 1) + rowBytes;  // the last row has no padding
  ASSERT_EQ(Run(stage, &picture), 0u);
  EXPECT_EQ(Texels(stage), samples);
  --picture.imageSize;
  EXPECT_EQ(Run(stage, &picture), Composed(1));
}

INSTANTIATE_TEST_SUITE_P(PFormats, QGLIPUnpackFormats,
                         testing::Values(Packed{"Mono10p", ZYN_PIXEL_MONO10P, ZYN_PIXEL_MONO10, 10},
                                         Packed{"Mono12p", ZYN_PIXEL_MONO12P, ZYN_PIXEL_MONO12, 12},
                                         Packed{"BayerGR10p", ZYN_PIXEL_BAYERGR10P, ZYN_PIXEL_BAYERGR10, 10},
                                         Packed{"BayerRG10p", ZYN_PIXEL_BAYERRG10P, ZYN_PIXEL_BAYERRG10, 10},
                                         Packed{"BayerGB10p", ZYN_PIXEL_BAYERGB10P, ZYN_PIXEL_BAYERGB10, 10},
                                         Packed{"BayerBG10p", ZYN_PIXEL_BAYERBG10P, ZYN_PIXEL_BAYERBG10, 10},
                                         Packed{"BayerGR12p", ZYN_PIXEL_BAYERGR12P, ZYN_PIXEL_BAYERGR12, 12},
                                         Packed{"BayerRG12p", ZYN_PIXEL_BAYERRG12P, ZYN_PIXEL_BAYERRG12, 12},
                                         Packed{"BayerGB12p", ZYN_PIXEL_BAYERGB12P, ZYN_PIXEL_BAYERGB12, 12},
                                         Packed{"BayerBG12p", ZYN_PIXEL_BAYERBG12P, ZYN_PIXEL_BAYERBG12, 12}),
                         [](const testing::TestParamInfo<Packed>& kind) { return kind.param.name; });

TEST_F(QGLIPUnpackTest, the_last_of_four_samples_lies_in_two_bytes) {
  Record record = MakeRecord(8, 1, ZYN_PIXEL_MONO10P);
  for (uint8_t byte = 0; byte < 10; ++byte) record->imageData[byte] = static_cast<uint8_t>(0x35 + byte * 37);
  QGLIPUnpack stage(&display);
  ASSERT_EQ(Init(stage, record), 0u);
  ASSERT_EQ(Run(stage, record.get()), 0u);
  const uint32_t low = record->imageData[8], high = record->imageData[9];
  EXPECT_EQ(Texels(stage)[7], low >> 6 | high << 2);
}

TEST_F(QGLIPUnpackTest, the_second_of_two_samples_lies_in_two_bytes) {
  Record record = MakeRecord(2, 1, ZYN_PIXEL_MONO12P);
  record->imageData[1] = 0xA7;
  record->imageData[2] = 0x5C;
  QGLIPUnpack stage(&display);
  ASSERT_EQ(Init(stage, record), 0u);
  ASSERT_EQ(Run(stage, record.get()), 0u);
  EXPECT_EQ(Texels(stage)[1], 0xAu | 0x5Cu << 4);
}

TEST_F(QGLIPUnpackTest, refuses_what_is_not_packed_bit_by_bit) {
  const GLNames before = names();
  for (const uint32_t code : {ZYN_PIXEL_MONO10PACKED, ZYN_PIXEL_MONO12PACKED, ZYN_PIXEL_BAYERRG12PACKED,
                              ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8, 0u}) {
    Record record = MakeRecord(8, 2, ZYN_PIXEL_MONO8);
    record->pixelType = code;
    QGLIPUnpack stage(&display);
    EXPECT_EQ(Init(stage, record), Composed(3)) << std::hex << code;
    EXPECT_EQ(stage.GetImageInfo(true), nullptr);
    EXPECT_EQ(names(), before);
  }
}

TEST_F(QGLIPUnpackTest, refuses_a_picture_without_columns_or_lines) {
  for (const auto& [width, height] : {std::pair{0u, 4u}, {8u, 0u}}) {
    Record record = MakeRecord(8, 4, ZYN_PIXEL_MONO12P);
    record->width = width;
    record->height = height;
    QGLIPUnpack stage(&display);
    EXPECT_EQ(Init(stage, record), Composed(7));
  }
}

TEST_F(QGLIPUnpackTest, runs_on_packed_codes_only) {
  const Record record = MakeRecord(8, 4, ZYN_PIXEL_MONO12P);
  QGLIPUnpack stage(&display);
  ASSERT_EQ(Init(stage, record), 0u);
  ZynImage other = *record;
  other.pixelType = ZYN_PIXEL_MONO16;
  EXPECT_EQ(Run(stage, &other), Composed(7));
  EXPECT_EQ(Run(stage, record.get()), 0u);
}

TEST_F(QGLIPUnpackTest, takes_no_turn_of_its_own) {
  const Samples samples = Scattered(8 * 3, 4095);
  const Record record = MakeRecord(8, 3, ZYN_PIXEL_MONO12P, samples);
  QGLIPUnpack stage(&display);
  stage.SetParameterInt("image.flip.vert", 1);
  ASSERT_EQ(Init(stage, record), 0u);
  ASSERT_EQ(Run(stage, record.get()), 0u);
  EXPECT_EQ(Texels(stage), samples);
}

TEST_F(QGLIPUnpackTest, runs_whether_it_is_enabled_or_not) {
  const Samples samples = Scattered(8 * 3, 4095);
  const Record record = MakeRecord(8, 3, ZYN_PIXEL_MONO12P, samples);
  QGLIPUnpack stage(&display);
  ASSERT_EQ(Init(stage, record), 0u);
  stage.Enable(false);
  ASSERT_EQ(Run(stage, record.get()), 0u);
  EXPECT_EQ(Texels(stage), samples);
}

}  // namespace

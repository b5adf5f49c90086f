// What the guide says of conversions: into which formats they are right, and what they answer elsewhere.
#include "tests/guide/GuideTest.h"

namespace guide {

namespace {

constexpr uint32_t kWidth = 64, kHeight = 48;
constexpr uint32_t kFailed = 0x80FF0001, kBadArgument = 0x80FF0007, kNotReady = 0x80FF0008;

bool IsDeep(const ZynImage& image) {
  return (image.pixelType & 0xF00) != 0x100;
}

struct Source {
  uint32_t code;
  uint32_t deepColour, deepGrey;  // 0: there is none
  int bits;
};

// Of half scale in every sample.
void Fill(Picture& picture, int bits) {
  if (IsDeep(picture.record)) {
    picture.FillWords(static_cast<uint16_t>(1 << (bits - 1)));
  } else {
    std::fill(picture.bytes.begin(), picture.bytes.end(), static_cast<uint8_t>(128));
  }
}

class Conversion : public GuideTest {
 protected:
  // What the first samples of the output become; -1 for a code.
  int Converted(const ZynImage& input, uint32_t code) {
    Picture output(code, kWidth, kHeight);
    display->ReleaseConverter();
    if (display->ConvertImage(&input, &output.record) != 0) return -1;
    return IsDeep(output.record) ? output.Words()[2] : output.bytes[2];
  }
};

}  // namespace

TEST_F(Conversion, is_right_into_8_bits_and_the_depth_of_the_source) {
  const Source sources[] = {{ZYN_PIXEL_MONO8, 0, 0, 8},
                            {ZYN_PIXEL_MONO12, ZYN_PIXEL_RGB12, ZYN_PIXEL_MONO12, 12},
                            {ZYN_PIXEL_BAYERRG8, 0, 0, 8},
                            {ZYN_PIXEL_BAYERRG12, ZYN_PIXEL_BGR12, 0, 12},
                            {ZYN_PIXEL_BGR16, ZYN_PIXEL_RGB16, 0, 16}};
  for (const Source& source : sources) {
    Picture input(source.code, kWidth, kHeight);
    Fill(input, source.bits);
    ASSERT_EQ(display->Initialize(&input.record), 0u);
    SCOPED_TRACE(source.code);
    EXPECT_EQ(Converted(input.record, ZYN_PIXEL_RGB8), 128);
    EXPECT_EQ(Converted(input.record, ZYN_PIXEL_BGR8), 128);
    EXPECT_EQ(Converted(input.record, ZYN_PIXEL_MONO8), source.code >> 24 == 1 ? 128 : -1);
    const int half = 1 << (source.bits - 1);
    for (const uint32_t deep : {source.deepColour, source.deepGrey}) {
      if (deep != 0) {
        EXPECT_EQ(Converted(input.record, deep), half);
      }
    }
  }
}

TEST_F(Conversion, leaves_samples_unscaled_in_another_depth) {
  Picture input(ZYN_PIXEL_MONO12, kWidth, kHeight);
  input.FillWords(1000);
  ASSERT_EQ(display->Initialize(&input.record), 0u);
  EXPECT_EQ(Converted(input.record, ZYN_PIXEL_RGB16), 1000);
  EXPECT_EQ(Converted(input.record, ZYN_PIXEL_MONO16), -1);
  Picture colour(ZYN_PIXEL_RGB12, kWidth, kHeight);
  ASSERT_EQ(display->Initialize(&colour.record), 0u);
  EXPECT_EQ(Converted(colour.record, ZYN_PIXEL_RGB16), -1);
}

// The guide's table of codes: when a converter is prepared, and once one is.
TEST_F(Conversion, answers_by_what_is_wrong) {
  Picture input(ZYN_PIXEL_MONO12, kWidth, kHeight), good(ZYN_PIXEL_RGB8, kWidth, kHeight);
  EXPECT_EQ(display->ConvertImage(&input.record, &good.record), kNotReady);
  ASSERT_EQ(display->Initialize(&input.record), 0u);
  Picture wide(ZYN_PIXEL_RGB8, kWidth + 2, kHeight), packed(ZYN_PIXEL_MONO16, kWidth, kHeight);
  ZynImage unknown = good.record, empty = good.record, unpadded = good.record, bufferless = good.record;
  unknown.pixelType = 0xDEADBEEF;
  empty.width = 0;
  unpadded.linePitch -= 2;
  bufferless.imageData = nullptr;
  struct Row {
    ZynImage* output;
    uint32_t prepares, prepared;
  };
  const Row rows[] = {{nullptr, kNotReady, kBadArgument},      {&unknown, kNotReady, kBadArgument},
                      {&empty, kBadArgument, kBadArgument},    {&wide.record, kFailed, kBadArgument},
                      {&packed.record, kFailed, kBadArgument}, {&unpadded, kFailed, kFailed},
                      {&bufferless, kFailed, kFailed}};
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    display->ReleaseConverter();
    EXPECT_EQ(display->ConvertImage(&input.record, row.output), row.prepares);
    display->ReleaseConverter();
    ASSERT_EQ(display->ConvertImage(&input.record, &good.record), 0u);
    EXPECT_EQ(display->ConvertImage(&input.record, row.output), row.prepared);
  }
  ZynImage other = input.record, noPixels = input.record;
  other.pixelType = ZYN_PIXEL_MONO10;
  noPixels.imageData = nullptr;
  EXPECT_EQ(display->ConvertImage(nullptr, &good.record), kBadArgument);
  EXPECT_EQ(display->ConvertImage(&other, &good.record), kBadArgument);
  EXPECT_EQ(display->ConvertImage(&noPixels, &good.record), kFailed);
  display->ReleaseConverter();
  EXPECT_EQ(display->InitConverter(&packed.record), 0u);  // does not see whether there is a way
  EXPECT_EQ(display->InitConverter(&unknown), 0x80FF0009u);
}

TEST_F(Conversion, of_a_display_prepares_for_each_other_format) {
  Picture input(ZYN_PIXEL_MONO12, kWidth, kHeight), good(ZYN_PIXEL_RGB8, kWidth, kHeight);
  Picture wide(ZYN_PIXEL_RGB8, kWidth + 2, kHeight);
  ZynImage unknown = good.record;
  unknown.pixelType = 0;
  ZynDisplay* plain = ZynDisplay_CreateComponent();
  ASSERT_EQ(ZynDisplay_Initialize(plain, &widget, nullptr, &input.record), 0u);
  EXPECT_EQ(ZynDisplay_ConvertImage(plain, &input.record, &good.record), 0u);
  EXPECT_EQ(ZynDisplay_ConvertImage(plain, &input.record, nullptr), kNotReady);
  EXPECT_EQ(ZynDisplay_ConvertImage(plain, &input.record, &unknown), kNotReady);
  EXPECT_EQ(ZynDisplay_ConvertImage(plain, &input.record, &wide.record), kFailed);
  EXPECT_EQ(ZynDisplay_ConvertImage(plain, nullptr, &good.record), kBadArgument);
  ZynDisplay_DeleteComponent(plain);
}

TEST_F(Conversion, of_pixels_that_are_missing_is_black_where_they_are_unpacked_first) {
  for (const uint32_t code : {ZYN_PIXEL_YUV422_8_UYVY, ZYN_PIXEL_MONO12PACKED, ZYN_PIXEL_BAYERRG12P}) {
    Picture input(code, kWidth, kHeight), output(ZYN_PIXEL_RGB8, kWidth, kHeight);
    input.record.linePitch = kWidth * (code >> 16 & 0xFF) / 8;
    input.record.imageSize = input.record.linePitch * kHeight;
    input.bytes.assign(input.record.imageSize, 255);
    ASSERT_EQ(display->Initialize(&input.record), 0u);
    ZynImage noPixels = input.record, noBytes = input.record;
    noPixels.imageData = nullptr;
    noBytes.imageData = input.bytes.data();
    noBytes.imageSize = 0;
    for (const ZynImage* missing : {&noPixels, &noBytes}) {
      output.bytes.assign(output.bytes.size(), 9);
      EXPECT_EQ(display->ConvertImage(missing, &output.record), 0u) << std::hex << code;
      EXPECT_EQ(*std::max_element(output.bytes.begin(), output.bytes.end()), 0) << std::hex << code;
    }
  }
}

}  // namespace guide

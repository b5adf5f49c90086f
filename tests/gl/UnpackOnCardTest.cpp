// The unpack stage and packed pictures whose bytes lie on the card already.
#include "EveryStage.h"
#include "gl/models/UnpackModel.h"

namespace {

class UnpackOnCardTest : public StageFixture {
 protected:
  // A target of that kind that holds bytes; its record's own pixels are stale.
  std::unique_ptr<QGLImage> Filled(uint32_t width, uint32_t height, const Samples& bytes) {
    auto image = made(width, height, ZYN_PIXEL_MONO8);
    const Record record = MakeRecord(width, height, ZYN_PIXEL_MONO8, bytes);
    surface->glBindTexture(GL_TEXTURE_2D, image->texture());
    EXPECT_TRUE(image->fillGPU(record.get()));
    return image;
  }
};

// One byte is a row of one pixel.
TEST_F(UnpackOnCardTest, takes_the_bytes_from_the_texture) {
  constexpr uint32_t kHeight = 64;
  const Samples bytes = Scattered(kHeight, 255);
  const auto image = Filled(1, kHeight, bytes);
  for (const auto& [code, depth] : {std::pair{ZYN_PIXEL_MONO10P, 10u}, {ZYN_PIXEL_BAYERGB12P, 12u}}) {
    const Record format = MakeRecord(1, kHeight, code);
    QGLIPUnpack stage(&display);
    ASSERT_EQ(Init(stage, format), 0u);
    ZynImage packed = *image->image();
    packed.pixelType = code;
    packed.imageID = 12;
    ASSERT_EQ(Run(stage, &packed), 0u);
    const std::vector<uint8_t> rows(bytes.begin(), bytes.end());
    EXPECT_EQ(Texels(stage), model::UnpackedSamples(rows, 1, 1, kHeight, depth));
    EXPECT_EQ(stage.Out()->imageID, 12u);
  }
}

// Such a record names a texture of one texel to a pixel, of which every texel here is all ones.
TEST_F(UnpackOnCardTest, takes_a_texture_before_the_record_s_own_pixels) {
  for (const auto& [code, top] : {std::pair{ZYN_PIXEL_MONO10P, 1023u}, {ZYN_PIXEL_MONO12P, 4095u}}) {
    auto image = made(8, 3, code);
    ASSERT_TRUE(image->bind());
    surface->glClearColor(1, 1, 1, 1);
    surface->glClear(GL_COLOR_BUFFER_BIT);
    image->unbind();
    const Record format = MakeRecord(8, 3, code);
    QGLIPUnpack stage(&display);
    ASSERT_EQ(Init(stage, format), 0u);
    ASSERT_EQ(Run(stage, image->image()), 0u);
    EXPECT_EQ(Texels(stage), Samples(8 * 3, top));
    ASSERT_EQ(Run(stage, format.get()), 0u);  // in memory, and black
    EXPECT_EQ(Texels(stage), Samples(8 * 3, 0));
  }
}

TEST_F(UnpackOnCardTest, refuses_a_texture_of_another_size) {
  const auto image = Filled(8, 4, Samples(32, 0));
  const Record format = MakeRecord(8, 3, ZYN_PIXEL_MONO10P);
  QGLIPUnpack stage(&display);
  ASSERT_EQ(Init(stage, format), 0u);
  ZynImage packed = *image->image();
  packed.pixelType = ZYN_PIXEL_MONO10P;
  EXPECT_EQ(Run(stage, &packed), Composed(7));
  packed.height = 3;
  EXPECT_EQ(Run(stage, &packed), Composed(7));
  EXPECT_EQ(stage.Out(), nullptr);
}

}  // namespace

// The chain on the card: which stages it gets, and what a flat picture becomes. Needs a window.
#include <gtest/gtest.h>

#include "ChainFakes.h"
#include "QTD/chain/QTDProcessor.h"
#include "QTD/image/PixelFormats.h"
#include "ZynPixelFormat.h"
#include "cpu/stages/CPUIPUnpack.h"
#include "gl/GLFixture.h"
#include "gl/stages/QGLIPBayer.h"
#include "gl/stages/QGLIPColorCorrection.h"
#include "gl/stages/QGLIPImage.h"
#include "gl/stages/QGLIPImageOverlay.h"
#include "gl/stages/QGLIPUnpack.h"
#include "support/FlatScene.h"

using chain_test::FakeDisplay;
using chain_test::Picture;
using flat_scene::FlatResult;
using flat_scene::FlatScene;
using flat_scene::Kind;

namespace {

constexpr uint32_t kFailed = 0x80FF0001;
constexpr uint32_t kWidth = 12, kHeight = 10;

// "on the screen" ends all names: without an X server none of this can run.
class QglChain : public GLFixture {
 protected:
  void SetUp() override {
    GLFixture::SetUp();
    if (HasFatalFailure()) return;
    display.Publish(surface.get());
  }
  void SetStrict(int strict) { display.SetParameterInt("strict", strict); }

  static std::string Names(QTDProcessor& chain) {
    std::string names;
    for (int index = 0; index < chain.GetProcessorCount(); ++index)
      names += std::string(chain.Stages().NameAt(index)) + " ";
    return names;
  }
  std::string StagesFor(uint32_t code, QTDProcessor& chain) {
    const Picture format(kWidth, kHeight, code);
    EXPECT_EQ(chain.Init(format), 0u);
    return Names(chain);
  }
  static std::string Parameter(QTDProcessor& chain, const char* stage, const char* name) {
    ZynImgProcessor* const found = chain.FindProcessor(stage);
    char text[64] = "absent";
    uint32_t size = sizeof text;
    if (found) found->GetComponent()->GetParameterString(name, text, &size);
    return text;
  }
  template <typename Stage>
  static bool Is(QTDProcessor& chain, const char* name) {
    return dynamic_cast<Stage*>(chain.FindProcessor(name)) != nullptr;
  }

  FakeDisplay display;
};

TEST_F(QglChain, has_the_full_list_on_the_screen) {
  QTDProcessor chain(&display, true);
  const std::string common = "image.colorcorrection image.overlay image.output ";
  EXPECT_EQ(StagesFor(ZYN_PIXEL_MONO8, chain), "image.unpacked " + common);
  EXPECT_EQ(StagesFor(ZYN_PIXEL_RGB12, chain), "image.unpacked " + common);
  EXPECT_EQ(StagesFor(ZYN_PIXEL_BAYERRG8, chain), "image.unpacked bayer " + common);
  EXPECT_EQ(StagesFor(ZYN_PIXEL_MONO10P, chain), "unpack image.unpacked " + common);
  EXPECT_EQ(StagesFor(ZYN_PIXEL_BAYERGB12P, chain), "unpack image.unpacked bayer " + common);
  EXPECT_EQ(StagesFor(ZYN_PIXEL_BAYERGB12PACKED, chain), "unpack image.unpacked bayer " + common);
  EXPECT_EQ(StagesFor(ZYN_PIXEL_YUV422_8_UYVY, chain), "yuv2rgb image.unpacked " + common);
  EXPECT_TRUE(Is<QGLIPImage>(chain, "image.unpacked"));
  EXPECT_TRUE(Is<QGLIPColorCorrection>(chain, "image.colorcorrection"));
  EXPECT_TRUE(Is<QGLIPImageOverlay>(chain, "image.overlay"));
  EXPECT_TRUE(Is<QGLIPImage>(chain, "image.output"));
}

TEST_F(QglChain, configures_its_stages_on_the_screen) {
  QTDProcessor chain(&display, true);
  StagesFor(ZYN_PIXEL_BAYERRG10, chain);
  EXPECT_EQ(Parameter(chain, "image.unpacked", "image.color.coef"), "1.000000");
  EXPECT_TRUE(Is<QGLIPBayer>(chain, "bayer"));
  EXPECT_EQ(Parameter(chain, "bayer", "image.flip.vert"), "1");
  EXPECT_EQ(Parameter(chain, "bayer", "image.color.coef"), "1.000000");
  EXPECT_EQ(Parameter(chain, "image.overlay", "image.flip.vert"), "absent");
  EXPECT_EQ(Parameter(chain, "image.output", "readGPU"), "0");
  EXPECT_FALSE(chain.Parameters().Has("flip"));
  StagesFor(ZYN_PIXEL_MONO10, chain);
  EXPECT_EQ(Parameter(chain, "image.overlay", "image.flip.vert"), "1");
}

TEST_F(QglChain, is_short_in_strict_mode_on_the_screen) {
  SetStrict(1);
  QTDProcessor chain(&display, true);
  EXPECT_EQ(StagesFor(ZYN_PIXEL_MONO8, chain), "image.output ");
  EXPECT_EQ(chain.Parameters().GetString("flip"), "1");
  EXPECT_EQ(StagesFor(ZYN_PIXEL_BAYERRG12P, chain), "unpack bayer image.output ");
  EXPECT_EQ(chain.Parameters().GetString("flip"), "0");
  EXPECT_EQ(Parameter(chain, "bayer", "image.flip.vert"), "1");
  EXPECT_EQ(Parameter(chain, "bayer", "image.color.coef"), "1.000000");
  EXPECT_EQ(StagesFor(ZYN_PIXEL_YUV422_8_UYVY, chain), "yuv2rgb image.output ");
  EXPECT_EQ(chain.Parameters().GetString("flip"), "1");
  // A full list on the same chain turns by itself.
  SetStrict(0);
  StagesFor(ZYN_PIXEL_MONO8, chain);
  EXPECT_EQ(chain.Parameters().GetString("flip"), "0");
}

TEST_F(QglChain, hands_a_wanted_output_to_the_demosaicing_on_the_screen) {
  QTDProcessor chain(&display, true);
  const Picture format(kWidth, kHeight, ZYN_PIXEL_BAYERRG8), wanted(kWidth, kHeight, ZYN_PIXEL_BGR8);
  ASSERT_EQ(chain.initQGL(format, wanted), 0u);
  EXPECT_EQ(chain.GetImageInfo(false)->pixelType, ZYN_PIXEL_BGR8);
  EXPECT_EQ(chain.FindProcessor("image.unpacked")->GetImageInfo(false)->pixelType, ZYN_PIXEL_BAYERRG8);
}

TEST_F(QglChain, unpacks_on_the_processor_what_the_card_does_not_take_on_the_screen) {
  QTDProcessor chain(&display, true);
  for (const uint32_t code :
       {ZYN_PIXEL_MONO10P, ZYN_PIXEL_MONO12P, ZYN_PIXEL_BAYERRG10P, ZYN_PIXEL_BAYERGR12P}) {
    StagesFor(code, chain);
    EXPECT_TRUE(Is<QGLIPUnpack>(chain, "unpack")) << std::hex << code;
  }
  for (const uint32_t code : {ZYN_PIXEL_MONO10PACKED, ZYN_PIXEL_MONO12PACKED, ZYN_PIXEL_BAYERRG10PACKED,
                              ZYN_PIXEL_BAYERGR12PACKED}) {
    StagesFor(code, chain);
    EXPECT_TRUE(Is<CPUIPUnpack>(chain, "unpack")) << std::hex << code;
  }
}

TEST_F(QglChain, unpacks_on_the_processor_where_the_cards_stage_cannot_be_prepared_on_the_screen) {
  const GLNames before = names();
  // Packed rows that are longer than a texture may be wide, of pictures that are not.
  const int limit = surface->properties.GetInt("gl.texture");
  surface->properties.Set("gl.texture", "100");
  QTDProcessor chain(&display, true);
  const Picture format(80, 4, ZYN_PIXEL_MONO12P);  // 120 bytes
  ASSERT_EQ(chain.Init(format), 0u);
  EXPECT_TRUE(Is<CPUIPUnpack>(chain, "unpack"));
  EXPECT_EQ(Names(chain), "unpack image.unpacked image.colorcorrection image.overlay image.output ");
  ASSERT_EQ(chain.ProcessImage(format, nullptr, nullptr), 0u);
  surface->properties.Set("gl.texture", QTD::ToText(limit));
  chain.Release();
  EXPECT_EQ(names(), before);
}

TEST_F(QglChain, needs_a_display_with_a_surface_on_the_screen) {
  const Picture format(kWidth, kHeight, ZYN_PIXEL_MONO8);
  QTDProcessor ownerless(nullptr, true);
  EXPECT_EQ(ownerless.Init(format), kFailed);
  EXPECT_EQ(ownerless.GetProcessorCount(), 0);
  display.Publish(nullptr);
  QTDProcessor chain(&display, true);
  EXPECT_EQ(chain.Init(format), kFailed);
  EXPECT_EQ(chain.GetProcessorCount(), 0);
  EXPECT_EQ(chain.ProcessImage(format, nullptr, nullptr), kFailed);
}

TEST_F(QglChain, a_stage_that_fails_fails_the_whole_and_nothing_stays_on_the_screen) {
  const GLNames before = names();
  QTDProcessor chain(&display, true);
  // The overlay takes no TrueSense pixels, and there is no way around it.
  const Picture format(kWidth, kHeight, ZYN_PIXEL_TRUESENSE_GRBG_WGGW_1_8);
  EXPECT_EQ(chain.Init(format), kFailed);
  EXPECT_EQ(chain.GetProcessorCount(), 0);
  EXPECT_EQ(names(), before);
}

TEST_F(QglChain, leaves_nothing_behind_when_it_is_built_again_and_again_on_the_screen) {
  const GLNames before = names();
  {
    QTDProcessor chain(&display, true);
    StagesFor(ZYN_PIXEL_BAYERRG12P, chain);
    const GLNames built = names();
    for (int round = 0; round < 5; ++round) StagesFor(ZYN_PIXEL_BAYERRG12P, chain);
    EXPECT_EQ(names(), built);
    ASSERT_EQ(chain.RemoveProcessor("image.overlay"), 0u);
    EXPECT_LT(names().framebuffers, built.framebuffers);
  }
  EXPECT_EQ(names(), before);
  EXPECT_TRUE(surface->isActive());  // no pass was ended twice,
  surface->end(nullptr, false);
  EXPECT_FALSE(surface->isActive());  // and each was ended
}

TEST_F(QglChain, carries_the_image_id_through_on_the_screen) {
  QTDProcessor chain(&display, true);
  for (const uint32_t code : {ZYN_PIXEL_BAYERRG12P, ZYN_PIXEL_YUV422_8_UYVY, ZYN_PIXEL_MONO12PACKED}) {
    const Picture image(kWidth, kHeight, code);
    ASSERT_EQ(chain.Init(image), 0u);
    for (const uint64_t id : {uint64_t{5}, uint64_t{1} << 40}) {
      image->imageID = id;
      ASSERT_EQ(chain.ProcessImage(image, nullptr, nullptr), 0u);
      for (int index = 0; index < chain.GetProcessorCount(); ++index)
        EXPECT_EQ(chain.GetProcessorAt(index)->Out()->imageID, id) << chain.Stages().NameAt(index);
    }
  }
}

// The texels of a flat scene, exactly; mosaics without the two pixels at the border, where the card repeats
// the edge and a site's colours mix.
void ExpectFlat(FakeDisplay& display, const QTD::PixelRow& row, uint32_t width, uint32_t height) {
  const Kind kind(row.name);
  const Picture image(width, static_cast<int32_t>(height), row.code);
  const std::vector<uint8_t> bytes = FlatScene(row.name, kind, width, height);
  const size_t line = kind.packed || kind.lsb ? bytes.size() : bytes.size() / height;
  for (size_t from = 0, to = 0; from < bytes.size(); from += line, to += image->linePitch)
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(from), line, image->imageData + to);

  QTDProcessor chain(&display, true);
  ASSERT_EQ(chain.Init(image), 0u);
  ASSERT_EQ(chain.ProcessImage(image, nullptr, nullptr), 0u);
  const ZynImage* const out = chain.Out();
  ASSERT_NE(out, nullptr);
  ASSERT_EQ(out->width, width);
  ASSERT_EQ(out->height, height);
  ASSERT_EQ(out->bitDepth, kind.depth);
  std::vector<uint32_t> pixel = FlatResult(row.name, kind);
  if (QTD::IsBgrFormat(out->pixelType)) std::swap(pixel[0], pixel[2]);  // a texture is always RGB
  const auto channels = static_cast<int>(pixel.size());
  const Samples texels = ReadTexture(AttachedTexture(out), channels, kind.depth == 8 ? 8 : 16);
  const uint32_t border = kind.bayer ? 2 : 0;
  for (uint32_t y = border; y + border < height; ++y) {
    for (uint32_t x = border; x + border < width; ++x) {
      for (size_t c = 0; c < pixel.size(); ++c)
        ASSERT_EQ(texels[(size_t{y} * width + x) * pixel.size() + c], pixel[c])
            << x << "," << y << " channel " << c;
    }
  }
}

TEST_F(QglChain, keeps_the_colour_of_a_flat_picture_in_every_format_on_the_screen) {
  int formats = 0;
  for (uint32_t n = 1; n <= QTD::kPixelRows; ++n) {
    const QTD::PixelRow& row = *QTD::FindPixelRow(n);
    const Kind kind(row.name);
    if (kind.trueSense || !(kind.mono || kind.bayer || kind.colour || kind.uyvy)) continue;
    SCOPED_TRACE(row.name);
    ++formats;
    for (const int strict : {0, 1}) {
      SetStrict(strict);
      ExpectFlat(display, row, kWidth, kHeight);
      // Rows of an odd width would end within a byte.
      if (!kind.uyvy && !kind.lsb) ExpectFlat(display, row, 13, 7);
      if (HasFatalFailure()) return;
    }
  }
  EXPECT_GE(formats, 50);
}

// Line 0 of a picture is the last line of the texture, since the card counts from below; in strict mode only
// where a stage turns on its way.
TEST_F(QglChain, turns_the_picture_once_on_the_screen) {
  for (const uint32_t code : {ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8, ZYN_PIXEL_BAYERRG8}) {
    for (const int strict : {0, 1}) {
      SCOPED_TRACE(std::string(QTD::FindPixelRow(code)->name) + (strict ? ", strict" : ""));
      SetStrict(strict);
      const Picture image(8, 8, code);
      std::memset(image->imageData, 200, image->linePitch * 4);  // the upper half
      QTDProcessor chain(&display, true);
      ASSERT_EQ(chain.Init(image), 0u);
      ASSERT_EQ(chain.ProcessImage(image, nullptr, nullptr), 0u);
      const int channels = QTD::IsRgbFormat(chain.Out()->pixelType) ? 3 : 1;
      const Samples texels = ReadTexture(AttachedTexture(chain.Out()), channels, 8);
      const bool turned = strict == 0 || code == ZYN_PIXEL_BAYERRG8;
      EXPECT_EQ(texels.front(), turned ? 0u : 200u);
      EXPECT_EQ(texels.back(), turned ? 200u : 0u);
    }
  }
}

}  // namespace

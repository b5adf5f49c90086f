// The display on the card, end to end. Most of it needs an X server; without OpenGL the last test is run.
#include <cmath>
#include <thread>

#include "QTD/image/PixelFormats.h"
#include "support/FlatScene.h"
#include "support/ResidentMemory.h"
#include "support/WithoutOpenGL.h"
#include "tests/display/OpenGLFixture.h"

namespace display_test {
namespace {

using flat_scene::FlatScene;
using flat_scene::Kind;

TEST_F(OpenGLDisplay, shows_a_picture_upright_on_the_screen) {
  HostImage picture(ZYN_PIXEL_RGB8, 120, 80);
  FillHalves(picture);
  ShowOnCard(picture);
  ExpectHalves(Grab());
  EXPECT_EQ(
      StageNames(),
      "image.unpacked image.colorcorrection image.overlay image.output image.display image.coloration ");
  // A bottom-up picture is shown in the order of its lines, as on the processor.
  picture.record.origin = 1;
  ShowNext(picture);
  ExpectHalves(Grab());
}

TEST_F(OpenGLDisplay, shows_flat_colours_of_every_sort_of_format_on_the_screen) {
  for (const char* name :
       {"Mono8", "Mono10", "Mono12p", "Mono12Packed", "Mono16", "RGB8", "BGR8", "RGB12", "BGR16", "BayerRG8",
        "BayerGR10", "BayerGB12p", "BayerBG12Packed", "YUV422_8_UYVY"}) {
    SCOPED_TRACE(name);
    const QTD::PixelRow* const row = QTD::FindPixelRowByName(name);
    ASSERT_NE(row, nullptr);
    const Kind kind(name);
    HostImage picture(row->code, 96, 64);
    picture.pixels = FlatScene(name, kind, 96, 64);
    picture.record.imageData = picture.pixels.data();
    picture.record.imageSize = static_cast<uint32_t>(picture.pixels.size());
    ASSERT_NO_FATAL_FAILURE(ShowOnCard(picture));
    std::vector<uint32_t> stored = flat_scene::FlatResult(name, kind);
    if (flat_scene::StartsWith(name, "BGR")) std::swap(stored[0], stored[2]);
    if (stored.size() == 1) stored.resize(3, stored[0]);
    const QImage seen = Grab();
    const QRgb pixel = seen.pixel(seen.width() / 2 + 3, seen.height() / 2 + 3);
    // Samples are shifted to the top of a texel of 8 or 16 bits, which the window rounds to 8.
    const double top = kind.depth == 8 ? 255 : 65535, scale = kind.depth == 8 ? 1 : 1 << (16 - kind.depth);
    const int channels[] = {qRed(pixel), qGreen(pixel), qBlue(pixel)};
    for (size_t c = 0; c < 3; ++c) EXPECT_NEAR(channels[c], stored[c] * scale / top * 255, 0.51) << c;
  }
}

TEST_F(OpenGLDisplay, works_in_strict_mode_beyond_12_megapixels_on_the_screen) {
  HostImage colours(ZYN_PIXEL_RGB8, 4100, 3000);
  FillHalves(colours);
  ShowOnCard(colours);
  EXPECT_EQ(Parameter("strict"), "1");
  EXPECT_EQ(StageNames(), "image.output image.display ");
  EXPECT_EQ(Run("cmd.display.view.fit", {{"mode", "1"}}), 1u);
  Settle(120);
  ExpectHalves(Grab());
  // The converted picture has line 0 at the top, although no stage has turned it.
  HostImage converted(ZYN_PIXEL_RGB8, 4100, 3000);
  ASSERT_EQ(display->ConvertImage(&colours.record, &converted.record), 0u);
  EXPECT_EQ(converted.pixels, colours.pixels);
  // At the limit it is not strict.
  HostImage atLimit(ZYN_PIXEL_MONO8, 4000, 3000);
  ShowOnCard(atLimit);
  EXPECT_EQ(Parameter("strict"), "0");
}

TEST_F(OpenGLDisplay, switches_between_the_variants_in_mid_run_on_the_screen) {
  HostImage picture(ZYN_PIXEL_BAYERRG12P, 96, 64);
  std::string names;
  int64_t early = 0;
  for (int round = 0; round < 50; ++round) {
    SetVariant(true);
    ASSERT_EQ(display->Initialize(&picture.record), 0u);
    ASSERT_TRUE(WaitFor([&] { return Window()->isExposed(); }));
    ASSERT_EQ(display->DisplayVideo(&picture.record), 0u);
    Settle(20);
    ASSERT_NE(Surface(), nullptr);
    if (round == 0) names = Names();
    ASSERT_EQ(Names(), names) << "round " << round;
    ASSERT_EQ(display->DisplayVideo(&picture.record), 0u);  // still under way when the variant changes
    SetVariant(false);
    ASSERT_EQ(display->Initialize(&picture.record), 0u);
    ASSERT_EQ(Surface(), nullptr);
    ASSERT_EQ(display->DisplayVideo(&picture.record), 0u);
    Settle(5);
    if (round == 19) early = ResidentBytes();
  }
  RecordProperty("growth", std::to_string(ResidentBytes() - early));
  // A texture or a context a round would be more.
  EXPECT_LT(ResidentBytes() - early, 16 << 20);
}

TEST_F(OpenGLDisplay, a_rebuild_leaves_no_names_behind_on_the_screen) {
  HostImage bayer(ZYN_PIXEL_BAYERRG12P, 96, 64), mono(ZYN_PIXEL_MONO8, 64, 48);
  ShowOnCard(bayer);
  const std::string names = Names();
  for (int round = 0; round < 10; ++round) {
    ShowOnCard(mono);
    ShowOnCard(bayer);
  }
  EXPECT_EQ(Names(), names);
}

TEST_F(OpenGLDisplay, frames_of_another_thread_are_shown_while_commands_come_on_the_screen) {
  HostImage picture(ZYN_PIXEL_RGB8, 120, 80);
  FillHalves(picture);
  ShowOnCard(picture);
  const std::string names = Names();
  std::atomic<bool> stop{false};
  std::thread host([&] {
    for (int n = 0; !stop; ++n) {
      display->DisplayVideo(&picture.record);
      ZynImgProcessor* const stage = display->GetProcessor()->FindProcessor("image.colorcorrection");
      stage->GetComponent()->SetParameterDouble("gain.r", n % 2 ? 1.0 : 0.5);
      stage->GetComponent()->ExecuteCommand("params.apply");
      stage->GetComponent()->ExecuteCommand("readGPU");
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });
  const std::size_t before = receiver.Images();
  EXPECT_TRUE(WaitFor([&] { return receiver.Images() >= before + 50; }, 60000));
  stop = true;
  host.join();
  EXPECT_EQ(receiver.LastResult(), "0");
  EXPECT_EQ(Names(), names);
}

// Converted pictures of both variants.
struct Conversion {
  const char* name;
  int bound;  // code values of the result's 8 bits
  uint32_t border;
};

class OpenGLConvert : public OpenGLDisplay, public testing::WithParamInterface<Conversion> {
 protected:
  std::vector<uint8_t> Convert(bool opengl, const HostImage& input, bool formatBottomUp) {
    SetVariant(opengl);
    ZynImage format = input.record;
    format.origin = formatBottomUp;
    EXPECT_EQ(display->Initialize(&format), 0u);
    HostImage output(ZYN_PIXEL_RGB8, input.record.width, input.record.height);
    output.record.origin = 1;
    EXPECT_EQ(display->ConvertImage(&input.record, &output.record), 0u);
    EXPECT_EQ(output.record.origin, 0u);
    return output.pixels;
  }
};

TEST_P(OpenGLConvert, gives_the_processors_picture_upright) {
  const QTD::PixelRow* const row = QTD::FindPixelRowByName(GetParam().name);
  ASSERT_NE(row, nullptr);
  const uint32_t width = 24, height = 18;
  HostImage input(row->code, width, height);
  // No order in it; of the samples of words the unused bits stay 0.
  uint32_t state = 7;
  for (size_t i = 0; i < input.pixels.size(); ++i) {
    state = state * 1664525 + 1013904223;
    const bool highByte = row->bitDepth > 8 && QTD::BitsPerPixel(row->code) % 16 == 0 && i % 2 == 1;
    input.pixels[i] = static_cast<uint8_t>(state >> 24 >> (highByte ? 16 - row->bitDepth : 0));
  }
  for (const bool bottomUp : {false, true}) {
    for (const bool formatBottomUp : {false, true}) {
      SCOPED_TRACE(std::string(bottomUp ? "bottom-up" : "top-down") +
                   (formatBottomUp ? ", prepared bottom-up" : ""));
      input.record.origin = bottomUp;
      const std::vector<uint8_t> plain = Convert(false, input, formatBottomUp);
      const std::vector<uint8_t> card = Convert(true, input, formatBottomUp);
      ASSERT_EQ(plain.size(), card.size());
      const uint32_t border = GetParam().border;
      for (uint32_t y = border; y < height - border; ++y) {
        for (uint32_t i = 3 * border; i < 3 * (width - border); ++i) {
          const size_t at = size_t{y} * 3 * width + i;
          ASSERT_LE(std::abs(plain[at] - card[at]), GetParam().bound) << i / 3 << "," << y;
        }
      }
    }
  }
}

// Mosaics: the card computes in single precision and rounds once, and repeats the edge where the processor
// mirrors it; two of the patterns have the edge step of the card besides.
INSTANTIATE_TEST_SUITE_P(Formats, OpenGLConvert,
                         testing::Values(Conversion{"Mono8", 0, 0}, Conversion{"Mono10", 0, 0},
                                         Conversion{"Mono12p", 0, 0}, Conversion{"Mono10Packed", 0, 0},
                                         Conversion{"Mono16", 0, 0}, Conversion{"RGB8", 0, 0},
                                         Conversion{"BGR8", 0, 0}, Conversion{"RGB12", 0, 0},
                                         Conversion{"YUV422_8_UYVY", 0, 0}, Conversion{"BayerRG8", 1, 2},
                                         Conversion{"BayerBG12", 1, 2}, Conversion{"BayerRG12p", 1, 2}),
                         [](const testing::TestParamInfo<Conversion>& kind) {
                           return std::string(kind.param.name) + "_on_the_screen";
                         });

// Without OpenGL.

class WithoutOpenGL : public DisplayTest {};

TEST_F(WithoutOpenGL, the_card_answers_a_code_and_the_processor_works_afterwards) {
  if (test::HasOpenGL()) return test::RunWithoutOpenGL();
  HostImage picture(ZYN_PIXEL_MONO8, 64, 48, 0, 128), output(ZYN_PIXEL_RGB8, 64, 48);
  for (int round = 0; round < 3; ++round) {
    display->SetParameterInt("system.opengl", 1);
    EXPECT_EQ(display->Initialize(&picture.record), Composed(1));
    EXPECT_EQ(display->GetProcessor(), nullptr);
    EXPECT_NE(display->ConvertImage(&picture.record, &output.record), 0u);
    display->DisplayVideo(&picture.record);
    Settle(20);
    display->SetParameterInt("system.opengl", 0);
    ASSERT_EQ(display->Initialize(&picture.record), 0u);
    EXPECT_EQ(display->ConvertImage(&picture.record, &output.record), 0u);
    EXPECT_EQ(output.pixels, std::vector<uint8_t>(64 * 48 * 3, 128));
    display->AddNotification(&receiver);
    display->SetParameterInt("image.notification.flags.set", 1);
    const std::size_t before = receiver.Images();
    ASSERT_EQ(display->DisplayVideo(&picture.record), 0u);
    EXPECT_TRUE(WaitForImages(before + 1));
    EXPECT_EQ(receiver.LastResult(), "0");
  }
}

}  // namespace
}  // namespace display_test

// The viewer's colour settings on the stages of a chain that records what it is told.
#include "apps/zynview/view/ColorControls.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "ZynPixelFormat.h"
#include "apps/zynview/sources/FrameSource.h"
#include "zynview/FakeStages.h"

using zynview::ColorControls;
using zynview::ColorSettings;

namespace {

ColorSettings Gains(double red, double green, double blue) {
  ColorSettings wanted;
  wanted.gain = {red, green, blue};
  return wanted;
}

double Number(const QTD::ARGUMENTS& arguments, const char* name) {
  return std::stod(arguments.at(name));
}

}  // namespace

TEST(ColorControls, leaves_a_new_display_alone_when_nothing_is_asked_for) {
  FakeDisplay display(ZYN_PIXEL_BAYERRG12);
  ColorControls controls(&display);
  EXPECT_EQ(controls.Start(ColorSettings()), QString());
  EXPECT_EQ(display.rebuilds, 0);
  EXPECT_TRUE(display.correction.commands.empty());
  EXPECT_EQ(controls.Summary(), QStringLiteral("demosaicing 0"));
}

TEST(ColorControls, prepares_the_demosaicing_stage_again_from_its_own_format) {
  FakeDisplay display(ZYN_PIXEL_BAYERRG12);
  ColorControls controls(&display);
  for (const int method : {1, 2, 3, 0}) {
    EXPECT_EQ(controls.NextDemosaicing(), QString());
    EXPECT_EQ(display.bayer.parameters.values["BayerAlgType"], std::to_string(method));
    EXPECT_EQ(display.bayer.preparedFor.pixelType, ZYN_PIXEL_BAYERRG12);
    EXPECT_EQ(display.bayer.preparedFor.width, 64u);
    EXPECT_FALSE(display.bayer.tookItsOwnRecord);
  }
  EXPECT_EQ(display.bayer.inits, 4);
  EXPECT_EQ(display.rebuilds, 4);
}

TEST(ColorControls, goes_back_to_the_method_before_when_one_is_refused) {
  FakeDisplay display(ZYN_PIXEL_BAYERRG12);
  display.bayer.refusedMethod = "1";
  ColorControls controls(&display);
  EXPECT_NE(controls.NextDemosaicing(), QString());
  EXPECT_EQ(display.bayer.parameters.values["BayerAlgType"], "0");
  EXPECT_EQ(display.bayer.inits, 2);
  EXPECT_EQ(controls.Settings().demosaicing, 0);
}

TEST(ColorControls, demosaics_nothing_but_bayer_formats) {
  FakeDisplay display(ZYN_PIXEL_RGB12);
  ColorControls controls(&display);
  EXPECT_EQ(controls.NextDemosaicing(), QStringLiteral("only Bayer formats are demosaiced"));
  EXPECT_EQ(controls.Settings().demosaicing, 0);
  EXPECT_EQ(controls.Summary(), QString());
}

TEST(ColorControls, gives_gain_and_offset_to_the_correction) {
  FakeDisplay display(ZYN_PIXEL_RGB12);
  ColorControls controls(&display);
  ColorSettings wanted = Gains(1.5, 1, 2);
  wanted.offset = {0, -0.25, 0.5};
  EXPECT_EQ(controls.Start(wanted), QString());
  const QTD::ARGUMENTS& arguments = display.correction.commands.back();
  EXPECT_EQ(Number(arguments, "gain.r"), 1.5);
  EXPECT_EQ(Number(arguments, "gain.g"), 1);
  EXPECT_EQ(Number(arguments, "gain.b"), 2);
  EXPECT_EQ(Number(arguments, "offs.g"), -0.25);
  EXPECT_EQ(Number(arguments, "offs.b"), 0.5);
  EXPECT_EQ(Number(arguments, "gamma"), 1);
  EXPECT_EQ(display.rebuilds, 1);
  EXPECT_EQ(controls.Summary(), QStringLiteral("gain 1.5, 1, 2   offset 0, -0.25, 0.5"));
}

TEST(ColorControls, means_red_by_red_in_a_picture_that_begins_with_blue) {
  FakeDisplay display(ZYN_PIXEL_BGR12);
  ColorControls controls(&display);
  EXPECT_EQ(controls.Start(Gains(3, 1, 2)), QString());
  EXPECT_EQ(Number(display.correction.commands.back(), "gain.r"), 2);
  EXPECT_EQ(Number(display.correction.commands.back(), "gain.b"), 3);
}

// The stage computes pow(sample * gain + top * offset, gamma) on values of 0 to top.
TEST(ColorControls, keeps_white_white_whatever_the_gamma) {
  for (const double gamma : {0.45, 2.2}) {
    FakeDisplay display(ZYN_PIXEL_MONO14);
    ColorControls controls(&display);
    ColorSettings wanted;
    wanted.gamma = gamma;
    wanted.offset = {-0.125, -0.125, -0.125};
    EXPECT_EQ(controls.Start(wanted), QString());
    const QTD::ARGUMENTS& arguments = display.correction.commands.back();
    const double top = 16383;
    for (const double level : {0.25, 0.5, 1.0}) {
      const double linear = level * top * Number(arguments, "gain.r") + top * Number(arguments, "offs.r");
      EXPECT_NEAR(std::pow(linear, Number(arguments, "gamma")), top * std::pow(level - 0.125, gamma), 0.01);
    }
  }
}

// On the card: pow(texel * gain + offset, gamma) on texels of 0 to 1, where 14 bits lie at the bottom of 16.
TEST(ColorControls, keeps_white_white_on_the_card_too) {
  for (const double gamma : {0.45, 1.0, 2.2}) {
    FakeDisplay display(ZYN_PIXEL_MONO14);
    display.GetComponent()->SetParameterInt("system.opengl", 1);
    ColorControls controls(&display);
    ColorSettings wanted;
    wanted.gamma = gamma;
    wanted.gain = {1.5, 1.5, 1.5};
    wanted.offset = {-0.125, -0.125, -0.125};
    EXPECT_EQ(controls.Start(wanted), QString());
    const QTD::ARGUMENTS& arguments = display.correction.commands.back();
    const double top = 16383.0 / 65535.0;
    for (const double level : {0.25, 0.5, 0.75}) {
      const double linear = level * top * Number(arguments, "gain.r") + Number(arguments, "offs.r");
      EXPECT_NEAR(std::pow(linear, Number(arguments, "gamma")), top * std::pow(1.5 * level - 0.125, gamma),
                  1e-6);
    }
  }
}

TEST(ColorControls, corrects_8_bits_and_bgr_by_its_names_on_the_card) {
  FakeDisplay display(ZYN_PIXEL_BGR8);
  display.GetComponent()->SetParameterInt("system.opengl", 1);
  ColorControls controls(&display);
  EXPECT_EQ(controls.Start(Gains(2, 3, 4)), QString());
  EXPECT_EQ(Number(display.correction.commands.back(), "gain.r"), 2);
  EXPECT_EQ(Number(display.correction.commands.back(), "gain.b"), 4);
}

TEST(ColorControls, says_that_samples_of_8_bits_are_not_corrected) {
  FakeDisplay display(ZYN_PIXEL_RGB8);
  ColorControls controls(&display);
  EXPECT_NE(controls.MultiplyGain(2), QString());
  EXPECT_NE(controls.Start(Gains(2, 2, 2)), QString());
  EXPECT_EQ(controls.ResetCorrection(), QString());
  EXPECT_TRUE(display.correction.commands.empty());
  EXPECT_FALSE(controls.Settings().Corrects());
}

TEST(ColorControls, keeps_the_image_that_came_in_while_a_correction_is_on) {
  FakeDisplay display(ZYN_PIXEL_MONO12);
  ColorControls controls(&display);
  EXPECT_FALSE(display.unpacked.IsEnabled());
  controls.MultiplyGain(2);
  EXPECT_TRUE(display.unpacked.IsEnabled());
  controls.MultiplyGain(2);
  EXPECT_EQ(Number(display.correction.commands.back(), "gain.r"), 4);
  controls.ResetCorrection();
  EXPECT_EQ(Number(display.correction.commands.back(), "gain.r"), 1);
  EXPECT_EQ(Number(display.correction.commands.back(), "gamma"), 1);
  EXPECT_FALSE(display.unpacked.IsEnabled());
}

TEST(ColorControls, switches_the_exposure_marking) {
  FakeDisplay display(ZYN_PIXEL_RGB8);
  ColorControls controls(&display);
  EXPECT_EQ(controls.ToggleMarking(), QString());
  EXPECT_TRUE(display.coloration.IsEnabled());
  EXPECT_EQ(controls.Summary(), QStringLiteral("exposure marked"));
  EXPECT_EQ(controls.ToggleMarking(), QString());
  EXPECT_FALSE(display.coloration.IsEnabled());
  EXPECT_EQ(display.rebuilds, 2);
}

TEST(ColorControls, corrects_and_marks_nothing_that_passes_the_display_unread) {
  for (const uint32_t code : {ZYN_PIXEL_RGBA8, ZYN_PIXEL_MONO10_BRIOPACKED, ZYN_PIXEL_YUV422_10}) {
    FakeDisplay display(code);
    display.correction.format.bitDepth = 10;
    ColorControls controls(&display);
    EXPECT_NE(controls.ToggleMarking(), QString());
    EXPECT_NE(controls.MultiplyGain(2), QString());
    EXPECT_FALSE(display.coloration.IsEnabled());
    EXPECT_FALSE(controls.Settings().markExposure);
    EXPECT_FALSE(controls.Settings().Corrects());
    EXPECT_TRUE(display.correction.commands.empty());
  }
}

TEST(ColorControls, knows_a_format_that_passes_the_display_unread) {
  for (const uint32_t code : {ZYN_PIXEL_MONO12, ZYN_PIXEL_BGR8, ZYN_PIXEL_BAYERRG12}) {
    FakeDisplay display(code);
    EXPECT_TRUE(ColorControls(&display).PicturesAreRead()) << code;
  }
  for (const uint32_t code : {ZYN_PIXEL_RGBA8, ZYN_PIXEL_YUV444_8, ZYN_PIXEL_MONO8_BRIOPACKED}) {
    FakeDisplay display(code);
    EXPECT_FALSE(ColorControls(&display).PicturesAreRead()) << code;
  }
}

TEST(ColorControls, knows_that_the_card_takes_colour_with_alpha_and_no_other_unread_format) {
  const auto onCard = [](uint32_t code) {
    FakeDisplay display(code);
    display.GetComponent()->SetParameterInt("system.opengl", 1);
    return ColorControls(&display).PicturesAreRead();
  };
  for (const uint32_t code : {ZYN_PIXEL_RGBA8, ZYN_PIXEL_BGRA8, ZYN_PIXEL_MONO12, ZYN_PIXEL_BAYERRG12})
    EXPECT_TRUE(onCard(code)) << code;
  for (const uint32_t code :
       {ZYN_PIXEL_MONO8_BRIOPACKED, ZYN_PIXEL_MONO10_BRIOPACKED, ZYN_PIXEL_MONO12_BRIOPACKED,
        ZYN_PIXEL_RGB_8_BRIO_PACKED, ZYN_PIXEL_RGB_10_BRIO_PACKED, ZYN_PIXEL_RGB_12_BRIO_PACKED,
        ZYN_PIXEL_YUV422_8, ZYN_PIXEL_YUV422_10, ZYN_PIXEL_YUV422_10_PACKED, ZYN_PIXEL_YUV444_8,
        ZYN_PIXEL_YCBCR422_8})
    EXPECT_FALSE(onCard(code)) << code;
}

TEST(ColorControls, says_what_is_wrong_with_an_unread_format_in_each_variant) {
  FakeDisplay display(ZYN_PIXEL_YUV444_8);
  EXPECT_TRUE(ColorControls(&display).WhyUnread().contains(QStringLiteral("no picture")));
  display.GetComponent()->SetParameterInt("system.opengl", 1);
  EXPECT_TRUE(ColorControls(&display).WhyUnread().contains(QStringLiteral("OpenGL")));
}

TEST(ColorControls, does_nothing_on_a_display_without_a_chain) {
  FakeDisplay display(ZYN_PIXEL_MONO12);
  display.empty = true;
  ColorControls controls(&display);
  EXPECT_NE(controls.NextDemosaicing(), QString());
  EXPECT_NE(controls.MultiplyGain(2), QString());
  EXPECT_NE(controls.ToggleMarking(), QString());
  EXPECT_EQ(controls.Summary(), QString());
}

TEST(ColorControls, bring_in_again_what_fits_to_other_images) {
  FakeDisplay display(ZYN_PIXEL_BAYERRG12);
  ColorControls controls(&display);
  ColorSettings wanted;
  wanted.demosaicing = 2;
  wanted.gain = {2, 2, 2};
  wanted.markExposure = true;
  ASSERT_EQ(controls.Start(wanted), QString());
  EXPECT_EQ(controls.Adapt(), QString());
  EXPECT_EQ(controls.Settings().demosaicing, 2);
  EXPECT_EQ(controls.Settings().gain, wanted.gain);

  // Eight bits: neither demosaicing nor gain, but marks.
  display.correction.format = zynview::MakeRecord(ZYN_PIXEL_MONO8, 64, 48, 0, nullptr);
  display.correction.format.bitDepth = 8;
  display.hasBayer = false;
  EXPECT_NE(controls.Adapt(), QString()) << "the gain is missing";
  EXPECT_FALSE(controls.Settings().Corrects());
  EXPECT_EQ(controls.Settings().demosaicing, 0);
  EXPECT_TRUE(controls.Settings().markExposure);

  display.correction.format = zynview::MakeRecord(ZYN_PIXEL_RGB12, 64, 48, 0, nullptr);
  display.correction.format.bitDepth = 12;
  display.hasBayer = true;
  EXPECT_EQ(controls.Adapt(), QString()) << "nothing was forgotten meanwhile";
  EXPECT_EQ(controls.Settings().demosaicing, 2);
  EXPECT_EQ(controls.Settings().gain, wanted.gain);
}

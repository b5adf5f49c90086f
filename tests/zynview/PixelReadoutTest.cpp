// What the status bar tells of the place under the mouse.
#include "apps/zynview/view/PixelReadout.h"

#include <gtest/gtest.h>

#include "zynview/RecordingDisplay.h"

using zynview::FrameKeeper;
using zynview::PixelReadout;

namespace {

// A view that shows the picture from image pixel (10, 20) on, four window pixels to each image pixel.
struct PixelReadoutTest : testing::Test {
  RecordingDisplay display;
  FrameKeeper keeper;
  PixelReadout readout{&display, &keeper};

  PixelReadoutTest() {
    display.answer = [this](const std::string& name, QTD::ARGUMENTS* args) -> uint32_t {
      if (name != "cmd.display.view.translate") return 0;
      EXPECT_EQ((*args)["cs.src"], "win");
      EXPECT_EQ((*args)["cs.dst"], "img");
      const double x = std::stod((*args)["pos.x"]) / 4 + 10, y = std::stod((*args)["pos.y"]) / 4 + 20;
      (*args)["pos.x"] = std::to_string(x);
      (*args)["pos.y"] = std::to_string(y);
      (*args)["result"] = x < 12 ? "1" : "0";
      return screen;
    };
  }

  void Keep(uint8_t value) {
    std::vector<uint8_t> pixels(16 * 32, value);
    keeper.Want();
    keeper.Offer(zynview::MakeRecord(ZYN_PIXEL_MONO8, 16, 32, 0, pixels.data()));
  }

  uint32_t screen = 1;
};

}  // namespace

TEST_F(PixelReadoutTest, is_empty_while_the_mouse_is_elsewhere) {
  EXPECT_EQ(readout.Text(), QString());
  EXPECT_FALSE(readout.IsPointing());
  readout.MoveTo(3, 3);
  EXPECT_TRUE(readout.IsPointing());
  EXPECT_NE(readout.Text(), QString());
  readout.Leave();
  EXPECT_EQ(readout.Text(), QString());
}

TEST_F(PixelReadoutTest, tells_the_place_before_the_first_frame_is_kept) {
  readout.MoveTo(3, 3);
  EXPECT_EQ(readout.Text(), QStringLiteral("x 10  y 20"));
  readout.MoveTo(4, 7);
  EXPECT_EQ(readout.Text(), QStringLiteral("x 11  y 21"));
}

TEST_F(PixelReadoutTest, tells_the_sample_and_asks_for_the_next_frame) {
  Keep(77);
  readout.MoveTo(0, 0);
  EXPECT_EQ(readout.Text(), QStringLiteral("x 10  y 20   grey 77 of 255"));
  std::vector<uint8_t> pixels(16 * 32, 78);
  keeper.Offer(zynview::MakeRecord(ZYN_PIXEL_MONO8, 16, 32, 0, pixels.data()));
  EXPECT_EQ(readout.Text(), QStringLiteral("x 10  y 20   grey 78 of 255"));
}

TEST_F(PixelReadoutTest, asks_for_no_frame_while_nobody_points) {
  readout.Text();
  std::vector<uint8_t> pixels(16 * 32);
  keeper.Offer(zynview::MakeRecord(ZYN_PIXEL_MONO8, 16, 32, 0, pixels.data()));
  EXPECT_EQ(keeper.Serial(), 0u);
}

TEST_F(PixelReadoutTest, is_empty_off_the_picture_and_without_a_screen) {
  readout.MoveTo(8, 0);
  EXPECT_EQ(readout.Text(), QString());
  readout.MoveTo(0, 0);
  screen = 0;
  EXPECT_EQ(readout.Text(), QString());
}

TEST_F(PixelReadoutTest, is_the_place_alone_where_the_frame_has_no_such_pixel) {
  Keep(1);
  readout.MoveTo(0, 4 * 12);
  EXPECT_EQ(readout.Text(), QStringLiteral("x 10  y 32"));
}

TEST_F(PixelReadoutTest, has_a_place_only_on_the_picture) {
  EXPECT_FALSE(readout.Place().has_value());
  readout.MoveTo(4, 7);
  EXPECT_EQ(readout.Place(), QPoint(11, 21));
  readout.MoveTo(8, 0);
  EXPECT_FALSE(readout.Place().has_value());
}

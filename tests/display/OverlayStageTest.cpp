// Text that a host burns into images, where it arrives: in the window's picture and in converted images.
#include "QTD/chain/QTDProcessor.h"
#include "QTD/frame/Properties.h"
#include "tests/display/DisplayFixture.h"

namespace display_test {

class OverlayStage : public DisplayTest {
 protected:
  static constexpr uint32_t kWidth = 96, kHeight = 48;

  // The rows and columns that hold anything but black.
  struct Extent {
    uint32_t top = kHeight, bottom = 0, left = kWidth, right = 0;
    bool Exists() const { return top < kHeight; }
  };
  static Extent TextIn(const ZynImage& rgb) {
    Extent extent;
    for (uint32_t y = 0; y < kHeight; ++y) {
      for (uint32_t x = 0; x < kWidth; ++x) {
        const uint8_t* const pixel = rgb.imageData + y * rgb.linePitch + 3 * x;
        if (pixel[0] == 0 && pixel[1] == 0 && pixel[2] == 0) continue;
        extent.top = std::min(extent.top, y);
        extent.bottom = std::max(extent.bottom, y);
        extent.left = std::min(extent.left, x);
        extent.right = std::max(extent.right, x);
      }
    }
    return extent;
  }

  void Prepare(uint32_t pixelType, uint32_t origin) {
    image = std::make_unique<HostImage>(pixelType, kWidth, kHeight);
    image->record.origin = origin;
    Start(*image);
    auto* const stage =
        static_cast<ZynDisplayQT::ImageOverlay*>(display->GetProcessor()->FindProcessor("image.overlay"));
    QTD::PROPERTIES white;
    white.Set("text.clr", "16777215");
    ASSERT_FALSE(stage->AddText("L", 10, 4, &white).empty());
  }
  // A letter at the upper left of what it was drawn on.
  static void ExpectLetter(const ZynImage& rgb) {
    const Extent extent = TextIn(rgb);
    ASSERT_TRUE(extent.Exists());
    EXPECT_GE(extent.left, 10u);
    EXPECT_LT(extent.right, 40u);
    EXPECT_GE(extent.top, 4u);
    EXPECT_LT(extent.bottom, kHeight / 2);
    // The foot of an L is wider than its head: it stands upright.
    const auto widthOf = [&rgb](uint32_t y) {
      uint32_t count = 0;
      for (uint32_t x = 0; x < kWidth; ++x) count += rgb.imageData[y * rgb.linePitch + 3 * x] > 100;
      return count;
    };
    EXPECT_GT(widthOf(extent.bottom) + widthOf(extent.bottom - 1),
              widthOf(extent.top) + widthOf(extent.top + 1));
  }

  std::unique_ptr<HostImage> image;
};

TEST_F(OverlayStage, text_arrives_in_the_windows_picture_upright) {
  std::size_t images = 0;
  for (const uint32_t pixelType : {ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO12P, ZYN_PIXEL_RGB8, ZYN_PIXEL_BAYERRG8}) {
    for (const uint32_t origin : {0u, 1u}) {
      Prepare(pixelType, origin);
      ASSERT_EQ(display->DisplayVideo(&image->record), 0u);
      ASSERT_TRUE(WaitForImages(++images));
      ASSERT_EQ(receiver.LastResult(), "0");
      ExpectLetter(*display->GetProcessor()->FindProcessor("image.display")->Out());
    }
  }
}

TEST_F(OverlayStage, text_arrives_in_converted_images_upright) {
  for (const uint32_t pixelType : {ZYN_PIXEL_MONO12, ZYN_PIXEL_RGB8, ZYN_PIXEL_BAYERRG8, ZYN_PIXEL_MONO12P}) {
    for (const uint32_t origin : {0u, 1u}) {
      for (const bool copied : {false, true}) {
        Prepare(pixelType, origin);
        // "image.unpacked" then puts out an image of its own, which has no mark.
        if (copied) display->GetProcessor()->FindProcessor("image.unpacked")->Enable(true);
        HostImage output(ZYN_PIXEL_RGB8, kWidth, kHeight);
        ASSERT_EQ(display->ConvertImage(&image->record, &output.record), 0u);
        ExpectLetter(output.record);
        // What stages that work in place hand out is still there.
        const ZynImage* const last = display->GetProcessor()->FindProcessor("image.overlay")->Out();
        EXPECT_EQ(last->width, kWidth);
        EXPECT_EQ(last->height, kHeight);
        display->ReleaseConverter();
      }
    }
  }
}

}  // namespace display_test

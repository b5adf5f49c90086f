// Stages that a host puts into the chain of its display.
#include <algorithm>
#include <vector>

#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "tests/display/DisplayFixture.h"
#include "tests/display/HostCodeStage.h"

namespace display_test {
namespace {

// Turns every sample round: 255 - v.
class Negative : public ZynImgProcessor {
 public:
  explicit Negative(std::vector<ZynImage>* heard) : seen(heard) {}

  uint32_t Init(const ZynImage*, const ZynImage*) override { return 0; }
  uint32_t ProcessImage(const ZynImage* source, ZynImage*, void*) override {
    seen->push_back(*source);
    pixels.assign(source->imageData, source->imageData + source->imageSize);
    for (uint8_t& pixel : pixels) pixel = static_cast<uint8_t>(255 - pixel);
    out = *source;
    out.imageData = pixels.data();
    out.ownedData = nullptr;
    out.attachments = nullptr;
    return 0;
  }
  void Release() override {}
  ZynComponent* GetComponent() override { return nullptr; }
  ZynImage* Out() override { return &out; }
  ZynImage* GetImageInfo(bool) override { return &out; }
  bool Enable(bool) override { return true; }
  bool IsEnabled() override { return true; }

 private:
  std::vector<ZynImage>* seen;  // GUI thread
  std::vector<uint8_t> pixels;
  ZynImage out{};
};

}  // namespace

using HostStage = DisplayTest;

TEST_F(HostStage, before_image_unpacked_works_on_each_image_that_the_host_sends) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  Start(image);
  std::vector<ZynImage> seen;
  ASSERT_EQ(display->GetProcessor()->InsertProcessor("image.unpacked", "host", new Negative(&seen)), 0u);
  for (const uint8_t level : {uint8_t{10}, uint8_t{200}}) {
    std::fill(image.pixels.begin(), image.pixels.end(), level);
    image.record.imageID = level;
    const std::size_t before = receiver.Images();
    ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
    ASSERT_TRUE(WaitForImages(before + 1));
    EXPECT_EQ(receiver.LastResult(), "0");
    ASSERT_EQ(seen.size(), before + 1);
    EXPECT_EQ(seen.back().imageID, level);
    EXPECT_EQ(seen.back().pixelType, ZYN_PIXEL_MONO8);
    EXPECT_EQ(seen.back().width, 64u);
    EXPECT_EQ(seen.back().height, 48u);
    // And the window's picture is made of what it produced.
    const ZynImage* const shown = display->GetProcessor()->Out();
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(shown->imageID, level);
    EXPECT_EQ(shown->pixelType, ZYN_PIXEL_RGB8);
    EXPECT_TRUE(std::all_of(shown->imageData, shown->imageData + 64 * 3,
                            [level](uint8_t value) { return value == 255 - level; }));
  }
}

TEST_F(HostStage, that_fails_ends_the_image_with_1_until_the_next_one) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48, 0, 50);
  Start(image);
  bool fails = true;
  auto* const stage = new HostCodeStage([&fails] { return fails ? 0x80FF0005u : 0u; });
  ASSERT_EQ(display->GetProcessor()->InsertProcessor("image.unpacked", "host", stage), 0u);
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitForImages(1));
  EXPECT_EQ(receiver.LastResult(), "1");  // the stage's own code is not passed on
  EXPECT_EQ(display->LastError(), 1u);
  Settle();
  EXPECT_EQ(display->LastError(), 1u);  // nothing waits that would turn it into 8
  EXPECT_FALSE(display->Viewer()->Window()->hasImage());
  EXPECT_EQ(display->OutputRate().Total(), 0);

  fails = false;
  EXPECT_EQ(display->DisplayVideo(&image.record), 0u);
  EXPECT_EQ(display->LastError(), 0u);
  ASSERT_TRUE(WaitForImages(2));
  EXPECT_EQ(receiver.LastResult(), "0");
  EXPECT_TRUE(WaitFor([this] { return display->Viewer()->Window()->hasImage(); }));
  EXPECT_EQ(display->OutputRate().Total(), 1);
}

}  // namespace display_test

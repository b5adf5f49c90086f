// Records with attachments that are none, or that have gone: a host hands over pixels, and nothing else.
#include "tests/display/OpenGLFixture.h"

namespace display_test {
namespace {

class StrangeAttachments : public OpenGLDisplay {
 protected:
  StrangeAttachments() {
    for (size_t i = 0; i < picture.pixels.size(); ++i) picture.pixels[i] = static_cast<uint8_t>(i * 7);
  }
  std::vector<uint8_t> Converted(const ZynImage& input) {
    HostImage output(ZYN_PIXEL_RGB8, kPictureWidth, kPictureHeight);
    output.record.attachments = input.attachments;
    EXPECT_EQ(display->ConvertImage(&input, &output.record), 0u);
    EXPECT_EQ(output.record.attachments, input.attachments);
    return output.pixels;
  }
  void ShowAndConvert(bool opengl) {
    SetVariant(opengl);
    Start(picture);
    ASSERT_TRUE(display->Viewer() && Window()) << "there is no OpenGL";
    ShowNext(picture);

    ZynImage wild = picture.record;
    wild.attachments = reinterpret_cast<void*>(uintptr_t{0x10});
    EXPECT_EQ(Converted(wild), picture.pixels);
    // A copy of a record of the chain, with the host's own pixels: first of one that lives, then of one that
    // has gone.
    ZynImage copy = *display->GetProcessor()->Out();
    ASSERT_EQ(copy.attachments != nullptr, opengl);
    copy.imageData = picture.pixels.data();
    copy.origin = 0;
    EXPECT_EQ(Converted(copy), picture.pixels);
    ZynImage format = copy;
    ASSERT_EQ(display->Initialize(&format), 0u);
    EXPECT_EQ(Converted(copy), picture.pixels);
    for (const ZynImage* const record : {&wild, &copy}) {
      const std::size_t before = receiver.Images();
      ASSERT_EQ(display->DisplayVideo(record), 0u);
      ASSERT_TRUE(WaitForImages(before + 1));
      EXPECT_EQ(receiver.LastResult(), "0");
      EXPECT_EQ(Converted(*record), picture.pixels);
    }
    ASSERT_EQ(display->Initialize(&wild), 0u);
    ASSERT_EQ(display->InitConverter(&wild), 0u);
  }

  static constexpr uint32_t kPictureWidth = 40, kPictureHeight = 12;
  HostImage picture{ZYN_PIXEL_RGB8, kPictureWidth, kPictureHeight};
};

TEST_F(StrangeAttachments, are_not_followed_on_the_processor) {
  ShowAndConvert(false);
}

TEST_F(StrangeAttachments, are_not_followed_on_the_card_on_the_screen) {
  ShowAndConvert(true);
}

}  // namespace
}  // namespace display_test

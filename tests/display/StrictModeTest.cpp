// The short chain for very large pictures, held against the processor on small ones.
#include <cmath>
#include <set>

#include "tests/display/EqualityFormat.h"
#include "tests/display/OpenGLFixture.h"

namespace display_test {
namespace {

// Mosaics: the card repeats the edge where the processor mirrors it.
constexpr int kMosaicBorder = 2;

class StrictMode : public OpenGLDisplay,
                   public testing::WithParamInterface<const char*>,
                   protected equality::MatrixFormat {
 protected:
  static constexpr int kPictureWidth = 128, kPictureHeight = 96;

  StrictMode() : MatrixFormat(GetParam()) {
    Fill(picture, 11);
    // The window gets the picture's size, so that it is shown one to one; the scroll bars take the rest.
    parent.resize(kPictureWidth + 14, kPictureHeight + 14);
  }

  // As for more than 12 million pixels: the size alone decides, so the chain is built once more.
  void StartStrict() {
    SetVariant(true);
    Start(picture);
    ASSERT_TRUE(display->Viewer() && Window()) << "there is no OpenGL";
    display->Parameters().Set("strict", "1");
    auto* const chain = dynamic_cast<QTDProcessor*>(display->GetProcessor());
    const ZynImage header = QTD::ImageCompleted(picture.record);
    ASSERT_EQ(chain->Init(&header), 0u);
    ASSERT_EQ(display->Viewer()->attachProcessor(&header, chain), 0u);
    const std::string head = kind.lsb ? "unpack " : "";
    ASSERT_EQ(StageNames(), head + (kind.bayer ? "bayer " : "") + "image.output image.display ");
  }
  void StartOnProcessor() {
    SetVariant(false);
    Start(picture);
  }
  QImage Shown() {
    EXPECT_TRUE(WaitFor([&] { return Window()->isExposed(); }));
    ShowNext(picture);
    return Grab();
  }
  QImage Converted() {
    HostImage output(ZYN_PIXEL_RGB8, kPictureWidth, kPictureHeight);
    display->ReleaseConverter();
    EXPECT_EQ(display->ConvertImage(&picture.record, &output.record), 0u);
    QImage result(kPictureWidth, kPictureHeight, QImage::Format_RGB32);
    const uint8_t* pixel = output.pixels.data();
    for (int y = 0; y < kPictureHeight; ++y) {
      for (int x = 0; x < kPictureWidth; ++x, pixel += 3)
        result.setPixel(x, y, qRgb(pixel[0], pixel[1], pixel[2]));
    }
    return result;
  }
  void ExpectEqual(const QImage& plain, const QImage& card, int bound) {
    ASSERT_EQ(plain.size(), QSize(kPictureWidth, kPictureHeight));
    ASSERT_EQ(card.size(), plain.size());
    const int border = kind.bayer ? kMosaicBorder : 0;
    std::set<QRgb> colours;
    int most = 0;
    for (int y = border; y < kPictureHeight - border; ++y) {
      for (int x = border; x < kPictureWidth - border; ++x) {
        const QRgb one = plain.pixel(x, y), other = card.pixel(x, y);
        colours.insert(one);
        most = std::max({most, std::abs(qRed(one) - qRed(other)), std::abs(qGreen(one) - qGreen(other)),
                         std::abs(qBlue(one) - qBlue(other))});
      }
    }
    EXPECT_LE(most, bound);
    EXPECT_GT(colours.size(), 50u) << "there is no picture";
  }

  HostImage picture{code, kPictureWidth, kPictureHeight};
};

// A mosaic is rounded once in each variant.
TEST_P(StrictMode, converts_as_the_processor_does) {
  for (const bool bottomUp : {false, true}) {
    SCOPED_TRACE(bottomUp ? "bottom-up" : "top-down");
    picture.record.origin = bottomUp;
    StartOnProcessor();
    const QImage plain = Converted();
    ASSERT_NO_FATAL_FAILURE(StartStrict());
    ExpectEqual(plain, Converted(), kind.bayer ? 1 : 0);
  }
}

// Besides, the processor cuts lower bits off, and the card rounds.
TEST_P(StrictMode, shows_what_the_processor_does) {
  for (const bool bottomUp : {false, true}) {
    SCOPED_TRACE(bottomUp ? "bottom-up" : "top-down");
    picture.record.origin = bottomUp;
    StartOnProcessor();
    const QImage plain = Shown();
    ASSERT_NO_FATAL_FAILURE(StartStrict());
    ExpectEqual(plain, Shown(), (kind.bayer ? 1 : 0) + (depth > 8 ? 1 : 0));
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, StrictMode,
                         testing::Values("Mono8", "Mono12", "Mono12p", "BayerRG8", "BayerBG12p", "RGB8",
                                         "RGB12", "BGR8"),
                         [](const testing::TestParamInfo<const char*>& format) {
                           return std::string(format.param) + "_on_the_screen";
                         });

}  // namespace
}  // namespace display_test

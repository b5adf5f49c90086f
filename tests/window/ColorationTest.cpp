// The exposure coloration behind the viewer's display stage, in a real chain.
#include <cstring>
#include <string>

#include "Harness.h"
#include "QTD/chain/QTDProcessor.h"
#include "QTD/image/PixelFormats.h"
#include "QTD/window/QTDViewer.h"
#include "chain/ChainFakes.h"

namespace {

constexpr uint32_t kWidth = 6, kHeight = 2;

// A dark, a bright and some other pixels in the first line: the value of all their samples.
const uint32_t kParts[kWidth] = {0, 1, 64, 192, 254, 255};

class ColorationInChainTest : public testing::Test {
 protected:
  ~ColorationInChainTest() override {
    chain.Release();
    QTD::ImageDelete(source);
  }

  // `largest` gives the last two values: the one below it, and itself.
  void Start(uint32_t code) {
    QTD::ImageDelete(source);
    source = QTD::ImageCreate(nullptr, kWidth, kHeight, code);
    ASSERT_TRUE(source);
    const uint32_t largest = (1u << source->bitDepth) - 1;
    for (uint32_t x = 0; x < kWidth; ++x) {
      // A dark pixel next to black differs in one sample only, and so does the bright one next to white.
      for (uint32_t c = 0; c < source->channels; ++c) {
        const bool first = c == 0;
        Put(x, c, x == 1 ? first : x == 4 ? largest - first : x == 5 ? largest : kParts[x]);
      }
    }
    ASSERT_EQ(0u, chain.Init(source));
    ASSERT_EQ(0u, viewer.attachProcessor(source, &chain));
  }

  void Put(uint32_t x, uint32_t channel, uint32_t value) {
    const uint32_t index = x * source->channels + channel;
    const auto word = static_cast<uint16_t>(value);
    if (source->bitDepth > 8) {
      std::memcpy(source->imageData + 2 * index, &word, 2);
    } else {
      source->imageData[index] = static_cast<uint8_t>(word);
    }
  }

  ZynImgProcessor* Coloration() { return chain.FindProcessor("image.coloration"); }

  // g green, r red, . any other colour.
  std::string Marks() {
    EXPECT_EQ(0u, chain.ProcessImage(source, nullptr, nullptr));
    const ZynImage* shown = chain.Out();
    if (!shown || shown->pixelType != ZYN_PIXEL_RGB8) return "no picture";
    std::string marks;
    for (uint32_t x = 0; x < kWidth; ++x) {
      const uint8_t* pixel = shown->imageData + 3 * x;
      const bool green = pixel[0] == 0 && pixel[1] == 255 && pixel[2] == 0;
      const bool red = pixel[0] == 255 && pixel[1] == 0 && pixel[2] == 0;
      marks += green ? 'g' : red ? 'r' : '.';
    }
    return marks;
  }

  QWidget host;
  QTDViewer viewer{&host, false};
  QTDProcessor chain{nullptr, false};
  ZynImage* source = nullptr;
};

const uint32_t kFormats[] = {ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO12, ZYN_PIXEL_MONO16, ZYN_PIXEL_RGB8,
                             ZYN_PIXEL_BGR8,  ZYN_PIXEL_RGB12,  ZYN_PIXEL_BGR16};

}  // namespace

TEST_F(ColorationInChainTest, marks_when_it_is_enabled_and_makes_the_values_copied) {
  for (const uint32_t code : kFormats) {
    Start(code);
    auto* unpacked = chain.FindProcessor("image.unpacked");
    EXPECT_EQ("......", Marks()) << std::hex << code;
    EXPECT_FALSE(unpacked->IsEnabled());
    EXPECT_EQ(source, unpacked->Out());

    EXPECT_TRUE(Coloration()->Enable(true));
    EXPECT_TRUE(unpacked->IsEnabled());
    EXPECT_EQ("g....r", Marks()) << std::hex << code;
    EXPECT_NE(source, unpacked->Out());

    EXPECT_FALSE(Coloration()->Enable(false));
    EXPECT_FALSE(unpacked->IsEnabled());
    EXPECT_EQ("......", Marks()) << std::hex << code;
    EXPECT_EQ(source, unpacked->Out());
  }
}

TEST_F(ColorationInChainTest, stages_that_work_in_place_do_not_move_the_marks) {
  for (const uint32_t code : kFormats) {
    for (const int filling : {0, 0x0F}) {
      Start(code);
      auto* spoiler = new chain_test::FakeStage("spoiler", nullptr);
      spoiler->onRun = [spoiler, filling] {
        spoiler->out = const_cast<ZynImage*>(spoiler->seenSource);
        std::memset(spoiler->out->imageData, filling, spoiler->out->imageSize);
      };
      ASSERT_EQ(0u, chain.InsertProcessor("image.output", "spoiler", spoiler));
      Coloration()->Enable(true);
      EXPECT_EQ("g....r", Marks()) << std::hex << code << " " << filling;
      EXPECT_EQ("g....r", Marks()) << std::hex << code << " " << filling;
    }
  }
}

TEST_F(ColorationInChainTest, colour_correction_does_not_move_the_marks) {
  for (const uint32_t code : {ZYN_PIXEL_MONO12, ZYN_PIXEL_MONO16, ZYN_PIXEL_RGB12, ZYN_PIXEL_BGR16}) {
    Start(code);
    Coloration()->Enable(true);
    for (const char* offset : {"1.0", "-1.0"}) {  // all white, all black
      auto* correction =
          dynamic_cast<ZynDisplayQT::ColorCorrection*>(chain.FindProcessor("image.colorcorrection"));
      ASSERT_TRUE(correction);
      QTD::ARGUMENTS args{{"offs.r", offset}, {"offs.g", offset}, {"offs.b", offset}};
      ASSERT_EQ(1u, correction->RunCommand("cmd.params.apply", &args));
      EXPECT_EQ("g....r", Marks()) << std::hex << code << " " << offset;
      const uint8_t* other = chain.Out()->imageData + 6;
      EXPECT_EQ(offset[0] == '-' ? 0 : 255, other[0]);  // the correction was at work
    }
  }
}

TEST_F(ColorationInChainTest, a_reduced_depth_has_thresholds_of_8_bits) {
  chain.Parameters().Set("image.downscale", "1");
  Start(ZYN_PIXEL_MONO12);
  Coloration()->Enable(true);
  // 0, 1 >> 4, 64 >> 4 = 4, 192 >> 4 = 12, 4094 >> 4 = 255, 4095 >> 4 = 255
  EXPECT_EQ("gg..rr", Marks());
}

TEST_F(ColorationInChainTest, thresholds_come_by_command) {
  Start(ZYN_PIXEL_MONO8);
  Coloration()->Enable(true);
  QTD::ARGUMENTS args{{"thres.lo", "65"}, {"thres.hi", "191"}};
  auto* coloration = dynamic_cast<ZynDisplayQT::ExposureColoration*>(Coloration());
  ASSERT_TRUE(coloration);
  EXPECT_EQ(1u, coloration->RunCommand("cmd.params.apply", &args));
  EXPECT_EQ("gggrrr", Marks());
  EXPECT_EQ(1u, coloration->RunCommand("cmd.params.reset", nullptr));
  EXPECT_EQ("g....r", Marks());
}

// The stages that the viewer adds to a chain.
#include <map>

#include "Harness.h"
#include "QTD/chain/QTDProcessor.h"
#include "QTD/window/QTDViewer.h"
#include "RecordingChain.h"
#include "cpu/stages/CPUIPExposureColoration.h"

namespace {

using windowtest::RecordingChain;
using windowtest::Settle;

class OpenViewer : public QTDViewer {
 public:
  using QTDViewer::QTDViewer;
  using QTDViewer::stageOutput;
  using QTDViewer::stageSource;
};

class QTDViewerStagesTest : public testing::Test {
 protected:
  static ZynImage Format(uint32_t width, uint32_t height, uint32_t pixelType) {
    ZynImage record{};
    QTD::ImageCreateHeader(&record, width, static_cast<int32_t>(height), pixelType);
    return record;
  }
  void ExpectFailure(uint32_t code, const ZynImage* format, ZynImgProcessingChain* processor) {
    EXPECT_EQ(code, viewer.attachProcessor(format, processor));
    EXPECT_EQ(code, viewer.LastError());
    EXPECT_EQ(nullptr, viewer.stageSource);
    EXPECT_EQ(nullptr, viewer.stageOutput);
  }

  QWidget host;
  OpenViewer viewer{&host, false};
  RecordingChain chain;
};

}  // namespace

TEST_F(QTDViewerStagesTest, adds_a_stage_that_makes_8_bit_rgb) {
  const ZynImage format = Format(64, 48, ZYN_PIXEL_MONO12);
  ASSERT_EQ(0u, viewer.attachProcessor(&format, &chain));
  EXPECT_EQ(0u, viewer.LastError());
  ASSERT_EQ((std::vector<std::string>{"image.display", "image.coloration"}), chain.names);
  ASSERT_EQ(2u, chain.stages.size());
  auto* const display = dynamic_cast<QTD::ImageProcessorData*>(chain.stages[0]);
  ASSERT_TRUE(display);
  EXPECT_EQ(&chain.component, display->GetParent());
  const ZynImage* source = chain.stages[0]->GetImageInfo(true);
  ASSERT_TRUE(source);
  EXPECT_EQ(ZYN_PIXEL_MONO12, source->pixelType);
  EXPECT_EQ(64u, source->width);
  EXPECT_EQ(48u, source->height);
  const ZynImage* output = chain.stages[0]->GetImageInfo(false);
  ASSERT_TRUE(output);
  EXPECT_EQ(ZYN_PIXEL_RGB8, output->pixelType);
  EXPECT_EQ(64u, output->width);
  EXPECT_EQ(48u, output->height);
  EXPECT_EQ(ZYN_PIXEL_MONO12, viewer.stageSource->pixelType);
  EXPECT_EQ(ZYN_PIXEL_RGB8, viewer.stageOutput->pixelType);
}

TEST_F(QTDViewerStagesTest, adds_an_exposure_coloration_that_is_off) {
  const ZynImage format = Format(64, 48, ZYN_PIXEL_MONO12);
  ASSERT_EQ(0u, viewer.attachProcessor(&format, &chain));
  ASSERT_EQ(2u, chain.stages.size());
  auto* coloration = dynamic_cast<CPUIPExposureColoration*>(chain.stages[1]);
  ASSERT_TRUE(coloration);
  EXPECT_EQ(&chain.component, coloration->GetParent());
  EXPECT_FALSE(coloration->IsEnabled());
  EXPECT_TRUE(coloration->Enable(true));  // counted down once only
  const ZynImage* picture = coloration->GetImageInfo(true);
  ASSERT_TRUE(picture);
  EXPECT_EQ(ZYN_PIXEL_RGB8, picture->pixelType);
  EXPECT_EQ(64u, picture->width);
  EXPECT_EQ(48u, picture->height);
}

TEST_F(QTDViewerStagesTest, starts_from_the_chains_last_format) {
  const ZynImage format = Format(64, 48, ZYN_PIXEL_MONO12);
  chain.last = QTD::ImageCreateHeader(nullptr, 32, 24, ZYN_PIXEL_BGR8);
  ASSERT_EQ(0u, viewer.attachProcessor(&format, &chain));
  EXPECT_EQ(ZYN_PIXEL_BGR8, chain.stages[0]->GetImageInfo(true)->pixelType);
  EXPECT_EQ(32u, chain.stages[0]->GetImageInfo(false)->width);
  EXPECT_EQ(24u, chain.stages[0]->GetImageInfo(false)->height);
}

TEST_F(QTDViewerStagesTest, null_and_empty_arguments_are_bad) {
  const ZynImage format = Format(64, 48, ZYN_PIXEL_MONO8);
  ZynImage noWidth = format;
  noWidth.width = 0;
  ZynImage noHeight = format;
  noHeight.height = 0;
  ExpectFailure(7, nullptr, &chain);
  ExpectFailure(7, &noWidth, &chain);
  ExpectFailure(7, &noHeight, &chain);
  ExpectFailure(7, &format, nullptr);
  EXPECT_EQ(7u, viewer.attachCPU(&format, nullptr));
  EXPECT_EQ(7u, viewer.attachGL(&format, nullptr));
  EXPECT_TRUE(chain.names.empty());
  ASSERT_EQ(0u, viewer.attachProcessor(&format, &chain));
  EXPECT_EQ(0u, viewer.LastError());
}

TEST_F(QTDViewerStagesTest, a_chain_without_a_size_is_not_ready) {
  const ZynImage format = Format(64, 48, ZYN_PIXEL_MONO8);
  chain.last = QTD::ImageCreateHeader(nullptr, 32, 24, ZYN_PIXEL_MONO8);
  chain.last->width = 0;
  ExpectFailure(8, &format, &chain);
  EXPECT_TRUE(chain.names.empty());
}

TEST_F(QTDViewerStagesTest, a_format_that_has_no_record_is_out_of_memory) {
  ZynImage format = Format(64, 48, ZYN_PIXEL_MONO8);
  format.pixelType = 0x01080100 | 0xFF;
  ExpectFailure(9, &format, &chain);
  // More bytes than a record can count.
  format = Format(64, 48, ZYN_PIXEL_MONO8);
  format.width = 0x7FFFFFFF;
  format.height = 0xFFFFFFFF;
  ExpectFailure(9, &format, &chain);
  EXPECT_TRUE(chain.names.empty());
}

TEST_F(QTDViewerStagesTest, a_stage_that_refuses_the_format_fails) {
  const ZynImage format = Format(64, 48, ZYN_PIXEL_MONO12P);
  ExpectFailure(1, &format, &chain);
  EXPECT_TRUE(chain.names.empty());
}

TEST_F(QTDViewerStagesTest, a_stage_that_the_chain_refuses_fails) {
  const ZynImage format = Format(64, 48, ZYN_PIXEL_MONO8);
  chain.refused = "image.display";
  ExpectFailure(1, &format, &chain);
  EXPECT_EQ(std::vector<std::string>{"image.display"}, chain.names);
  chain.refused = "image.coloration";
  ExpectFailure(1, &format, &chain);
  ASSERT_EQ(1u, chain.stages.size());  // the display stage is the chain's already
  EXPECT_EQ("image.coloration", chain.names.back());
  chain.refused.clear();
  EXPECT_EQ(0u, viewer.attachProcessor(&format, &chain));
}

TEST_F(QTDViewerStagesTest, releases_its_records) {
  const ZynImage format = Format(64, 48, ZYN_PIXEL_MONO8);
  ASSERT_EQ(0u, viewer.attachProcessor(&format, &chain));
  ASSERT_TRUE(viewer.stageSource);
  EXPECT_EQ(0u, viewer.releaseImages());
  EXPECT_EQ(nullptr, viewer.stageSource);
  EXPECT_EQ(nullptr, viewer.stageOutput);
  EXPECT_EQ(0u, viewer.releaseImages());
  // Again, without a release in between: the former records are not lost.
  ASSERT_EQ(0u, viewer.attachProcessor(&format, &chain));
  ASSERT_EQ(0u, viewer.attachProcessor(&format, &chain));
}

TEST_F(QTDViewerStagesTest, without_a_window_nothing_is_attached) {
  const ZynImage format = Format(64, 48, ZYN_PIXEL_MONO8);
  OpenViewer homeless(nullptr, false);
  EXPECT_EQ(8u, homeless.attachProcessor(&format, &chain));
  EXPECT_EQ(7u, homeless.attachProcessor(nullptr, &chain));
  delete viewer.Window();
  ExpectFailure(8, &format, &chain);
  EXPECT_TRUE(chain.names.empty());
}

// Its surface is none that they could work on.
TEST_F(QTDViewerStagesTest, a_processors_window_takes_no_stages_on_the_card) {
  const ZynImage format = Format(64, 48, ZYN_PIXEL_MONO8);
  viewer.Window()->Surface()->resize(200, 150);  // there is something to paint on
  EXPECT_EQ(1u, viewer.attachGL(&format, &chain));
  EXPECT_TRUE(chain.names.empty());
}

class ChainToWindowTest : public windowtest::ViewerTest {};

TEST_F(ChainToWindowTest, a_deep_monochrome_image_reaches_the_window) {
  // Columns of 12-bit values 0 to 4095: shown as v >> 4 in all three components.
  ZynImage* raw = QTD::ImageCreate(nullptr, 400, 300, ZYN_PIXEL_MONO12);
  ASSERT_TRUE(raw);
  for (uint32_t y = 0; y < raw->height; ++y) {
    auto* line = reinterpret_cast<uint16_t*>(raw->imageData + y * raw->linePitch);
    for (uint32_t x = 0; x < raw->width; ++x) line[x] = static_cast<uint16_t>(x * 10);
  }
  {
    QTDProcessor chain(nullptr, false);
    ASSERT_EQ(0u, chain.Init(raw));
    ASSERT_EQ(0u, viewer->attachProcessor(raw, &chain));
    ASSERT_EQ(0u, chain.ProcessImage(raw, nullptr, nullptr));
    viewer->setImage(chain.Out(), true);
    const QImage seen = Grab();
    for (const int x : {0, 1, 17, 150, 399}) {
      const int level = x * 10 / 16;
      EXPECT_EQ(qRgb(level, level, level), seen.pixel(x, 150)) << x;
    }
    viewer->setImage(nullptr, false);
  }
  QTD::ImageDelete(raw);
}

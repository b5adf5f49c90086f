// The stages on the card that the viewer adds to a chain. Needs an X server.
#include "Harness.h"
#include "QTD/window/QTDViewer.h"
#include "RecordingChain.h"
#include "chain/ChainFakes.h"
#include "gl/screen/QGLScreen.h"
#include "gl/stages/QGLIPExposureColoration.h"
#include "gl/stages/QGLIPImage.h"
#include "gl/surface/QGLSurface.h"

namespace {

using windowtest::RecordingChain;

class OpenViewer : public QTDViewer {
 public:
  using QTDViewer::QTDViewer;
  using QTDViewer::stageOutput;
  using QTDViewer::stageSource;
};

class QTDViewerGL : public testing::Test {
 protected:
  void SetUp() override {
    viewer = std::make_unique<OpenViewer>(&host, true);
    ASSERT_NE(viewer->Window(), nullptr) << "there is no OpenGL";
    controller.Publish(viewer->Window()->Surface());
    viewer->setDisplay(&controller);
  }
  static ZynImage Format(uint32_t pixelType) {
    ZynImage record{};
    QTD::ImageCreateHeader(&record, 64, 48, pixelType);
    return record;
  }
  uint32_t Attach(uint32_t pixelType, ZynImgProcessingChain& to) {
    const ZynImage format = Format(pixelType);
    return viewer->attachProcessor(&format, &to);
  }
  static std::string Parameter(ZynImgProcessor* stage, const char* name) {
    char text[64] = "absent";
    uint32_t size = sizeof text;
    stage->GetComponent()->GetParameterString(name, text, &size);
    return text;
  }

  chain_test::FakeDisplay controller;
  QWidget host;
  std::unique_ptr<OpenViewer> viewer;
};

}  // namespace

TEST_F(QTDViewerGL, adds_a_display_and_a_coloration_that_is_off_on_the_screen) {
  RecordingChain chain;
  ASSERT_EQ(Attach(ZYN_PIXEL_MONO8, chain), 0u);
  EXPECT_EQ(viewer->LastError(), 0u);
  ASSERT_EQ(chain.names, (std::vector<std::string>{"image.display", "image.coloration"}));
  EXPECT_NE(dynamic_cast<QGLIPImage*>(chain.stages[0]), nullptr);
  auto* const coloration = dynamic_cast<QGLIPExposureColoration*>(chain.stages[1]);
  ASSERT_NE(coloration, nullptr);
  EXPECT_EQ(coloration->GetParent(), &chain.component);
  EXPECT_FALSE(coloration->IsEnabled());
  EXPECT_TRUE(coloration->Enable(true));  // counted down once only
  EXPECT_EQ(chain.stages[0]->GetImageInfo(true)->pixelType, ZYN_PIXEL_MONO8);
  EXPECT_EQ(coloration->GetImageInfo(true)->pixelType, ZYN_PIXEL_RGB8);
  EXPECT_EQ(viewer->stageSource->pixelType, ZYN_PIXEL_MONO8);
  EXPECT_EQ(viewer->stageOutput->pixelType, ZYN_PIXEL_RGB8);
}

TEST_F(QTDViewerGL, makes_8_bits_of_8_and_16_of_all_others_on_the_screen) {
  const std::pair<uint32_t, uint32_t> rows[] = {
      {ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8},   {ZYN_PIXEL_RGB8, ZYN_PIXEL_RGB8},
      {ZYN_PIXEL_BGR8, ZYN_PIXEL_RGB8},    {ZYN_PIXEL_MONO10, ZYN_PIXEL_RGB16},
      {ZYN_PIXEL_MONO16, ZYN_PIXEL_RGB16}, {ZYN_PIXEL_BGR12, ZYN_PIXEL_RGB16}};
  for (const auto& [from, to] : rows) {
    RecordingChain chain;
    ASSERT_EQ(Attach(from, chain), 0u);
    EXPECT_EQ(chain.stages[0]->GetImageInfo(false)->pixelType, to) << std::hex << from;
    EXPECT_EQ(chain.stages[1]->GetImageInfo(false)->pixelType, to) << std::hex << from;
  }
}

TEST_F(QTDViewerGL, spreads_monochrome_only_on_the_screen) {
  RecordingChain mono, colour;
  ASSERT_EQ(Attach(ZYN_PIXEL_MONO12, mono), 0u);
  EXPECT_EQ(Parameter(mono.stages[0], "image.color.mono"), "1");
  EXPECT_EQ(Parameter(mono.stages[1], "image.color.mono"), "1");
  EXPECT_EQ(Parameter(mono.stages[0], "image.color.coef"), "16.000000");
  ASSERT_EQ(Attach(ZYN_PIXEL_RGB12, colour), 0u);
  EXPECT_EQ(Parameter(colour.stages[0], "image.color.mono"), "0");
  EXPECT_EQ(Parameter(colour.stages[1], "image.color.mono"), "0");
}

TEST_F(QTDViewerGL, goes_by_the_chains_last_format_on_the_screen) {
  RecordingChain chain;
  chain.last = QTD::ImageCreateHeader(nullptr, 32, 24, ZYN_PIXEL_RGB8);
  ASSERT_EQ(Attach(ZYN_PIXEL_MONO12, chain), 0u);
  EXPECT_EQ(Parameter(chain.stages[0], "image.color.mono"), "0");
  EXPECT_EQ(chain.stages[0]->GetImageInfo(false)->pixelType, ZYN_PIXEL_RGB8);
  EXPECT_EQ(chain.stages[0]->GetImageInfo(false)->width, 32u);
}

TEST_F(QTDViewerGL, turns_what_the_chain_has_not_turned_on_the_screen) {
  for (const char* flip : {"1", "0", "2"}) {
    RecordingChain chain;
    chain.component.Parameters().Set("flip", flip);
    ASSERT_EQ(Attach(ZYN_PIXEL_RGB8, chain), 0u);
    EXPECT_EQ(Parameter(chain.stages[0], "image.flip.vert"), *flip == '1' ? "1" : "absent");
  }
}

TEST_F(QTDViewerGL, has_no_coloration_in_strict_mode_on_the_screen) {
  controller.SetParameterInt("strict", 1);
  RecordingChain chain;
  ASSERT_EQ(Attach(ZYN_PIXEL_MONO8, chain), 0u);
  EXPECT_EQ(chain.names, std::vector<std::string>{"image.display"});
}

TEST_F(QTDViewerGL, leaves_no_context_current_on_the_screen) {
  RecordingChain chain;
  auto* const surface = dynamic_cast<QGLSurface*>(viewer->Window()->Surface());
  ASSERT_NE(surface, nullptr);
  ASSERT_EQ(Attach(ZYN_PIXEL_MONO8, chain), 0u);
  EXPECT_FALSE(surface->isActive());
}

TEST_F(QTDViewerGL, a_stage_that_cannot_be_attached_fails_on_the_screen) {
  for (const char* name : {"image.display", "image.coloration"}) {
    RecordingChain chain;
    chain.refused = name;
    EXPECT_EQ(Attach(ZYN_PIXEL_MONO8, chain), 1u);
    EXPECT_EQ(viewer->LastError(), 1u);
    EXPECT_EQ(viewer->stageSource, nullptr);
    EXPECT_EQ(viewer->stageOutput, nullptr);
  }
  RecordingChain chain;
  controller.Parameters().Set("surface", "0");
  EXPECT_EQ(Attach(ZYN_PIXEL_MONO8, chain), 1u);
  EXPECT_TRUE(chain.names.empty());
}

TEST_F(QTDViewerGL, bad_arguments_and_missing_surfaces_are_told_on_the_screen) {
  RecordingChain chain;
  const ZynImage format = Format(ZYN_PIXEL_MONO8);
  EXPECT_EQ(viewer->attachProcessor(nullptr, &chain), 7u);
  EXPECT_EQ(viewer->attachGL(&format, nullptr), 7u);
  chain.last = QTD::ImageCreateHeader(nullptr, 32, 24, ZYN_PIXEL_MONO8);
  chain.last->height = 0;
  EXPECT_EQ(viewer->attachProcessor(&format, &chain), 8u);
  chain.last->height = 24;
  chain.last->pixelType = 0x010801FF;
  EXPECT_EQ(viewer->attachProcessor(&format, &chain), 9u);
  delete viewer->Window();
  EXPECT_EQ(viewer->attachProcessor(&format, &chain), 8u);
  EXPECT_TRUE(chain.names.empty());
}

TEST_F(QTDViewerGL, opens_with_a_surface_and_a_screen_of_the_card_on_the_screen) {
  EXPECT_EQ(viewer->LastError(), 0u);
  EXPECT_TRUE(viewer->IsOpenGL());
  ASSERT_TRUE(viewer->Window()->isOpen());
  auto* const surface = dynamic_cast<QGLSurface*>(viewer->Window()->Surface());
  ASSERT_NE(surface, nullptr);
  EXPECT_EQ(surface->properties.GetString("state"), "ready");
  EXPECT_NE(dynamic_cast<QGLScreen*>(viewer->Window()->Screen()), nullptr);
  EXPECT_EQ(viewer->Parameters().GetPointer("surface"),
            static_cast<void*>(static_cast<QTDSurface*>(surface)));
}

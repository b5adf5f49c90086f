// What the guide says of the OpenGL variant; where no OpenGL is to be had, that it says so.
#include "tests/guide/GuideTest.h"

namespace guide {

class OpenGL : public testing::Test {
 protected:
  OpenGL() {
    widget.resize(420, 320);
    widget.show();
    display = ZynDisplayQGL::CreateComponent(&widget);
    image.bytes.assign(image.bytes.size(), 100);
  }
  ~OpenGL() override { ZynDisplayQGL::DeleteComponent(display); }
  bool Start() {
    const uint32_t code = display->Initialize(&image.record);
    EXPECT_TRUE(code == 0 || code == 0x80FF0001u) << code;
    return code == 0;
  }
  ZynImgProcessor* Stage(const char* name) { return display->GetProcessor()->FindProcessor(name); }
  bool Shows(const QColor& colour) {
    display->DisplayVideo(&image.record);
    const auto near = [](int one, int other) { return std::abs(one - other) < 2; };
    return WaitFor([&] {
      const QColor seen = OnScreen(200, 150);
      return near(seen.red(), colour.red()) && near(seen.green(), colour.green()) &&
             near(seen.blue(), colour.blue());
    });
  }

  QWidget widget;
  ZynDisplayProcessor* display = nullptr;
  Picture image{ZYN_PIXEL_MONO8, 640, 480};
};

TEST_F(OpenGL, it_is_its_own_default) {
  EXPECT_EQ(Parameter(display->GetComponent(), "system.opengl"), "1");
}

TEST_F(OpenGL, eight_bits_are_corrected_and_gamma_is_of_parts_of_the_top) {
  if (!Start()) return;
  auto* correction = static_cast<ZynDisplayQT::ColorCorrection*>(Stage("image.colorcorrection"));
  QTD::ARGUMENTS gain{{"gain.r", "1.5"}, {"gain.g", "1.5"}, {"gain.b", "1.5"}};
  EXPECT_EQ(correction->RunCommand("cmd.params.apply", &gain), 1u);
  EXPECT_TRUE(Shows(QColor(150, 150, 150))) << qPrintable(OnScreen(200, 150).name());
  QTD::ARGUMENTS gamma{{"gain.r", "1"}, {"gain.g", "1"}, {"gain.b", "1"}, {"gamma", "0.5"}};
  EXPECT_EQ(correction->RunCommand("cmd.params.apply", &gamma), 1u);
  EXPECT_TRUE(Shows(QColor(160, 160, 160))) << qPrintable(OnScreen(200, 150).name());  // 255 sqrt(100 / 255)
}

TEST_F(OpenGL, arguments_hold_for_one_apply) {
  if (!Start()) return;
  auto* correction = static_cast<ZynDisplayQT::ColorCorrection*>(Stage("image.colorcorrection"));
  QTD::ARGUMENTS gain{{"gain.r", "1.5"}, {"gain.g", "1.5"}, {"gain.b", "1.5"}};
  EXPECT_EQ(correction->RunCommand("cmd.params.apply", &gain), 1u);
  EXPECT_EQ(correction->RunCommand("cmd.params.reset", nullptr), 1u);
  EXPECT_TRUE(Shows(QColor(150, 150, 150))) << qPrintable(OnScreen(200, 150).name());
  QTD::ARGUMENTS bad{{"gain.r", "x"}};
  EXPECT_EQ(correction->RunCommand("cmd.params.apply", &bad), 0u);
  EXPECT_EQ(correction->RunCommand("cmd.params.apply", nullptr), 1u);
  EXPECT_TRUE(Shows(QColor(100, 100, 100))) << qPrintable(OnScreen(200, 150).name());
}

// Its neighbours' pixels are in memory where the stage in front brings them there.
TEST_F(OpenGL, a_stage_of_the_host_reads_pixels_that_are_brought_into_memory) {
  if (!Start()) return;
  struct Reader : ZynImgProcessor {
    uint32_t Init(const ZynImage*, const ZynImage*) override { return 0; }
    uint32_t ProcessImage(const ZynImage* source, ZynImage*, void*) override {
      if (command) command->ExecuteCommand("readGPU");
      attached = source->attachments;
      first = source->imageData[0];
      last = source->imageData[source->imageSize - 1];
      picture = *source;  // handed on
      return 0;
    }
    void Release() override {}
    ZynComponent* GetComponent() override { return nullptr; }
    ZynImage* Out() override { return &picture; }
    ZynImage* GetImageInfo(bool) override { return &picture; }
    bool Enable(bool) override { return true; }
    bool IsEnabled() override { return true; }

    ZynComponent* command = nullptr;
    bool attached = false;
    int first = -1, last = -1;
    ZynImage picture{};
  };
  std::fill_n(image.bytes.begin(), 640 * 10, static_cast<uint8_t>(50));  // the first ten lines
  ZynImgProcessingChain* chain = display->GetProcessor();
  struct Place {
    const char *front, *behind;
    bool command, turned;
  };
  const Place places[] = {{"image.unpacked", "image.colorcorrection", false, false},
                          {"image.colorcorrection", "image.overlay", true, false},
                          {"image.output", "image.display", false, true},
                          {"image.output", "image.display", true, true}};
  for (const Place& place : places) {
    SCOPED_TRACE(place.front);
    auto* reader = new Reader;
    ZynComponent* const front = Stage(place.front)->GetComponent();
    if (place.command) reader->command = front;
    if (!place.command) front->SetParameterInt("readGPU", 1);
    ASSERT_EQ(chain->InsertProcessor(place.behind, "reader", reader), 0u);
    display->DisplayVideo(&image.record);
    ASSERT_TRUE(WaitFor([&] { return reader->first >= 0; }));
    EXPECT_TRUE(reader->attached);
    EXPECT_EQ(reader->first, place.turned ? 100 : 50);
    EXPECT_EQ(reader->last, place.turned ? 50 : 100);
    front->SetParameterInt("readGPU", 0);
    EXPECT_EQ(chain->RemoveProcessor("reader"), 0u);
  }
  EXPECT_NE(Stage("image.overlay")->GetComponent()->ExecuteCommand("readGPU"), 0u);
}

TEST_F(OpenGL, marks_are_read_when_the_stage_is_prepared) {
  if (!Start()) return;
  ZynImgProcessor* marks = Stage("image.coloration");
  ASSERT_NE(marks, nullptr);
  ZynImage own = *marks->GetImageInfo(true);
  own.attachments = nullptr;
  own.ownedData = nullptr;
  marks->GetComponent()->SetParameterInt("thres.lo", 101);
  marks->GetComponent()->SetParameterInt("color.lo", 0xFF0000);
  auto* commands = static_cast<ZynDisplayQT::ExposureColoration*>(marks);
  marks->Enable(true);
  EXPECT_EQ(commands->RunCommand("cmd.params.apply", nullptr), 1u);  // reads nothing
  EXPECT_TRUE(Shows(QColor(100, 100, 100))) << qPrintable(OnScreen(200, 150).name());
  EXPECT_EQ(marks->Init(&own, nullptr), 0u);
  EXPECT_TRUE(Shows(QColor(0, 0, 255))) << qPrintable(OnScreen(200, 150).name());
  EXPECT_FALSE(marks->Enable(false));
  EXPECT_TRUE(Shows(QColor(100, 100, 100))) << qPrintable(OnScreen(200, 150).name());
}

// The window is painted and laid out anew before the next image comes.
TEST_F(OpenGL, a_stage_that_is_prepared_anew_shows_the_next_image) {
  if (!Start()) return;
  EXPECT_TRUE(Shows(QColor(100, 100, 100)));
  ZynImgProcessor* marks = Stage("image.coloration");
  ZynImage own = *marks->GetImageInfo(true);
  EXPECT_EQ(marks->Init(&own, nullptr), 0u);
  widget.resize(440, 340);
  WaitFor([] { return false; }, 50);
  marks->Enable(false);
  EXPECT_TRUE(Shows(QColor(100, 100, 100))) << qPrintable(OnScreen(200, 150).name());
}

}  // namespace guide

// Stages of a display's chain: colour correction, exposure marks, demosaicing.
#include <cmath>

#include "tests/guide/GuideTest.h"

namespace guide {

class Stages : public GuideTest {
 protected:
  void Start(const Picture& format) {
    ASSERT_EQ(display->Initialize(&format.record), 0u);
    settings->SetParameterInt("image.notification.flags.set", 0);
  }
  ZynImgProcessor* Stage(const char* name) { return display->GetProcessor()->FindProcessor(name); }
  // Shows the picture and answers the first pixel of what comes out of the chain.
  std::vector<int> Shown(const Picture& picture) {
    const ZynImage* before = display->GetProcessor()->Out();
    const uint64_t last = before ? before->imageID : 0;
    ZynImage frame = picture.record;
    frame.imageID = last + 1;
    EXPECT_EQ(display->DisplayVideo(&frame), 0u);
    EXPECT_TRUE(WaitFor([&] {
      const ZynImage* out = display->GetProcessor()->Out();
      return out && out->imageID == frame.imageID;
    }));
    return FirstPixel();
  }
  std::vector<int> FirstPixel() {
    const ZynImage* out = display->GetProcessor()->Out();
    return {out->imageData[0], out->imageData[1], out->imageData[2]};
  }

  Picture grey{ZYN_PIXEL_MONO12, 64, 48};
};

TEST_F(Stages, gain_and_offset) {
  Start(grey);
  grey.FillWords(1000);
  EXPECT_EQ(Shown(grey), std::vector<int>(3, 1000 >> 4));
  // [correction]
  ZynImgProcessingChain* chain = display->GetProcessor();  // null before Initialize
  auto* correction =
      static_cast<ZynDisplayQT::ColorCorrection*>(chain->FindProcessor("image.colorcorrection"));
  QTD::ARGUMENTS wanted{{"gain.r", "2.0"}, {"gain.g", "2.0"}, {"gain.b", "2.0"}, {"offs.r", "0.1"}};
  correction->RunCommand("cmd.params.apply", &wanted);   // holds from the next image on
  chain->FindProcessor("image.unpacked")->Enable(true);  // keeps each frame as it came, for the next line:
  display->RunCommand("cmd.image.rebuild", nullptr);     // the frame that is there, once more
  // [/correction]
  EXPECT_EQ(Shown(grey), std::vector<int>(3, (2000 + 410) >> 4));  // 0.1 of 4095 is 409.5
  EXPECT_EQ(Command(display, "cmd.image.rebuild"), 1u);
  EXPECT_TRUE(WaitFor([&] { return FirstPixel() == std::vector<int>(3, (2000 + 410) >> 4); }));
  EXPECT_EQ(correction->RunCommand("cmd.params.reset", nullptr), 1u);
  EXPECT_EQ(Shown(grey), std::vector<int>(3, 1000 >> 4));
}

TEST_F(Stages, gamma_of_values_between_0_and_1) {
  Start(grey);
  grey.FillWords(1024);
  auto* correction = static_cast<ZynDisplayQT::ColorCorrection*>(Stage("image.colorcorrection"));
  const double gamma = 0.5,
               top = 4095;  // the stage raises the sample values as they are, not parts of the top:
  const std::string scale = std::to_string(std::pow(top, (1 - gamma) / gamma));
  QTD::ARGUMENTS wanted{
      {"gain.r", scale}, {"gain.g", scale}, {"gain.b", scale}, {"gamma", std::to_string(gamma)}};
  correction->RunCommand("cmd.params.apply", &wanted);
  const int expected = static_cast<int>(std::lround(4095 * std::sqrt(1024 / 4095.0))) >> 4;
  EXPECT_EQ(Shown(grey), std::vector<int>(3, expected));
}

TEST_F(Stages, a_correction_by_parameters) {
  Start(grey);
  grey.FillWords(1000);
  ZynImgProcessor* stage = display->GetProcessor()->FindProcessor("image.colorcorrection");
  stage->GetComponent()->SetParameterDouble("gain.r", 0.5);
  stage->GetComponent()->ExecuteCommand("params.apply");
  EXPECT_EQ(Shown(grey), std::vector<int>(3, 500 >> 4));
  EXPECT_EQ(stage->GetComponent()->ExecuteCommand("params.reset"), 0u);
  EXPECT_EQ(stage->GetComponent()->ExecuteCommand("other"), 0x80FF000Au);
  for (const char* name : {"gain.g", "gain.b", "offs.r", "offs.g", "offs.b", "gamma"})
    EXPECT_NE(Parameter(stage->GetComponent(), name), "none") << name;
}

TEST_F(Stages, eight_bits_are_not_corrected) {
  Picture bytes(ZYN_PIXEL_MONO8, 64, 48), output(ZYN_PIXEL_RGB8, 64, 48);
  Start(bytes);
  auto* correction = static_cast<ZynDisplayQT::ColorCorrection*>(Stage("image.colorcorrection"));
  QTD::ARGUMENTS wanted{{"gain.r", "2"}};
  EXPECT_EQ(correction->RunCommand("cmd.params.apply", &wanted), 1u);
  EXPECT_EQ(display->ConvertImage(&bytes.record, &output.record), 0x80FF0001u);
}

TEST_F(Stages, a_correction_reaches_the_input_of_a_conversion) {
  Picture output(ZYN_PIXEL_RGB8, 64, 48);
  Start(grey);
  grey.FillWords(1000);
  auto* correction = static_cast<ZynDisplayQT::ColorCorrection*>(Stage("image.colorcorrection"));
  QTD::ARGUMENTS wanted{{"gain.r", "2"}};
  ASSERT_EQ(correction->RunCommand("cmd.params.apply", &wanted), 1u);
  Stage("image.unpacked")->Enable(true);
  EXPECT_EQ(display->ConvertImage(&grey.record, &output.record), 0u);
  EXPECT_EQ(grey.Words()[0], 1000);
  Stage("image.unpacked")->Enable(false);
  EXPECT_EQ(display->ConvertImage(&grey.record, &output.record), 0u);
  EXPECT_EQ(grey.Words()[0], 2000);  // in place: in the host's buffer
}

TEST_F(Stages, exposure_marks) {
  Start(grey);
  // [marks]
  auto* marks = static_cast<ZynDisplayQT::ExposureColoration*>(
      display->GetProcessor()->FindProcessor("image.coloration"));
  QTD::ARGUMENTS wanted{{"thres.lo", "64"},        // below: too dark; in sample values of the camera
                        {"thres.hi", "4000"},      // above: too bright
                        {"color.lo", "16711680"},  // 0x00BBGGRR: blue
                        {"color.hi", "255"}};      // red
  marks->RunCommand("cmd.params.apply", &wanted);
  marks->Enable(true);  // counts: as many false as true switch it off
  // [/marks]
  grey.FillWords(63);
  EXPECT_EQ(Shown(grey), (std::vector<int>{0, 0, 255}));
  grey.FillWords(4001);
  EXPECT_EQ(Shown(grey), (std::vector<int>{255, 0, 0}));
  grey.FillWords(4000);
  EXPECT_EQ(Shown(grey), std::vector<int>(3, 250));
  EXPECT_FALSE(marks->Enable(false));
  grey.FillWords(63);
  EXPECT_EQ(Shown(grey), std::vector<int>(3, 3));
  EXPECT_EQ(marks->RunCommand("cmd.params.reset", nullptr), 1u);
  EXPECT_EQ(Parameter(marks->GetComponent(), "thres.lo"), "-1");
}

TEST_F(Stages, another_demosaicing_method) {
  Picture raw(ZYN_PIXEL_BAYERRG12, 64, 48);
  Start(raw);
  // [method]
  ZynImgProcessor* bayer = display->GetProcessor()->FindProcessor("bayer");  // null: no Bayer format
  ZynImage source = *bayer->GetImageInfo(true);
  source.attachments = nullptr;
  source.ownedData = nullptr;
  bayer->GetComponent()->SetParameterInt("BayerAlgType", 2);  // 0 live, 1 bilinear, 2 better, 3 best
  const uint32_t code = bayer->Init(&source, nullptr);        // reads it; 9 for a method that there is not
  // [/method]
  EXPECT_EQ(code, 0u);
  raw.FillWords(2048);
  EXPECT_EQ(Shown(raw), std::vector<int>(3, 128));
  bayer->GetComponent()->SetParameterInt("BayerAlgType", 4);
  EXPECT_EQ(bayer->Init(&source, nullptr), 0x80FF0009u);
}

TEST_F(Stages, the_chain_tells_what_it_is_made_of) {
  Picture raw(ZYN_PIXEL_BAYERRG12, 64, 48);
  Start(raw);
  for (const char* name : {"image.unpacked", "bayer", "image.colorcorrection", "image.overlay",
                           "image.output", "image.display", "image.coloration"})
    EXPECT_NE(Stage(name), nullptr) << name;
  EXPECT_EQ(Stage("unpack"), nullptr);
  EXPECT_EQ(Stage("yuv2rgb"), nullptr);
  Shown(raw);
  char time[32] = "";
  uint32_t size = sizeof time;
  display->GetProcessor()->GetComponent()->GetParameterString("time", time, &size);  // mean: "1.25 ms"
  EXPECT_NE(std::string(time).find(" ms"), std::string::npos);
}

TEST_F(Stages, the_list_answers_bare_codes) {
  Picture raw(ZYN_PIXEL_BAYERRG12, 64, 48);
  Start(raw);
  ZynImgProcessingChain* const chain = display->GetProcessor();
  ZynImgProcessor* const stage = ZynDisplayCPU::Image::CreateComponent(nullptr);
  EXPECT_EQ(chain->InsertProcessor("none", "mine", stage), uint32_t{ZYN_ERR_NO_STAGE});
  EXPECT_EQ(chain->InsertProcessor("image.output", "bayer", stage), uint32_t{ZYN_ERR_STAGE_EXISTS});
  EXPECT_EQ(chain->InsertProcessor("image.output", "", stage), uint32_t{ZYN_ERR_BAD_ARGUMENT});
  EXPECT_EQ(chain->InsertProcessor(nullptr, "bayer", stage), 0u);  // at the end a name may stand twice
  EXPECT_NE(chain->FindProcessor("bayer"), stage);
  EXPECT_EQ(chain->InsertProcessor("image.output", "other", stage), uint32_t{ZYN_ERR_STAGE_EXISTS});
  EXPECT_EQ(chain->RemoveProcessor("none"), uint32_t{ZYN_ERR_NO_STAGE});
}

}  // namespace guide

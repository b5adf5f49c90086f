// Which way up a picture is converted on the card when the host has changed the chain.
#include "tests/display/HostCodeStage.h"
#include "tests/display/OpenGLFixture.h"

namespace display_test {
namespace {

// Hands on a picture of its own, in memory.
class MemoryStage : public HostCodeStage {
 public:
  explicit MemoryStage(const HostImage& source)
      : HostCodeStage([] { return 0u; }), record(QTD::ImageCompleted(source.record)) {}
  ZynImage* Out() override { return &record; }

 private:
  ZynImage record;
};

class CardConversion : public OpenGLDisplay {
 protected:
  static constexpr uint32_t kSide = 16;

  // Each line has a level of its own, the same in all columns.
  static void FillLines(HostImage& picture, uint8_t first) {
    for (uint32_t y = 0; y < kSide; ++y)
      std::fill_n(picture.pixels.begin() + y * picture.record.linePitch, kSide,
                  static_cast<uint8_t>(first + 5 * y));
  }
  void StartOn(bool opengl, uint32_t code) {
    SetVariant(opengl);
    HostImage format(code, kSide, kSide);
    ASSERT_EQ(display->Initialize(&format.record), 0u);
  }
  // The levels of the lines, of the first channel.
  std::vector<int> Lines(HostImage& input, bool bottomUp) {
    HostImage output(ZYN_PIXEL_RGB8, kSide, kSide);
    input.record.origin = bottomUp;
    EXPECT_EQ(display->ConvertImage(&input.record, &output.record), 0u);
    std::vector<int> levels;
    for (uint32_t y = 0; y < kSide; ++y) levels.push_back(output.pixels[y * output.record.linePitch + 24]);
    return levels;
  }
  static std::vector<int> Expected(int first, bool turned) {
    std::vector<int> levels;
    for (int y = 0; y < static_cast<int>(kSide); ++y)
      levels.push_back(first + 5 * (turned ? static_cast<int>(kSide) - 1 - y : y));
    return levels;
  }
  ZynImgProcessor* Stage(const char* name) { return display->GetProcessor()->FindProcessor(name); }
};

// A picture that comes to the text stage in memory is not turned by it, and in the end line 0 is at the top
// all the same.
TEST_F(CardConversion, of_a_hosts_picture_in_memory_is_upright_wherever_it_comes_in_on_the_screen) {
  HostImage own(ZYN_PIXEL_MONO8, kSide, kSide), input(ZYN_PIXEL_MONO8, kSide, kSide);
  FillLines(own, 40);
  for (const bool opengl : {false, true}) {
    for (const char* before : {"image.unpacked", "image.colorcorrection", "image.overlay", "image.output"}) {
      for (const bool bottomUp : {false, true}) {
        SCOPED_TRACE(std::string(opengl ? "card, " : "processor, ") + before +
                     (bottomUp ? ", bottom-up" : ""));
        StartOn(opengl, ZYN_PIXEL_MONO8);
        ASSERT_EQ(display->GetProcessor()->InsertProcessor(before, "host", new MemoryStage(own)), 0u);
        // Its lines come in the order of the input's.
        const std::vector<int> lines = Lines(input, bottomUp);
        const bool afterTurn = opengl && std::string(before) == "image.output";
        EXPECT_EQ(lines, Expected(40, bottomUp != afterTurn));
      }
    }
  }
}

TEST_F(CardConversion, follows_what_the_turning_stage_was_prepared_with_on_the_screen) {
  HostImage input(ZYN_PIXEL_MONO8, kSide, kSide);
  FillLines(input, 40);
  StartOn(true, ZYN_PIXEL_MONO8);
  ZynImgProcessor* const overlay = Stage("image.overlay");
  ASSERT_EQ(Lines(input, false), Expected(40, false));
  // Told, but not prepared with it.
  overlay->GetComponent()->SetParameterInt("image.flip.vert", 0);
  for (const bool bottomUp : {false, true}) EXPECT_EQ(Lines(input, bottomUp), Expected(40, bottomUp));
  ZynImage own = *overlay->GetImageInfo(true);
  ASSERT_EQ(overlay->Init(&own, nullptr), 0u);
  for (const bool bottomUp : {false, true}) EXPECT_EQ(Lines(input, bottomUp), Expected(40, bottomUp));
  overlay->GetComponent()->SetParameterInt("image.flip.vert", 1);
  for (const bool bottomUp : {false, true}) EXPECT_EQ(Lines(input, bottomUp), Expected(40, bottomUp));
}

TEST_F(CardConversion, is_upright_without_the_turning_stage_on_the_screen) {
  HostImage input(ZYN_PIXEL_MONO8, kSide, kSide);
  FillLines(input, 40);
  StartOn(true, ZYN_PIXEL_MONO8);
  ASSERT_EQ(Lines(input, false), Expected(40, false));
  ASSERT_EQ(display->GetProcessor()->RemoveProcessor("image.overlay"), 0u);
  for (const bool bottomUp : {false, true}) EXPECT_EQ(Lines(input, bottomUp), Expected(40, bottomUp));
}

// A refused `Initialize` leaves the chain as it is, and conversions with it, whatever variant it asked for.
TEST_F(CardConversion, goes_by_the_chain_after_another_variant_was_refused_on_the_screen) {
  HostImage input(ZYN_PIXEL_MONO8, kSide, kSide);
  FillLines(input, 40);
  for (const bool opengl : {true, false}) {
    for (const bool converted : {false, true}) {  // earlier, to the format that stays
      SCOPED_TRACE(std::string(opengl ? "card" : "processor") + (converted ? ", converted" : ""));
      StartOn(opengl, ZYN_PIXEL_MONO8);
      HostImage grey(ZYN_PIXEL_MONO8, kSide, kSide);
      if (converted) {
        ASSERT_EQ(display->ConvertImage(&input.record, &grey.record), 0u);
      }
      SetVariant(!opengl);
      ASSERT_NE(display->Initialize(nullptr), 0u);
      HostImage output(ZYN_PIXEL_BGR8, kSide, kSide);
      ASSERT_EQ(display->ConvertImageAnew(&input.record, &output.record), 0u);
      for (uint32_t y = 0; y < kSide; ++y)
        EXPECT_EQ(output.pixels[y * output.record.linePitch + 24], 40 + 5 * y) << y;
    }
  }
}

}  // namespace
}  // namespace display_test

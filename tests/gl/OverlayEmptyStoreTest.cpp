// The overlay stage without objects: the copy, and nothing else reaches the driver.
#include <algorithm>
#include <string>
#include <vector>

#include "EveryStage.h"

namespace {

constexpr uint32_t kWidth = 24, kHeight = 16;

// What is bound, used and cleared, in order, and passed on to the driver.
std::vector<std::string>* journal = nullptr;
void (*bindFramebuffer)(GLenum, GLuint) = nullptr;
void (*useProgram)(GLuint) = nullptr;
void (*viewport)(GLint, GLint, GLsizei, GLsizei) = nullptr;
void (*bindTexture)(GLenum, GLuint) = nullptr;

void NoteBindFramebuffer(GLenum target, GLuint name) {
  journal->push_back("framebuffer " + std::to_string(target) + (name ? " on" : " off"));
  bindFramebuffer(target, name);
}
void NoteUseProgram(GLuint name) {
  journal->push_back(name ? "program on" : "program off");
  useProgram(name);
}
void NoteViewport(GLint x, GLint y, GLsizei width, GLsizei height) {
  journal->push_back("viewport");
  viewport(x, y, width, height);
}
void NoteBindTexture(GLenum target, GLuint name) {
  journal->push_back(name ? "texture on" : "texture off");
  bindTexture(target, name);
}

class OverlayEmptyStoreTest : public StageFixture {
 protected:
  void SetUp() override {
    StageFixture::SetUp();
    if (HasFatalFailure()) return;
    auto& table = FunctionTable::of(*surface);
    bindFramebuffer = table.BindFramebuffer;
    useProgram = table.UseProgram;
    viewport = table.Viewport;
    bindTexture = table.BindTexture;
    ASSERT_EQ(Init(stage, picture), 0u);
    source = std::make_unique<OnCard>(&display, picture);
  }
  void TearDown() override {
    source.reset();
    stage.Release();
    StageFixture::TearDown();
  }

  template <typename Step>
  std::vector<std::string> Calls(Step&& step) {
    std::vector<std::string> calls;
    journal = &calls;
    auto& table = FunctionTable::of(*surface);
    const Swapped first(table.BindFramebuffer, &NoteBindFramebuffer);
    const Swapped second(table.UseProgram, &NoteUseProgram);
    const Swapped third(table.Viewport, &NoteViewport);
    const Swapped fourth(table.BindTexture, &NoteBindTexture);
    step();
    return calls;
  }
  std::vector<std::string> CallsOfARun(const ZynImage* image) {
    return Calls([&] { EXPECT_EQ(Run(stage, image), 0u); });
  }
  // The stage binds the picture's texture first.
  std::vector<std::string> CallsOfACopy() {
    auto target = made(kWidth, kHeight, ZYN_PIXEL_RGB8);
    const uint32_t texture = AttachedTexture(source->record());
    return Calls([&] {
      surface->glBindTexture(GL_TEXTURE_2D, texture);
      EXPECT_TRUE(target->copyTexture(texture, nullptr));
    });
  }

  const Samples samples = Scattered(kWidth * kHeight * 3, 255);
  const Record picture = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, samples);
  every_stage::Open<QGLIPImageOverlay> stage{&display};
  std::unique_ptr<OnCard> source;
};

TEST_F(OverlayEmptyStoreTest, does_the_calls_of_a_copy_and_no_more) {
  const std::vector<std::string> copy = CallsOfACopy();
  ASSERT_FALSE(copy.empty());
  EXPECT_EQ(CallsOfARun(source->record()), copy);
  // The same when it holds objects and is disabled, and when the last one has gone.
  const std::string id = stage.AddRect(1, 1, 5, 5, nullptr);
  ASSERT_NE(id, "");
  const std::vector<std::string> drawing = CallsOfARun(source->record());
  EXPECT_GT(drawing.size(), copy.size());
  EXPECT_TRUE(std::equal(copy.begin(), copy.end(), drawing.begin()));
  stage.Enable(false);
  EXPECT_EQ(CallsOfARun(source->record()), copy);
  stage.Enable(true);
  ASSERT_TRUE(stage.DeleteObject(id));
  EXPECT_EQ(CallsOfARun(source->record()), copy);
}

TEST_F(OverlayEmptyStoreTest, uploads_and_no_more) {
  const std::vector<std::string> upload = CallsOfARun(picture.get());
  EXPECT_EQ(std::count(upload.begin(), upload.end(), "program on"), 0);
  EXPECT_EQ(std::count(upload.begin(), upload.end(), "viewport"), 0);
  auto target = made(kWidth, kHeight, ZYN_PIXEL_RGB8);
  EXPECT_EQ(upload, Calls([&] {
              surface->glBindTexture(GL_TEXTURE_2D, target->texture());
              EXPECT_TRUE(target->fillGPU(picture.get()));
            }));
}

// One rectangle of the unit square, which is the copy itself.
TEST_F(OverlayEmptyStoreTest, draws_one_rectangle_the_copy) {
  const auto drawn = [&] { return FeedbackOf([&] { EXPECT_EQ(Run(stage, source->record()), 0u); }); };
  const Drawn copy = drawn();
  EXPECT_EQ(copy.corners().size(), 4u);
  EXPECT_TRUE(copy.lines.empty());
  const std::string id = stage.AddRect(4, 4, 5, 5, nullptr);
  const Drawn more = drawn();
  EXPECT_GT(more.lines.size() + more.corners().size(), 4u);
  stage.DeleteObject(id);
  const Drawn again = drawn();
  EXPECT_EQ(again.corners(), copy.corners());
  EXPECT_TRUE(again.lines.empty());
}

}  // namespace

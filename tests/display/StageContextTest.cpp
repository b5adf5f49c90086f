// Whether a host's stage that draws on the card finds the display's context when it goes.
#include <QOpenGLContext>

#include "tests/display/HostCodeStage.h"
#include "tests/display/OpenGLFixture.h"

namespace display_test {
namespace {

// Notes the context that is current in its `Release` and in its destructor.
struct Noted {
  QOpenGLContext* released = nullptr;
  QOpenGLContext* destroyed = nullptr;
  int calls = 0;
};

class NotingStage : public HostCodeStage {
 public:
  explicit NotingStage(
      Noted* writtenTo, std::function<uint32_t()> hostCode = [] { return 0u; })
      : HostCodeStage(std::move(hostCode)), noted(writtenTo) {}
  ~NotingStage() override {
    noted->destroyed = QOpenGLContext::currentContext();
    ++noted->calls;
  }
  void Release() override {
    noted->released = QOpenGLContext::currentContext();
    ++noted->calls;
  }

 private:
  Noted* noted;
};

class StageContext : public OpenGLDisplay {
 protected:
  void SetUp() override {
    owner = std::make_unique<QWidget>();
    owner->resize(200, 150);
    owner->show();
    display = std::make_unique<QTDDisplay>(owner.get(), true);
    ShowOnCard(picture);
    if (HasFatalFailure()) return;
    context = Surface()->Context();
    ASSERT_NE(context, nullptr);
  }
  void TearDown() override { display.reset(); }
  void Add(std::function<uint32_t()> hostCode = [] { return 0u; }) {
    auto* const stage = new NotingStage(&noted, std::move(hostCode));
    ASSERT_EQ(display->GetProcessor()->InsertProcessor("image.output", "host", stage), 0u);
  }
  void ExpectContext() {
    EXPECT_EQ(noted.calls, 2);
    EXPECT_EQ(noted.released, context);
    EXPECT_EQ(noted.destroyed, context);
    EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
  }

  HostImage picture{ZYN_PIXEL_MONO8, 64, 48};
  std::unique_ptr<QWidget> owner;
  const void* context = nullptr;  // it may go with the display
  Noted noted;
};

TEST_F(StageContext, is_current_at_a_removal_on_the_screen) {
  Add();
  ASSERT_EQ(display->GetProcessor()->RemoveProcessor("host"), 0u);
  ExpectContext();
}

TEST_F(StageContext, is_current_at_a_removal_in_a_run_on_the_screen) {
  Add([this] { return display->GetProcessor()->RemoveProcessor("host"); });
  const std::size_t before = receiver.Images();
  ASSERT_EQ(display->DisplayVideo(&picture.record), 0u);
  ASSERT_TRUE(WaitForImages(before + 1));
  ExpectContext();
}

TEST_F(StageContext, is_current_at_a_removal_in_a_conversion_on_the_screen) {
  Add([this] { return display->GetProcessor()->RemoveProcessor("host"); });
  HostImage output(ZYN_PIXEL_RGB8, 64, 48);
  EXPECT_NE(display->ConvertImage(&picture.record, &output.record), 0u);
  ExpectContext();
}

TEST_F(StageContext, is_current_when_the_chain_is_built_anew_on_the_screen) {
  Add();
  auto* const chain = dynamic_cast<QTDProcessor*>(display->GetProcessor());
  ASSERT_EQ(chain->Init(&picture.record), 0u);
  ExpectContext();
}

TEST_F(StageContext, is_current_at_another_initialisation_on_the_screen) {
  for (const bool opengl : {true, false}) {
    SCOPED_TRACE(opengl ? "of the same variant" : "of the other variant");
    noted = {};
    Add();
    SetVariant(opengl);
    ASSERT_EQ(display->Initialize(&picture.record), 0u);
    ExpectContext();
  }
}

// The end is put off there, until the locks of the image are free.
TEST_F(StageContext, is_current_at_an_initialisation_in_a_notification_on_the_screen) {
  Add();
  uint32_t code = 99;
  receiver.OnMessage([&](const std::string& name) {
    if (name != "notification.image" || code != 99) return;
    code = display->Initialize(&picture.record);
    EXPECT_EQ(noted.calls, 0);
  });
  ASSERT_EQ(display->DisplayVideo(&picture.record), 0u);
  ASSERT_TRUE(WaitFor([this] { return noted.calls == 2; }));
  EXPECT_EQ(code, 0u);
  ExpectContext();
}

// What the stage has lies on a context that is gone.
TEST_F(StageContext, is_none_where_the_surface_is_another_one_by_then_on_the_screen) {
  Add();
  bool asked = false;
  receiver.OnMessage([&](const std::string& name) {
    if (name != "notification.image" || asked) return;
    asked = true;
    display->Uninitialize();
    Window()->close();
    EXPECT_TRUE(Window()->open());
    EXPECT_EQ(noted.calls, 0);
  });
  ASSERT_EQ(display->DisplayVideo(&picture.record), 0u);
  ASSERT_TRUE(WaitFor([this] { return noted.calls == 2; }));
  EXPECT_NE(Surface()->Context(), nullptr);
  EXPECT_EQ(noted.released, nullptr);
  EXPECT_EQ(noted.destroyed, nullptr);
}

TEST_F(StageContext, is_current_at_the_end_of_use_on_the_screen) {
  Add();
  display->Uninitialize();
  ExpectContext();
}

TEST_F(StageContext, is_current_when_the_display_is_deleted_on_the_screen) {
  Add();
  display.reset();
  ExpectContext();
}

TEST_F(StageContext, is_current_when_the_hosts_widget_goes_on_the_screen) {
  Add();
  owner.reset();
  ExpectContext();
}

// As while its widget moves to another parent.
TEST_F(StageContext, is_current_while_the_window_is_no_native_one_on_the_screen) {
  Add();
  Window()->destroy();
  ASSERT_EQ(display->GetProcessor()->RemoveProcessor("host"), 0u);
  ExpectContext();
}

TEST_F(StageContext, is_gone_when_the_widget_goes_in_a_run_on_the_screen) {
  Add([this] { return owner.reset(), 0u; });
  const std::size_t before = receiver.Images();
  ASSERT_EQ(display->DisplayVideo(&picture.record), 0u);
  ASSERT_TRUE(WaitForImages(before + 1));
  EXPECT_EQ(receiver.LastResult(), "8");
  EXPECT_EQ(noted.calls, 2);
  EXPECT_EQ(noted.released, nullptr);
  EXPECT_EQ(noted.destroyed, nullptr);
}

}  // namespace
}  // namespace display_test

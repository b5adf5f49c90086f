// Careless hosts of a display on the card: what they do in stages, off the GUI thread, and at the end.
#include <QTimer>
#include <thread>

#include "QTD/display/ZynDisplayImpl.h"
#include "tests/display/HostCodeStage.h"
#include "tests/display/OpenGLFixture.h"
#include "tests/display/Watchdog.h"

namespace display_test {
namespace {

class OpenGLCareless : public OpenGLDisplay {
 protected:
  void SetUp() override {
    MakeOwner();
    display = std::make_unique<QTDDisplay>(owner.get(), true);
    ShowOnCard(picture);
  }
  void TearDown() override { display.reset(); }
  void MakeOwner() {
    owner = std::make_unique<QWidget>();
    owner->resize(200, 150);
    owner->show();
  }
  void AddStage(std::function<uint32_t()> code) {
    auto* const stage = new HostCodeStage(std::move(code));
    ASSERT_EQ(display->GetProcessor()->InsertProcessor("image.overlay", "host", stage), 0u);
  }
  // Hands an image over and waits for its result.
  std::string Result() {
    const std::size_t before = receiver.Images();
    EXPECT_EQ(display->DisplayVideo(&picture.record), 0u);
    EXPECT_TRUE(WaitForImages(before + 1));
    return receiver.LastResult();
  }
  // The display works, in another widget where its own has gone.
  void ExpectWorks() {
    if (!owner) {
      MakeOwner();
      display->Parameters().Set("system.parentWidget", QTD::ToText(static_cast<const void*>(owner.get())));
    }
    ShowOnCard(picture);
    const QImage seen = Grab();
    EXPECT_EQ(seen.pixel(seen.width() / 2, seen.height() / 2), qRgb(kLevel, kLevel, kLevel));
  }

  static constexpr uint8_t kLevel = 150;
  const Watchdog watchdog{"a careless host of the card"};
  HostImage picture{ZYN_PIXEL_MONO8, 100, 80, 0, kLevel};
  std::unique_ptr<QWidget> owner;
};

TEST_F(OpenGLCareless, stage_that_loses_the_widget_ends_the_image_with_8_on_the_screen) {
  AddStage([this] { return owner.reset(), 0u; });
  EXPECT_EQ(Result(), "8");
  Settle(20);
  EXPECT_EQ(display->Viewer(), nullptr);
  EXPECT_EQ(display->GetProcessor(), nullptr);
  ExpectWorks();
}

TEST_F(OpenGLCareless, event_loop_of_a_stage_may_lose_the_widget_on_the_screen) {
  AddStage([this] {
    QTimer::singleShot(0, owner.get(), [this] { owner.reset(); });
    return WaitFor([this] { return owner == nullptr; }) ? 0u : 1u;
  });
  EXPECT_EQ(Result(), "8");
  Settle(20);
  EXPECT_EQ(display->GetProcessor(), nullptr);
  ExpectWorks();
}

TEST_F(OpenGLCareless, conversion_may_lose_the_widget_on_the_screen) {
  AddStage([this] { return owner.reset(), 0u; });
  HostImage output(ZYN_PIXEL_RGB8, 100, 80);
  EXPECT_EQ(display->ConvertImage(&picture.record, &output.record), Composed(8));
  EXPECT_EQ(display->GetProcessor(), nullptr);
  ExpectWorks();
}

// Paints, resizes and frames that come in meanwhile: the pass of the run goes on afterwards.
TEST_F(OpenGLCareless, stage_may_run_the_event_loop_on_the_screen) {
  int runs = 0;
  AddStage([&] {
    ++runs;
    owner->resize(owner->width() + 7, owner->height() + 5);
    Window()->update();
    display->DisplayVideo(&picture.record);
    Settle(60);
    Window()->render();
    return 0u;
  });
  EXPECT_EQ(Result(), "0");
  EXPECT_GE(runs, 1);
  ASSERT_EQ(display->GetProcessor()->RemoveProcessor("host"), 0u);
  ExpectWorks();
}

TEST_F(OpenGLCareless, stage_may_ask_for_a_conversion_and_a_rebuild_on_the_screen) {
  HostImage output(ZYN_PIXEL_RGB8, 100, 80);
  uint32_t converted = 0;
  int depth = 0;
  AddStage([&] {
    converted = display->ConvertImage(&picture.record, &output.record);
    if (++depth == 1) display->slotRebuildImage();
    --depth;
    return 0u;
  });
  EXPECT_EQ(Result(), "0");
  EXPECT_EQ(converted, Composed(1));
  ASSERT_EQ(display->GetProcessor()->RemoveProcessor("host"), 0u);
  EXPECT_EQ(display->ConvertImage(&picture.record, &output.record), 0u);
  EXPECT_EQ(output.pixels, std::vector<uint8_t>(output.pixels.size(), kLevel));
  ExpectWorks();
}

TEST_F(OpenGLCareless, stage_may_ask_for_another_variant_on_the_screen) {
  uint32_t code = 0;
  AddStage([&] {
    SetVariant(false);
    code = display->Initialize(&picture.record);
    SetVariant(true);
    return 0u;
  });
  EXPECT_EQ(Result(), "0");
  EXPECT_EQ(code, Composed(8));
  ASSERT_EQ(display->GetProcessor()->RemoveProcessor("host"), 0u);
  ExpectWorks();
}

// The display's own stages free what they have on the card when the GUI thread comes to it, where that still
// is possible.
TEST_F(OpenGLCareless, stages_go_off_the_gui_thread_while_the_window_closes_on_the_screen) {
  for (int round = 0; round < 10; ++round) {
    SCOPED_TRACE(round);
    std::atomic<bool> begun{false}, ended{false};
    std::thread host([&] {
      ZynImgProcessingChain* const chain = display->GetProcessor();
      begun = true;
      for (const char* name : {"image.coloration", "image.display", "image.overlay", "image.unpacked"})
        chain->RemoveProcessor(name);
      ended = true;
    });
    while (!begun) std::this_thread::yield();
    if (round % 2) std::this_thread::sleep_for(std::chrono::microseconds(200 * round));
    // The chain stays: the host is still busy with it.
    delete Window();
    EXPECT_TRUE(WaitFor([&] { return ended.load(); }));
    host.join();
    Settle(10);
    ExpectWorks();
  }
}

TEST_F(OpenGLCareless, native_window_may_go_and_come_back_on_the_screen) {
  Window()->destroy();
  Window()->update();
  display->DisplayVideo(&picture.record);
  HostImage output(ZYN_PIXEL_RGB8, 100, 80);
  display->ConvertImage(&picture.record, &output.record);
  display->GetProcessor()->RemoveProcessor("image.coloration");
  Settle(50);
  Window()->create();
  Window()->show();
  Settle(50);
  ExpectWorks();
}

TEST_F(OpenGLCareless, display_and_widget_go_in_any_order_on_the_screen) {
  for (int order = 0; order < 6; ++order) {
    SCOPED_TRACE(order);
    if (!display) display = std::make_unique<QTDDisplay>(nullptr, true);
    ExpectWorks();
    display->DisplayVideo(&picture.record);
    switch (order) {
      case 0:
        display.reset();
        owner.reset();
        break;
      case 1:
        owner.reset();
        display.reset();
        break;
      case 2:
        delete Window();
        display.reset();
        owner.reset();
        break;
      case 3:
        delete Window();
        owner.reset();
        display.reset();
        break;
      case 4:
        delete display->Viewer();
        display.reset();
        owner.reset();
        break;
      default:
        display->Uninitialize();
        owner.reset();
        display.reset();
        break;
    }
    display.reset();
    owner.reset();
    Settle(5);
  }
}

TEST_F(OpenGLCareless, threads_deliver_while_the_format_changes_and_the_display_goes_on_the_screen) {
  HostImage grey(ZYN_PIXEL_MONO8, 64, 48), deep(ZYN_PIXEL_BAYERRG12P, 32, 18), colour(ZYN_PIXEL_RGB8, 21, 40);
  const ZynImage* const formats[] = {&grey.record, &deep.record, &colour.record};
  ZynDisplay* const host = ZynDisplay_CreateComponent();
  std::atomic<bool> stop{false};
  std::atomic<int> running{0};
  std::vector<std::thread> threads;
  for (int n = 0; n < 3; ++n) {
    ++running;
    threads.emplace_back([&, n] {
      while (!stop) ZynDisplay_DisplayVideo(host, formats[n]);
      --running;
    });
  }
  ++running;
  threads.emplace_back([&] {
    HostImage output(ZYN_PIXEL_RGB8, 64, 48);
    while (!stop) ZynDisplay_ConvertImage(host, &grey.record, &output.record);
    --running;
  });
  for (int round = 0; round < 12; ++round) {
    EXPECT_EQ(ZynDisplay_Initialize(host, owner.get(), "opengl", formats[round % 3]), 0u);
    Settle(10);
  }
  ZynDisplay_DeleteComponent(host);
  stop = true;
  EXPECT_TRUE(WaitFor([&] { return running == 0; }, 30000));
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace display_test

// The host's widget goes while the chain runs.
#include <QTimer>

#include "QTD/window/QTDViewer.h"
#include "tests/display/DisplayFixture.h"
#include "tests/display/HostCodeStage.h"
#include "tests/display/Watchdog.h"

namespace display_test {

class LostParent : public testing::Test {
 protected:
  void SetUp() override {
    owner = std::make_unique<QWidget>();
    owner->resize(100, 80);
    owner->show();
    display = std::make_unique<QTDDisplay>(owner.get(), false);
    ASSERT_EQ(display->Initialize(&image.record), 0u);
    display->AddNotification(&receiver);
    display->SetParameterInt("image.notification.flags.set", 1);
  }
  void TearDown() override {
    display.reset();
    owner.reset();
  }

  void AddStage(std::function<uint32_t()> code) {
    auto* chain = display->GetProcessor();
    ASSERT_EQ(chain->InsertProcessor("image.unpacked", "host", new HostCodeStage(std::move(code))), 0u);
  }
  // Its end waits for two calls on another thread, and counts those that came to an end.
  void AddPartingStage() {
    auto* const stage = new PartingStage([this] {
      parted += EndsElsewhere([shown = display.get()] { shown->GetProcessor(); });
      parted += EndsElsewhere([shown = display.get()] { shown->SetFit(1, false); });
    });
    ASSERT_EQ(display->GetProcessor()->AddProcessor("parting", stage), 0u);
  }
  void ExpectClosed() {
    EXPECT_EQ(owner, nullptr);
    EXPECT_EQ(display->Viewer(), nullptr);
    EXPECT_EQ(display->GetProcessor(), nullptr);
    EXPECT_EQ(display->Parameters().GetString("processor"), "0");
    EXPECT_EQ(display->Initialize(&image.record), Composed(1));
    QWidget another;
    another.resize(100, 80);
    another.show();
    display->Parameters().Set("system.parentWidget", QTD::ToText(static_cast<const void*>(&another)));
    EXPECT_EQ(display->Initialize(&image.record), 0u);
    const std::size_t before = receiver.Images();
    EXPECT_EQ(display->DisplayVideo(&image.record), 0u);
    EXPECT_TRUE(WaitFor([&] { return receiver.Images() > before; }));
    EXPECT_EQ(receiver.LastResult(), "0");
    display.reset();
  }

  // The stage runs the event loop when `isTheOne` says so, where a further frame comes in, and the receiver
  // deletes the widget when it hears of that.
  void LoseItInANestedFrame(std::function<bool()> isTheOne) {
    AddStage([this, isTheOne = std::move(isTheOne)] {
      if (nested || !isTheOne()) return 0u;
      nested = true;
      receiver.OnMessage([this](const std::string& name) {
        if (name == "notification.image") owner.reset();
      });
      EXPECT_EQ(display->DisplayVideo(&image.record), 0u);
      EXPECT_TRUE(WaitFor([this] { return owner == nullptr; }));
      Settle(20);
      return 0u;
    });
  }

  HostImage image{ZYN_PIXEL_MONO8, 64, 48, 0, 7};
  Receiver receiver;
  int parted = 0;
  bool nested = false;
  std::unique_ptr<QWidget> owner;
  std::unique_ptr<QTDDisplay> display;
};

TEST_F(LostParent, in_a_stage_ends_the_image_with_8_and_closes_the_display) {
  AddStage([this] { return owner.reset(), 0u; });
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitFor([this] { return receiver.Images() == 1; }));
  EXPECT_EQ(receiver.LastResult(), "8");
  EXPECT_EQ(display->OutputRate().Total(), 0);
  ExpectClosed();
}

TEST_F(LostParent, in_an_event_loop_of_a_stage_closes_the_display) {
  AddStage([this] {
    QTimer::singleShot(0, owner.get(), [this] { owner.reset(); });
    return WaitFor([this] { return owner == nullptr; }) ? 0u : 1u;
  });
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitFor([this] { return receiver.Images() == 1; }));
  EXPECT_EQ(receiver.LastResult(), "8");
  ExpectClosed();
}

TEST_F(LostParent, in_a_stage_that_fails_leaves_no_chain_behind) {
  AddStage([this] {
    owner.reset();
    // The stage may still change the chain that it stands in, which knows no viewer any more.
    display->GetProcessor()->RemoveProcessor("image.output");
    return 5u;
  });
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitFor([this] { return receiver.Images() == 1; }));
  EXPECT_EQ(receiver.LastResult(), "8");
  ExpectClosed();
}

TEST_F(LostParent, in_a_conversion_ends_it_with_8) {
  AddStage([this] { return owner.reset(), 0u; });
  HostImage output(ZYN_PIXEL_RGB8, 64, 48);
  EXPECT_EQ(display->ConvertImage(&image.record, &output.record), Composed(8));
  ExpectClosed();
}

TEST_F(LostParent, in_a_rebuild_closes_the_display) {
  int runs = 0;
  AddStage([&, this] {
    if (++runs == 2) owner.reset();
    return 0u;
  });
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitFor([this] { return display->OutputRate().Total() == 1; }));
  display->slotRebuildImage();
  EXPECT_EQ(runs, 2);
  EXPECT_EQ(display->OutputRate().Total(), 1);
  EXPECT_EQ(display->LastError(), 8u);
  ExpectClosed();
}

// Code of the host's waits for another thread of the host's, while its stages go with the display.

TEST_F(LostParent, in_a_stage_ends_the_stages_without_the_displays_locks) {
  AddPartingStage();
  AddStage([this] { return owner.reset(), 0u; });
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  EXPECT_TRUE(WaitFor([this] { return parted == 2; }));
  ExpectClosed();
}

TEST_F(LostParent, in_a_conversion_ends_the_stages_without_the_displays_locks) {
  AddPartingStage();
  AddStage([this] { return owner.reset(), 0u; });
  HostImage output(ZYN_PIXEL_RGB8, 64, 48);
  EXPECT_EQ(display->ConvertImage(&image.record, &output.record), Composed(8));
  EXPECT_EQ(parted, 2);
  ExpectClosed();
}

TEST_F(LostParent, in_a_rebuild_ends_the_stages_without_the_displays_locks) {
  AddPartingStage();
  int runs = 0;
  AddStage([&, this] {
    if (++runs == 2) owner.reset();
    return 0u;
  });
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitFor([this] { return display->OutputRate().Total() == 1; }));
  display->slotRebuildImage();
  EXPECT_EQ(parted, 2);
  ExpectClosed();
}

// A receiver hears of the failure before the display is closed.
TEST_F(LostParent, in_a_stage_may_be_followed_by_an_initialisation_in_the_notification) {
  QWidget another;
  another.resize(100, 80);
  another.show();
  AddStage([this] { return owner.reset(), 0u; });
  uint32_t code = 99;
  receiver.OnMessage([&](const std::string& name) {
    if (name != "notification.image" || code != 99) return;
    display->slotRebuildImage();  // nothing to show it in
    display->Parameters().Set("system.parentWidget", QTD::ToText(static_cast<const void*>(&another)));
    code = display->Initialize(&image.record);
  });
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitFor([this] { return receiver.Images() == 1; }));
  Settle(20);
  EXPECT_EQ(receiver.LastResult(), "8");
  EXPECT_EQ(code, 0u);
  EXPECT_NE(display->Viewer(), nullptr);
  ASSERT_NE(display->GetProcessor(), nullptr);
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitFor([this] { return receiver.Images() == 2; }));
  EXPECT_EQ(receiver.LastResult(), "0");
  display.reset();
}

TEST_F(LostParent, in_a_notification_closes_the_display) {
  receiver.OnMessage([this](const std::string& name) {
    if (name == "notification.image") owner.reset();
  });
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitFor([this] { return receiver.Images() == 1; }));
  ExpectClosed();
}

TEST_F(LostParent, in_a_notification_ends_the_stages_without_the_displays_locks) {
  const Watchdog watchdog("a widget that goes in a notification");
  auto* const stage = new PartingStage([this] {
    parted += EndsElsewhere([shown = display.get()] { shown->GetProcessor(); });
    parted += EndsElsewhere([this, shown = display.get()] { shown->DisplayVideo(&image.record); });
  });
  ASSERT_EQ(display->GetProcessor()->AddProcessor("parting", stage), 0u);
  bool lost = false;
  receiver.OnMessage([&](const std::string& name) {
    if (name != "notification.image" || lost) return;
    lost = true;
    owner.reset();
  });
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitFor([&] { return lost; }));
  EXPECT_TRUE(WaitFor([this] { return parted == 2; }));
  ExpectClosed();
}

TEST_F(LostParent, in_a_conversion_lets_the_converting_thread_go_before_the_stages_end) {
  const Watchdog watchdog("a stage that joins the converting thread");
  HostImage output(ZYN_PIXEL_RGB8, 64, 48);
  std::atomic<uint32_t> code{0};
  std::thread host;
  bool joined = false;
  auto* const stage = new PartingStage([&] {
    if (host.joinable()) host.join();
    joined = true;
  });
  ASSERT_EQ(display->GetProcessor()->AddProcessor("parting", stage), 0u);
  AddStage([this] { return owner.reset(), 0u; });
  host = std::thread([&] { code = display->ConvertImage(&image.record, &output.record); });
  EXPECT_TRUE(WaitFor([&] { return joined; }));
  EXPECT_EQ(code, Composed(8));
  ExpectClosed();
}

// A frame that is processed while the chain is walked already.

TEST_F(LostParent, in_the_notification_of_a_frame_within_a_rebuild_closes_the_display) {
  int runs = 0;
  LoseItInANestedFrame([&runs] { return ++runs == 2; });
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitFor([this] { return display->OutputRate().Total() == 1; }));
  display->slotRebuildImage();
  EXPECT_TRUE(nested);
  EXPECT_EQ(receiver.LastResult(), "0");
  EXPECT_EQ(display->OutputRate().Total(), 1);
  EXPECT_EQ(display->LastError(), 8u);
  ExpectClosed();
}

TEST_F(LostParent, in_the_notification_of_a_frame_within_a_conversion_ends_that_with_8) {
  LoseItInANestedFrame([] { return true; });
  HostImage output(ZYN_PIXEL_RGB8, 64, 48);
  EXPECT_EQ(display->ConvertImage(&image.record, &output.record), Composed(8));
  EXPECT_TRUE(nested);
  EXPECT_EQ(receiver.LastResult(), "0");
  EXPECT_EQ(display->OutputRate().Total(), 0);
  ExpectClosed();
}

}  // namespace display_test

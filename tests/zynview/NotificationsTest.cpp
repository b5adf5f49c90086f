// What a display tells from its own threads, on the thread of the window.
#include "apps/zynview/view/Notifications.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "apps/zynview/view/Commands.h"
#include "zynview/RecordingDisplay.h"

using zynview::Notifications;

namespace {

struct NotificationsTest : testing::Test {
  RecordingDisplay display;
  Notifications notifications;
  std::vector<std::pair<int, int>> moves;
  int clicks = 0;
  std::vector<std::thread::id> threads;

  NotificationsTest() {
    notifications.onMove = [this](int x, int y) {
      moves.emplace_back(x, y);
      threads.push_back(std::this_thread::get_id());
    };
    notifications.onRightClick = [this] {
      ++clicks;
      threads.push_back(std::this_thread::get_id());
    };
    notifications.Join(&display);
  }

  uint32_t Tell(const char* name, QTD::ARGUMENTS args) {
    uint32_t answer = 0;
    std::thread messenger([&] { answer = notifications.RunCommand(name, &args); });
    messenger.join();
    return answer;
  }
  uint32_t Move(int x, int y) {
    return Tell("notification.mouse",
                {{"code", "mouse.move"}, {"win.x", std::to_string(x)}, {"win.y", std::to_string(y)}});
  }
  uint32_t RightClick() { return Tell("notification.mouse", {{"code", "mouse.down"}, {"left", "0"}}); }
};

}  // namespace

TEST_F(NotificationsTest, joins_and_leaves_as_the_same_receiver) {
  ASSERT_EQ(display.Of("cmd.system.notification.add").size(), 1u);
  const std::string receiver = display.Of("cmd.system.notification.add")[0].at("proc");
  EXPECT_EQ(zynview::PointerFrom(receiver), static_cast<ZynDisplayCommand*>(&notifications));
  EXPECT_EQ(display.parameters.values["image.notification.flags.set"], "1");
  notifications.Leave();
  ASSERT_EQ(display.Of("cmd.system.notification.del").size(), 1u);
  EXPECT_EQ(display.Of("cmd.system.notification.del")[0].at("proc"), receiver);
  notifications.Leave();
  EXPECT_EQ(display.Of("cmd.system.notification.del").size(), 1u);
}

TEST_F(NotificationsTest, asks_for_movements_buttons_and_view) {
  notifications.AskForMovements();
  ASSERT_EQ(display.Of("cmd.display.view.nofication").size(), 1u);
  EXPECT_EQ(display.Of("cmd.display.view.nofication")[0].at("flags"), "7");
}

TEST_F(NotificationsTest, counts_images_by_their_results) {
  Tell("notification.image", {{"code", "processed"}, {"result", "0"}});
  Tell("notification.image", {{"code", "processed"}, {"result", "0"}});
  Tell("notification.image", {{"code", "processed"}, {"result", "8"}});
  EXPECT_EQ(notifications.shown, 2u);
  EXPECT_EQ(notifications.failed, 1u);
  EXPECT_EQ(notifications.lastResult, 8);
}

TEST_F(NotificationsTest, hands_the_mouse_over_to_the_thread_of_the_window) {
  Move(3, 4);
  RightClick();
  EXPECT_TRUE(moves.empty());
  EXPECT_EQ(clicks, 0);
  QCoreApplication::processEvents();
  EXPECT_EQ(moves, (std::vector<std::pair<int, int>>{{3, 4}}));
  EXPECT_EQ(clicks, 1);
  for (const std::thread::id thread : threads) EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(NotificationsTest, tells_the_last_place_of_many) {
  for (int i = 0; i < 50; ++i) Move(i, 2 * i);
  QCoreApplication::processEvents();
  EXPECT_EQ(moves, (std::vector<std::pair<int, int>>{{49, 98}}));
  Move(1, 1);
  QCoreApplication::processEvents();
  EXPECT_EQ(moves.size(), 2u);
}

TEST_F(NotificationsTest, takes_no_click_away_from_the_display) {
  EXPECT_EQ(Tell("notification.mouse", {{"code", "mouse.down"}, {"left", "1"}}), 0u);
  EXPECT_EQ(RightClick(), 0u);
  EXPECT_EQ(Move(1, 1), 0u);
  EXPECT_EQ(Tell("notification.view", {{"code", "view.changed"}}), 0u);
  QCoreApplication::processEvents();
  EXPECT_EQ(clicks, 1);
  EXPECT_EQ(notifications.RunCommand("notification.mouse", nullptr), 0u);
  EXPECT_EQ(notifications.RunCommand(nullptr, nullptr), 0u);
}

TEST_F(NotificationsTest, calls_nobody_after_it_has_left) {
  Move(1, 2);
  RightClick();
  notifications.Leave();
  QCoreApplication::processEvents();
  EXPECT_TRUE(moves.empty());
  EXPECT_EQ(clicks, 0);
}

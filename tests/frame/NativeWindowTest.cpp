// Messages to the windows of this process.
#include <gtest/gtest.h>

#include <QApplication>
#include <QWidget>
#include <QWindow>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "QTD/platform/ForeignWindows.h"
#include "QTD/platform/Platform.h"
#include "ZynWindowMessage.h"
#include "frame/GuiLoop.h"

namespace {

namespace platform = QTD::platform;

constexpr int kMessage = 1280;

struct Received {
  uint64_t first;
  int64_t second;
  bool onGuiThread;
};

// A widget or a window that keeps the messages which it gets and answers `result`.
template <typename Base>
class Receiver : public Base {
 public:
  bool event(QEvent* event) override {
    if (event->type() != QEvent::Type(kMessage)) return Base::event(event);
    auto* const message = static_cast<ZynWindowMessage*>(event);
    received.push_back({message->firstWord, message->secondWord, platform::OnGuiThread()});
    message->result = result;
    return true;
  }

  std::vector<Received> received;
  int64_t result = 0;
};

template <typename Base>
class NativeWindowTest : public testing::Test {};
using Bases = testing::Types<QWidget, QWindow>;
TYPED_TEST_SUITE(NativeWindowTest, Bases);

TYPED_TEST(NativeWindowTest, is_valid_while_it_exists) {
  auto target = std::make_unique<Receiver<TypeParam>>();
  target->winId();
  const uint64_t id = target->winId();
  EXPECT_TRUE(platform::IsWindow(id));
  target.reset();
  // The X server may hear of the end a little later.
  for (int i = 0; i < 500 && platform::IsWindow(id); ++i) {
    QCoreApplication::processEvents();
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_FALSE(platform::IsWindow(id));
  EXPECT_EQ(platform::SendWindowMessage(id, kMessage, 1, 2), 0);
  platform::PostWindowMessage(id, kMessage, 1, 2);
  test::DeliverPosted();
}

TYPED_TEST(NativeWindowTest, gets_a_sent_message_before_the_call_returns) {
  Receiver<TypeParam> target;
  target.winId();
  target.result = -9000000000;
  EXPECT_EQ(platform::SendWindowMessage(target.winId(), kMessage, 0x12344002, -5), -9000000000);
  ASSERT_EQ(target.received.size(), 1u);
  EXPECT_EQ(target.received[0].first, 0x12344002u);
  EXPECT_EQ(target.received[0].second, -5);
}

TYPED_TEST(NativeWindowTest, answers_0_when_the_receiver_sets_nothing) {
  TypeParam target;
  target.winId();
  EXPECT_EQ(platform::SendWindowMessage(target.winId(), kMessage, 1, 2), 0);
}

TYPED_TEST(NativeWindowTest, gets_posted_messages_later_in_their_order) {
  Receiver<TypeParam> target;
  target.winId();
  platform::PostWindowMessage(target.winId(), kMessage, 1, 10);
  platform::PostWindowMessage(target.winId(), kMessage, 2, 20);
  EXPECT_TRUE(target.received.empty());
  test::DeliverPosted();
  ASSERT_EQ(target.received.size(), 2u);
  EXPECT_EQ(target.received[0].first, 1u);
  EXPECT_EQ(target.received[1].first, 2u);
  EXPECT_EQ(target.received[1].second, 20);
}

TYPED_TEST(NativeWindowTest, is_reached_from_another_thread) {
  Receiver<TypeParam> target;
  target.winId();
  target.result = 77;
  const uint64_t id = target.winId();
  test::RunAside([&] {
    EXPECT_TRUE(platform::IsWindow(id));
    EXPECT_EQ(platform::SendWindowMessage(id, kMessage, 1, 2), 77);
    platform::PostWindowMessage(id, kMessage, 3, 4);
  });
  ASSERT_EQ(target.received.size(), 2u);
  EXPECT_EQ(target.received[0].first, 1u);
  EXPECT_EQ(target.received[1].first, 3u);
  EXPECT_TRUE(target.received[0].onGuiThread);
  EXPECT_TRUE(target.received[1].onGuiThread);
}

TYPED_TEST(NativeWindowTest, gets_no_event_for_another_message_number) {
  Receiver<TypeParam> target;
  target.winId();
  EXPECT_EQ(platform::SendWindowMessage(target.winId(), kMessage + 1, 1, 2), 0);
  platform::PostWindowMessage(target.winId(), kMessage + 1, 1, 2);
  test::DeliverPosted();
  EXPECT_TRUE(target.received.empty());
}

TEST(NativeWindow, that_nobody_made_is_invalid) {
  // Ids that no window system gave out, and one that is too large for X11.
  for (const uint64_t id : {uint64_t{0}, uint64_t{0x1FFFFFF0}, ~uint64_t{0}}) {
    EXPECT_FALSE(platform::IsWindow(id));
    EXPECT_EQ(platform::SendWindowMessage(id, kMessage, 1, 2), 0);
    platform::PostWindowMessage(id, kMessage, 1, 2);
    test::RunAside([&] {
      EXPECT_FALSE(platform::IsWindow(id));
      platform::PostWindowMessage(id, kMessage, 1, 2);
    });
  }
}

TEST(NativeWindow, without_an_id_is_not_given_one_by_a_look_up) {
  QWindow window;
  EXPECT_FALSE(platform::IsWindow(0x1FFFFFF0));
  EXPECT_EQ(window.handle(), nullptr);
}

TEST(NativeWindow, of_a_widget_gives_its_messages_to_the_widget) {
  Receiver<QWidget> widget;
  widget.winId();
  ASSERT_NE(widget.windowHandle(), nullptr);
  ASSERT_EQ(widget.windowHandle()->winId(), widget.winId());
  struct Counter : QObject {
    bool eventFilter(QObject*, QEvent* event) override {
      if (event->type() == QEvent::Type(kMessage)) ++messages;
      return false;
    }
    int messages = 0;
  } atWindow;
  widget.windowHandle()->installEventFilter(&atWindow);
  platform::SendWindowMessage(widget.winId(), kMessage, 1, 2);
  platform::PostWindowMessage(widget.winId(), kMessage, 1, 2);
  test::DeliverPosted();
  EXPECT_EQ(widget.received.size(), 2u);
  EXPECT_EQ(atWindow.messages, 0) << "not by the way of its window";
}

TEST(NativeWindow, may_go_while_a_message_is_under_way) {
  auto target = std::make_unique<Receiver<QWidget>>();
  target->winId();
  const uint64_t id = target->winId();
  platform::PostWindowMessage(id, kMessage, 1, 2);
  std::thread([&] { platform::PostWindowMessage(id, kMessage, 1, 2); }).join();
  target.reset();
  test::DeliverPosted();
}

TEST(ForeignWindow, exists_on_x11_only) {
  if (QGuiApplication::platformName() == QLatin1String("xcb")) return;  // see ForeignWindowTest.cpp
  for (uint64_t id = 1; id < 100; ++id) EXPECT_FALSE(platform::IsForeignWindow(id));
}

}  // namespace

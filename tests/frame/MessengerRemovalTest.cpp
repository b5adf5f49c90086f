// How long, and with what going on meanwhile, the removal of a receiver waits for it.
#include <gtest/gtest.h>

#include <QTimer>

#include "QTD/frame/Receivers.h"
#include "QTD/platform/GuiThread.h"
#include "frame/GuiLoop.h"
#include "frame/Receiver.h"
#include "frame/Waiting.h"

namespace {

using namespace waiting;
using QTD::ARGUMENTS;
using QTD::Messenger;
using QTD::Receivers;
using QTD::platform::QueueOnGuiThread;
using Clock = std::chrono::steady_clock;

TEST(MessengerRemoval, goes_on_handling_events_on_the_gui_thread) {
  Messenger messenger, other;
  std::atomic<bool> inside{false}, answered{false}, served{false};
  Receiver passing;
  passing.ListenTo(other);
  Receiver receiver([&](const std::string&, ARGUMENTS*) {
    inside = true;
    QueueOnGuiThread([&] {
      // The removal that waits holds no lock that this, or another thread, needs.
      other.Send("from the GUI thread", nullptr);
      messenger.Post("more", nullptr);
      InTime("another thread, during a removal", [&] {
        EXPECT_FALSE(Messenger::IsDelivering());
        other.Send("from aside", nullptr);
      });
      answered = true;
    });
    served = Eventually([&] { return answered.load(); });
    return 0;
  });
  messenger.AddReceiver(&receiver);
  messenger.Post("a", nullptr);
  ASSERT_TRUE(Eventually([&] { return inside.load(); }));
  EXPECT_TRUE(messenger.RemoveReceiver(&receiver));
  EXPECT_TRUE(served);
  EXPECT_EQ(receiver.calls, 1);
  EXPECT_EQ(passing.calls, 2);
}

TEST(MessengerRemoval, lets_timers_of_the_gui_thread_run) {
  Messenger messenger;
  std::atomic<bool> inside{false}, served{false};
  std::atomic<int> ticks{0};
  Receiver receiver([&](const std::string&, ARGUMENTS*) {
    inside = true;
    served = Eventually([&] { return ticks >= 5; });
    return 0;
  });
  messenger.AddReceiver(&receiver);
  messenger.Post("a", nullptr);
  ASSERT_TRUE(Eventually([&] { return inside.load(); }));
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, [&] { ++ticks; });
  timer.start(2);
  messenger.RemoveReceiver(&receiver);
  EXPECT_TRUE(served);
}

TEST(MessengerRemoval, on_the_gui_thread_may_nest) {
  Messenger messenger, other;
  std::atomic<bool> inside{false}, insideOther{false}, removed{false}, served{false};
  Receiver inner([&](const std::string&, ARGUMENTS*) {
    insideOther = true;
    SleepMilliseconds(30);
    return 0;
  });
  Receiver outer([&](const std::string&, ARGUMENTS*) {
    inside = true;
    QueueOnGuiThread([&] { removed = other.RemoveReceiver(&inner); });
    served = Eventually([&] { return removed.load(); });
    return 0;
  });
  messenger.AddReceiver(&outer);
  other.AddReceiver(&inner);
  other.Post("b", nullptr);
  ASSERT_TRUE(Eventually([&] { return insideOther.load(); }));
  messenger.Post("a", nullptr);
  ASSERT_TRUE(Eventually([&] { return inside.load(); }));
  messenger.RemoveReceiver(&outer);
  EXPECT_TRUE(served);
}

// The GUI thread waits for `first`, and meanwhile an event has it deliver to `second`. That delivery does not
// wait for anything, although its thread does: `first`, which removes `second`, must wait for its end.
TEST(MessengerRemoval, waits_for_a_delivery_that_an_event_began_during_another_removal) {
  Messenger messenger;
  std::atomic<bool> insideFirst{false}, insideSecond{false}, secondLeft{false}, waited{false};
  Receiver second([&](const std::string& name, ARGUMENTS*) {
    if (name != "second") return 0;
    insideSecond = true;
    SleepMilliseconds(100);
    secondLeft = true;
    return 0;
  });
  Receiver first([&](const std::string& name, ARGUMENTS*) {
    if (name != "first") return 0;
    insideFirst = true;
    QueueOnGuiThread([&] { messenger.Send("second", nullptr); });
    Eventually([&] { return insideSecond.load(); });
    messenger.RemoveReceiver(&second);
    waited = secondLeft.load();
    return 0;
  });
  messenger.AddReceiver(&first);
  messenger.AddReceiver(&second);
  messenger.Post("first", nullptr);
  ASSERT_TRUE(Eventually([&] { return insideFirst.load(); }));
  messenger.RemoveReceiver(&first);
  EXPECT_TRUE(waited);
}

// The caller's notification holds a lock that the receiver to be removed wants.
void RemoveUnderALock(const char* where) {
  Messenger messenger, other;
  std::mutex hostLock;
  std::atomic<bool> inside{false}, left{false};
  Receiver slow([&](const std::string&, ARGUMENTS*) {
    inside = true;
    const std::lock_guard<std::mutex> guard(hostLock);
    left = true;
    return 0;
  });
  Receiver caller([&](const std::string&, ARGUMENTS*) {
    const std::lock_guard<std::mutex> guard(hostLock);
    messenger.Post("slow", nullptr);
    EXPECT_TRUE(Eventually([&] { return inside.load(); })) << where;
    const auto begin = Clock::now();
    EXPECT_TRUE(messenger.RemoveReceiver(&slow)) << where;
    EXPECT_GE(Clock::now() - begin, Receivers::kPatience) << where;
    EXPECT_FALSE(left) << where;
    return 0;
  });
  messenger.AddReceiver(&slow);
  caller.ListenTo(other);
  other.Send("notification", nullptr);
  EXPECT_TRUE(Eventually([&] { return left.load(); })) << where;
  messenger.RemoveReceiver(&slow);
}

// The messengers' own destructors are the last to wait, so the whole must end in time.
TEST(MessengerRemoval, inside_a_delivery_gives_up_in_the_end) {
  InTime("removal inside a delivery", [] { RemoveUnderALock("another thread"); });
}

TEST(MessengerRemoval, inside_a_delivery_on_the_gui_thread_gives_up_in_the_end) {
  const auto begin = Clock::now();
  RemoveUnderALock("GUI thread");
  EXPECT_LT(Clock::now() - begin, limit);
}

TEST(MessengerRemoval, outside_of_deliveries_waits_without_limit) {
  for (const bool gui : {true, false}) {
    Messenger messenger;
    std::atomic<bool> inside{false}, left{false};
    Receiver slow([&](const std::string&, ARGUMENTS*) {
      inside = true;
      std::this_thread::sleep_for(Receivers::kPatience + std::chrono::milliseconds(300));
      left = true;
      return 0;
    });
    messenger.AddReceiver(&slow);
    messenger.Post("a", nullptr);
    ASSERT_TRUE(Eventually([&] { return inside.load(); }));
    const auto remove = [&] {
      messenger.RemoveReceiver(&slow);
      EXPECT_TRUE(left) << gui;
    };
    gui ? remove() : test::RunAside(remove);
  }
}

}  // namespace

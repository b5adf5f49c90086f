// Removal of receivers while other threads deliver to them, or while they remove themselves and each other.
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "QTD/frame/Receivers.h"
#include "frame/Receiver.h"
#include "frame/Waiting.h"

namespace {

using namespace waiting;
using QTD::ARGUMENTS;
using QTD::Messenger;

TEST(MessengerRemovalThreads, removal_of_the_last_receiver_by_itself_stops_the_thread_without_waiting) {
  Messenger messenger;
  std::atomic<bool> removed{false};
  Receiver receiver;
  receiver.action = [&](const std::string&, ARGUMENTS*) {
    messenger.RemoveReceiver(&receiver);
    messenger.Wait(-1);
    messenger.StopAndWait();
    removed = true;
    return 0;
  };
  receiver.ListenTo(messenger);
  messenger.Post("a", nullptr);
  EXPECT_TRUE(Eventually([&] { return removed && !messenger.IsRunning(); }));
}

TEST(MessengerRemovalThreads, removal_waits_for_a_delivery_on_another_thread) {
  for (const bool posted : {false, true}) {
    Messenger messenger;
    std::atomic<bool> inside{false}, left{false};
    auto receiver = std::make_unique<Receiver>([&](const std::string&, ARGUMENTS*) {
      inside = true;
      SleepMilliseconds(60);
      left = true;
      return 0;
    });
    messenger.AddReceiver(receiver.get());
    std::thread sender([&] { posted ? messenger.Post("a", nullptr) : messenger.Send("a", nullptr) != 0; });
    ASSERT_TRUE(Eventually([&] { return inside.load(); }));
    messenger.RemoveReceiver(receiver.get());
    EXPECT_TRUE(left) << posted;
    receiver.reset();
    sender.join();
  }
}

TEST(MessengerRemovalThreads, removal_of_one_receiver_does_not_wait_for_another) {
  Messenger messenger;
  std::atomic<bool> inside{false}, leave{false};
  Receiver slow([&](const std::string&, ARGUMENTS*) {
    inside = true;
    Eventually([&] { return leave.load(); });
    return 0;
  });
  Receiver other;
  slow.ListenTo(messenger);
  other.ListenTo(messenger);
  messenger.Post("a", nullptr);
  ASSERT_TRUE(Eventually([&] { return inside.load(); }));
  InTime("removal of an idle receiver", [&] { messenger.RemoveReceiver(&other); });
  EXPECT_FALSE(leave);
  leave = true;
  messenger.RemoveReceiver(&slow);
  EXPECT_EQ(other.calls, 0) << "the pass had begun before the removal, and yet it is not called";
}

TEST(MessengerRemovalThreads, removal_inside_the_receivers_own_delivery_returns_however_deep) {
  Messenger messenger;
  std::atomic<int> depth{0};
  Receiver receiver;
  receiver.action = [&](const std::string&, ARGUMENTS*) {
    if (++depth < 5) {
      messenger.Send("deeper", nullptr);
    } else {
      InTime("adding anew from another thread", [&] { receiver.ListenTo(messenger); });
      messenger.RemoveReceiver(&receiver);
    }
    return 0;
  };
  receiver.ListenTo(messenger);
  InTime("removal inside deliveries", [&] { messenger.Send("a", nullptr); });
  EXPECT_EQ(depth, 5);
  messenger.Send("b", nullptr);
  EXPECT_EQ(depth, 5) << "removed";
}

TEST(MessengerRemovalThreads, receiver_removed_by_an_earlier_one_is_not_called) {
  Messenger messenger;
  auto second = std::make_unique<Receiver>();
  Receiver first([&](const std::string&, ARGUMENTS*) {
    messenger.RemoveReceiver(second.get());
    second.reset();
    return 0;
  });
  Receiver third;
  first.ListenTo(messenger);
  messenger.AddReceiver(second.get());
  third.ListenTo(messenger);
  messenger.Send("a", nullptr);
  EXPECT_EQ(third.calls, 1);
  second = std::make_unique<Receiver>();
  messenger.RemoveReceiver(&third);
  messenger.AddReceiver(second.get());
  third.ListenTo(messenger);
  messenger.Post("b", nullptr);
  EXPECT_TRUE(Eventually([&] { return third.calls == 2; }));
}

// Thread 1 delivers to `first`, which removes `second`; thread 2 delivers to `second`, which removes `first`.
// Each waits for the other: the one who comes last must not.
void RemoveEachOther(Messenger& one, Messenger& two) {
  std::atomic<int> arrived{0};
  const auto both = [&] {
    ++arrived;
    Eventually([&] { return arrived >= 2; });
  };
  Receiver first, second;
  first.action = [&](const std::string& name, ARGUMENTS*) {
    if (name != "one") return 0;
    both();
    two.RemoveReceiver(&second);
    return 0;
  };
  second.action = [&](const std::string& name, ARGUMENTS*) {
    if (name != "two") return 0;
    both();
    one.RemoveReceiver(&first);
    return 0;
  };
  one.AddReceiver(&first);
  two.AddReceiver(&second);
  std::thread other;
  InTime("two receivers that remove each other", [&] {
    other = std::thread([&] { one.Send("one", nullptr); });
    two.Send("two", nullptr);
    other.join();
  });
  one.RemoveReceiver(&first);
  two.RemoveReceiver(&second);
}

TEST(MessengerRemovalThreads, receivers_that_remove_each_other_do_not_lock_up) {
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < 20; ++i) {
    Messenger messenger;
    RemoveEachOther(messenger, messenger);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 10 * QTD::Receivers::kPatience)
      << "the circle is seen, not waited out";
}

TEST(MessengerRemovalThreads, receivers_of_two_messengers_that_remove_each_other_do_not_lock_up) {
  for (int i = 0; i < 20; ++i) {
    Messenger one, two;
    RemoveEachOther(one, two);
  }
}

TEST(MessengerRemovalThreads, receiver_that_is_served_by_two_threads_may_remove_itself_in_both) {
  Messenger messenger;
  std::atomic<int> inside{0};
  Receiver receiver;
  receiver.action = [&](const std::string&, ARGUMENTS*) {
    ++inside;
    Eventually([&] { return inside >= 2; });
    messenger.RemoveReceiver(&receiver);
    return 0;
  };
  receiver.ListenTo(messenger);
  InTime("two deliveries to one receiver", [&] {
    std::thread other([&] { messenger.Send("a", nullptr); });
    messenger.Send("b", nullptr);
    other.join();
  });
  EXPECT_EQ(messenger.Send("c", nullptr), 0u);
  EXPECT_EQ(receiver.calls, 2);
}

// One of the two deliveries goes on only after the other one has removed the receiver.
TEST(MessengerRemovalThreads, receiver_that_removes_itself_does_not_wait_for_its_other_deliveries) {
  Messenger messenger;
  std::atomic<int> inside{0};
  std::atomic<bool> removed{false};
  Receiver receiver;
  receiver.action = [&](const std::string& name, ARGUMENTS*) {
    ++inside;
    Eventually([&] { return inside >= 2; });
    if (name == "removing") {
      messenger.RemoveReceiver(&receiver);
      removed = true;
    } else {
      EXPECT_TRUE(Eventually([&] { return removed.load(); }));
    }
    return 0;
  };
  receiver.ListenTo(messenger);
  std::thread other([&] { messenger.Send("staying", nullptr); });
  messenger.Send("removing", nullptr);
  other.join();
}

TEST(MessengerRemovalThreads, removal_does_not_wait_for_deliveries_that_begin_after_it) {
  Messenger messenger;
  std::atomic<bool> leaveFirst{false}, leaveSecond{false}, secondLeft{false}, removed{false};
  Receiver receiver;
  receiver.action = [&](const std::string& name, ARGUMENTS*) {
    if (name == "first") Eventually([&] { return leaveFirst.load(); });
    if (name == "second") {
      Eventually([&] { return leaveSecond.load(); });
      secondLeft = true;
    }
    return 1;
  };
  receiver.ListenTo(messenger);
  std::thread first([&] { messenger.Send("first", nullptr); });
  EXPECT_TRUE(Eventually([&] { return receiver.calls == 1; }));
  std::thread remover([&] {
    messenger.RemoveReceiver(&receiver);
    removed = true;
  });
  EXPECT_TRUE(Eventually([&] { return messenger.Send("probe", nullptr) == 0; })) << "taken out";
  EXPECT_FALSE(removed);
  receiver.ListenTo(messenger);
  const int calls = receiver.calls;
  std::thread second([&] { messenger.Send("second", nullptr); });
  EXPECT_TRUE(Eventually([&] { return receiver.calls > calls; }));
  EXPECT_FALSE(removed);
  leaveFirst = true;
  EXPECT_TRUE(Eventually([&] { return removed.load(); }));
  EXPECT_FALSE(secondLeft);
  leaveSecond = true;
  first.join();
  second.join();
  remover.join();
}

TEST(MessengerRemovalThreads, receiver_that_is_added_again_does_not_hold_up_its_removal) {
  Messenger messenger;
  std::atomic<bool> stop{false};
  Receiver receiver;
  receiver.ListenTo(messenger);
  std::vector<std::thread> senders;
  for (int t = 0; t < 3; ++t) {
    senders.emplace_back([&] {
      while (!stop) {
        receiver.ListenTo(messenger);
        messenger.Send("a", nullptr);
      }
    });
  }
  InTime("removals beside additions and deliveries", [&] {
    for (int i = 0; i < 200; ++i) messenger.RemoveReceiver(&receiver);
  });
  stop = true;
  for (auto& sender : senders) sender.join();
  messenger.RemoveReceiver(&receiver);
}

}  // namespace

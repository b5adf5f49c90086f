// The messenger among several threads: receivers call back, remove each other and delete the messenger.
#include <gtest/gtest.h>

#include <memory>

#include "QTD/frame/Receivers.h"
#include "frame/Receiver.h"
#include "frame/Waiting.h"

namespace {

using namespace waiting;
using QTD::ARGUMENTS;
using QTD::Messenger;

// Every operation, once.
void CallAll(Messenger& messenger) {
  Receiver passing;
  passing.ListenTo(messenger);
  ARGUMENTS args{{"x", "1"}};
  messenger.Send("inner", &args);
  messenger.Post("inner.posted", &args);
  messenger.GetCommonProperties()->Set("x", "2");
  messenger.RequestStop();
  passing.ListenTo(messenger);
  messenger.RemoveReceiver(&passing);
}

// A receiver that, when it hears "outer", runs `step` and then another thread that calls everything.
Receiver::Action CallingBack(Messenger& messenger, std::atomic<bool>& done) {
  return [&](const std::string& name, ARGUMENTS*) {
    if (name == "outer") {
      CallAll(messenger);
      InTime("another thread, while a receiver runs", [&] { CallAll(messenger); });
      done = true;
    }
    return 0;
  };
}

TEST(MessengerThreads, no_lock_is_held_while_a_sent_message_is_delivered) {
  Messenger messenger;
  std::atomic<bool> done{false};
  Receiver receiver(CallingBack(messenger, done));
  receiver.ListenTo(messenger);
  ARGUMENTS args;
  messenger.Send("outer", &args);
  EXPECT_TRUE(done);
}

TEST(MessengerThreads, no_lock_is_held_while_a_posted_message_is_delivered) {
  Messenger messenger;
  std::atomic<bool> done{false};
  Receiver receiver(CallingBack(messenger, done));
  receiver.ListenTo(messenger);
  messenger.Post("outer", nullptr);
  EXPECT_TRUE(Eventually([&] { return done.load(); }));
}

TEST(MessengerThreads, post_does_not_wait_for_a_send) {
  Messenger messenger;
  std::atomic<bool> inside{false}, leave{false};
  Receiver receiver([&](const std::string& name, ARGUMENTS*) {
    if (name == "slow") {
      inside = true;
      Eventually([&] { return leave.load(); });
    }
    return 0;
  });
  receiver.ListenTo(messenger);
  std::thread sender([&] { messenger.Send("slow", nullptr); });
  ASSERT_TRUE(Eventually([&] { return inside.load(); }));
  InTime("Post and Send beside a Send", [&] {
    messenger.Post("a", nullptr);
    messenger.Send("b", nullptr);
  });
  EXPECT_TRUE(Eventually([&] { return receiver.calls == 3; })) << "and the post is delivered meanwhile";
  leave = true;
  sender.join();
}

TEST(MessengerThreads, sends_recurse) {
  Messenger messenger;
  Receiver receiver;
  receiver.action = [&](const std::string& name, ARGUMENTS*) -> uint32_t {
    const uint32_t bit = 1u << name.size();
    return name.size() < 10 ? bit | messenger.Send((name + "x").c_str(), nullptr) : bit;
  };
  receiver.ListenTo(messenger);
  EXPECT_EQ(messenger.Send("", nullptr), (1u << 11) - 1);
  EXPECT_EQ(receiver.calls, 11);
}

TEST(MessengerThreads, removal_of_the_last_receiver_by_itself_stops_the_thread_without_waiting) {
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

TEST(MessengerThreads, removal_waits_for_a_delivery_on_another_thread) {
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

TEST(MessengerThreads, removal_of_one_receiver_does_not_wait_for_another) {
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

TEST(MessengerThreads, removal_inside_the_receivers_own_delivery_returns_however_deep) {
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

TEST(MessengerThreads, receiver_removed_by_an_earlier_one_is_not_called) {
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

TEST(MessengerThreads, receivers_that_remove_each_other_do_not_lock_up) {
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < 20; ++i) {
    Messenger messenger;
    RemoveEachOther(messenger, messenger);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 10 * QTD::Receivers::kPatience)
      << "the circle is seen, not waited out";
}

TEST(MessengerThreads, receivers_of_two_messengers_that_remove_each_other_do_not_lock_up) {
  for (int i = 0; i < 20; ++i) {
    Messenger one, two;
    RemoveEachOther(one, two);
  }
}

TEST(MessengerThreads, receiver_that_is_served_by_two_threads_may_remove_itself_in_both) {
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
TEST(MessengerThreads, receiver_that_removes_itself_does_not_wait_for_its_other_deliveries) {
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

TEST(MessengerThreads, removal_does_not_wait_for_deliveries_that_begin_after_it) {
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

TEST(MessengerThreads, receiver_that_is_added_again_does_not_hold_up_its_removal) {
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

TEST(MessengerThreads, may_be_deleted_by_a_receiver_of_a_sent_message) {
  auto* messenger = new Messenger;
  Receiver second;
  Receiver first([&](const std::string&, ARGUMENTS*) {
    delete messenger;
    return 5;
  });
  messenger->AddReceiver(&first);
  messenger->AddReceiver(&second);
  InTime("deletion inside Send", [&] { EXPECT_EQ(messenger->Send("a", nullptr), 5u); });
  EXPECT_EQ(second.calls, 0);
}

TEST(MessengerThreads, may_be_deleted_by_a_receiver_of_a_posted_message) {
  auto* messenger = new Messenger;
  std::atomic<bool> deleted{false};
  Receiver second;
  Receiver first([&](const std::string&, ARGUMENTS*) {
    delete messenger;
    deleted = true;
    return 0;
  });
  messenger->Post("a", nullptr);
  messenger->Post("b", nullptr);
  // Both at once, before the thread has begun to deliver: it first spends some milliseconds on its name.
  messenger->AddReceiver(&first);
  ASSERT_TRUE(Eventually([&] { return deleted.load(); }));
  SleepMilliseconds(20);
  EXPECT_EQ(first.calls, 1);
}

// The main thread, inside a delivery to `first`, deletes the messenger and so waits for its thread, which
// waits for the delivery to `first`.
TEST(MessengerThreads, deletion_does_not_lock_up_with_a_removal) {
  auto* messenger = new Messenger;
  std::atomic<bool> inside{false}, removed{false};
  Receiver first, second;
  first.action = [&](const std::string& name, ARGUMENTS*) {
    if (name != "sent") return 0;
    Eventually([&] { return inside.load(); });
    SleepMilliseconds(30);
    delete messenger;
    EXPECT_TRUE(removed);
    return 0;
  };
  second.action = [&](const std::string& name, ARGUMENTS*) {
    if (name != "posted") return 0;
    inside = true;
    messenger->RemoveReceiver(&first);
    removed = true;
    return 0;
  };
  messenger->AddReceiver(&first);
  messenger->AddReceiver(&second);
  messenger->Post("posted", nullptr);
  InTime("deletion beside a removal", [&] { messenger->Send("sent", nullptr); });
}

TEST(MessengerThreads, abandoned_thread_does_not_touch_a_deleted_messenger) {
  auto messenger = std::make_unique<Messenger>();
  const auto leave = std::make_shared<std::atomic<bool>>(false);
  std::atomic<bool> inside{false}, left{false};
  Receiver receiver([&](const std::string&, ARGUMENTS*) {
    inside = true;
    Eventually([&] { return leave->load(); });
    left = true;
    return 0;
  });
  messenger->Post("a", nullptr);
  messenger->Post("b", nullptr);
  messenger->AddReceiver(&receiver);
  ASSERT_TRUE(Eventually([&] { return inside.load(); }));
  InTime("abandoning", [&] {
    messenger->Terminate(1, 10);
    messenger.reset();
  });
  EXPECT_FALSE(left);
  *leave = true;
  ASSERT_TRUE(Eventually([&] { return left.load(); }));
  SleepMilliseconds(20);
  EXPECT_EQ(receiver.calls, 1);
}

TEST(MessengerThreads, no_addition_starts_the_thread_of_a_messenger_that_is_being_deleted) {
  auto messenger = std::make_unique<Messenger>();
  Messenger* const raw = messenger.get();
  std::atomic<bool> inside{false};
  Receiver receiver([&](const std::string&, ARGUMENTS*) {
    inside = true;
    SleepMilliseconds(50);
    raw->AddReceiver(&receiver);
    raw->Post("again", nullptr);
    return 0;
  });
  messenger->AddReceiver(&receiver);
  messenger->Post("a", nullptr);
  ASSERT_TRUE(Eventually([&] { return inside.load(); }));
  InTime("deletion", [&] { messenger.reset(); });
  EXPECT_EQ(receiver.calls, 1);
}

TEST(MessengerThreads, all_operations_from_many_threads_and_receivers) {
  Messenger messenger;
  messenger.GetCommonProperties()->Set("from", "test");
  Receiver fixed;
  fixed.ListenTo(messenger);
  InTime("a crowd of threads", [&] {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([&messenger, t] {
        for (int i = 0; i < 150; ++i) {
          // Each receiver uses memory that is gone right after its removal.
          auto alive = std::make_unique<int>(1);
          auto receiver = std::make_unique<Receiver>();
          receiver->action = [&](const std::string& name, ARGUMENTS* args) -> uint32_t {
            (*args)["seen"] = "1";
            if (name == "deep" || i % 5) return static_cast<uint32_t>(*alive);
            messenger.Post("from.receiver", args);
            return messenger.Send("deep", args);
          };
          messenger.AddReceiver(receiver.get());
          ARGUMENTS args{{"code", std::to_string(t)}};
          EXPECT_EQ(messenger.Send("sent", &args) & 1, 1u);
          messenger.Post(i % 2 ? "posted" : "other", &args);
          messenger.RemoveReceiver(receiver.get());
          receiver.reset();
          alive.reset();
        }
      });
    }
    for (auto& thread : threads) thread.join();
  });
  EXPECT_GE(fixed.calls, 600);
  for (const auto& heard : fixed.All()) EXPECT_EQ(heard.args.at("from"), "test");
}

}  // namespace

// The messenger among several threads: its operations beside each other and from its receivers, which may
// delete it.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

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

#include "QTD/frame/Messenger.h"

#include <gtest/gtest.h>

#include "frame/Receiver.h"
#include "frame/Waiting.h"

namespace {

using namespace waiting;
using QTD::ARGUMENTS;
using QTD::Messenger;
using Names = std::vector<std::string>;

// Holds the messenger thread inside a delivery, so that what is posted meanwhile waits for one later pass.
class Hold {
 public:
  explicit Hold(Messenger& heldMessenger) : messenger(heldMessenger) {
    blocker.action = [this](const std::string& name, ARGUMENTS*) -> uint32_t {
      if (name == "hold") {
        held = true;
        Eventually([this] { return released.load(); });
      }
      return 0;
    };
    blocker.ListenTo(messenger);
    messenger.Post("hold", nullptr);
    EXPECT_TRUE(Eventually([this] { return held.load(); }));
  }
  ~Hold() {
    released = true;
    messenger.RemoveReceiver(&blocker);
  }
  void Release() { released = true; }

 private:
  Messenger& messenger;
  Receiver blocker;
  std::atomic<bool> held{false}, released{false};
};

bool Post(Messenger& messenger, const char* name, ARGUMENTS args) {
  return messenger.Post(name, &args);
}

TEST(Messenger, is_idle_without_receivers) {
  Messenger messenger;
  EXPECT_FALSE(messenger.IsRunning());
  EXPECT_FALSE(messenger.Loop());
  EXPECT_EQ(messenger.Send("a", nullptr), 0u);
  ARGUMENTS args{{"x", "1"}};
  EXPECT_EQ(messenger.Send("a", &args), 0u);
}

TEST(Messenger, null_receiver_changes_nothing) {
  Messenger messenger;
  messenger.AddReceiver(nullptr);
  EXPECT_FALSE(messenger.IsRunning());
  EXPECT_TRUE(messenger.RemoveReceiver(nullptr));
  Receiver receiver;
  receiver.ListenTo(messenger);
  messenger.AddReceiver(nullptr);
  EXPECT_TRUE(messenger.RemoveReceiver(nullptr));
  messenger.Send("a", nullptr);
  EXPECT_EQ(receiver.calls, 1);
}

TEST(Messenger, receiver_added_twice_is_one_entry) {
  Messenger messenger;
  Receiver receiver;
  receiver.ListenTo(messenger);
  receiver.ListenTo(messenger);
  messenger.Send("a", nullptr);
  EXPECT_EQ(receiver.calls, 1);
  EXPECT_TRUE(messenger.RemoveReceiver(&receiver));
  messenger.Send("a", nullptr);
  EXPECT_EQ(receiver.calls, 1);
}

TEST(Messenger, first_receiver_starts_the_thread_and_removal_of_the_last_stops_it) {
  Messenger messenger;
  Receiver first, second;
  first.ListenTo(messenger);
  EXPECT_TRUE(messenger.IsRunning());
  second.ListenTo(messenger);
  messenger.RemoveReceiver(&first);
  messenger.Wait(20);
  EXPECT_TRUE(messenger.IsRunning());
  EXPECT_TRUE(messenger.RemoveReceiver(&second));
  messenger.Wait(20000);
  EXPECT_FALSE(messenger.IsRunning());
  EXPECT_TRUE(messenger.RemoveReceiver(&second)) << "also for one that is not known";
}

TEST(Messenger, starts_again_under_the_same_name) {
  Messenger messenger;
  for (int round = 0; round < 2; ++round) {
    std::string shown;
    Receiver receiver([&](const std::string&, ARGUMENTS*) { return shown = NameOfThisThread(), 0; });
    receiver.ListenTo(messenger);
    messenger.Post("a", nullptr);
    ASSERT_TRUE(Eventually([&] { return receiver.calls > 0; }));
    messenger.RemoveReceiver(&receiver);
    EXPECT_EQ(shown, "QTD::Messenger") << round;
    messenger.Wait(-1);
  }
}

TEST(Messenger, receiver_added_while_the_old_thread_ends_is_served) {
  Messenger messenger;
  for (int i = 0; i < 150; ++i) {
    Receiver first, second;
    first.ListenTo(messenger);
    if (i % 3 == 0) std::this_thread::sleep_for(std::chrono::microseconds(100 * (i % 40)));
    messenger.RemoveReceiver(&first);
    if (i % 2) std::this_thread::sleep_for(std::chrono::microseconds(20 * (i % 70)));
    second.ListenTo(messenger);
    messenger.Post("a", nullptr);
    ASSERT_TRUE(Eventually([&] { return second.calls > 0; })) << i;
    messenger.RemoveReceiver(&second);
  }
}

TEST(Messenger, send_calls_receivers_in_order_on_the_callers_thread_and_ors_their_results) {
  Messenger messenger;
  std::vector<int> order;
  std::vector<std::thread::id> threads;
  const auto answering = [&](int number, uint32_t result) {
    return [&, number, result](const std::string&, ARGUMENTS*) {
      order.push_back(number);
      threads.push_back(std::this_thread::get_id());
      return result;
    };
  };
  Receiver first(answering(1, 0x5)), second(answering(2, 0)), third(answering(3, 0x80000002));
  second.ListenTo(messenger);
  third.ListenTo(messenger);
  first.ListenTo(messenger);
  EXPECT_EQ(messenger.Send("notification.x", nullptr), 0x80000007u);
  EXPECT_EQ(order, (std::vector<int>{2, 3, 1}));
  EXPECT_EQ(threads, std::vector<std::thread::id>(3, std::this_thread::get_id()));
  EXPECT_EQ(first.Names(), Names{"notification.x"});
}

TEST(Messenger, send_adds_the_common_pairs_to_a_copy_of_the_arguments) {
  Messenger messenger;
  Receiver receiver;
  receiver.ListenTo(messenger);
  ARGUMENTS args{{"code", "1"}, {"from", "me"}};
  messenger.Send("a", &args);
  messenger.GetCommonProperties()->Set("from", "display");
  messenger.Send("a", &args);
  const auto heard = receiver.All();
  ASSERT_EQ(heard.size(), 2u);
  EXPECT_EQ(heard[0].args, args);
  EXPECT_EQ(heard[1].args, (ARGUMENTS{{"code", "1"}, {"from", "display"}}));
  EXPECT_EQ(args, (ARGUMENTS{{"code", "1"}, {"from", "me"}})) << "the caller's map stays";
}

TEST(Messenger, send_without_arguments_gives_an_empty_map) {
  Messenger messenger;
  messenger.GetCommonProperties()->Set("from", "display");
  Receiver receiver;
  receiver.ListenTo(messenger);
  messenger.Send("a", nullptr);
  ARGUMENTS none;
  messenger.Send("b", &none);
  const auto heard = receiver.All();
  ASSERT_EQ(heard.size(), 2u);
  EXPECT_EQ(heard[0].args, ARGUMENTS());
  EXPECT_EQ(heard[1].args, (ARGUMENTS{{"from", "display"}}));
}

TEST(Messenger, later_receivers_see_what_earlier_ones_wrote) {
  Messenger messenger;
  Receiver writer([](const std::string&, ARGUMENTS* args) { return (*args)["answer"] = "42", 0; });
  Receiver reader;
  writer.ListenTo(messenger);
  reader.ListenTo(messenger);
  messenger.Send("a", nullptr);
  EXPECT_EQ(reader.All().at(0).args, (ARGUMENTS{{"answer", "42"}}));
  messenger.Post("b", nullptr);
  ASSERT_TRUE(Eventually([&] { return reader.calls == 2; }));
  EXPECT_EQ(reader.All().at(1).args, (ARGUMENTS{{"answer", "42"}}));
}

TEST(Messenger, send_of_a_null_name_counts_as_empty) {
  Messenger messenger;
  Receiver receiver;
  receiver.ListenTo(messenger);
  messenger.Send(nullptr, nullptr);
  EXPECT_EQ(receiver.Names(), Names{""});
}

TEST(Messenger, runs_the_command_on_the_target_that_the_receiver_names) {
  struct Pointer : ZynDisplayCommand {
    ZynDisplayCommand* GetCommandTarget(const char* name) override { return asked = name, target; }
    uint32_t RunCommand(const char*, ARGUMENTS*) override { return 1; }
    ZynDisplayCommand* target = nullptr;
    std::string asked;
  };
  Messenger messenger;
  Receiver target([](const std::string&, ARGUMENTS*) { return 8; });
  Pointer pointer;
  messenger.AddReceiver(&pointer);
  EXPECT_EQ(messenger.Send("a", nullptr), 0u) << "no target, no call";
  EXPECT_EQ(pointer.asked, "a");
  pointer.target = &target;
  EXPECT_EQ(messenger.Send("b", nullptr), 8u);
  EXPECT_EQ(target.Names(), Names{"b"});
  messenger.Post("c", nullptr);
  ASSERT_TRUE(Eventually([&] { return target.calls == 2; }));
  messenger.RemoveReceiver(&pointer);
  EXPECT_EQ(pointer.asked, "c");
}

TEST(Messenger, post_refuses_a_null_name_and_ignores_an_empty_one) {
  Messenger messenger;
  Receiver receiver;
  EXPECT_FALSE(messenger.Post(nullptr, nullptr));
  EXPECT_TRUE(messenger.Post("", nullptr));
  EXPECT_TRUE(messenger.Post("a", nullptr));
  receiver.ListenTo(messenger);
  ASSERT_TRUE(Eventually([&] { return receiver.calls > 0; }));
  EXPECT_EQ(receiver.Names(), Names{"a"});
}

TEST(Messenger, post_is_delivered_on_the_messenger_thread) {
  Messenger messenger;
  std::atomic<std::thread::id> thread{};
  Receiver receiver([&](const std::string&, ARGUMENTS*) { return thread = std::this_thread::get_id(), 0; });
  receiver.ListenTo(messenger);
  messenger.Post("a", nullptr);
  ASSERT_TRUE(Eventually([&] { return receiver.calls > 0; }));
  messenger.RemoveReceiver(&receiver);
  EXPECT_NE(thread.load(), std::this_thread::get_id());
}

TEST(Messenger, post_always_carries_the_common_pairs) {
  Messenger messenger;
  messenger.GetCommonProperties()->Set("from", "display");
  Post(messenger, "a", {});
  Post(messenger, "b", {{"from", "me"}, {"x", "1"}});
  messenger.Post("c", nullptr);
  messenger.GetCommonProperties()->Set("from", "later");
  Receiver receiver;
  receiver.ListenTo(messenger);
  ASSERT_TRUE(Eventually([&] { return receiver.calls == 3; }));
  const auto heard = receiver.All();
  EXPECT_EQ(heard[0].args, (ARGUMENTS{{"from", "display"}}));
  EXPECT_EQ(heard[1].args, (ARGUMENTS{{"from", "display"}, {"x", "1"}}));
  EXPECT_EQ(heard[2].args, (ARGUMENTS{{"from", "display"}}));
}

TEST(Messenger, posts_of_one_name_coalesce_and_go_out_in_name_order) {
  Messenger messenger;
  Receiver receiver;
  {
    Hold hold(messenger);
    receiver.ListenTo(messenger);
    Post(messenger, "b", {{"n", "1"}});
    Post(messenger, "a", {{"n", "2"}, {"old", "1"}});
    Post(messenger, "b", {{"n", "3"}});
    Post(messenger, "a", {{"n", "4"}});
    hold.Release();
    ASSERT_TRUE(Eventually([&] { return receiver.calls == 2; }));
  }
  const auto heard = receiver.All();
  ASSERT_EQ(receiver.Names(), (Names{"a", "b"}));
  EXPECT_EQ(heard[0].args, (ARGUMENTS{{"n", "4"}})) << "the newest arguments, and only these";
  EXPECT_EQ(heard[1].args, (ARGUMENTS{{"n", "3"}}));
}

TEST(Messenger, a_b_a_delivers_two_messages) {
  Messenger messenger;
  Receiver receiver;
  Post(messenger, "a", {{"n", "1"}});
  Post(messenger, "b", {{"n", "2"}});
  Post(messenger, "a", {{"n", "3"}});
  receiver.ListenTo(messenger);
  ASSERT_TRUE(Eventually([&] { return receiver.calls == 2; }));
  SleepMilliseconds(20);
  ASSERT_EQ(receiver.Names(), (Names{"a", "b"}));
  EXPECT_EQ(receiver.All()[0].args["n"], "3");
}

TEST(Messenger, posts_of_one_name_with_other_codes_are_other_messages) {
  Messenger messenger;
  Receiver receiver;
  Post(messenger, "mouse", {{"code", "up"}, {"n", "1"}});
  Post(messenger, "image", {{"code", "z"}});
  Post(messenger, "mouse", {{"code", "down"}, {"n", "2"}});
  Post(messenger, "mouse", {{"n", "3"}});
  Post(messenger, "mouse", {{"code", "up"}, {"n", "4"}});
  receiver.ListenTo(messenger);
  ASSERT_TRUE(Eventually([&] { return receiver.calls == 4; }));
  SleepMilliseconds(20);
  const auto heard = receiver.All();
  ASSERT_EQ(receiver.Names(), (Names{"image", "mouse", "mouse", "mouse"}));
  EXPECT_EQ(heard[1].args, (ARGUMENTS{{"n", "3"}})) << "no code before all codes";
  EXPECT_EQ(heard[2].args, (ARGUMENTS{{"code", "down"}, {"n", "2"}}));
  EXPECT_EQ(heard[3].args, (ARGUMENTS{{"code", "up"}, {"n", "4"}}));
}

TEST(Messenger, message_is_delivered_once) {
  Messenger messenger;
  Receiver receiver;
  receiver.ListenTo(messenger);
  messenger.Post("a", nullptr);
  ASSERT_TRUE(Eventually([&] { return receiver.calls > 0; }));
  SleepMilliseconds(30);
  EXPECT_EQ(receiver.calls, 1);
}

TEST(Messenger, pass_without_receivers_keeps_the_messages) {
  Messenger messenger;
  messenger.Post("a", nullptr);
  EXPECT_FALSE(messenger.Loop());
  Receiver receiver;
  receiver.ListenTo(messenger);
  EXPECT_TRUE(Eventually([&] { return receiver.calls == 1; }));
}

TEST(Messenger, messages_wait_for_the_first_receiver) {
  Messenger messenger;
  Receiver gone, receiver;
  gone.ListenTo(messenger);
  messenger.RemoveReceiver(&gone);
  messenger.Post("a", nullptr);
  messenger.Wait(-1);
  EXPECT_EQ(gone.calls, 0);
  receiver.ListenTo(messenger);
  EXPECT_TRUE(Eventually([&] { return receiver.calls == 1; }));
}

TEST(Messenger, message_posted_during_a_delivery_comes_in_the_next_pass) {
  Messenger messenger;
  Receiver receiver;
  receiver.action = [&](const std::string& name, ARGUMENTS* args) {
    // "a" comes before "b", and would have been passed over in the same pass.
    if (name == "b" && args->at("n") == "1") {
      Post(messenger, "a", {{"n", "2"}});
      Post(messenger, "b", {{"n", "2"}});
    }
    return 0;
  };
  Post(messenger, "b", {{"n", "1"}});
  Post(messenger, "c", {});
  receiver.ListenTo(messenger);
  ASSERT_TRUE(Eventually([&] { return receiver.calls == 4; }));
  EXPECT_EQ(receiver.Names(), (Names{"b", "c", "a", "b"}));
  EXPECT_EQ(receiver.All()[3].args["n"], "2");
}

TEST(Messenger, destructor_waits_for_the_delivery_in_progress_and_drops_the_rest) {
  std::atomic<bool> inside{false}, left{false};
  Receiver receiver([&](const std::string&, ARGUMENTS*) {
    inside = true;
    SleepMilliseconds(50);
    left = true;
    return 0;
  });
  auto messenger = std::make_unique<Messenger>();
  messenger->Post("a", nullptr);
  messenger->Post("b", nullptr);
  messenger->AddReceiver(&receiver);
  ASSERT_TRUE(Eventually([&] { return inside.load(); }));
  messenger.reset();
  EXPECT_TRUE(left);
  EXPECT_EQ(receiver.Names(), Names{"a"});
}

TEST(Messenger, tells_whether_this_thread_is_inside_a_receiver) {
  Messenger messenger;
  bool inside = false;
  Receiver receiver([&](const std::string&, ARGUMENTS*) -> uint32_t {
    inside = Messenger::IsDelivering();
    return 0;
  });
  receiver.ListenTo(messenger);
  EXPECT_FALSE(Messenger::IsDelivering());
  messenger.Send("a", nullptr);
  EXPECT_TRUE(inside);
  EXPECT_FALSE(Messenger::IsDelivering());
}

}  // namespace

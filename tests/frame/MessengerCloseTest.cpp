// A messenger that is closed before it is deleted.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <memory>

#include "QTD/platform/GuiThread.h"
#include "frame/Receiver.h"
#include "frame/Waiting.h"

namespace {

using namespace waiting;
using QTD::ARGUMENTS;
using QTD::Messenger;
using Names = std::vector<std::string>;

TEST(MessengerClose, ends_all_deliveries_and_the_thread) {
  Messenger messenger;
  Receiver receiver([](const std::string&, ARGUMENTS*) { return 7; });
  receiver.ListenTo(messenger);
  EXPECT_EQ(messenger.Send("a", nullptr), 7u);
  messenger.Close();
  EXPECT_EQ(messenger.Send("b", nullptr), 0u);
  EXPECT_TRUE(messenger.Post("c", nullptr)) << "the answer of a message that nobody will hear";
  EXPECT_FALSE(messenger.Post(nullptr, nullptr));
  EXPECT_TRUE(Eventually([&] { return !messenger.IsRunning(); }));
  EXPECT_EQ(receiver.Names(), Names{"a"});
}

TEST(MessengerClose, ignores_later_receivers) {
  Messenger messenger;
  Receiver early, late;
  early.ListenTo(messenger);
  messenger.Close();
  ASSERT_TRUE(Eventually([&] { return !messenger.IsRunning(); }));
  messenger.AddReceiver(&late);
  messenger.AddReceiver(&early);
  EXPECT_FALSE(messenger.IsRunning());
  EXPECT_EQ(messenger.Send("a", nullptr), 0u);
  messenger.Post("b", nullptr);
  messenger.Loop();
  EXPECT_TRUE(messenger.RemoveReceiver(&late));
  EXPECT_EQ(early.calls + late.calls, 0);
}

TEST(MessengerClose, of_an_idle_messenger_and_again_is_harmless) {
  Messenger messenger;
  messenger.Close();
  messenger.Close();
  Receiver receiver;
  receiver.ListenTo(messenger);
  EXPECT_FALSE(messenger.IsRunning());
  messenger.Send("a", nullptr);
  EXPECT_EQ(receiver.calls, 0);
}

// The pass has three messages and two receivers; the first message is being delivered to the first receiver.
TEST(MessengerClose, does_not_wait_for_a_delivery_and_drops_the_rest_of_the_pass) {
  Messenger messenger;
  std::atomic<bool> inside{false}, leave{false}, left{false};
  Receiver first([&](const std::string&, ARGUMENTS*) {
    inside = true;
    Eventually([&] { return leave.load(); });
    left = true;
    return 0;
  });
  Receiver second;
  for (const char* name : {"a", "b", "c"}) messenger.Post(name, nullptr);
  messenger.AddReceiver(&first);
  messenger.AddReceiver(&second);
  ASSERT_TRUE(Eventually([&] { return inside.load(); }));
  const int heardBefore = second.calls;
  messenger.Post("d", nullptr);
  InTime("Close during a delivery", [&] { messenger.Close(); });
  EXPECT_FALSE(left);
  SleepMilliseconds(20);
  EXPECT_TRUE(messenger.IsRunning()) << "as long as a receiver is being called";
  leave = true;
  EXPECT_TRUE(Eventually([&] { return !messenger.IsRunning(); }));
  EXPECT_TRUE(left);
  EXPECT_EQ(first.Names(), Names{"a"});
  EXPECT_EQ(second.calls, heardBefore);
  SleepMilliseconds(20);
  EXPECT_EQ(first.calls, 1);
}

TEST(MessengerClose, may_be_called_by_a_receiver) {
  for (const bool posted : {false, true}) {
    auto messenger = std::make_unique<Messenger>();
    std::atomic<bool> closed{false};
    Receiver second;
    Receiver first([&](const std::string&, ARGUMENTS*) {
      messenger->Close();
      closed = true;
      return 4;
    });
    messenger->AddReceiver(&first);
    messenger->AddReceiver(&second);
    InTime("Close inside a delivery", [&] {
      if (posted) {
        messenger->Post("a", nullptr);
        EXPECT_TRUE(Eventually([&] { return closed.load(); }));
      } else {
        EXPECT_EQ(messenger->Send("a", nullptr), 4u);
      }
      EXPECT_TRUE(Eventually([&] { return !messenger->IsRunning(); }));
    });
    EXPECT_EQ(first.calls, 1) << posted;
    EXPECT_EQ(second.calls, 0) << posted;
    InTime("deletion", [&] { messenger.reset(); });
  }
}

TEST(MessengerClose, destructor_afterwards_waits_for_the_delivery_in_progress) {
  auto messenger = std::make_unique<Messenger>();
  std::atomic<bool> inside{false}, left{false};
  Receiver receiver([&](const std::string&, ARGUMENTS*) {
    inside = true;
    SleepMilliseconds(60);
    left = true;
    return 0;
  });
  messenger->AddReceiver(&receiver);
  messenger->Post("a", nullptr);
  ASSERT_TRUE(Eventually([&] { return inside.load(); }));
  messenger->Close();
  messenger.reset();
  EXPECT_TRUE(left);
}

// The receiver waits for the GUI thread, which deletes the messenger; the host's receivers, and plain memory
// that they use, go as soon as the thread no longer runs.
TEST(MessengerClose, gui_thread_may_handle_events_until_the_thread_has_ended) {
  for (int i = 0; i < 20; ++i) {
    auto messenger = std::make_unique<Messenger>();
    std::atomic<bool> inside{false}, answered{false};
    auto notes = std::make_unique<std::string>();
    auto receiver = std::make_unique<Receiver>([&](const std::string&, ARGUMENTS*) {
      inside = true;
      QTD::platform::QueueOnGuiThread([&] { answered = true; });
      const bool served = Eventually([&] { return answered.load(); });
      *notes += served ? "served" : "not served";
      return 0;
    });
    messenger->AddReceiver(receiver.get());
    messenger->Post("a", nullptr);
    ASSERT_TRUE(Eventually([&] { return inside.load(); }));
    messenger->Close();
    while (messenger->IsRunning()) QCoreApplication::processEvents();
    EXPECT_EQ(*notes, "served");
    notes.reset();
    receiver.reset();
    messenger.reset();
  }
}

// Whoever sees the closing done is not heard any more, whatever other threads begin meanwhile.
TEST(MessengerClose, beside_all_operations_of_other_threads) {
  for (int i = 0; i < 50; ++i) {
    Messenger messenger;
    std::atomic<bool> stop{false};
    Receiver fixed;
    messenger.AddReceiver(&fixed);
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
      threads.emplace_back([&] {
        Receiver passing;
        while (!stop) {
          messenger.AddReceiver(&passing);
          messenger.Post("posted", nullptr);
          messenger.Send("sent", nullptr);
          messenger.RemoveReceiver(&passing);
        }
      });
    }
    EXPECT_TRUE(Eventually([&] { return fixed.calls > 10; }));
    messenger.Close();
    EXPECT_TRUE(Eventually([&] { return !messenger.IsRunning(); }));
    messenger.RemoveReceiver(&fixed);
    const int calls = fixed.calls;
    SleepMilliseconds(2);
    stop = true;
    for (auto& thread : threads) thread.join();
    EXPECT_FALSE(messenger.IsRunning());
    EXPECT_EQ(fixed.calls, calls);
  }
}

}  // namespace

// Receivers that throw: who hears of it, and that all goes on.
#include <gtest/gtest.h>

#include <stdexcept>

#include "QTD/frame/Messenger.h"
#include "frame/Receiver.h"
#include "frame/Waiting.h"

namespace {

using namespace waiting;
using QTD::ARGUMENTS;
using QTD::Messenger;

TEST(Messenger, exception_of_a_receiver_passes_through_send_when_all_have_been_told) {
  Messenger messenger;
  Receiver receiver;
  receiver.action = [](const std::string&, ARGUMENTS*) -> uint32_t { throw std::runtime_error("no"); };
  Receiver next;
  receiver.ListenTo(messenger);
  next.ListenTo(messenger);
  EXPECT_THROW(messenger.Send("a", nullptr), std::runtime_error);
  EXPECT_EQ(next.calls, 1);
  // Nothing is left behind by which another thread could be held up.
  InTime("operations after the exception", [&] {
    messenger.RemoveReceiver(&receiver);
    messenger.Post("b", nullptr);
    EXPECT_EQ(messenger.Send("c", nullptr), 0u);
  });
  EXPECT_TRUE(Eventually([&] { return next.calls == 3; }));
}

TEST(Messenger, of_two_exceptions_the_first_passes_through_send) {
  Messenger messenger;
  Receiver first([](const std::string&, ARGUMENTS*) -> uint32_t { throw std::runtime_error("first"); });
  Receiver second([](const std::string&, ARGUMENTS*) -> uint32_t { throw 2; });
  first.ListenTo(messenger);
  second.ListenTo(messenger);
  try {
    messenger.Send("a", nullptr);
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "first");
  }
  EXPECT_EQ(second.calls, 1);
}

TEST(Messenger, exception_of_a_receiver_does_not_end_the_thread) {
  Messenger messenger;
  Receiver receiver, next;
  receiver.action = [](const std::string&, ARGUMENTS*) -> uint32_t { throw 1; };
  messenger.Post("a", nullptr);
  messenger.Post("b", nullptr);
  receiver.ListenTo(messenger);
  next.ListenTo(messenger);
  ASSERT_TRUE(Eventually([&] { return next.calls == 2; })) << "others and later messages are served";
  EXPECT_TRUE(messenger.IsRunning());
  messenger.Post("c", nullptr);
  EXPECT_TRUE(Eventually([&] { return next.calls == 3; }));
  InTime("removal after the exception", [&] { messenger.RemoveReceiver(&receiver); });
}

}  // namespace

// Removal of a receiver by host code that the library calls with its locks held.
#include "QTD/frame/HostCodeUnderLocks.h"

#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <thread>

#include "QTD/frame/Receivers.h"
#include "frame/Receiver.h"
#include "frame/Waiting.h"

namespace {

using namespace waiting;
using Clock = std::chrono::steady_clock;
using QTD::ARGUMENTS;
using QTD::HostCodeUnderLocks;
using QTD::Messenger;

TEST(HostCodeUnderLocks, scopes_nest_and_belong_to_one_thread) {
  EXPECT_FALSE(HostCodeUnderLocks::IsActive());
  {
    const HostCodeUnderLocks outer;
    {
      const HostCodeUnderLocks inner;
      EXPECT_TRUE(HostCodeUnderLocks::IsActive());
    }
    EXPECT_TRUE(HostCodeUnderLocks::IsActive());
    bool other = true;
    std::thread([&] { other = HostCodeUnderLocks::IsActive(); }).join();
    EXPECT_FALSE(other);
  }
  EXPECT_FALSE(HostCodeUnderLocks::IsActive());
}

TEST(HostCodeUnderLocks, a_held_lock_is_marked_for_as_long_as_it_is_held) {
  std::recursive_mutex mutex;
  {
    const QTD::HostCodeLock guard(mutex);
    EXPECT_TRUE(HostCodeUnderLocks::IsActive());
    bool got = true;
    std::thread([&] { got = mutex.try_lock(); }).join();
    EXPECT_FALSE(got);
  }
  EXPECT_FALSE(HostCodeUnderLocks::IsActive());
  std::thread([&] {
    EXPECT_TRUE(mutex.try_lock());
    mutex.unlock();
  }).join();
}

// The receiver waits for a lock that the remover holds.
TEST(HostCodeUnderLocks, removal_does_not_wait_for_ever_for_a_receiver_that_waits_for_the_lock) {
  InTime("removal under a lock", [] {
    Messenger messenger;
    std::recursive_mutex mutex;
    std::atomic<bool> inside{false}, left{false};
    Receiver receiver([&](const std::string&, ARGUMENTS*) {
      inside = true;
      const std::lock_guard<std::recursive_mutex> guard(mutex);
      left = true;
      return 0;
    });
    messenger.AddReceiver(&receiver);
    {
      const QTD::HostCodeLock guard(mutex);
      messenger.Post("a", nullptr);
      ASSERT_TRUE(Eventually([&] { return inside.load(); }));
      const auto begin = Clock::now();
      messenger.RemoveReceiver(&receiver);
      EXPECT_GE(Clock::now() - begin, QTD::Receivers::kPatience);
      EXPECT_FALSE(left) << "the host must not delete it yet";
    }
    EXPECT_TRUE(Eventually([&] { return left.load(); }));
  });
}

TEST(HostCodeUnderLocks, removal_waits_for_a_receiver_that_returns) {
  Messenger messenger;
  std::atomic<bool> inside{false}, left{false};
  Receiver receiver([&](const std::string&, ARGUMENTS*) {
    inside = true;
    SleepMilliseconds(60);
    left = true;
    return 0;
  });
  messenger.AddReceiver(&receiver);
  const HostCodeUnderLocks scope;
  messenger.Post("a", nullptr);
  ASSERT_TRUE(Eventually([&] { return inside.load(); }));
  messenger.RemoveReceiver(&receiver);
  EXPECT_TRUE(left);
}

}  // namespace

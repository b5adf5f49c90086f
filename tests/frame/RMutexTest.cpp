#include "QTD/frame/RMutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>

namespace {

using std::chrono::milliseconds;

// Whether another thread finds the mutex free.
bool IsFree(std::recursive_mutex& mutex) {
  return std::async(std::launch::async,
                    [&] {
                      if (!mutex.try_lock()) return false;
                      mutex.unlock();
                      return true;
                    })
      .get();
}

TEST(RMutexLock, holds_the_mutex_while_it_lives) {
  std::recursive_mutex mutex;
  {
    const QTD::RMutexLock guard(&mutex, "label");
    EXPECT_FALSE(IsFree(mutex));
    const QTD::RMutexLock again(&mutex);
    EXPECT_FALSE(IsFree(mutex));
  }
  EXPECT_TRUE(IsFree(mutex));
}

TEST(RMutexLock, locks_the_mutex_of_an_rmutex) {
  QTD::RMutex mutex;
  {
    const QTD::RMutexLock guard(mutex);
    EXPECT_FALSE(IsFree(mutex.mutex));
  }
  EXPECT_TRUE(IsFree(mutex.mutex));
}

TEST(RMutexLock, locks_nothing_for_null) {
  const QTD::RMutexLock guard(static_cast<std::recursive_mutex*>(nullptr), nullptr);
}

TEST(RMutex, waits_in_its_destructor_until_it_is_free) {
  auto mutex = std::make_unique<QTD::RMutex>();
  std::promise<void> locked;
  std::atomic<bool> released{false};
  std::future<void> holder = std::async(std::launch::async, [&, held = mutex.get()] {
    held->lock();
    locked.set_value();
    std::this_thread::sleep_for(milliseconds(30));
    released = true;
    held->unlock();
  });
  locked.get_future().wait();
  mutex.reset();
  EXPECT_TRUE(released);
}

TEST(SpinLock, owns_the_mutex_once_it_is_free) {
  std::recursive_mutex mutex;
  mutex.lock();
  std::future<bool> other = std::async(std::launch::async, [&] { return QTD::SpinLock(mutex).owns_lock(); });
  EXPECT_EQ(other.wait_for(milliseconds(20)), std::future_status::timeout);
  mutex.unlock();
  EXPECT_TRUE(other.get());
  EXPECT_TRUE(IsFree(mutex));
}

}  // namespace

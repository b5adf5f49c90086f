// A component between several threads: its handlers' lock, and the end of its calls.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "QTD/frame/ComponentImpl.h"
#include "frame/Waiting.h"

namespace {

using QTD::ARGUMENTS;
using QTD::ComponentImpl;
using waiting::Eventually;
using waiting::SleepMilliseconds;

// A handler that does what the test says.
class Handler : public ZynDisplayCommand {
 public:
  uint32_t RunCommand(const char*, ARGUMENTS*) override {
    if (action) action();
    return 0;
  }
  std::function<void()> action;
};

class Component : public ComponentImpl {
 public:
  using ComponentImpl::handlerLock;
  using ComponentImpl::parameterCalls;
};

struct ComponentThreads : testing::Test {
  // Asked on a thread of its own, as the lock is recursive.
  bool IsHandlerLockFree() {
    return std::async(std::launch::async,
                      [&] {
                        const bool taken = component.handlerLock.try_lock();
                        if (taken) component.handlerLock.unlock();
                        return taken;
                      })
        .get();
  }

  Handler setter, getter;
  Component component;
};

// Another thread inside a call of the component, until told to go on.
class CallUnderWay {
 public:
  explicit CallUnderWay(Component& component) : hold(component.Parameters().Mutex()) {
    const int before = component.parameterCalls;
    thread = std::thread([&component] { component.SetParameterInt("other", 1); });
    EXPECT_TRUE(Eventually([&] { return component.parameterCalls > before; }));
  }
  ~CallUnderWay() { GoOn(); }
  void GoOn() {
    if (hold.owns_lock()) hold.unlock();
    if (thread.joinable()) thread.join();
  }

 private:
  std::unique_lock<std::recursive_mutex> hold;
  std::thread thread;
};

TEST_F(ComponentThreads, holds_the_handler_lock_for_the_handlers_call_and_not_for_the_store) {
  std::atomic<bool> freeInside{true};
  setter.action = [&] { freeInside = IsHandlerLockFree(); };
  component.SetParameterHandlers(&setter, nullptr);
  std::unique_lock<std::recursive_mutex> store(component.Parameters().Mutex());
  std::atomic<bool> stored{false};
  std::thread thread([&] {
    component.SetParameterInt("a", 1);
    stored = true;
  });
  // The handler has been asked once the lock of the handlers is free again; the value waits for the list.
  EXPECT_TRUE(Eventually([&] { return component.parameterCalls == 1; }));
  EXPECT_TRUE(Eventually([&] { return !freeInside && IsHandlerLockFree(); }));
  EXPECT_FALSE(stored);
  store.unlock();
  thread.join();
  EXPECT_FALSE(freeInside);
  EXPECT_TRUE(component.Parameters().Has("a"));
}

TEST_F(ComponentThreads, frees_the_handler_lock_when_a_handler_throws) {
  component.SetParameterHandlers(&setter, nullptr);
  setter.action = [] { throw std::out_of_range("handler"); };
  EXPECT_THROW(component.SetParameterInt("a", 1), std::out_of_range);
  EXPECT_TRUE(IsHandlerLockFree());
  setter.action = nullptr;
  EXPECT_EQ(component.SetParameterInt("a", 2), 0u);
}

TEST_F(ComponentThreads, serves_several_threads_one_handler_call_at_a_time) {
  std::atomic<int> inside{0}, most{0}, calls{0};
  const auto act = [&] {
    const int now = ++inside;
    if (now > most) most = now;
    ++calls;
    std::this_thread::yield();
    --inside;
  };
  setter.action = getter.action = act;
  component.SetParameterHandlers(&setter, &getter);
  const auto work = [&](int64_t value) {
    for (int i = 0; i < 300; ++i) {
      component.SetParameterInt("shared", value);
      int64_t read = 0;
      component.GetParameterInt("shared", &read);
      EXPECT_TRUE(read == 1 || read == 2);
    }
  };
  std::future<void> other = std::async(std::launch::async, work, 1);
  work(2);
  other.get();
  EXPECT_EQ(calls, 1200);
  EXPECT_EQ(most, 1);
  EXPECT_EQ(component.GetParameterCount(), 1u);
}

TEST_F(ComponentThreads, the_end_of_its_calls_waits_for_those_of_other_threads) {
  CallUnderWay call(component);
  std::atomic<bool> ended{false};
  std::thread thread([&] {
    component.EndParameterCalls();
    ended = true;
  });
  SleepMilliseconds(50);
  EXPECT_FALSE(ended);
  call.GoOn();
  thread.join();
  EXPECT_EQ(component.parameterCalls, 0);
}

TEST_F(ComponentThreads, the_end_of_its_calls_takes_the_handlers_away) {
  int asked = 0;
  setter.action = getter.action = [&] { ++asked; };
  component.SetParameterHandlers(&setter, &getter);
  component.EndParameterCalls();
  component.SetParameterInt("a", 1);
  int64_t read = 0;
  component.GetParameterInt("a", &read);
  EXPECT_EQ(asked, 0);
}

TEST_F(ComponentThreads, the_end_of_its_calls_does_not_wait_for_the_callers_own) {
  Handler inner;
  inner.action = [&] { component.EndParameterCalls(); };
  Component other;
  other.SetParameterHandlers(&inner, nullptr);
  // Two calls of the component deep, and one of another component.
  int depth = 0;
  setter.action = [&] {
    if (++depth == 1) {
      component.SetParameterInt("a", 2);
    } else {
      other.SetParameterInt("b", 1);
    }
  };
  component.SetParameterHandlers(&setter, nullptr);
  waiting::InTime("the end of a component's calls inside of one", [&] { component.SetParameterInt("a", 1); });
  EXPECT_EQ(component.parameterCalls, 0);
  EXPECT_EQ(component.Parameters().GetString("a"), "1");
}

TEST_F(ComponentThreads, the_callers_own_calls_do_not_stand_for_those_of_others) {
  CallUnderWay call(component);
  std::atomic<bool> ended{false};
  Handler outer;
  outer.action = [&] {
    component.EndParameterCalls();
    ended = true;
  };
  Component other;  // its call is the caller's own, but is none of the component
  other.SetParameterHandlers(&outer, nullptr);
  std::thread thread([&] { other.SetParameterInt("b", 1); });
  SleepMilliseconds(50);
  EXPECT_FALSE(ended);
  call.GoOn();
  thread.join();
  EXPECT_TRUE(ended);
}

}  // namespace

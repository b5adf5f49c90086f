// How a thread ends: by force, by exceptions, and together with its object.
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "frame/Waiting.h"
#include "frame/Worker.h"

namespace {

using namespace waiting;
using thread_test::Worker;

TEST(Thread, terminate_ends_a_thread_that_stops_in_time) {
  Worker worker;
  worker.Start(nullptr);
  ASSERT_TRUE(Eventually([&] { return worker.passes > 0; }));
  worker.Terminate(42, 20000);
  EXPECT_FALSE(worker.IsRunning());
  EXPECT_EQ(worker.stops, 1);
  EXPECT_EQ(worker.ExitCode(), 42u);
  worker.loop = [] { return true; };
  worker.Start(nullptr);
  worker.Wait(-1);
  EXPECT_EQ(worker.ExitCode(), 0u) << "a normal run clears it";
}

// What a stuck pass uses; it outlives the worker.
struct Gate {
  std::atomic<bool> inside{false}, leave{false}, left{false};
  std::atomic<int> stops{0};
};

class StuckWorker : public QTD::Thread {
 public:
  explicit StuckWorker(std::shared_ptr<Gate> givenGate) : gate(std::move(givenGate)) {}
  ~StuckWorker() override { StopAndWait(); }
  bool Loop() override {
    const auto own = gate;
    own->inside = true;
    Eventually([&] { return own->leave.load(); });
    own->left = true;
    return false;
  }
  bool OnStop() override { return ++gate->stops, true; }

  std::shared_ptr<Gate> gate;
};

TEST(Thread, terminate_abandons_a_thread_that_does_not_stop_in_time) {
  const auto gate = std::make_shared<Gate>();
  auto worker = std::make_unique<StuckWorker>(gate);
  worker->Start("stuck");
  ASSERT_TRUE(Eventually([&] { return gate->inside.load(); }));
  InTime("Terminate of a stuck thread", [&] { worker->Terminate(9, 20); });
  EXPECT_FALSE(worker->IsRunning());
  EXPECT_EQ(worker->ExitCode(), 9u);
  EXPECT_FALSE(gate->left) << "abandoned, not waited for";

  InTime("operations after that", [&] {
    worker->RequestStop();
    worker->Wait(-1);
  });
  InTime("the destructor", [&] { worker.reset(); });
  gate->leave = true;
  ASSERT_TRUE(Eventually([&] { return gate->left.load(); }));
  SleepMilliseconds(20);
  EXPECT_EQ(gate->stops, 0) << "the abandoned thread must not call the destroyed object";
}

TEST(Thread, starts_again_after_it_was_abandoned) {
  const auto stuck = std::make_shared<Gate>();
  StuckWorker worker(stuck);
  worker.Start(nullptr);
  ASSERT_TRUE(Eventually([&] { return stuck->inside.load(); }));
  worker.Terminate(9, 20);
  const auto fresh = std::make_shared<Gate>();
  fresh->leave = true;
  worker.gate = fresh;
  EXPECT_TRUE(worker.Start(nullptr));
  EXPECT_EQ(worker.ExitCode(), 0u);
  EXPECT_TRUE(Eventually([&] { return fresh->left.load(); }));
  stuck->leave = true;
  ASSERT_TRUE(Eventually([&] { return stuck->left.load(); }));
  EXPECT_TRUE(worker.IsRunning()) << "the end of the abandoned thread does not touch the new one";
  worker.StopAndWait();
  EXPECT_EQ(fresh->stops, 1);
}

TEST(Thread, exceptions_end_the_thread_and_not_the_process) {
  for (int place = 0; place < 3; ++place) {
    Worker worker;
    const auto fail = []() -> bool { throw std::runtime_error("refused"); };
    if (place == 0) worker.onStart = fail;
    if (place == 1) worker.loop = fail;
    if (place == 2) {
      worker.loop = [] { return true; };
      worker.onStop = fail;
    }
    worker.Start(nullptr);
    worker.Wait(20000);
    EXPECT_FALSE(worker.IsRunning());
    EXPECT_EQ(worker.passes, place == 0 ? 0 : 1);
    EXPECT_EQ(worker.stops, 1);
  }
}

TEST(Thread, may_be_deleted_by_its_own_pass) {
  struct SelfDeleting : QTD::Thread {
    explicit SelfDeleting(std::shared_ptr<Gate> givenGate) : gate(std::move(givenGate)) {}
    ~SelfDeleting() override { StopAndWait(); }
    bool Loop() override {
      const auto own = gate;
      delete this;
      own->left = true;
      return false;
    }
    bool OnStop() override { return ++gate->stops, true; }
    std::shared_ptr<Gate> gate;
  };
  const auto gate = std::make_shared<Gate>();
  (new SelfDeleting(gate))->Start(nullptr);
  ASSERT_TRUE(Eventually([&] { return gate->left.load(); }));
  SleepMilliseconds(20);
  EXPECT_EQ(gate->stops, 0);
}

TEST(Thread, destruction_right_after_the_end_is_safe) {
  for (int i = 0; i < 300; ++i) {
    auto worker = std::make_unique<Worker>();
    worker->loop = [] { return true; };
    worker->Start(nullptr);
    if (i % 3 == 0) std::this_thread::yield();
    if (i % 3 == 1) worker->Wait(-1);
    worker.reset();
  }
}

}  // namespace

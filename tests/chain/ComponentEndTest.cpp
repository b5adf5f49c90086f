// Chains and converters that are rebuilt while a thread of the host is inside a call of their parameters.
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <thread>

#include "QTD/chain/QTDConverter.h"
#include "QTD/chain/QTDProcessor.h"
#include "chain/ChainFakes.h"
#include "support/CallUnderWay.h"

namespace {

using chain_test::FakeStage;
using test::CallUnderWay;

// Tells whether the call had ended when it went.
class LeavingStage : public FakeStage {
 public:
  LeavingStage(const CallUnderWay& observed, bool& result)
      : FakeStage("leaving", nullptr), call(observed), ended(result) {}
  ~LeavingStage() override { ended = call.HasEnded(); }

 private:
  const CallUnderWay& call;
  bool& ended;
};

}  // namespace

TEST(QTDProcessorEnd, waits_for_parameter_calls_before_anything_goes) {
  CallUnderWay call;
  bool endedFirst = false;
  auto chain = std::make_unique<QTDProcessor>(nullptr, false);
  ASSERT_EQ(chain->AddProcessor("leaving", new LeavingStage(call, endedFirst)), 0u);
  call.Begin(*chain);
  chain.reset();
  EXPECT_TRUE(endedFirst);
}

// Of what a converter gives up, its state can be seen from outside. It lives in a place of the test's own,
// which can be looked at when it is gone.
TEST(QTDConverterEnd, waits_for_parameter_calls_before_anything_goes) {
  alignas(QTDConverter) std::byte place[sizeof(QTDConverter)];
  auto* const converter = new (place) QTDConverter(nullptr, false);
  converter->Fail();
  CallUnderWay call;
  call.Begin(*converter);
  std::atomic<bool> stop{false}, endedFirst{false};
  std::thread watcher([&] {
    while (!stop && converter->GetState() != QTDConverter::kIdle) std::this_thread::yield();
    endedFirst = call.HasEnded();
  });
  converter->~QTDConverter();
  stop = true;
  watcher.join();
  EXPECT_TRUE(endedFirst);
}

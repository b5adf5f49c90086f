// A stage that leaves the chain is freed without the chain's lock: a host's stage may wait for other locks.
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <mutex>
#include <thread>

#include "QTD/chain/QTDProcessor.h"
#include "ZynPixelFormat.h"
#include "chain/ChainFakes.h"

namespace chain_test {
namespace {

// Whether another thread gets the chain's lock while this one runs.
bool LockIsFree(QTDProcessor& chain) {
  auto got = std::make_shared<std::promise<bool>>();
  std::future<bool> answer = got->get_future();
  std::thread([&chain, got] {
    std::unique_lock<QTD::RMutex> guard(chain.ChainLock(), std::try_to_lock);
    const bool owned = guard.owns_lock();
    if (owned) guard.unlock();
    got->set_value(owned);
  }).detach();
  return answer.wait_for(std::chrono::seconds(20)) == std::future_status::ready && answer.get();
}

// Looks at the lock while it is released and while it is deleted.
class LookingStage : public FakeStage {
 public:
  LookingStage(QTDProcessor& ownChain, std::vector<bool>* seenFree)
      : FakeStage("looking", nullptr), chain(ownChain), seen(seenFree) {}
  ~LookingStage() override { seen->push_back(LockIsFree(chain)); }
  void Release() override { seen->push_back(LockIsFree(chain)); }

 private:
  QTDProcessor& chain;
  std::vector<bool>* seen;
};

using Seen = std::vector<bool>;
const Seen kFree{true, true};

}  // namespace

TEST(StageLeaving, removal_frees_it_without_the_lock) {
  QTDProcessor chain(nullptr, false);
  Seen seen;
  ASSERT_EQ(chain.AddProcessor("a", new LookingStage(chain, &seen)), 0u);
  EXPECT_EQ(chain.RemoveProcessor("a"), 0u);
  EXPECT_EQ(seen, kFree);
}

TEST(StageLeaving, release_and_a_new_preparation_free_it_without_the_lock) {
  QTDProcessor chain(nullptr, false);
  Picture image(8, 4, ZYN_PIXEL_MONO8);
  Seen seen;
  ASSERT_EQ(chain.AddProcessor("a", new LookingStage(chain, &seen)), 0u);
  chain.Release();
  EXPECT_EQ(seen, kFree);
  seen.clear();
  ASSERT_EQ(chain.AddProcessor("a", new LookingStage(chain, &seen)), 0u);
  EXPECT_EQ(chain.Init(image), 0u);
  EXPECT_EQ(seen, kFree);
}

TEST(StageLeaving, that_takes_itself_out_in_a_run_is_freed_after_it_without_the_lock) {
  QTDProcessor chain(nullptr, false);
  Picture image(8, 4, ZYN_PIXEL_MONO8);
  Seen seen;
  auto* const stage = new LookingStage(chain, &seen);
  std::size_t seenInside = 1;
  stage->onRun = [&] {
    EXPECT_EQ(chain.RemoveProcessor("a"), 0u);
    seenInside = seen.size();
  };
  ASSERT_EQ(chain.AddProcessor("a", stage), 0u);
  EXPECT_NE(chain.ProcessImage(image, nullptr, nullptr), 0u);
  EXPECT_EQ(seenInside, 0u);
  EXPECT_EQ(seen, kFree);
}

TEST(StageLeaving, finds_the_list_without_itself) {
  QTDProcessor chain(nullptr, false);
  class Asking : public FakeStage {
   public:
    Asking(QTDProcessor& ownChain, bool* found)
        : FakeStage("asking", nullptr), chain(ownChain), still(found) {}
    void Release() override { *still = chain.FindProcessor("a") != nullptr; }

   private:
    QTDProcessor& chain;
    bool* still;
  };
  bool still = true;
  ASSERT_EQ(chain.AddProcessor("a", new Asking(chain, &still)), 0u);
  EXPECT_EQ(chain.RemoveProcessor("a"), 0u);
  EXPECT_FALSE(still);
}

}  // namespace chain_test

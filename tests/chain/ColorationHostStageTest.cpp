// A host's stage "image.unpacked" that runs code of the host's when the exposure coloration asks it.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <thread>

#include "QTD/chain/QTDProcessor.h"
#include "ZynPixelFormat.h"
#include "chain/ChainFakes.h"
#include "cpu/stages/CPUIPExposureColoration.h"
#include "display/HostCodeStage.h"
#include "display/Watchdog.h"
#include "gl/stages/QGLIPExposureColoration.h"

namespace chain_test {
namespace {

using display_test::EndsElsewhere;
using display_test::Watchdog;

// Runs code of the host's with every question, until that takes it away.
class AskedStage : public FakeStage {
 public:
  explicit AskedStage(Journal* writtenTo) : FakeStage("unpacked", writtenTo) {}
  bool Enable(bool on) override {
    Ask();
    return FakeStage::Enable(on);
  }
  ZynImage* Out() override {
    Ask();
    return FakeStage::Out();
  }
  ZynImage* GetImageInfo(bool source) override {
    Ask();
    return FakeStage::GetImageInfo(source);
  }
  std::function<void()> code;

 private:
  void Ask() {
    const std::function<void()> once = std::move(code);
    code = nullptr;
    if (once) once();
  }
};

class NotedColoration : public CPUIPExposureColoration {
 public:
  NotedColoration(ZynComponent* parent, Journal* writtenTo)
      : CPUIPExposureColoration(parent), journal(writtenTo) {}
  ~NotedColoration() override { journal->push_back("coloration.delete"); }

 private:
  Journal* journal;
};

class NotedCardColoration : public QGLIPExposureColoration {
 public:
  NotedCardColoration(ZynComponent* parent, Journal* writtenTo)
      : QGLIPExposureColoration(nullptr, parent), journal(writtenTo) {}
  ~NotedCardColoration() override { journal->push_back("coloration.delete"); }

 private:
  Journal* journal;
};

struct ColorationHostStage : testing::Test {
  // What makes the coloration ask, and the picture that passes.
  using Call = std::function<void(ZynImgProcessor&)>;
  struct Asking {
    const char* name;
    Call call;
  };
  const std::vector<Asking> kAskings = {
      {"Enable", [](ZynImgProcessor& stage) { EXPECT_TRUE(stage.Enable(true)); }},
      {"Init", [this](ZynImgProcessor& stage) { EXPECT_EQ(stage.Init(picture, nullptr), 0u); }},
      {"ProcessImage",
       [this](ZynImgProcessor& stage) { EXPECT_NE(stage.ProcessImage(picture, nullptr, nullptr), 0u); }},
      {"params.apply", [](ZynImgProcessor& stage) { EXPECT_NE(stage.ExecuteCommand("params.apply"), 0u); }},
      {"a run of the chain",
       [this](ZynImgProcessor&) { EXPECT_NE(chain.ProcessImage(picture, nullptr, nullptr), 0u); }},
  };

  // The host's stage, and a coloration that asks it.
  AskedStage* Fill(ZynImgProcessor* coloration) {
    auto* const unpacked = new AskedStage(&journal);
    EXPECT_EQ(chain.AddProcessor("image.unpacked", unpacked), 0u);
    EXPECT_EQ(chain.AddProcessor("image.coloration", coloration), 0u);
    EXPECT_EQ(coloration->Init(picture, nullptr), 0u);
    journal.clear();
    return unpacked;
  }
  std::function<void()> Removal(const char* name) {
    return [this, name] {
      EXPECT_EQ(chain.RemoveProcessor(name), 0u);
      journal.push_back("removed");
    };
  }

  Picture picture{8, 6, ZYN_PIXEL_RGB8};
  Journal journal;
  QTDProcessor chain{nullptr, false};
};

}  // namespace

TEST_F(ColorationHostStage, that_takes_the_coloration_out_has_it_freed_once_when_it_has_asked) {
  for (const Asking& asking : kAskings) {
    SCOPED_TRACE(asking.name);
    const Watchdog watchdog(asking.name);
    auto* const coloration = new NotedColoration(&chain, &journal);
    AskedStage* const unpacked = Fill(coloration);
    unpacked->code = Removal("image.coloration");
    asking.call(*coloration);
    EXPECT_EQ(chain.FindProcessor("image.coloration"), nullptr);
    Journal seen;
    for (const std::string& entry : journal)
      if (entry != "unpacked.run") seen.push_back(entry);
    EXPECT_EQ(seen, (Journal{"removed", "coloration.delete"}));
    chain.Release();
  }
}

TEST_F(ColorationHostStage, that_takes_itself_out_is_freed_once_when_it_has_answered) {
  for (const Asking& asking : kAskings) {
    SCOPED_TRACE(asking.name);
    const Watchdog watchdog(asking.name);
    auto* const coloration = new NotedColoration(&chain, &journal);
    AskedStage* const unpacked = Fill(coloration);
    unpacked->code = Removal("image.unpacked");
    asking.call(*coloration);
    EXPECT_EQ(chain.FindProcessor("image.unpacked"), nullptr);
    EXPECT_EQ(chain.FindProcessor("image.coloration"), coloration);
    Journal seen;
    for (const std::string& entry : journal)
      if (entry != "unpacked.run") seen.push_back(entry);
    EXPECT_EQ(seen, (Journal{"removed", "unpacked.release", "unpacked.delete"}));
    chain.Release();
  }
}

TEST_F(ColorationHostStage, may_take_the_coloration_of_the_card_out_as_well) {
  const Watchdog watchdog("a coloration of the card that leaves");
  // Without a surface: it has asked by the time that it fails.
  auto* const coloration = new NotedCardColoration(&chain, &journal);
  auto* const unpacked = new AskedStage(&journal);
  ASSERT_EQ(chain.AddProcessor("image.unpacked", unpacked), 0u);
  ASSERT_EQ(chain.AddProcessor("image.coloration", coloration), 0u);
  unpacked->code = Removal("image.coloration");
  EXPECT_EQ(coloration->ProcessImage(picture, nullptr, nullptr), 0x80FF0008u);
  EXPECT_EQ(journal, (Journal{"removed", "coloration.delete"}));
}

TEST_F(ColorationHostStage, may_wait_for_a_thread_that_asks_the_coloration_while_that_is_enabled) {
  const Watchdog watchdog("an Enable that waits");
  auto* const coloration = new CPUIPExposureColoration(&chain);
  AskedStage* const unpacked = Fill(coloration);
  int ended = 0;
  unpacked->code = [&] {
    ended += EndsElsewhere([coloration] { coloration->Out(); });
    ended += EndsElsewhere([coloration] { coloration->ExecuteCommand("params.reset"); });
  };
  EXPECT_TRUE(coloration->Enable(true));
  EXPECT_EQ(ended, 2);
  EXPECT_TRUE(unpacked->IsEnabled());
  EXPECT_TRUE(coloration->IsEnabled());
}

TEST_F(ColorationHostStage, that_throws_when_it_is_enabled_keeps_the_coloration_from_nothing) {
  auto* const coloration = new CPUIPExposureColoration(&chain);
  AskedStage* const unpacked = Fill(coloration);
  for (const bool on : {true, false, true}) {
    bool thrown = false;
    unpacked->code = [&thrown] {
      thrown = true;
      throw std::runtime_error("a host's");
    };
    EXPECT_NO_THROW(EXPECT_EQ(coloration->Enable(on), on));
    EXPECT_TRUE(thrown);
    EXPECT_EQ(coloration->IsEnabled(), on);
  }
}

// The chain goes while one thread holds its lock and others wait for it: those come back before.
TEST(ColorationOfAHost, that_waits_for_its_chain_comes_back_when_the_chain_goes) {
  const Watchdog watchdog("a chain that goes");
  const Picture picture(8, 6, ZYN_PIXEL_RGB8);
  auto chain = std::make_unique<QTDProcessor>(nullptr, false);
  ASSERT_EQ(chain->AddProcessor("image.unpacked", new FakeStage("unpacked", nullptr)), 0u);
  CPUIPExposureColoration onProcessor(chain.get());
  QGLIPExposureColoration onCard(nullptr, chain.get());
  std::atomic<int> waiting{0}, ended{0};
  std::atomic<bool> locked{false};
  bool endedWhileLocked = false;
  std::thread holder([&] {
    const QTD::RMutexLock guard(chain->ChainLock());
    locked = true;
    for (int wait = 0; wait < 10000 && ended < 2; ++wait)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    endedWhileLocked = ended == 2;
  });
  while (!locked) std::this_thread::yield();
  const auto run = [&](ZynImgProcessor& stage, uint32_t code) {
    return std::thread([&, code] {
      ++waiting;
      EXPECT_EQ(stage.ProcessImage(picture, nullptr, nullptr), code);
      ++ended;
    });
  };
  std::thread threads[] = {run(onProcessor, 0x80FF0007u), run(onCard, 0x80FF0008u)};
  while (waiting < 2) std::this_thread::yield();
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_EQ(ended, 0);
  chain.reset();
  holder.join();
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(endedWhileLocked);
}

}  // namespace chain_test

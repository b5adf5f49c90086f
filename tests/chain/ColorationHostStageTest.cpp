// A host's stage "image.unpacked" that runs code of the host's when the exposure coloration asks it.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <thread>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/frame/HostCodeUnderLocks.h"
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
  NotedColoration(ZynComponent* chainComponent, Journal* writtenTo)
      : CPUIPExposureColoration(chainComponent), journal(writtenTo) {}
  ~NotedColoration() override { journal->push_back("coloration.delete"); }

 private:
  Journal* journal;
};

class NotedCardColoration : public QGLIPExposureColoration {
 public:
  NotedCardColoration(ZynComponent* chainComponent, Journal* writtenTo)
      : QGLIPExposureColoration(nullptr, chainComponent), journal(writtenTo) {}
  ~NotedCardColoration() override { journal->push_back("coloration.delete"); }

 private:
  Journal* journal;
};

struct ColorationHostStage : testing::Test {
  // What makes the coloration ask, and the picture that passes.
  using Call = std::function<void(CPUIPExposureColoration&)>;
  struct Asking {
    const char* name;
    Call call;
    bool chainAsksFirst = false;
  };
  const std::vector<Asking> kAskings = {
      {"Enable", [](CPUIPExposureColoration& stage) { EXPECT_TRUE(stage.Enable(true)); }},
      {"Init", [this](CPUIPExposureColoration& stage) { EXPECT_EQ(stage.Init(picture, nullptr), 0u); }},
      {"ProcessImage",
       [this](CPUIPExposureColoration& stage) {
         EXPECT_NE(stage.ProcessImage(picture, nullptr, nullptr), 0u);
       }},
      {"params.apply",
       [](CPUIPExposureColoration& stage) { EXPECT_NE(stage.ExecuteCommand("params.apply"), 0u); }},
      {"a run of the chain",
       [this](CPUIPExposureColoration&) { EXPECT_NE(chain.ProcessImage(picture, nullptr, nullptr), 0u); },
       true},
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

  // What the host does when the coloration asks.
  void Arm(AskedStage& stage, const Asking& asking, const char* name) {
    stage.code = Removal(name);
    if (asking.chainAsksFirst) stage.code = [&stage, removal = stage.code] { stage.code = removal; };
  }

  Picture picture{8, 6, ZYN_PIXEL_RGB8};
  Journal journal;
  QTDProcessor chain{nullptr, false};
};

}  // namespace

TEST_F(ColorationHostStage, is_asked_as_host_code_under_locks) {
  for (const Asking& asking : kAskings) {
    SCOPED_TRACE(asking.name);
    auto* const coloration = new NotedColoration(&chain, &journal);
    AskedStage* const unpacked = Fill(coloration);
    coloration->Enable(true);
    bool marked = false;
    unpacked->code = [&] { marked = QTD::HostCodeUnderLocks::IsActive(); };
    switch (&asking - kAskings.data()) {
      case 0:
        coloration->Enable(true);
        break;
      case 1:
        coloration->Init(picture, nullptr);
        break;
      case 2:
        coloration->ProcessImage(picture, nullptr, nullptr);
        break;
      case 3:
        coloration->ExecuteCommand("params.apply");
        break;
      default:
        chain.ProcessImage(picture, nullptr, nullptr);
    }
    EXPECT_TRUE(marked);
    EXPECT_FALSE(QTD::HostCodeUnderLocks::IsActive());
    unpacked->code = nullptr;
    chain.Release();
  }
}

TEST_F(ColorationHostStage, may_go_when_the_chain_is_asked) {
  for (const bool out : {true, false}) {
    SCOPED_TRACE(out);
    AskedStage* const unpacked = Fill(new NotedColoration(&chain, &journal));
    ASSERT_EQ(chain.RemoveProcessor("image.coloration"), 0u);
    journal.clear();
    unpacked->code = Removal("image.unpacked");
    EXPECT_EQ(out ? chain.Out() : chain.GetImageInfo(false), nullptr);
    EXPECT_EQ(journal, (Journal{"removed", "unpacked.release", "unpacked.delete"}));
  }
}

TEST_F(ColorationHostStage, that_takes_the_coloration_out_has_it_freed_once_when_it_has_asked) {
  for (const Asking& asking : kAskings) {
    SCOPED_TRACE(asking.name);
    const Watchdog watchdog(asking.name);
    auto* const coloration = new NotedColoration(&chain, &journal);
    AskedStage* const unpacked = Fill(coloration);
    Arm(*unpacked, asking, "image.coloration");
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
    Arm(*unpacked, asking, "image.unpacked");
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
  for (const bool on : {false, true}) {
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
  std::thread host([&] {
    ++waiting;
    EXPECT_EQ(onProcessor.ProcessImage(picture, nullptr, nullptr), 0x80FF0007u);
    ++ended;
  });
  int endedBefore = -1;
  std::thread deleter([&] {
    while (waiting < 2) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    endedBefore = ended;
    chain.reset();
  });
  ++waiting;
  EXPECT_EQ(onCard.ProcessImage(picture, nullptr, nullptr), 0x80FF0008u);
  ++ended;
  for (std::thread* thread : {&holder, &host, &deleter}) thread->join();
  EXPECT_EQ(endedBefore, 0);
  EXPECT_TRUE(endedWhileLocked);
}

}  // namespace chain_test

// The loop over the rows of a composition, with stages that tell what is done to them.
#include "QTD/chain/StageRow.h"

#include <gtest/gtest.h>

#include <string>

#include "QTD/chain/QTDProcessor.h"
#include "ZynPixelFormat.h"
#include "chain/ChainFakes.h"

using chain_test::FakeStage;
using chain_test::Journal;

namespace {

std::string Names(QTDProcessor& chain) {
  std::string names;
  for (int index = 0; index < chain.GetProcessorCount(); ++index) {
    names += std::string(chain.Stages().NameAt(index)) + " ";
  }
  return names;
}

Journal* rowJournal = nullptr;
uint32_t failingInit = 0;
ZynImage reachedFormat{};
ZynComponent* seenParent = nullptr;

ZynImgProcessor* MakeFirst(ZynComponent* parent) {
  seenParent = parent;
  auto* const stage = new FakeStage("first", rowJournal);
  stage->outputInfo = &reachedFormat;
  return stage;
}
ZynImgProcessor* MakeSecond(ZynComponent*) {
  auto* const stage = new FakeStage("second", rowJournal);
  stage->initCode = failingInit;
  return stage;
}
ZynImgProcessor* MakeThird(ZynComponent*) {
  return new FakeStage("third", rowJournal);
}
bool IsMono8(uint32_t pixelType) {
  return pixelType == ZYN_PIXEL_MONO8;
}
bool IsRgb8(uint32_t pixelType) {
  return pixelType == ZYN_PIXEL_RGB8;
}
void Configure(QTDProcessor&, ZynImgProcessor&) {
  rowJournal->push_back("configure");
}
void Finish(ZynImgProcessor&) {
  rowJournal->push_back("finish");
}

struct StageRows : testing::Test {
  Journal journal;
  QTDProcessor chain{nullptr, false};
  ZynImage source{}, output{};

  StageRows() {
    rowJournal = &journal;
    failingInit = 0;
    QTD::ImageCreateHeader(&source, 4, 4, ZYN_PIXEL_MONO8);
    QTD::ImageCreateHeader(&reachedFormat, 4, 4, ZYN_PIXEL_RGB8);
  }
};

}  // namespace

TEST_F(StageRows, configure_before_init_and_finish_in_the_chain) {
  const StageRow rows[] = {{"one", AnyFormat, MakeFirst, kNoParent, kNoOutput, Configure, Finish}};
  EXPECT_TRUE(AppendStages(chain, rows, 1, &source, &output));
  EXPECT_EQ(journal, (Journal{"configure", "first.init", "finish"}));
  EXPECT_EQ(Names(chain), "one ");
}

TEST_F(StageRows, ask_each_condition_with_the_format_that_was_reached) {
  const StageRow rows[] = {{"one", IsMono8, MakeFirst, kNoParent, kNoOutput},
                           {"two", IsMono8, MakeSecond, kNoParent, kNoOutput},
                           {"three", IsRgb8, MakeThird, kNoParent, kNoOutput}};
  EXPECT_TRUE(AppendStages(chain, rows, 3, &source, &output));
  EXPECT_EQ(Names(chain), "one three ");
  EXPECT_EQ(static_cast<FakeStage*>(chain.FindProcessor("one"))->initSource.pixelType, ZYN_PIXEL_MONO8);
  EXPECT_EQ(static_cast<FakeStage*>(chain.FindProcessor("three"))->initSource.pixelType, ZYN_PIXEL_RGB8);
}

TEST_F(StageRows, say_who_gets_the_chain_as_parent_and_who_the_output) {
  const StageRow with[] = {{"one", AnyFormat, MakeFirst, kChainIsParent, kGetsOutput}};
  EXPECT_TRUE(AppendStages(chain, with, 1, &source, &output));
  EXPECT_EQ(seenParent, chain.GetComponent());
  EXPECT_EQ(static_cast<FakeStage*>(chain.FindProcessor("one"))->initOutput, &output);
  chain.Release();
  const StageRow without[] = {{"one", AnyFormat, MakeFirst, kNoParent, kNoOutput}};
  EXPECT_TRUE(AppendStages(chain, without, 1, &source, &output));
  EXPECT_EQ(seenParent, nullptr);
  EXPECT_EQ(static_cast<FakeStage*>(chain.FindProcessor("one"))->initOutput, nullptr);
}

TEST_F(StageRows, end_at_the_first_stage_that_cannot_be_prepared) {
  failingInit = 3;
  const StageRow rows[] = {{"one", AnyFormat, MakeFirst, kNoParent, kNoOutput},
                           {"two", AnyFormat, MakeSecond, kNoParent, kNoOutput, nullptr, Finish},
                           {"three", AnyFormat, MakeThird, kNoParent, kNoOutput}};
  EXPECT_FALSE(AppendStages(chain, rows, 3, &source, &output));
  EXPECT_EQ(journal, (Journal{"first.init", "second.init", "second.release", "second.delete"}));
  EXPECT_EQ(Names(chain), "one ");
}

TEST_F(StageRows, end_at_a_stage_that_the_chain_does_not_take) {
  const StageRow rows[] = {{"", AnyFormat, MakeFirst, kNoParent, kNoOutput},
                           {"three", AnyFormat, MakeThird, kNoParent, kNoOutput}};
  EXPECT_FALSE(AppendStages(chain, rows, 2, &source, &output));
  EXPECT_EQ(journal, (Journal{"first.init", "first.release", "first.delete"}));
  EXPECT_EQ(chain.GetProcessorCount(), 0);
}

TEST_F(StageRows, fail_without_a_format) {
  const StageRow rows[] = {{"one", AnyFormat, MakeFirst, kNoParent, kNoOutput}};
  EXPECT_FALSE(AppendStages(chain, rows, 1, nullptr, nullptr));
  EXPECT_TRUE(journal.empty());
}

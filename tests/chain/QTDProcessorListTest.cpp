// The chain's list operations, and the life of the stages in it.
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>

#include "QTD/chain/QTDProcessor.h"
#include "chain/ChainFakes.h"

using chain_test::FakeStage;
using chain_test::Journal;

namespace {

struct QTDProcessorList : testing::Test {
  Journal journal;
  QTDProcessor chain{nullptr, false};

  FakeStage* Add(const char* name, const char* before = nullptr) {
    auto* const stage = new FakeStage(name, &journal);
    EXPECT_EQ(chain.InsertProcessor(before, name, stage), 0u);
    return stage;
  }
};

}  // namespace

TEST_F(QTDProcessorList, is_created_empty) {
  EXPECT_EQ(chain.GetProcessorCount(), 0);
  EXPECT_EQ(chain.GetProcessorAt(0), nullptr);
  EXPECT_EQ(chain.Out(), nullptr);
  EXPECT_EQ(chain.GetImageInfo(true), nullptr);
  EXPECT_EQ(chain.GetImageInfo(false), nullptr);
}

TEST_F(QTDProcessorList, answers_stages_by_index_and_by_name) {
  FakeStage* const a = Add("a");
  FakeStage* const b = Add("b");
  EXPECT_EQ(chain.GetProcessorCount(), 2);
  EXPECT_EQ(chain.GetProcessorAt(0), a);
  EXPECT_EQ(chain.GetProcessorAt(1), b);
  EXPECT_EQ(chain.GetProcessorAt(2), nullptr);
  EXPECT_EQ(chain.GetProcessorAt(-1), nullptr);
  EXPECT_EQ(chain.FindProcessor("b"), b);
  EXPECT_EQ(chain.FindProcessor("c"), nullptr);
  EXPECT_EQ(chain.FindProcessor(nullptr), nullptr);
}

TEST_F(QTDProcessorList, answers_bare_codes_for_bad_arguments) {
  FakeStage stage("x", nullptr);
  EXPECT_EQ(chain.AddProcessor(nullptr, &stage), 7u);
  EXPECT_EQ(chain.AddProcessor("", &stage), 7u);
  EXPECT_EQ(chain.AddProcessor("x", nullptr), 7u);
  EXPECT_EQ(chain.InsertProcessor("a", "x", nullptr), 7u);
  EXPECT_EQ(chain.GetProcessorCount(), 0);
}

TEST_F(QTDProcessorList, refuses_a_name_that_it_holds_in_front_of_another_stage) {
  Add("a");
  Add("b");
  FakeStage stage("x", nullptr);
  EXPECT_EQ(chain.InsertProcessor("b", "a", &stage), 4u);
  EXPECT_EQ(chain.GetProcessorCount(), 2);
}

TEST_F(QTDProcessorList, refuses_a_place_that_it_does_not_hold) {
  Add("a");
  FakeStage stage("x", nullptr);
  EXPECT_EQ(chain.InsertProcessor("none", "x", &stage), 2u);
  EXPECT_EQ(chain.GetProcessorCount(), 1);
}

TEST_F(QTDProcessorList, appends_without_a_test_for_the_name) {
  FakeStage* const first = Add("a");
  Add("a");
  EXPECT_EQ(chain.GetProcessorCount(), 2);
  EXPECT_EQ(chain.FindProcessor("a"), first);
}

TEST_F(QTDProcessorList, keeps_its_last_error_over_list_operations) {
  EXPECT_EQ(chain.Init(nullptr) & 0xFFFF, 7u);
  FakeStage stage("x", nullptr);
  chain.InsertProcessor("none", "x", &stage);
  chain.RemoveProcessor("none");
  EXPECT_EQ(chain.LastError(), 7u);
}

TEST_F(QTDProcessorList, releases_and_deletes_a_removed_stage) {
  Add("a");
  FakeStage* const b = Add("b");
  EXPECT_EQ(chain.RemoveProcessor("a"), 0u);
  EXPECT_EQ(journal, (Journal{"a.release", "a.delete"}));
  EXPECT_EQ(chain.GetProcessorCount(), 1);
  EXPECT_EQ(chain.GetProcessorAt(0), b);
}

TEST_F(QTDProcessorList, changes_nothing_for_an_unknown_name_to_remove) {
  FakeStage* const a = Add("a");
  EXPECT_EQ(chain.RemoveProcessor("b"), 2u);
  EXPECT_EQ(chain.RemoveProcessor(""), 2u);
  EXPECT_EQ(chain.RemoveProcessor(nullptr), 2u);
  EXPECT_TRUE(journal.empty());
  EXPECT_EQ(chain.GetProcessorAt(0), a);
}

TEST_F(QTDProcessorList, releases_and_deletes_all_stages_in_order) {
  Add("a");
  Add("b");
  chain.Release();
  EXPECT_EQ(journal, (Journal{"a.release", "a.delete", "b.release", "b.delete"}));
  EXPECT_EQ(chain.GetProcessorCount(), 0);
}

TEST_F(QTDProcessorList, deletes_its_stages_with_itself) {
  auto* const owned = new QTDProcessor(nullptr, false);
  owned->AddProcessor("a", new FakeStage("a", &journal));
  delete owned;
  EXPECT_EQ(journal, (Journal{"a.release", "a.delete"}));
}

TEST_F(QTDProcessorList, deletes_a_stage_even_when_its_release_throws) {
  struct Throwing : FakeStage {
    using FakeStage::FakeStage;
    void Release() override { throw 1; }
  };
  chain.AddProcessor("a", new Throwing("a", &journal));
  EXPECT_EQ(chain.RemoveProcessor("a"), 0u);
  EXPECT_EQ(journal, (Journal{"a.delete"}));
}

TEST_F(QTDProcessorList, answers_the_last_picture_that_there_is) {
  ZynImage first{}, second{};
  FakeStage* const a = Add("a");
  FakeStage* const b = Add("b");
  Add("c");
  a->out = &first;
  b->out = &second;
  EXPECT_EQ(chain.Out(), &second);
  b->out = nullptr;
  EXPECT_EQ(chain.Out(), &first);
  a->out = nullptr;
  EXPECT_EQ(chain.Out(), nullptr);
}

TEST_F(QTDProcessorList, answers_the_first_source_and_the_last_result_that_a_stage_knows) {
  ZynImage bSource{}, bOutput{}, cSource{}, cOutput{};
  Add("a");
  FakeStage* const b = Add("b");
  FakeStage* const c = Add("c");
  Add("d");
  b->sourceInfo = &bSource;
  b->outputInfo = &bOutput;
  c->sourceInfo = &cSource;
  c->outputInfo = &cOutput;
  EXPECT_EQ(chain.GetImageInfo(true), &bSource);
  EXPECT_EQ(chain.GetImageInfo(false), &cOutput);
  b->sourceInfo = nullptr;
  c->outputInfo = nullptr;
  EXPECT_EQ(chain.GetImageInfo(true), &cSource);
  EXPECT_EQ(chain.GetImageInfo(false), &bOutput);
}

TEST_F(QTDProcessorList, tells_before_stages_leave) {
  Add("a");
  Add("b");
  chain.SetStagesLeaving([this] { journal.push_back("leaving"); });
  chain.RemoveProcessor("none");
  EXPECT_TRUE(journal.empty());
  chain.RemoveProcessor("a");
  EXPECT_EQ(journal, (Journal{"leaving", "a.release", "a.delete"}));
  journal.clear();
  chain.Release();
  EXPECT_EQ(journal, (Journal{"leaving", "b.release", "b.delete"}));
  journal.clear();
  chain.Release();
  EXPECT_TRUE(journal.empty());
}

TEST_F(QTDProcessorList, tells_before_its_end) {
  auto* const owned = new QTDProcessor(nullptr, false);
  owned->AddProcessor("a", new FakeStage("a", &journal));
  owned->SetStagesLeaving([this] {
    journal.push_back("leaving");
    throw 1;  // must not end the process
  });
  delete owned;
  EXPECT_EQ(journal, (Journal{"leaving", "a.release", "a.delete"}));
}

TEST_F(QTDProcessorList, holds_list_operations_of_other_threads_back_while_a_run_is_under_way) {
  FakeStage* const a = Add("a");
  auto* const inserted = new FakeStage("b", &journal);
  std::future<uint32_t> insertion;
  a->onRun = [&] {
    insertion = std::async(std::launch::async, [&] { return chain.InsertProcessor("a", "b", inserted); });
    EXPECT_EQ(insertion.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
  };
  const ZynImage image{};
  EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), 0u);
  EXPECT_EQ(insertion.get(), 0u);
  EXPECT_EQ(journal, (Journal{"a.run"}));  // the stage came too late for this image
  EXPECT_EQ(chain.GetProcessorAt(0), inserted);
}

TEST_F(QTDProcessorList, survives_operations_from_several_threads_during_runs) {
  Add("a");
  std::atomic<bool> stop{false};
  auto churn = [&](const char* name) {
    while (!stop) {
      chain.AddProcessor(name, new FakeStage(name, nullptr));
      chain.FindProcessor(name);
      chain.GetProcessorCount();
      chain.Out();
      chain.RemoveProcessor(name);
    }
  };
  auto first = std::async(std::launch::async, churn, "x");
  auto second = std::async(std::launch::async, churn, "y");
  const ZynImage image{};
  for (int run = 0; run < 300; ++run) EXPECT_EQ(chain.ProcessImage(&image, nullptr, nullptr), 0u);
  stop = true;
  first.get();
  second.get();
  EXPECT_EQ(chain.GetProcessorCount(), 1);
}

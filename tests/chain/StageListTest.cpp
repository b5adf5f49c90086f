#include "QTD/chain/StageList.h"

#include <gtest/gtest.h>

#include "chain/ChainFakes.h"

using chain_test::FakeStage;

namespace {

struct Fixture : testing::Test {
  StageList list;
  FakeStage a{"a", nullptr}, b{"b", nullptr}, c{"c", nullptr}, d{"d", nullptr};

  void AddAll() {
    ASSERT_EQ(list.Insert(nullptr, "a", &a), 0u);
    ASSERT_EQ(list.Insert("", "b", &b), 0u);
    ASSERT_EQ(list.Insert(nullptr, "c", &c), 0u);
  }
  std::string Names() const {
    std::string names;
    for (int index = 0; index < list.Count(); ++index) names += std::string(list.NameAt(index)) + " ";
    return names;
  }
};

}  // namespace

using StageListTest = Fixture;

TEST_F(StageListTest, keeps_the_order_of_insertion) {
  AddAll();
  EXPECT_EQ(Names(), "a b c ");
  EXPECT_EQ(list.At(0), &a);
  EXPECT_EQ(list.At(1), &b);
  EXPECT_EQ(list.At(2), &c);
}

TEST_F(StageListTest, answers_null_outside_its_range) {
  AddAll();
  EXPECT_EQ(list.At(-1), nullptr);
  EXPECT_EQ(list.At(3), nullptr);
  EXPECT_STREQ(list.NameAt(-1), "");
  EXPECT_STREQ(list.NameAt(3), "");
}

TEST_F(StageListTest, finds_a_stage_by_its_exact_name) {
  AddAll();
  EXPECT_EQ(list.Find("b"), &b);
  EXPECT_EQ(list.Find("B"), nullptr);
  EXPECT_EQ(list.Find("none"), nullptr);
  EXPECT_EQ(list.Find(""), nullptr);
  EXPECT_EQ(list.Find(nullptr), nullptr);
}

TEST_F(StageListTest, refuses_a_missing_name_or_stage) {
  EXPECT_EQ(list.Insert(nullptr, nullptr, &a), 7u);
  EXPECT_EQ(list.Insert(nullptr, "", &a), 7u);
  EXPECT_EQ(list.Insert(nullptr, "a", nullptr), 7u);
  EXPECT_EQ(list.Count(), 0);
}

TEST_F(StageListTest, puts_a_stage_in_front_of_another) {
  AddAll();
  EXPECT_EQ(list.Insert("b", "d", &d), 0u);
  EXPECT_EQ(Names(), "a d b c ");
  EXPECT_EQ(list.At(1), &d);
}

TEST_F(StageListTest, refuses_a_second_stage_of_a_name_in_front_of_another) {
  AddAll();
  EXPECT_EQ(list.Insert("b", "c", &d), 4u);
  EXPECT_EQ(Names(), "a b c ");
}

TEST_F(StageListTest, reports_an_existing_name_before_an_unknown_place) {
  AddAll();
  EXPECT_EQ(list.Insert("none", "c", &d), 4u);
}

TEST_F(StageListTest, refuses_an_unknown_place) {
  AddAll();
  EXPECT_EQ(list.Insert("none", "d", &d), 2u);
  EXPECT_EQ(Names(), "a b c ");
}

TEST_F(StageListTest, appends_a_second_entry_of_a_name_and_finds_the_first) {
  AddAll();
  EXPECT_EQ(list.Insert(nullptr, "b", &d), 0u);
  EXPECT_EQ(Names(), "a b c b ");
  EXPECT_EQ(list.Find("b"), &b);
  EXPECT_EQ(list.Remove("b"), &b);
  EXPECT_EQ(list.Find("b"), &d);
}

TEST_F(StageListTest, refuses_a_stage_that_it_already_holds) {
  AddAll();
  EXPECT_EQ(list.Insert(nullptr, "again", &a), 4u);
  EXPECT_EQ(list.Insert("a", "again", &a), 4u);
  EXPECT_EQ(list.Count(), 3);
}

TEST_F(StageListTest, removes_by_name_and_leaves_the_others_in_order) {
  AddAll();
  EXPECT_EQ(list.Remove("b"), &b);
  EXPECT_EQ(Names(), "a c ");
  EXPECT_EQ(list.Remove("b"), nullptr);
  EXPECT_EQ(list.Remove(nullptr), nullptr);
  EXPECT_EQ(Names(), "a c ");
}

TEST_F(StageListTest, hands_all_stages_over_in_order) {
  AddAll();
  EXPECT_EQ(list.TakeAll(), (std::vector<ZynImgProcessor*>{&a, &b, &c}));
  EXPECT_EQ(list.Count(), 0);
}

TEST_F(StageListTest, counts_what_leaves_and_not_what_comes) {
  AddAll();
  EXPECT_EQ(list.Removals(), 0u);
  list.Remove("none");
  EXPECT_EQ(list.Removals(), 0u);
  list.Remove("a");
  const uint32_t afterOne = list.Removals();
  EXPECT_NE(afterOne, 0u);
  list.TakeAll();
  EXPECT_NE(list.Removals(), afterOne);
}

#include "QTD/frame/AverageValue.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

TEST(AverageValue, is_zero_at_first) {
  QTD::AverageValue value;
  EXPECT_EQ(value.Average(), 0);
  EXPECT_EQ(value.Last(), 0);
}

TEST(AverageValue, keeps_one_value_at_the_first_capacity_of_2) {
  QTD::AverageValue value;
  value.Push(10);
  value.Push(4);
  EXPECT_EQ(value.Average(), 4);
  EXPECT_EQ(value.Last(), 4);
}

TEST(AverageValue, reset_fills_it_with_three_copies) {
  QTD::AverageValue value;
  value.Reset(6);
  EXPECT_EQ(value.Average(), 6);
  EXPECT_EQ(value.Last(), 6);
  value.Push(12);
  EXPECT_DOUBLE_EQ(value.Average(), (6 + 6 + 12) / 3.0);
}

TEST(AverageValue, keeps_three_values_at_capacity_4) {
  QTD::AverageValue value;
  value.Reset(0);
  for (const double pushed : {100.0, 1.0, 2.0, 6.0}) value.Push(pushed);
  EXPECT_DOUBLE_EQ(value.Average(), 3);
  EXPECT_EQ(value.Last(), 6);
}

TEST(AverageValue, reset_forgets_what_was_pushed) {
  QTD::AverageValue value;
  value.Reset(1);
  value.Push(50);
  value.Push(70);
  value.Reset(0);
  EXPECT_EQ(value.Average(), 0);
  EXPECT_EQ(value.Last(), 0);
}

TEST(AverageValue, serves_several_threads) {
  QTD::AverageValue value;
  value.Reset(5);
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&value, t] {
      for (int i = 0; i < 3000; ++i) {
        if (t == 0 && i % 10 == 0) value.Reset(5);
        value.Push(5);
        EXPECT_EQ(value.Average(), 5);
        EXPECT_EQ(value.Last(), 5);
      }
    });
  }
  for (auto& thread : threads) thread.join();
}

}  // namespace

// What takes long and nobody waits for.
#include "apps/zynview/sources/Errands.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>

using zynview::Errands;

TEST(ViewerErrands, run_at_once_beside_each_other_and_are_waited_for_at_the_end) {
  std::atomic<bool> mayEnd{false};
  std::atomic<int> begun{0}, ended{0};
  std::thread release;
  {
    Errands errands;
    for (int i = 0; i < 3; ++i) {
      errands.Do([&] {
        ++begun;
        while (!mayEnd) std::this_thread::yield();
        ++ended;
      });
    }
    while (begun < 3) std::this_thread::yield();
    EXPECT_EQ(ended, 0);
    release = std::thread([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      mayEnd = true;
    });
  }
  EXPECT_EQ(ended, 3);
  release.join();
}

// Notes the thread on which it goes away.
struct Guest {
  explicit Guest(std::thread::id* place) : died(place) {}
  ~Guest() { *died = std::this_thread::get_id(); }
  std::thread::id* died;
};

TEST(ViewerErrands, take_what_they_hold_with_them) {
  std::thread::id died;
  {
    Errands errands;
    errands.Do([guest = std::make_shared<Guest>(&died)] { EXPECT_TRUE(guest); });
  }
  EXPECT_NE(died, std::thread::id());
  EXPECT_NE(died, std::this_thread::get_id());
}

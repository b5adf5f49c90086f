#include "QTD/frame/DoubleBuffer.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <fstream>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "frame/Waiting.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define OWN_ALLOCATOR 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define OWN_ALLOCATOR 1
#endif
#endif

namespace {

using QTD::DoubleBuffer;
using Bytes = std::vector<uint8_t>;

// The front buffer's bytes after a swap, that is what was written last.
Bytes Swapped(DoubleBuffer& buffer) {
  buffer.Swap();
  return Bytes(buffer.Front(), buffer.Front() + buffer.Size());
}

Bytes Counting(size_t length, int first = 1) {
  Bytes bytes(length);
  std::iota(bytes.begin(), bytes.end(), static_cast<uint8_t>(first));
  return bytes;
}

TEST(DoubleBuffer, has_nothing_before_allocation) {
  DoubleBuffer buffer;
  EXPECT_EQ(buffer.Size(), 0);
  EXPECT_EQ(buffer.Front(), nullptr);
  buffer.Write("x", 1, 0);
  buffer.WriteLines("x", 1, 1, 1, 1);
  EXPECT_EQ(buffer.BackCount(), 0u);
  buffer.Swap();
  EXPECT_EQ(buffer.FrontCount(), 0u);
}

TEST(DoubleBuffer, allocates_two_zeroed_blocks) {
  DoubleBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(200));
  EXPECT_EQ(buffer.Size(), 200);
  const uint8_t* first = buffer.Front();
  EXPECT_EQ(Bytes(first, first + 200), Bytes(200, 0));
  EXPECT_EQ(Swapped(buffer), Bytes(200, 0));
  EXPECT_NE(buffer.Front(), first);
}

TEST(DoubleBuffer, zeroes_the_blocks_of_a_second_allocation) {
  DoubleBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(64));
  for (int i = 0; i < 2; ++i) {
    buffer.Write(Counting(64).data(), 64, 0);
    buffer.Swap();
  }
  buffer.Write(Counting(64).data(), 64, 0);
  ASSERT_TRUE(buffer.Allocate(64));
  EXPECT_EQ(buffer.FrontCount(), 0u) << "allocation clears the counts";
  EXPECT_EQ(buffer.BackCount(), 0u);
  EXPECT_EQ(Bytes(buffer.Front(), buffer.Front() + 64), Bytes(64, 0));
  EXPECT_EQ(Swapped(buffer), Bytes(64, 0));
}

TEST(DoubleBuffer, allocation_of_nothing_keeps_the_old_blocks) {
  DoubleBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(10));
  buffer.Write(Counting(10).data(), 10, 0);
  const uint8_t* front = buffer.Front();
  EXPECT_FALSE(buffer.Allocate(0));
  EXPECT_FALSE(buffer.Allocate(-1));
  EXPECT_FALSE(buffer.Allocate(INT_MIN));
  EXPECT_EQ(buffer.Size(), 10);
  EXPECT_EQ(buffer.Front(), front);
  EXPECT_EQ(buffer.BackCount(), 1u);
  EXPECT_EQ(Swapped(buffer), Counting(10));
}

// The sanitizers clear memory by writing to it, and end the process when it is short, instead of answering
// null.
#ifndef OWN_ALLOCATOR
TEST(DoubleBuffer, untouched_memory_costs_nothing) {
  const auto resident = [] {
    std::ifstream file("/proc/self/statm");
    int64_t total = 0, pages = 0;
    file >> total >> pages;
    return pages * 4096;
  };
  const int64_t before = resident();
  DoubleBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(256 << 20));
  EXPECT_LT(resident() - before, 64 << 20);
}

TEST(DoubleBuffer, shortage_of_memory_leaves_it_without_blocks) {
  const auto attempt = [] {
    DoubleBuffer buffer;
    if (!buffer.Allocate(100)) std::_Exit(1);
    buffer.Write("abc", 3, 0);
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = rlim_t{1} << 30;
    if (setrlimit(RLIMIT_AS, &limit) != 0) std::_Exit(2);
    if (buffer.Allocate(INT_MAX)) std::_Exit(3);
    if (buffer.Size() != 0 || buffer.Front() || buffer.BackCount() != 0) std::_Exit(4);
    buffer.Write("abc", 3, 0);
    if (buffer.BackCount() != 0) std::_Exit(5);
    if (!buffer.Allocate(100)) std::_Exit(6);
    std::_Exit(0);
  };
  EXPECT_EXIT(attempt(), testing::ExitedWithCode(0), "");
}
#endif

TEST(DoubleBuffer, free_leaves_size_and_counts_zero) {
  DoubleBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(10));
  buffer.Write("0123456789", 10, 0);
  buffer.Swap();
  buffer.Write("0123456789", 10, 0);
  buffer.Free();
  EXPECT_EQ(buffer.Size(), 0);
  EXPECT_EQ(buffer.FrontCount(), 0u);
  EXPECT_EQ(buffer.BackCount(), 0u);
  EXPECT_EQ(buffer.Front(), nullptr);
  buffer.Write("x", 1, 0);
  EXPECT_EQ(buffer.BackCount(), 0u);
  buffer.Free();
  EXPECT_TRUE(buffer.Allocate(5));
  EXPECT_EQ(Swapped(buffer), Bytes(5, 0));
}

TEST(DoubleBuffer, writes_into_the_back_buffer_until_swapped) {
  DoubleBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(4));
  buffer.Write("abcd", 4, 0);
  EXPECT_EQ(Bytes(buffer.Front(), buffer.Front() + 4), Bytes(4, 0));
  EXPECT_EQ(buffer.BackCount(), 1u);
  EXPECT_EQ(buffer.FrontCount(), 0u);
  EXPECT_EQ(Swapped(buffer), (Bytes{'a', 'b', 'c', 'd'}));
  EXPECT_EQ(buffer.FrontCount(), 1u);
  EXPECT_EQ(buffer.BackCount(), 0u);
}

TEST(DoubleBuffer, swap_clears_only_the_count_of_the_new_back_buffer) {
  DoubleBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(4));
  buffer.Write("abcd", 4, 0);
  buffer.Swap();
  buffer.Write("efgh", 4, 0);
  buffer.Write("efgh", 4, 0);
  buffer.Write("efgh", 4, 0);
  buffer.Swap();
  EXPECT_EQ(buffer.FrontCount(), 3u);
  EXPECT_EQ(buffer.BackCount(), 0u);
  buffer.Swap();
  EXPECT_EQ(buffer.BackCount(), 0u);
  EXPECT_EQ(Bytes(buffer.Front(), buffer.Front() + 4), (Bytes{'a', 'b', 'c', 'd'})) << "the bytes stay";
}

TEST(DoubleBuffer, clears_the_front_count_on_request) {
  DoubleBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(4));
  buffer.Write("abcd", 4, 0);
  buffer.Swap();
  buffer.Write("abcd", 4, 0);
  buffer.ClearFrontCount();
  EXPECT_EQ(buffer.FrontCount(), 0u);
  EXPECT_EQ(buffer.BackCount(), 1u);
}

TEST(DoubleBuffer, only_a_write_at_offset_0_counts) {
  DoubleBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(192));
  buffer.Write(Counting(96).data(), 96, 96);
  EXPECT_EQ(buffer.BackCount(), 0u);
  Bytes expected(192, 0);
  const Bytes tail = Counting(96);
  std::copy(tail.begin(), tail.end(), expected.begin() + 96);
  EXPECT_EQ(Swapped(buffer), expected);
  buffer.Write(tail.data(), 96, 0);
  EXPECT_EQ(buffer.BackCount(), 1u);
  buffer.Write(tail.data(), 0, 0);
  EXPECT_EQ(buffer.BackCount(), 2u) << "a frame without bytes is a frame";
}

TEST(DoubleBuffer, second_write_without_swap_replaces_the_first) {
  DoubleBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(3));
  buffer.Write("abc", 3, 0);
  buffer.Write("xyz", 3, 0);
  EXPECT_EQ(buffer.BackCount(), 2u);
  EXPECT_EQ(Swapped(buffer), (Bytes{'x', 'y', 'z'}));
}

TEST(DoubleBuffer, drops_a_write_that_does_not_fit) {
  DoubleBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(8));
  const Bytes source = Counting(16);
  const struct {
    int32_t bytes, offset;
  } bad[] = {{9, 0},
             {8, 1},
             {1, 8},
             {-1, 0},
             {-1, 4},
             {4, -1},
             {4, -4},
             {INT_MAX, 1},
             {INT_MAX, 16},
             {INT_MAX, INT_MAX},
             {INT_MIN, INT_MIN},
             {8, INT_MIN}};
  for (const auto& [bytes, offset] : bad) buffer.Write(source.data(), bytes, offset);
  buffer.Write(nullptr, 4, 0);
  EXPECT_EQ(buffer.BackCount(), 0u);
  EXPECT_EQ(Swapped(buffer), Bytes(8, 0));
  buffer.Write(source.data(), 8, 0);
  EXPECT_EQ(Swapped(buffer), Counting(8)) << "one that just fits is taken";
}

TEST(DoubleBuffer, takes_bytes_of_its_own_front_buffer) {
  DoubleBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(8));
  buffer.Write(Counting(8).data(), 8, 0);
  buffer.Swap();
  buffer.Write(buffer.Front(), 8, 0);
  EXPECT_EQ(Swapped(buffer), Counting(8));
}

// Lines of 3 bytes, 5 apart in the source and 4 apart in the buffer:
//   1 2 3 . . 6 7 8 . . 11 12 13   ->   1 2 3 0 6 7 8 0 11 12 13 0
TEST(DoubleBuffer, copies_line_by_line_between_pitches) {
  DoubleBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(12));
  const Bytes source = Counting(13);
  buffer.WriteLines(source.data(), 5, 3, 3, 4);
  EXPECT_EQ(buffer.BackCount(), 1u);
  EXPECT_EQ(Swapped(buffer), (Bytes{1, 2, 3, 0, 6, 7, 8, 0, 11, 12, 13, 0}));
  // From a narrow source into wider lines, the last one ending with the buffer.
  ASSERT_TRUE(buffer.Allocate(7));
  buffer.WriteLines(source.data(), 2, 2, 2, 5);
  EXPECT_EQ(Swapped(buffer), (Bytes{1, 2, 0, 0, 0, 3, 4}));
}

TEST(DoubleBuffer, drops_lines_that_do_not_fit) {
  DoubleBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(12));
  const Bytes source = Counting(64);
  const struct {
    int32_t sourcePitch, lineBytes, lines, targetPitch;
  } bad[] = {
      {4, 4, 4, 4},                    // one line too many
      {7, 5, 2, 8},                    // the last line's end
      {3, 4, 2, 4},                    // source lines overlap
      {4, 4, 2, 3},                    // target lines overlap
      {4, 0, 2, 4},                    // no bytes
      {4, 4, 0, 4},                    // no lines
      {4, -4, 2, 4},                   // absurd
      {4, 4, -2, 4},                   //
      {-4, 4, 2, 4},                   //
      {4, 4, 2, -4},                   //
      {INT_MAX, INT_MAX, 1, INT_MAX},  //
      {4, 4, INT_MAX, INT_MAX},        //
      {4, 4, 0x40000001, 4},           // wraps to 4 bytes in 32 bits
      {4, 4, 3, 0x7ffffffe},           // wraps to 0 bytes in 32 bits
  };
  for (const auto& [sourcePitch, lineBytes, lines, targetPitch] : bad) {
    buffer.WriteLines(source.data(), sourcePitch, lineBytes, lines, targetPitch);
  }
  buffer.WriteLines(nullptr, 4, 4, 3, 4);
  EXPECT_EQ(buffer.BackCount(), 0u);
  EXPECT_EQ(Swapped(buffer), Bytes(12, 0));
  buffer.WriteLines(source.data(), 4, 4, 3, 4);
  EXPECT_EQ(Swapped(buffer), Counting(12));
}

// Two host threads, each frame in two writes under the swap lock, and a reader as the GUI thread is: a frame
// is never seen half old and half new.
TEST(DoubleBuffer, reader_sees_whole_frames_of_several_writers) {
  constexpr int32_t half = 4096;
  DoubleBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(2 * half));
  std::atomic<bool> stop{false};
  std::atomic<int> seen{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 2; ++t) {
    threads.emplace_back([&, t] {
      for (int i = t; !stop; i += 2) {
        const Bytes bytes(half, static_cast<uint8_t>(i));
        const std::lock_guard<std::recursive_mutex> step(buffer.SwapLock());
        buffer.Write(bytes.data(), half, 0);
        std::this_thread::yield();
        buffer.Write(bytes.data(), half, half);
      }
    });
  }
  waiting::InTime("reading 300 frames", [&] {
    while (seen < 300) {
      const std::lock_guard<std::recursive_mutex> step(buffer.SwapLock());
      buffer.Swap();
      if (buffer.FrontCount() == 0) continue;
      const uint8_t* front = buffer.Front();
      ASSERT_EQ(std::count(front, front + 2 * half, front[0]), 2 * half);
      buffer.ClearFrontCount();
      ++seen;
    }
  });
  stop = true;
  for (auto& thread : threads) thread.join();
}

// Writers that hold the swap lock and such that do not, beside a thread that makes the blocks anew.
TEST(DoubleBuffer, reallocation_beside_writers_and_reader_is_safe) {
  DoubleBuffer buffer;
  std::atomic<bool> stop{false};
  waiting::InTime("threads on one buffer", [&] {
    std::vector<std::thread> threads;
    threads.emplace_back([&] {
      for (int i = 0; i < 2000; ++i) {
        if (i % 3 == 2) {
          buffer.Free();
        } else {
          EXPECT_TRUE(buffer.Allocate(1000 + i));
        }
      }
      stop = true;
    });
    threads.emplace_back([&] {
      const Bytes bytes = Counting(1500);
      while (!stop) {
        buffer.Write(bytes.data(), 1500, 0);
        buffer.WriteLines(bytes.data(), 30, 20, 50, 25);
      }
    });
    threads.emplace_back([&] {
      const Bytes bytes = Counting(1000);
      while (!stop) {
        const std::lock_guard<std::recursive_mutex> step(buffer.SwapLock());
        buffer.Write(bytes.data(), 1000, 0);
        buffer.Write(bytes.data(), 96, buffer.Size() - 96);
      }
    });
    threads.emplace_back([&] {
      while (!stop) {
        const std::lock_guard<std::recursive_mutex> step(buffer.SwapLock());
        buffer.Swap();
        if (const uint8_t* front = buffer.Front()) {
          EXPECT_TRUE(front[0] == 0 || front[0] == 1);
          EXPECT_GE(buffer.Size(), 1000);
        }
      }
    });
    for (auto& thread : threads) thread.join();
  });
}

}  // namespace

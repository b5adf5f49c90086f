// Commands of the exposure coloration from other threads, while its chain runs and loses stages.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "QTD/chain/QTDProcessor.h"
#include "ZynPixelFormat.h"
#include "chain/ChainFakes.h"
#include "cpu/stages/CPUIPExposureColoration.h"
#include "cpu/stages/CPUIPImage.h"

using chain_test::Picture;

namespace {

struct ColorationThreads : testing::Test {
  ColorationThreads() {
    EXPECT_EQ(chain.Init(source), 0u);
    const Picture header(64, 48, ZYN_PIXEL_RGB8);
    auto display = std::make_unique<CPUIPImage>(nullptr);
    EXPECT_EQ(display->Init(source, header), 0u);
    EXPECT_EQ(chain.AddProcessor("image.display", display.release()), 0u);
    auto stage = std::make_unique<CPUIPExposureColoration>(&chain);
    EXPECT_EQ(stage->Init(header, nullptr), 0u);
    coloration = stage.release();
    EXPECT_EQ(chain.AddProcessor("image.coloration", coloration), 0u);
  }

  void AddUnpacked() {
    auto stage = std::make_unique<CPUIPImage>(nullptr);
    EXPECT_EQ(stage->Init(source, nullptr), 0u);
    // The name is free, and the stage stands first.
    EXPECT_EQ(chain.InsertProcessor("image.output", "image.unpacked", stage.release()), 0u);
  }

  Picture source{64, 48, ZYN_PIXEL_MONO12};
  QTDProcessor chain{nullptr, false};
  CPUIPExposureColoration* coloration = nullptr;
};

}  // namespace

TEST_F(ColorationThreads, commands_wait_for_a_run_and_no_run_for_them) {
  std::atomic<bool> stop{false};
  std::atomic<int> failures{0}, commands{0};
  const auto repeat = [&](auto work) {
    return std::thread([&stop, work] {
      while (!stop) {
        work();
        std::this_thread::yield();
      }
    });
  };
  std::thread threads[] = {
      repeat([&] {
        coloration->Enable(true);
        coloration->Enable(false);
        ++commands;
      }),
      repeat([&] {
        QTD::ARGUMENTS args{{"thres.lo", "10"}};
        coloration->RunCommand("cmd.params.apply", &args);
        coloration->ExecuteCommand("params.reset");
        coloration->ExecuteCommand("params.apply");
        ++commands;
      }),
      repeat([&] {
        const Picture header(64, 48, ZYN_PIXEL_RGB8);
        failures += coloration->Init(header, nullptr) != 0;
        coloration->ProcessImage(header, nullptr, nullptr);
        coloration->Out();
        coloration->GetImageInfo(false);
        coloration->Release();
      }),
  };
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
  while (std::chrono::steady_clock::now() < end || commands < 20) {
    failures += chain.ProcessImage(source, nullptr, nullptr) != 0;
    // The stage that the commands look up goes and comes back.
    failures += chain.RemoveProcessor("image.unpacked") != 0;
    AddUnpacked();
    std::this_thread::yield();
  }
  stop = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures, 0);
}

// Whoever waits for the chain when the coloration leaves it comes back, before the coloration is deleted.
TEST_F(ColorationThreads, a_command_that_waits_comes_back_when_the_coloration_leaves) {
  std::atomic<int> started{0}, ended{0};
  const auto call = [&](auto work) {
    return std::thread([&started, &ended, work] {
      ++started;
      work();
      ++ended;
    });
  };
  std::vector<std::thread> threads;
  {
    // What follows happens as within a run of the chain.
    const QTD::RMutexLock run(chain.ChainLock());
    threads.push_back(call([&] { coloration->Enable(true); }));
    threads.push_back(call([&] { coloration->ExecuteCommand("params.apply"); }));
    threads.push_back(call([&] {
      QTD::ARGUMENTS args{{"thres.lo", "10"}};
      coloration->RunCommand("cmd.params.apply", &args);
    }));
    while (started < 3) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_EQ(ended, 0);
    EXPECT_EQ(chain.RemoveProcessor("image.coloration"), 0u);
    while (ended < 3) std::this_thread::yield();  // while the run goes on
  }
  for (std::thread& thread : threads) thread.join();
}

// The host prepares and releases the stage whose values count, while they are read.
TEST_F(ColorationThreads, the_stage_of_the_values_is_prepared_anew_meanwhile) {
  coloration->Enable(true);
  ZynImgProcessor* const unpacked = chain.FindProcessor("image.unpacked");
  std::atomic<bool> stop{false};
  std::atomic<int> rounds{0};
  std::thread host([&] {
    while (!stop) {
      unpacked->Init(source, nullptr);
      std::this_thread::yield();
      if (++rounds % 3 == 0) unpacked->Release();
    }
    unpacked->Init(source, nullptr);
  });
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
  while (std::chrono::steady_clock::now() < end || rounds < 100) {
    chain.ProcessImage(source, nullptr, nullptr);
    coloration->ExecuteCommand("params.apply");
    const Picture header(64, 48, ZYN_PIXEL_RGB8);
    EXPECT_EQ(coloration->Init(header, nullptr), 0u);
  }
  stop = true;
  host.join();
  EXPECT_EQ(chain.ProcessImage(source, nullptr, nullptr), 0u);
}

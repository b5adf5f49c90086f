// Questions of the frames' thread to the GUI thread.
#include "apps/zynview/sources/Preparation.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <atomic>
#include <thread>

#include "ZynPixelFormat.h"
#include "apps/zynview/sources/FrameSource.h"

using zynview::Preparation;

namespace {

const ZynImage kFormat = zynview::MakeRecord(ZYN_PIXEL_MONO8, 4, 3, 0, nullptr);

// Runs the event loop until the other thread has its answer.
bool AskFromAThread(Preparation* preparation) {
  std::atomic<bool> done{false}, answer{false};
  std::thread thread([&] {
    answer = preparation->Ask(kFormat);
    done = true;
  });
  while (!done) QCoreApplication::processEvents();
  thread.join();
  return answer;
}

}  // namespace

TEST(ViewerPreparation, answers_from_the_gui_thread) {
  bool answer = true;
  int asked = 0;
  const auto gui = std::this_thread::get_id();
  Preparation preparation([&](const ZynImage& format) {
    EXPECT_EQ(std::this_thread::get_id(), gui);
    EXPECT_EQ(format.width, 4u);
    EXPECT_EQ(format.imageData, nullptr);
    ++asked;
    return answer;
  });
  EXPECT_TRUE(AskFromAThread(&preparation));
  answer = false;
  EXPECT_FALSE(AskFromAThread(&preparation));
  EXPECT_EQ(asked, 2);
}

TEST(ViewerPreparation, lets_the_thread_go_when_it_is_closed) {
  int asked = 0;
  Preparation preparation([&](const ZynImage&) { return ++asked > 0; });
  std::atomic<bool> done{false};
  std::thread thread([&] {
    EXPECT_FALSE(preparation.Ask(kFormat));
    done = true;
  });
  // Whether it waits already or not yet.
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  preparation.Close();
  thread.join();
  EXPECT_TRUE(done);
  preparation.Open();
  QCoreApplication::processEvents();
  EXPECT_EQ(asked, 0) << "a question that nobody waits for any more";
  EXPECT_TRUE(AskFromAThread(&preparation));
}

TEST(ViewerPreparation, is_not_asked_when_it_is_closed) {
  Preparation preparation([](const ZynImage&) { return true; });
  preparation.Close();
  EXPECT_FALSE(preparation.Ask(kFormat));
}

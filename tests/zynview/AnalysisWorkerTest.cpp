// The thread that looks into frames.
#include "apps/zynview/analysis/AnalysisWorker.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>
#include <optional>

#include "ZynPixelFormat.h"
#include "zynview/RandomFrame.h"

using zynview::Analysis;
using zynview::AnalysisWorker;
using zynview::FrameKeeper;

namespace {

struct AnalysisWorkerTest : testing::Test {
  FrameKeeper keeper;
  std::vector<Analysis> answers;
  std::vector<QThread*> threads;
  std::optional<AnalysisWorker> worker;

  AnalysisWorkerTest() {
    worker.emplace(&keeper, [this](const Analysis& analysis) {
      answers.push_back(analysis);
      threads.push_back(QThread::currentThread());
    });
  }

  void Keep(uint32_t width, uint32_t height, uint64_t id) {
    RandomFrame frame(ZYN_PIXEL_MONO16, width, height, 0, 1);
    frame.image.imageID = id;
    keeper.Want();
    keeper.Offer(frame.image);
  }

  void WaitUntilIdle() {
    QElapsedTimer clock;
    clock.start();
    while (worker->IsBusy() && clock.elapsed() < 20000)
      QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    ASSERT_FALSE(worker->IsBusy());
  }
};

}  // namespace

TEST_F(AnalysisWorkerTest, answers_on_the_thread_of_its_owner_with_the_frame_that_is_kept) {
  Keep(20, 10, 5);
  worker->Ask({QRect(1, 1, 3, 2), 4});
  EXPECT_TRUE(worker->IsBusy());
  EXPECT_TRUE(answers.empty()) << "the answer comes with the events";
  WaitUntilIdle();
  ASSERT_EQ(answers.size(), 1u);
  EXPECT_EQ(threads[0], QThread::currentThread());
  EXPECT_EQ(answers[0].imageID, 5u);
  EXPECT_EQ(answers[0].region, QRect(1, 1, 3, 2));
  EXPECT_EQ(answers[0].profile.line, 4);
  EXPECT_EQ(answers[0].statistics.Rows().at(0).count, 6u);
}

TEST_F(AnalysisWorkerTest, has_no_answer_before_the_first_frame_and_is_idle_again) {
  worker->Ask({});
  WaitUntilIdle();
  EXPECT_TRUE(answers.empty());
  Keep(2, 2, 1);
  worker->Ask({});
  WaitUntilIdle();
  EXPECT_EQ(answers.size(), 1u);
}

TEST_F(AnalysisWorkerTest, does_the_last_of_many_requests_and_drops_those_that_wait) {
  Keep(1500, 1500, 1);
  for (int line = 0; line < 200; ++line) worker->Ask({QRect(), line});
  WaitUntilIdle();
  ASSERT_FALSE(answers.empty());
  EXPECT_EQ(answers.back().profile.line, 199);
  EXPECT_LT(answers.size(), 100u);
}

TEST_F(AnalysisWorkerTest, takes_frames_of_any_size_one_after_the_other) {
  for (const uint32_t size : {40u, 3u, 100u, 1u}) {
    Keep(size, size, size);
    worker->Ask({});
    WaitUntilIdle();
    EXPECT_EQ(answers.back().statistics.Rows().at(0).count, uint64_t{size} * size);
  }
}

TEST_F(AnalysisWorkerTest, ends_in_the_middle_of_its_work_and_says_nothing_afterwards) {
  Keep(4096, 3072, 1);
  worker->Ask({});
  QThread::msleep(2);
  worker.reset();
  QCoreApplication::processEvents();
  EXPECT_TRUE(answers.empty());
}

// The window stays at hand: asking costs nothing, however large the frame.
TEST_F(AnalysisWorkerTest, does_not_hold_up_who_asks) {
  Keep(4096, 3072, 1);
  QElapsedTimer clock;
  clock.start();
  worker->Ask({});
  EXPECT_TRUE(worker->IsBusy());
  EXPECT_TRUE(answers.empty());
  WaitUntilIdle();
  EXPECT_EQ(answers.size(), 1u);
  RecordProperty("milliseconds", static_cast<int>(clock.elapsed()));
  std::printf("4096x3072 of 16 bits: %lld ms\n", static_cast<long long>(clock.elapsed()));
}

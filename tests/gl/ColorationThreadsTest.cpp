// Hosts on other threads and the exposure coloration while it runs.
#include <QElapsedTimer>
#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>

#include "StageFixture.h"
#include "gl/stages/QGLIPExposureColoration.h"

namespace {

constexpr uint32_t kWidth = 16, kHeight = 12;

class ColorationThreadsTest : public StageFixture {
 protected:
  // All of the camera's pixels are too dark, so that a marked picture is green all over.
  static Samples Green() {
    Samples green;
    for (size_t pixel = 0; pixel < kWidth * kHeight; ++pixel) green.insert(green.end(), {0, 255, 0});
    return green;
  }

  const Samples colours = Scattered(kWidth * kHeight * 3, 255, 9);
  const Record picture = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, colours);
  const Record dark = MakeRecord(kWidth, kHeight, ZYN_PIXEL_MONO8);
  FakeChain chain;
};

TEST_F(ColorationThreadsTest, commands_from_other_threads_meet_whole_pictures) {
  OnCard unpacked(&display, dark), shown(&display, picture);
  chain.unpacked = &unpacked.stage;
  QGLIPExposureColoration stage(&display, &chain);
  ASSERT_EQ(Init(stage, picture), 0u);

  std::atomic<bool> stop{false};
  std::atomic<int> rounds[2] = {};
  std::atomic<int> wrongAnswers{0};
  const auto expect = [&](bool good) { wrongAnswers += good ? 0 : 1; };
  const auto commands = [&](std::atomic<int>& round) {
    QTD::ARGUMENTS on{{"enabled", "1"}}, off{{"enabled", "0"}}, apply{{"apply", "1"}};
    while (!stop) {
      expect(stage.ExecuteCommand("params.apply") == 0);
      expect(stage.RunCommand("cmd.params.apply", nullptr) == 1);
      expect(stage.RunCommand("cmd.params.reset", &apply) == 1);
      expect(stage.ExecuteCommand("params.reset") == 0);
      expect(stage.RunCommand("cmd.enable", &off) == 0);
      stage.Enable(true);
      stage.ExecuteCommand("disable");
      expect(stage.RunCommand("cmd.enable", &on) == 0);
      expect(stage.ExecuteCommand("readGPU") == Composed(1));  // the card is the GUI thread's
      stage.SetParameterInt("thres.lo", 1);
      stage.IsEnabled();
      ++round;
    }
  };
  std::thread first(commands, std::ref(rounds[0])), second(commands, std::ref(rounds[1]));
  const Samples green = Green();
  int marked = 0, copied = 0, other = 0;
  QElapsedTimer timer;
  timer.start();
  const auto enough = [&] { return rounds[0] >= 20 && rounds[1] >= 20 && marked + copied >= 100; };
  while (!enough() && timer.elapsed() < 20000) {
    if (Run(stage, shown.record()) != 0) break;
    const Samples result = Texels(stage);
    ++(result == green ? marked : result == colours ? copied : other);
  }
  stop = true;
  first.join();
  second.join();
  EXPECT_TRUE(enough()) << marked << " marked, " << copied << " copied";
  EXPECT_EQ(other, 0);
  EXPECT_EQ(wrongAnswers, 0);
  // Nothing of it stays.
  stage.ExecuteCommand("enable");
  ASSERT_EQ(Run(stage, shown.record()), 0u);
  EXPECT_EQ(Texels(stage), green);
}

TEST_F(ColorationThreadsTest, commands_from_other_threads_meet_a_stage_that_is_prepared_anew) {
  OnCard unpacked(&display, dark), shown(&display, picture);
  chain.unpacked = &unpacked.stage;
  QGLIPExposureColoration stage(&display, &chain);
  std::atomic<bool> stop{false};
  std::atomic<int> rounds{0};
  std::thread host([&] {
    while (!stop) {
      stage.ExecuteCommand("params.apply");
      stage.RunCommand("cmd.params.apply", nullptr);
      stage.ExecuteCommand("readGPU");
      stage.Enable(true);
      stage.Out();
      stage.GetImageInfo(false);
      ++rounds;
    }
  });
  QElapsedTimer timer;
  timer.start();
  for (int round = 0; round < 20 || (rounds < 20 && timer.elapsed() < 20000); ++round) {
    EXPECT_EQ(Init(stage, picture), 0u);
    EXPECT_EQ(Run(stage, shown.record()), 0u);
    if (round % 4 == 3) stage.Release();
  }
  stop = true;
  host.join();
  EXPECT_GE(rounds, 20);
}

// A thread that holds the pass's lock no longer than it should keeps nobody waiting for the stage's lock for
// good: each command comes back.
TEST_F(ColorationThreadsTest, every_command_comes_back_while_pictures_pass) {
  OnCard unpacked(&display, dark), shown(&display, picture);
  chain.unpacked = &unpacked.stage;
  QGLIPExposureColoration stage(&display, &chain);
  ASSERT_EQ(Init(stage, picture), 0u);
  std::atomic<int> done{0};
  std::thread host([&] {
    for (; done < 10; ++done) stage.ExecuteCommand("params.apply");
  });
  QElapsedTimer timer;
  timer.start();
  while (done < 10 && timer.elapsed() < 20000) ASSERT_EQ(Run(stage, shown.record()), 0u);
  host.join();
  EXPECT_EQ(done, 10);
}

// The host releases the stage whose values count, while they are read.
TEST_F(ColorationThreadsTest, is_prepared_while_the_stage_of_the_values_goes) {
  QGLIPImage unpacked(&display);
  chain.unpacked = &unpacked;
  QGLIPExposureColoration stage(&display, &chain);
  std::atomic<bool> stop{false};
  std::atomic<int> releases{0};
  std::thread host([&] {
    while (!stop) {
      unpacked.Release();
      ++releases;
      std::this_thread::yield();
    }
  });
  while (releases == 0) std::this_thread::yield();
  for (int round = 0; round < 200; ++round) {
    Init(unpacked, dark);
    EXPECT_EQ(Init(stage, picture), 0u);
    if (round % 50 == 0) QCoreApplication::processEvents();  // what the thread gave up is freed here
  }
  stop = true;
  host.join();
  QCoreApplication::processEvents();
}

}  // namespace

// Live frames, on a simulated camera.
#include "apps/zynview/sources/CameraSource.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <atomic>
#include <thread>

#include "apps/zynview/pixels/PixelTable.h"
#include "zynview/Simulator.h"
#include "zynview/Waiting.h"

using zynview::CameraControls;
using zynview::CameraSource;
using zynview::Options;

namespace {

Options OfSimulator() {
  Options options;
  options.source = Options::Camera;
  options.camera = Simulator::Address();
  return options;
}

// Runs a source until it is destroyed.
struct Running {
  explicit Running(CameraSource* source)
      : thread([this, source] {
          source->Run([this](const ZynImage& frame) {
            if (frame.imageData) {
              ++frames;
              pixelType = frame.pixelType;
            }
            return !stop;
          });
          over = true;
        }) {}
  ~Running() {
    stop = true;
    thread.join();
  }

  std::atomic<int> frames{0};
  std::atomic<uint32_t> pixelType{0};
  std::atomic<bool> stop{false}, over{false};
  std::thread thread;
};

class OpenCameraSource : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(source.Open(&error)) << error.toStdString(); }

  Simulator simulator;
  CameraSource source{OfSimulator()};
  QString error;
};

}  // namespace

TEST_F(OpenCameraSource, delivers_frames_of_the_format_that_it_tells) {
  Running running(&source);
  EXPECT_TRUE(Comes([&] { return running.frames >= 5; }));
  EXPECT_EQ(running.pixelType, source.Format().pixelType);
  EXPECT_FALSE(source.IsLost());
  EXPECT_TRUE(source.TakeProblems().isEmpty());
}

TEST_F(OpenCameraSource, reads_and_sets_features_while_frames_come) {
  Running running(&source);
  ASSERT_TRUE(Comes([&] { return running.frames >= 1; }));
  EXPECT_EQ(source.ID(), Simulator::Address());
  const CameraControls::Range exposure = source.Read(CameraControls::Exposure);
  ASSERT_TRUE(exposure.available);
  EXPECT_LE(exposure.least, exposure.value);
  EXPECT_LE(exposure.value, exposure.most);
  EXPECT_EQ(source.Set(CameraControls::Exposure, 5000), QString());
  EXPECT_NEAR(source.Read(CameraControls::Exposure).value, 5000, 1);
  EXPECT_TRUE(source.PixelFormats().contains(QStringLiteral("Mono8")));
  EXPECT_EQ(zynview::PixelCode(source.PixelFormat()), source.Format().pixelType);
}

TEST_F(OpenCameraSource, changes_the_pixel_format_when_the_frames_have_stopped) {
  {
    Running running(&source);
    ASSERT_TRUE(Comes([&] { return running.frames >= 1; }));
    std::thread stopper([&running] {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      running.stop = true;
    });
    EXPECT_EQ(source.SetPixelFormat(QStringLiteral("Mono16")), QString());
    EXPECT_TRUE(running.stop) << "it has waited";
    stopper.join();
  }
  EXPECT_EQ(source.Format().pixelType, zynview::PixelCode(QStringLiteral("Mono16")));
  EXPECT_NE(source.SetPixelFormat(QStringLiteral("NoSuchFormat")), QString());
  EXPECT_EQ(source.Format().pixelType, zynview::PixelCode(QStringLiteral("Mono16"))) << "as it was";
  Running again(&source);
  EXPECT_TRUE(Comes([&] { return again.frames >= 2; }));
  EXPECT_EQ(again.pixelType, zynview::PixelCode(QStringLiteral("Mono16")));
}

TEST(CameraSource, tells_when_there_is_no_camera) {
  Options options = OfSimulator();
  CameraSource source(options);
  QString error;
  EXPECT_FALSE(source.Open(&error));
  EXPECT_TRUE(error.contains(Simulator::Address())) << error.toStdString();
}

TEST_F(OpenCameraSource, ends_by_itself_when_the_camera_vanishes) {
  Running running(&source);
  ASSERT_TRUE(Comes([&] { return running.frames >= 2; }));
  simulator.Vanish();
  ASSERT_TRUE(Comes([&] { return source.IsLost() && running.over; }));
  // Nothing is asked any more: each word would take seconds.
  QElapsedTimer clock;
  clock.start();
  EXPECT_FALSE(source.ReadAll().ranges[CameraControls::Gain].available);
  EXPECT_NE(source.Set(CameraControls::Gain, 1), QString());
  EXPECT_NE(source.SetPixelFormat(QStringLiteral("Mono8")), QString());
  EXPECT_LT(clock.elapsed(), 2000);
  // The place of the camera is free for the next one.
  Simulator next;
  CameraSource again(OfSimulator());
  EXPECT_TRUE(again.Open(&error)) << error.toStdString();
}

TEST(CameraSource, simulates_a_camera_of_its_own) {
  Options options;
  options.source = Options::Simulator;
  CameraSource source(options);
  QString error;
  ASSERT_TRUE(source.Open(&error)) << error.toStdString();
  EXPECT_EQ(source.ID(), QString());
  EXPECT_TRUE(source.Description().contains(QStringLiteral("simulator")));
  Running running(&source);
  EXPECT_TRUE(Comes([&] { return running.frames >= 2; }));
}

// A window with two device pixels to one window pixel. The ratio is set when a program starts, so the test
// runs itself once more.
#include <QProcess>
#include <QProcessEnvironment>

#include "Harness.h"

namespace {

using windowtest::OnX;
using windowtest::Picture;
using windowtest::ViewerTest;

constexpr const char* kFactor = "QT_SCALE_FACTOR";

class PixelRatioTest : public ViewerTest {
 protected:
  void SetUp() override {
    if (qEnvironmentVariable(kFactor) == QLatin1String("2")) ViewerTest::SetUp();
  }
  void TearDown() override {
    if (widget) ViewerTest::TearDown();
  }
  static int RunOnceMore(const char* filter) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QLatin1String(kFactor), QStringLiteral("2"));
    environment.remove(QStringLiteral("GTEST_OUTPUT"));
    environment.remove(QStringLiteral("GTEST_TOTAL_SHARDS"));
    environment.remove(QStringLiteral("GTEST_SHARD_INDEX"));
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(QCoreApplication::applicationFilePath(),
                  {QStringLiteral("--gtest_filter=") + QLatin1String(filter)});
    if (!process.waitForFinished(60000)) return -1;
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
  }
};

}  // namespace

TEST_F(PixelRatioTest, one_to_one_is_one_image_pixel_on_one_device_pixel) {
  if (!widget) {
    EXPECT_EQ(0, RunOnceMore("PixelRatioTest.one_to_one_is_one_image_pixel_on_one_device_pixel"));
    return;
  }
  ASSERT_EQ(2.0, window->devicePixelRatio());
  const auto color = [](int x, int y) { return qRgb(x % 2 ? 250 : 0, y % 2 ? 240 : 0, x / 2); };
  const Picture picture(400, 200, color);
  Show(picture);
  EXPECT_EQ(100, window->Screen()->zoomPercent());
  // 200 by 100 window pixels in 400 by 300: from (100, 100) on, which is device pixel (200, 200).
  EXPECT_DOUBLE_EQ(100.0, window->Screen()->Picture().x);
  EXPECT_DOUBLE_EQ(100.0, window->Screen()->Picture().y);
  if (!OnX()) return;  // the platform "offscreen" grabs the pixels of a window in window pixels
  const QImage seen = Grab();
  ASSERT_EQ(QSize(2 * kWidth, 2 * kHeight), seen.size());
  for (int y : {0, 1, 98, 199}) {
    for (int x : {0, 1, 2, 201, 398, 399}) {
      EXPECT_EQ(color(x, y), seen.pixel(200 + x, 200 + y)) << x << "," << y;
    }
  }
}

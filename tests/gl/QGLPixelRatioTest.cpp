// Drawing with two device pixels to one window pixel. The ratio is set when a program starts, so each test
// runs itself once more.
#include <QProcess>
#include <QProcessEnvironment>

#include "GLFixture.h"
#include "PlacedGLScreen.h"

namespace {

constexpr const char* kFactor = "QT_SCALE_FACTOR";
constexpr int kRatio = 2;

class QGLPixelRatioTest : public GLFixture {
 protected:
  static bool isChild() { return qEnvironmentVariable(kFactor) == QLatin1String("2"); }

  void SetUp() override {
    if (!isChild()) return;
    GLFixture::SetUp();
    ASSERT_EQ(window->devicePixelRatio(), kRatio);
    ASSERT_EQ(surface->pixelRatio(), kRatio);
    screen = std::make_unique<PlacedGLScreen>(surface.get());
    screen->setPixelRatio(kRatio);
    screen->setWindow(kGLWindowWidth, kGLWindowHeight);
    screen->place(0, 0, kGLWindowWidth, kGLWindowHeight);
    surface->glClearColor(0, 0, 0, 1);
    surface->glClear(GL_COLOR_BUFFER_BIT);
    ASSERT_TRUE(screen->prepare(nullptr));
  }
  void TearDown() override {
    screen.reset();
    if (isChild()) GLFixture::TearDown();
  }

  void runOnceMore() {
    const testing::TestInfo& present = *testing::UnitTest::GetInstance()->current_test_info();
    const std::string name = std::string(present.test_suite_name()) + "." + present.name();
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QLatin1String(kFactor), QStringLiteral("2"));
    for (const char* one : {"GTEST_OUTPUT", "GTEST_FILTER", "GTEST_TOTAL_SHARDS", "GTEST_SHARD_INDEX"})
      environment.remove(QLatin1String(one));
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(QCoreApplication::applicationFilePath(),
                  {QStringLiteral("--gtest_filter=") + QString::fromStdString(name)});
    ASSERT_TRUE(process.waitForFinished(60000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
  }

  // In device pixels, upright.
  QImage devicePixels() {
    QImage shot(window->width() * kRatio, window->height() * kRatio, QImage::Format_RGBA8888);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadBuffer(GL_BACK);
    glReadPixels(0, 0, shot.width(), shot.height(), GL_RGBA, GL_UNSIGNED_BYTE, shot.bits());
    return shot.mirrored().convertToFormat(QImage::Format_RGB32);
  }

  std::unique_ptr<PlacedGLScreen> screen;
};

TEST_F(QGLPixelRatioTest, lines_are_as_wide_as_in_window_pixels) {
  if (!isChild()) return runOnceMore();
  const ColorValue white(255, 255, 255);
  surface->polyline({{20, 50}, {80, 50}}, &white, 3, 0);
  surface->polyline({{20, 90}, {80, 90}}, &white, 0, 0);
  surface->polyline({{120, 20}, {120, 80}}, &white, 3, 0);
  const QImage shot = devicePixels();
  int wide = 0, thin = 0, upright = 0;
  for (int y = 80; y < 120; ++y) wide += qRed(shot.pixel(100, y)) == 255;
  for (int y = 160; y < 200; ++y) thin += qRed(shot.pixel(100, y)) == 255;
  for (int x = 220; x < 260; ++x) upright += qRed(shot.pixel(x, 100)) == 255;
  EXPECT_EQ(wide, 6);
  EXPECT_EQ(thin, 2);
  EXPECT_EQ(upright, 6);
  EXPECT_EQ(qRed(shot.pixel(39, 100)), 0);
  EXPECT_EQ(qRed(shot.pixel(41, 100)), 255);
  EXPECT_EQ(qRed(shot.pixel(158, 100)), 255);
  EXPECT_EQ(qRed(shot.pixel(161, 100)), 0);
}

TEST_F(QGLPixelRatioTest, a_rectangle_is_filled_in_window_pixels) {
  if (!isChild()) return runOnceMore();
  const ColorValue white(255, 255, 255);
  surface->fill(10, 20, 30, 40, &white);
  const QImage shot = devicePixels();
  for (const QPoint inside : {QPoint(20, 40), QPoint(79, 40), QPoint(20, 119), QPoint(79, 119)})
    EXPECT_EQ(shot.pixel(inside), 0xffffffff) << inside.x() << "," << inside.y();
  for (const QPoint outside : {QPoint(19, 40), QPoint(80, 119), QPoint(20, 39), QPoint(79, 120)})
    EXPECT_EQ(shot.pixel(outside), 0xff000000) << outside.x() << "," << outside.y();
}

TEST_F(QGLPixelRatioTest, a_picture_covers_its_place_in_window_pixels) {
  if (!isChild()) return runOnceMore();
  const uint32_t code = QTD::FindPixelRowByName("RGB8")->code;
  const Record record = MakeRecord(2, 1, code, {200, 0, 0, 0, 200, 0});
  QGLImage picture(surface.get());
  ASSERT_TRUE(picture.init(record.get(), nullptr));
  surface->glBindTexture(GL_TEXTURE_2D, picture.texture());
  ASSERT_TRUE(picture.fillGPU(record.get()));
  surface->properties.Set("smoothing", "0");
  screen->place(10, 20, 40, 30);
  ASSERT_TRUE(screen->draw(picture.image(), nullptr));
  const QImage shot = devicePixels();
  for (const int y : {40, 99}) {
    EXPECT_EQ(shot.pixel(20, y), 0xffc80000);
    EXPECT_EQ(shot.pixel(59, y), 0xffc80000);
    EXPECT_EQ(shot.pixel(60, y), 0xff00c800);
    EXPECT_EQ(shot.pixel(99, y), 0xff00c800);
  }
  for (const QPoint outside : {QPoint(19, 60), QPoint(100, 60), QPoint(50, 39), QPoint(50, 100)}) {
    EXPECT_NE(shot.pixel(outside), 0xffc80000) << outside.x() << "," << outside.y();
    EXPECT_NE(shot.pixel(outside), 0xff00c800) << outside.x() << "," << outside.y();
  }
}

// A pixel of a glyph is one of the window.
TEST_F(QGLPixelRatioTest, text_is_made_of_window_pixels) {
  if (!isChild()) return runOnceMore();
  const ColorValue white(255, 255, 255);
  surface->text("HW", 40, 60, "default", &white);
  const QImage shot = devicePixels();
  QRect lit;
  for (int y = 0; y < shot.height(); y += kRatio) {
    for (int x = 0; x < shot.width(); x += kRatio) {
      const QRgb pixel = shot.pixel(x, y);
      for (const QPoint of : {QPoint(1, 0), QPoint(0, 1), QPoint(1, 1)})
        ASSERT_EQ(shot.pixel(x + of.x(), y + of.y()), pixel) << x << "," << y;
      if (qGreen(pixel) > 128) lit |= QRect(x, y, kRatio, kRatio);
    }
  }
  ASSERT_FALSE(lit.isEmpty());
  EXPECT_GE(lit.left(), 78);
  EXPECT_LE(lit.left(), 88);
  EXPECT_GE(lit.top(), 116);
  EXPECT_LE(lit.bottom(), 170);
  EXPECT_GE(lit.height(), 14) << "capitals of a readable size";
}

}  // namespace

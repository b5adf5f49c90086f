// A window that OpenGL paints: the gate of its swaps, closing and opening again, errors while painting. Needs
// an X server.
#include "Harness.h"
#include "QTD/chain/QTDProcessor.h"
#include "QTD/frame/Text.h"
#include "RecordingChain.h"
#include "chain/ChainFakes.h"
#include "gl/stages/QGLIPImage.h"
#include "gl/surface/QGLSurface.h"

namespace {

using windowtest::Picture;
using windowtest::RecordingChain;
using windowtest::Settle;
using windowtest::UpdateCounter;
using windowtest::WaitFor;

constexpr QRgb kRed = 0xffff0000, kGreen = 0xff00ff00, kBlue = 0xff0000ff;

// The screen's "color": a part of 255 is the light of 255 / 256.
const char* TextOf(QRgb color) {
  return color == kRed ? "255" : color == kGreen ? "65280" : "16711680";
}

class QTDWindowGL : public testing::Test {
 protected:
  void SetUp() override {
    viewer = std::make_unique<QTDViewer>(&host, true);
    window = viewer->Window();
    ASSERT_TRUE(window) << "there is no OpenGL";
    display.Publish(window->Surface());
    viewer->setDisplay(&display);
    host.resize(300, 200);
    host.show();
    ASSERT_TRUE(WaitFor([&] { return window->isExposed(); }));
    Quiet();
  }

  // Until no swap is owed any more.
  static void Quiet() {
    QElapsedTimer timer;
    for (timer.start(); timer.elapsed() < 150; QThread::msleep(1)) QCoreApplication::processEvents();
  }
  void Paint(QRgb color) {
    window->Screen()->properties.Set("color", TextOf(color));
    window->render();
  }
  // Light above a half counts as all.
  QRgb Shown() const {
    const QRgb pixel = window->QWindow::screen()->grabWindow(window->winId()).toImage().pixel(5, 5);
    const auto full = [](int light) { return light > 127 ? 255 : 0; };
    return qRgb(full(qRed(pixel)), full(qGreen(pixel)), full(qBlue(pixel)));
  }

  chain_test::FakeDisplay display;
  QWidget host;
  std::unique_ptr<QTDViewer> viewer;
  QPointer<QTDWindow> window;
};

}  // namespace

TEST_F(QTDWindowGL, a_burst_shows_its_first_and_then_its_last_picture_on_the_screen) {
  // Tried until the machine was quick enough.
  for (int attempt = 0; attempt < 50; ++attempt) {
    Quiet();
    UpdateCounter updates(window);
    QElapsedTimer timer;
    timer.start();
    Paint(kRed);
    Paint(kGreen);
    Paint(kBlue);
    if (timer.elapsed() >= 25) continue;
    EXPECT_EQ(Shown(), kRed);
    EXPECT_EQ(updates.count, 0);
    EXPECT_TRUE(WaitFor([&] { return Shown() == kBlue; }));
    Quiet();
    EXPECT_EQ(updates.count, 1);
    EXPECT_EQ(Shown(), kBlue);
    return;
  }
  FAIL() << "three pictures were never painted within 25 ms";
}

TEST_F(QTDWindowGL, a_window_that_is_closed_and_opened_again_has_its_new_surface_known_on_the_screen) {
  const auto known = [this] { return viewer->Parameters().GetPointer("surface"); };
  EXPECT_EQ(known(), static_cast<void*>(window->Surface()));
  EXPECT_TRUE(window->close());
  EXPECT_EQ(known(), nullptr);
  ASSERT_TRUE(window->open());
  ASSERT_NE(window->Surface(), nullptr);
  EXPECT_EQ(known(), static_cast<void*>(window->Surface()));
  EXPECT_TRUE(window->open());
  EXPECT_EQ(known(), static_cast<void*>(window->Surface()));
  Paint(kRed);
  EXPECT_TRUE(WaitFor([&] { return Shown() == kRed; }));
}

// Its texture is one of the context that went, and its name one of the new context's.
TEST_F(QTDWindowGL, a_picture_of_the_surface_before_is_not_shown_on_the_screen) {
  const Picture picture(64, 48);
  QGLIPImage stage(&display);
  ASSERT_EQ(stage.Init(picture.Record(), picture.Record()), 0u);
  ASSERT_EQ(stage.ProcessImage(picture.Record(), nullptr, nullptr), 0u);
  const uint32_t texture = AttachedTexture(stage.Out());
  ASSERT_NE(texture, 0u);
  window->Screen()->setFit(1, false);
  window->setImage(stage.Out(), false);
  Paint(kRed);
  window->close();
  ASSERT_TRUE(window->open());
  auto* const surface = dynamic_cast<QGLSurface*>(window->Surface());
  ASSERT_TRUE(surface && surface->begin(nullptr));
  const std::vector<uint8_t> white(4, 255);
  for (GLuint name = 1; name <= texture; ++name) {
    surface->glBindTexture(GL_TEXTURE_2D, name);
    surface->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, white.data());
  }
  surface->glBindTexture(GL_TEXTURE_2D, 0);
  surface->end(nullptr, false);
  window->Screen()->setFit(1, false);
  Quiet();
  Paint(kBlue);
  Quiet();
  const QImage seen = window->QWindow::screen()->grabWindow(window->winId()).toImage();
  EXPECT_NE(seen.pixel(seen.width() / 2, seen.height() / 2) & 0xffffff, 0xffffffu);
  EXPECT_LT(qRed(seen.pixel(seen.width() / 2, seen.height() / 2)), 10);
  window->setImage(nullptr, false);
}

TEST_F(QTDWindowGL, no_stage_is_attached_where_the_surface_cannot_begin_on_the_screen) {
  ZynImage format{};
  QTD::ImageCreateHeader(&format, 64, 48, ZYN_PIXEL_MONO8);
  window->destroy();
  RecordingChain none;
  EXPECT_EQ(viewer->attachProcessor(&format, &none), 8u);
  EXPECT_EQ(viewer->LastError(), 8u);
  EXPECT_TRUE(none.names.empty());
  window->create();
  RecordingChain chain;
  EXPECT_EQ(viewer->attachProcessor(&format, &chain), 0u);
  EXPECT_EQ(chain.names.size(), 2u);
}

TEST_F(QTDWindowGL, an_unreadable_smoothing_does_not_end_the_painting_on_the_screen) {
  const Picture picture(64, 48);
  QGLIPImage stage(&display);
  ASSERT_EQ(stage.Init(picture.Record(), picture.Record()), 0u);
  ASSERT_EQ(stage.ProcessImage(picture.Record(), nullptr, nullptr), 0u);
  window->Surface()->properties.Set("smoothing", "yes");
  window->Screen()->setFit(1, false);
  window->setImage(stage.Out(), false);
  Quiet();
  Paint(kRed);
  Quiet();
  const QImage seen = window->QWindow::screen()->grabWindow(window->winId()).toImage();
  EXPECT_EQ(seen.pixel(seen.width() / 2, seen.height() / 2), qRgb(10, 200, 30));
  window->setImage(nullptr, false);
}

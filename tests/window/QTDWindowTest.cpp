// Opening and painting of the display window.
#include "QTD/window/QTDWindow.h"

#include <thread>

#include "Harness.h"
#include "QTD/frame/Text.h"
#include "QTD/window/QTDZoom.h"

namespace {

using windowtest::Picture;
using windowtest::Settle;
using windowtest::UpdateCounter;
using windowtest::ViewerTest;
using windowtest::WaitFor;

// The protected side, on a window that stands alone.
class BareWindow : public QTDWindow {
 public:
  using QTDWindow::failed;
  using QTDWindow::handlers;
  using QTDWindow::notificationFlags;
  using QTDWindow::QTDWindow;
};

// The screen's "color" 0xC0C0C0: a component of 192 is 192 / 256 of full light.
const QRgb kBackground = qRgb(191, 191, 191);

class QTDWindowTest : public ViewerTest {};

}  // namespace

TEST(QTDWindow, answers_to_the_names_of_its_bases) {
  QTDWindow window(nullptr, false);
  EXPECT_EQ(static_cast<QTDInput*>(&window), window.qt_metacast("QTDInput"));
  EXPECT_EQ(static_cast<QTD::ComponentImpl*>(&window), window.qt_metacast("QTD::ComponentImpl"));
  EXPECT_EQ(static_cast<QTD::CommandProcessor*>(&window), window.qt_metacast("QTD::CommandProcessor"));
}

TEST(QTDWindow, is_closed_after_construction) {
  QWidget parent;
  BareWindow window(&parent, false);
  EXPECT_FALSE(window.isOpen());
  EXPECT_EQ(nullptr, window.Surface());
  EXPECT_EQ(nullptr, window.Screen());
  EXPECT_FALSE(window.hasImage());
  EXPECT_EQ(5u, window.notificationFlags);
  EXPECT_TRUE(window.handlers.empty());
  EXPECT_EQ(QSurface::RasterSurface, window.surfaceType());
  EXPECT_EQ("QTDWindow", window.GetValue("class", ""));
  EXPECT_EQ("0", window.GetValue("opengl", ""));
  EXPECT_EQ(&parent, QTD::ParsePointer(window.GetValue("parent", "")));
}

TEST(QTDWindow, opens_with_a_surface_and_a_screen_at_one_to_one) {
  BareWindow window(nullptr, false);
  ASSERT_TRUE(window.open());
  EXPECT_TRUE(window.isOpen());
  EXPECT_FALSE(window.failed);
  EXPECT_EQ(window.Surface(), QTD::ParsePointer(window.GetValue("surface", "")));
  EXPECT_EQ(3, window.Screen()->properties.GetInt("fit"));
  // The rubber band is asked first.
  ASSERT_EQ(2u, window.handlers.size());
  EXPECT_EQ(static_cast<QTDInput*>(window.Zoom()), window.handlers.front());
  EXPECT_EQ(static_cast<QTDInput*>(&window), window.handlers.back());
}

TEST(QTDWindow, opens_again_with_the_same_handlers) {
  BareWindow window(nullptr, false);
  ASSERT_TRUE(window.open());
  ASSERT_TRUE(window.open());
  EXPECT_TRUE(window.isOpen());
  ASSERT_EQ(2u, window.handlers.size());
  EXPECT_EQ(static_cast<QTDInput*>(window.Zoom()), window.handlers.front());
}

TEST(QTDWindow, does_not_open_where_no_context_can_be_made) {
  BareWindow window(nullptr, true);
  EXPECT_EQ(QSurface::OpenGLSurface, window.surfaceType());
  EXPECT_EQ("1", window.GetValue("opengl", ""));
  window.setSurfaceType(QSurface::RasterSurface);
  EXPECT_FALSE(window.open());
  EXPECT_TRUE(window.failed);
  EXPECT_FALSE(window.isOpen());
  EXPECT_EQ(nullptr, window.Surface());
}

TEST(QTDWindow, closes_and_then_does_nothing) {
  BareWindow window(nullptr, false);
  ASSERT_TRUE(window.open());
  const Picture picture(10, 10);
  EXPECT_TRUE(window.close());
  EXPECT_FALSE(window.isOpen());
  EXPECT_TRUE(window.handlers.empty());
  EXPECT_EQ(nullptr, QTD::ParsePointer(window.GetValue("surface", "")));
  EXPECT_TRUE(window.close());

  window.setImage(picture.Record(), true);
  window.resize(100, 100);
  window.render();
  window.scrollTo(3, 3);
  window.syncScrollBars(3);
  window.Execute("view.changed", nullptr);
  EXPECT_FALSE(window.mouseDown(1, 1, true, false));
  EXPECT_FALSE(window.mouseMove(1, 1, true));
  EXPECT_FALSE(window.mouseUp(1, 1, true, false));
  EXPECT_FALSE(window.mouseDouble(1, 1, true));
  EXPECT_FALSE(window.wheel(120));
  QTD::PROPERTIES list;
  list.Set("cs", "img");
  EXPECT_NE("", window.overlayText(nullptr, "text", 1, 1, &list));
  EXPECT_NE("", window.overlayRect(nullptr, 1, 1, 5, 5, &list));
  Settle();
}

TEST(QTDWindow, has_an_image_only_with_size_and_pixels) {
  QTDWindow window(nullptr, false);
  const Picture picture(6, 4);
  window.setImage(picture.Record(), false);
  EXPECT_TRUE(window.hasImage());

  uint8_t pixel = 0;
  struct Case {
    uint32_t width, height;
    uint8_t* data;
  };
  for (const Case& lacking : {Case{0, 4, &pixel}, Case{6, 0, &pixel}, Case{6, 4, nullptr}}) {
    ZynImage record{};
    record.width = lacking.width;
    record.height = lacking.height;
    record.imageData = lacking.data;
    window.setImage(&record, false);
    EXPECT_FALSE(window.hasImage());
    window.setImage(nullptr, false);
  }
  EXPECT_FALSE(window.hasImage());
}

TEST(QTDWindow, takes_absurd_sizes_of_image_and_window) {
  BareWindow window(nullptr, false);
  ASSERT_TRUE(window.open());
  uint8_t pixel = 0;
  ZynImage record{};
  record.width = 0xFFFFFFFF;
  record.height = 0xFFFFFFFF;
  record.imageData = &pixel;
  window.setImage(&record, true);
  for (const int size : {0, -5, 1}) window.resize(size, size);
  Settle();
  window.setImage(nullptr, false);
}

TEST_F(QTDWindowTest, shows_a_small_picture_one_to_one_in_the_middle) {
  // 100 by 80 in 400 by 300: from (150, 110) on, with the left half red and the right half blue.
  const Picture picture(100, 80, [](int x, int) { return x < 50 ? qRgb(250, 0, 0) : qRgb(0, 0, 240); });
  Show(picture);
  const QImage seen = Grab();
  EXPECT_EQ(qRgb(250, 0, 0), seen.pixel(150, 110));
  EXPECT_EQ(qRgb(250, 0, 0), seen.pixel(199, 189));
  EXPECT_EQ(qRgb(0, 0, 240), seen.pixel(200, 110));
  EXPECT_EQ(qRgb(0, 0, 240), seen.pixel(249, 189));
  // The background around a picture is the screen's "color".
  for (const QPoint& outside : {QPoint(149, 150), QPoint(250, 150), QPoint(200, 109), QPoint(200, 190)}) {
    EXPECT_EQ(kBackground, seen.pixel(outside)) << outside.x() << "," << outside.y();
  }
}

TEST_F(QTDWindowTest, fits_a_large_picture_and_refits_it_with_the_window) {
  // 800 by 400 in 400 by 300, fitted: scale 2, the picture 400 by 200 from y 50 on.
  const Picture picture(800, 400, [](int x, int) { return x < 400 ? qRgb(250, 0, 0) : qRgb(0, 0, 240); });
  Show(picture);
  window->Screen()->setFit(1, true);
  window->update();
  const QImage seen = Grab();
  EXPECT_EQ(qRgb(250, 0, 0), seen.pixel(0, 50));
  EXPECT_EQ(qRgb(250, 0, 0), seen.pixel(199, 249));
  EXPECT_EQ(qRgb(0, 0, 240), seen.pixel(200, 50));
  EXPECT_EQ(qRgb(0, 0, 240), seen.pixel(399, 249));
  EXPECT_EQ(kBackground, seen.pixel(200, 49));
  EXPECT_EQ(kBackground, seen.pixel(200, 250));

  widget->resize(widget->width() - 200, widget->height());
  ASSERT_TRUE(WaitFor([&] { return window->width() == 200; }));
  Settle();
  EXPECT_DOUBLE_EQ(4.0, window->Screen()->Scale());
  EXPECT_DOUBLE_EQ(100.0, window->Screen()->Picture().y);
  const QImage smaller = Grab();
  EXPECT_EQ(qRgb(250, 0, 0), smaller.pixel(99, 101));
  EXPECT_EQ(qRgb(0, 0, 240), smaller.pixel(100, 198));
  EXPECT_EQ(kBackground, smaller.pixel(100, 99));
}

TEST_F(QTDWindowTest, without_a_picture_clears_to_grey_and_paints_no_overlay) {
  QTD::PROPERTIES list;
  list.Set("line.clr", "255");
  ASSERT_NE("", window->overlayRect(nullptr, 10, 10, 50, 50, &list));
  window->update();
  const QImage seen = Grab();
  EXPECT_EQ(qRgb(128, 128, 128), seen.pixel(10, 10));
  EXPECT_EQ(qRgb(128, 128, 128), seen.pixel(399, 299));
  EXPECT_EQ(0, window->Objects().Parser()->variables.Count());
}

TEST_F(QTDWindowTest, takes_the_picture_away) {
  const Picture picture(500, 400);
  Show(picture);
  EXPECT_EQ(qRgb(10, 200, 30), Grab().pixel(5, 5));
  window->setImage(nullptr, false);
  window->update();
  EXPECT_EQ(qRgb(128, 128, 128), Grab().pixel(5, 5));
}

TEST_F(QTDWindowTest, text_templates_tell_of_the_picture_while_it_is_shown) {
  const auto told = [&] { return window->Objects().Parser()->Parse("${image.dims}"); };
  EXPECT_EQ("", told());
  const Picture picture(50, 40);
  Show(picture);
  EXPECT_EQ("50x40", told());
  const Picture next(60, 30);
  window->setImage(next.Record(), false);
  EXPECT_EQ("60x30", told());
  window->render();
  EXPECT_EQ("60x30", told());
  window->setImage(nullptr, false);
  EXPECT_EQ("", told());
}

TEST_F(QTDWindowTest, text_templates_tell_of_the_picture_as_it_was_painted) {
  const auto told = [&] { return window->Objects().Parser()->Parse("${image.id:%d}"); };
  const Picture picture(50, 40);
  Show(picture);
  EXPECT_EQ("77", told());
  picture.Record()->imageID = 78;
  EXPECT_EQ("77", told()) << "the chain writes into its record while hosts lay texts out";
  window->render();
  EXPECT_EQ("78", told());
}

TEST_F(QTDWindowTest, a_record_without_pixels_is_no_picture) {
  ZynImage record{};
  record.width = 50;
  record.height = 40;
  window->setImage(&record, true);
  EXPECT_EQ(qRgb(128, 128, 128), Grab().pixel(5, 5));
  EXPECT_EQ("", window->Objects().Parser()->Parse("${image.dims}"));
  window->setImage(nullptr, false);
}

TEST_F(QTDWindowTest, many_updates_before_the_event_loop_runs_paint_once) {
  Settle();
  UpdateCounter counter(window);
  for (int i = 0; i < 10; ++i) window->update();
  EXPECT_EQ(0, counter.count);
  Settle();
  EXPECT_EQ(1, counter.count);
  window->update();
  Settle();
  EXPECT_EQ(2, counter.count);
}

TEST_F(QTDWindowTest, an_update_request_that_was_thrown_away_does_not_end_all_painting) {
  Settle();
  window->update();
  QCoreApplication::removePostedEvents(window, QEvent::UpdateRequest);
  UpdateCounter counter(window);
  window->update();
  Settle();
  EXPECT_EQ(1, counter.count);
}

TEST_F(QTDWindowTest, updates_from_another_thread_are_painted_on_this_one) {
  const Picture picture(500, 400);
  std::thread other([&] {
    window->setImage(picture.Record(), false);
    window->render();  // off the GUI thread: a request
  });
  other.join();
  EXPECT_TRUE(WaitFor([&] { return Grab().pixel(5, 5) == qRgb(10, 200, 30); }));
}

TEST_F(QTDWindowTest, a_picture_is_painted_at_once_only_when_asked_for) {
  Settle();
  UpdateCounter counter(window);
  const Picture picture(50, 40);
  window->setImage(picture.Record(), false);
  Settle();
  EXPECT_EQ(0, counter.count);
  window->setImage(picture.Record(), true);
  Settle();
  EXPECT_EQ(1, counter.count);
  window->setImage(nullptr, true);
  Settle();
  EXPECT_EQ(1, counter.count);
}

TEST_F(QTDWindowTest, expose_brings_the_picture_back) {
  const Picture picture(500, 400);
  Show(picture);
  widget->hide();
  Settle();
  widget->show();
  ASSERT_TRUE(WaitFor([&] { return window->isExposed(); }));
  EXPECT_TRUE(WaitFor([&] { return Grab().pixel(5, 5) == qRgb(10, 200, 30); }));
}

TEST_F(QTDWindowTest, a_window_that_is_opened_again_keeps_its_size) {
  ASSERT_TRUE(window->open());
  EXPECT_TRUE(window->Screen()->isReady());
  const Picture picture(500, 400);
  Show(picture);
  EXPECT_DOUBLE_EQ(-50.0, window->Screen()->Picture().x);
  EXPECT_EQ(qRgb(10, 200, 30), Grab().pixel(399, 299));
}

TEST_F(QTDWindowTest, a_window_that_is_opened_again_keeps_its_picture) {
  const Picture picture(500, 400);
  Show(picture);
  ASSERT_TRUE(window->open());
  EXPECT_DOUBLE_EQ(500.0, window->Screen()->Picture().width);
  window->update();
  QCoreApplication::processEvents();
  EXPECT_EQ(qRgb(10, 200, 30), Grab().pixel(399, 299));
}

TEST_F(QTDWindowTest, unreadable_settings_throw_nothing_through_the_event_loop) {
  const Picture picture(500, 400);
  Show(picture);
  window->Screen()->properties.Set("zoom.align", "many");
  EXPECT_NO_THROW(Wheel(120));
  window->Screen()->properties.Set("zoom.align", "1");
  Wheel(120);
  EXPECT_DOUBLE_EQ(0.8, window->Screen()->Scale());
}

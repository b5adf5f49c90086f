// Marking a region with the mouse, on a window that stands for the display's.
#include "apps/zynview/view/RegionMarker.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

#include "zynview/RecordingDisplay.h"

using zynview::RegionMarker;

namespace {

constexpr char kAddRect[] = "cmd.display.overlay.rect.add", kDelete[] = "cmd.display.overlay.del";

// Counts what reaches it.
struct Window : QWindow {
  int presses = 0, moves = 0, releases = 0, keys = 0, doubleClicks = 0;

 protected:
  void mousePressEvent(QMouseEvent*) override { ++presses; }
  void mouseMoveEvent(QMouseEvent*) override { ++moves; }
  void mouseReleaseEvent(QMouseEvent*) override { ++releases; }
  void mouseDoubleClickEvent(QMouseEvent*) override { ++doubleClicks; }
  void keyPressEvent(QKeyEvent*) override { ++keys; }
};

// Shows a picture of 200 x 100 from image pixel (10, 20) on, four window pixels to each image pixel.
struct RegionMarkerTest : testing::Test {
  RecordingDisplay display;
  Window window;
  RegionMarker marker{&display};
  std::vector<QRect> told;
  std::vector<bool> markings;
  double zoom = 4;

  RegionMarkerTest() {
    display.answer = [this](const std::string& name, QTD::ARGUMENTS* args) -> uint32_t {
      if (name != "cmd.display.view.translate") return 1;
      EXPECT_EQ((*args)["cs.src"], "win");
      EXPECT_EQ((*args)["cs.dst"], "img");
      const double x = std::stod((*args)["pos.x"]) / zoom + 10, y = std::stod((*args)["pos.y"]) / zoom + 20;
      (*args)["pos.x"] = std::to_string(x);
      (*args)["pos.y"] = std::to_string(y);
      (*args)["result"] = x >= 0 && y >= 0 && x < 200 && y < 100 ? "1" : "0";
      return 1;
    };
    marker.SetPicture(Picture(200, 100));
    marker.onChange = [this](const QRect& region) { told.push_back(region); };
    marker.onMarking = [this](bool on) { markings.push_back(on); };
  }

  static ZynImage Picture(uint32_t width, uint32_t height) {
    return zynview::MakeRecord(ZYN_PIXEL_MONO8, width, height, 0, nullptr);
  }

  void Send(QEvent::Type type, double x, double y, Qt::MouseButton button = Qt::LeftButton) {
    Qt::MouseButtons held = button;
    if (type == QEvent::MouseButtonRelease) held = Qt::NoButton;
    QMouseEvent event(type, QPointF(x, y), QPointF(x, y) + QPointF(300, 300),
                      type == QEvent::MouseMove ? Qt::NoButton : button, held, Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &event);
  }
  void Press(double x, double y) { Send(QEvent::MouseButtonPress, x, y); }
  void Move(double x, double y) { Send(QEvent::MouseMove, x, y); }
  void Release(double x, double y) { Send(QEvent::MouseButtonRelease, x, y); }
  void Drag(QPointF from, QPointF to) {
    Press(from.x(), from.y());
    Move((from.x() + to.x()) / 2, (from.y() + to.y()) / 2);
    Move(to.x(), to.y());
    Release(to.x(), to.y());
  }
  void Escape() {
    QKeyEvent event(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &event);
  }

  static QRect Drawn(const QTD::ARGUMENTS& arguments) {
    const auto number = [&arguments](const char* name) { return std::stoi(arguments.at(name)); };
    return {number("rect.x"), number("rect.y"), number("rect.w"), number("rect.h")};
  }
};

}  // namespace

TEST_F(RegionMarkerTest, marks_the_pixels_from_press_to_release_and_ends) {
  marker.Toggle();
  EXPECT_TRUE(marker.IsMarking());
  Drag({8, 4}, {43, 31});
  // 8/4+10 = 12, 4/4+20 = 21, 43/4+10 = 20.75, 31/4+20 = 27.75: both pixels belong to it.
  EXPECT_EQ(marker.Region(), QRect(QPoint(12, 21), QPoint(20, 27)));
  EXPECT_FALSE(marker.IsMarking());
  EXPECT_EQ(told.back(), marker.Region());
  EXPECT_EQ(markings, (std::vector<bool>{true, false}));
}

TEST_F(RegionMarkerTest, takes_any_two_corners) {
  marker.Toggle();
  Drag({43, 4}, {8, 31});
  EXPECT_EQ(marker.Region(), QRect(QPoint(12, 21), QPoint(20, 27)));
}

TEST_F(RegionMarkerTest, keeps_press_and_release_from_the_display_but_not_the_movements) {
  marker.Toggle();
  Drag({8, 4}, {43, 31});
  EXPECT_EQ(window.presses, 0);
  EXPECT_EQ(window.releases, 0);
  EXPECT_EQ(window.moves, 2);
  Drag({8, 4}, {43, 31});
  EXPECT_EQ(window.presses, 1) << "afterwards all is the display's again";
  EXPECT_EQ(window.releases, 1);
}

TEST_F(RegionMarkerTest, leaves_the_right_button_to_the_display) {
  marker.Toggle();
  Send(QEvent::MouseButtonPress, 5, 5, Qt::RightButton);
  Send(QEvent::MouseButtonRelease, 5, 5, Qt::RightButton);
  EXPECT_EQ(window.presses, 1);
  EXPECT_EQ(window.releases, 1);
  EXPECT_TRUE(marker.IsMarking());
}

TEST_F(RegionMarkerTest, leaves_the_end_of_a_pan_that_began_before_to_the_display) {
  Press(5, 5);
  marker.Toggle();
  Release(50, 50);
  EXPECT_EQ(window.releases, 1);
  EXPECT_TRUE(marker.Region().isEmpty());
}

TEST_F(RegionMarkerTest, leaves_widgets_of_the_program_alone) {
  QWidget widget;
  widget.winId();
  marker.Toggle();
  QMouseEvent event(QEvent::MouseButtonPress, QPointF(8, 4), QPointF(8, 4), Qt::LeftButton, Qt::LeftButton,
                    Qt::NoModifier);
  EXPECT_FALSE(static_cast<QObject&>(marker).eventFilter(widget.windowHandle(), &event));
  EXPECT_TRUE(marker.IsMarking());
  Move(60, 60);
  EXPECT_TRUE(marker.Region().isEmpty());
}

TEST_F(RegionMarkerTest, draws_the_region_in_image_coordinates_while_it_is_dragged) {
  marker.Toggle();
  Press(8, 4);
  Move(43, 31);
  ASSERT_FALSE(display.Of(kAddRect).empty());
  const QTD::ARGUMENTS rect = display.Of(kAddRect).back();
  EXPECT_EQ(rect.at("cs"), "img");
  EXPECT_EQ(Drawn(rect), QRect(QPoint(12, 21), QPoint(20, 27)));
  // Always the same one, which moves.
  const std::string id = rect.at("objectID");
  Move(83, 51);
  EXPECT_EQ(display.Of(kAddRect).back().at("objectID"), id);
  EXPECT_EQ(told.size(), 2u);
}

TEST_F(RegionMarkerTest, stops_at_the_edges_of_the_picture) {
  marker.Toggle();
  Drag({-100, -200}, {5000, 8});
  EXPECT_EQ(marker.Region(), QRect(0, 0, 200, 23));
}

TEST_F(RegionMarkerTest, has_the_point_of_the_press_stay_when_the_picture_is_zoomed_meanwhile) {
  marker.Toggle();
  Press(8, 4);
  zoom = 1;
  Move(20, 30);
  Release(20, 30);
  EXPECT_EQ(marker.Region(), QRect(QPoint(12, 21), QPoint(30, 50)));
}

TEST_F(RegionMarkerTest, marks_a_single_pixel_where_the_zoom_is_high) {
  zoom = 16;
  marker.Toggle();
  Drag({1, 1}, {14, 14});
  EXPECT_EQ(marker.Region(), QRect(10, 20, 1, 1));
}

TEST_F(RegionMarkerTest, goes_on_after_a_click) {
  marker.Toggle();
  Drag({8, 4}, {10, 6});
  EXPECT_TRUE(marker.Region().isEmpty());
  EXPECT_TRUE(marker.IsMarking());
  Drag({8, 4}, {43, 31});
  EXPECT_FALSE(marker.Region().isEmpty());
}

TEST_F(RegionMarkerTest, takes_a_double_click_for_a_press) {
  marker.Toggle();
  Send(QEvent::MouseButtonDblClick, 8, 4);
  Move(43, 31);
  Release(43, 31);
  EXPECT_EQ(window.doubleClicks, 0);
  EXPECT_FALSE(marker.Region().isEmpty());
}

TEST_F(RegionMarkerTest, ends_with_escape_and_takes_a_drag_back) {
  marker.Mark(QRect(1, 2, 3, 4));
  marker.Begin();
  Press(8, 4);
  Move(43, 31);
  EXPECT_NE(marker.Region(), QRect(1, 2, 3, 4));
  Escape();
  EXPECT_FALSE(marker.IsMarking());
  EXPECT_EQ(marker.Region(), QRect(1, 2, 3, 4));
  EXPECT_EQ(window.keys, 0);
  Move(80, 80);
  Release(80, 80);
  EXPECT_EQ(marker.Region(), QRect(1, 2, 3, 4));
  Escape();
  EXPECT_EQ(window.keys, 1) << "Esc is the viewer's while marking alone";
}

TEST_F(RegionMarkerTest, ends_where_the_button_was_released_unseen) {
  marker.Toggle();
  Press(8, 4);
  Move(43, 31);
  Send(QEvent::MouseMove, 100, 100, Qt::NoButton);
  EXPECT_FALSE(marker.IsMarking());
  EXPECT_EQ(marker.Region(), QRect(QPoint(12, 21), QPoint(20, 27)));
}

TEST_F(RegionMarkerTest, is_begun_ended_and_cleared_with_the_same_key) {
  marker.Toggle();
  EXPECT_TRUE(marker.IsMarking());
  marker.Toggle();
  EXPECT_FALSE(marker.IsMarking());
  marker.Mark(QRect(5, 6, 7, 8));
  marker.Toggle();
  EXPECT_FALSE(marker.IsMarking());
  EXPECT_TRUE(marker.Region().isEmpty());
  EXPECT_EQ(told.back(), QRect());
  EXPECT_EQ(display.Of(kDelete).back().at("objectID"), display.Of(kAddRect).back().at("objectID"));
}

TEST_F(RegionMarkerTest, keeps_a_given_region_on_the_picture) {
  marker.Mark(QRect(150, 80, 1000, 1000));
  EXPECT_EQ(marker.Region(), QRect(150, 80, 50, 20));
  marker.Mark(QRect(200, 0, 5, 5));
  EXPECT_TRUE(marker.Region().isEmpty());
}

TEST_F(RegionMarkerTest, goes_with_a_picture_that_has_no_room_for_it) {
  marker.Mark(QRect(100, 50, 60, 40));
  marker.SetPicture(Picture(300, 200));
  EXPECT_EQ(marker.Region(), QRect(100, 50, 60, 40));
  marker.SetPicture(Picture(160, 90));
  EXPECT_EQ(marker.Region(), QRect(100, 50, 60, 40)) << "just fits";
  marker.SetPicture(Picture(159, 90));
  EXPECT_TRUE(marker.Region().isEmpty());
  EXPECT_EQ(told.back(), QRect());
}

TEST_F(RegionMarkerTest, draws_its_region_again_for_a_new_picture) {
  marker.Mark(QRect(1, 2, 3, 4));
  display.commands.clear();
  marker.SetPicture(Picture(200, 100));
  ASSERT_EQ(display.Of(kAddRect).size(), 1u);
  EXPECT_EQ(Drawn(display.Of(kAddRect)[0]), QRect(1, 2, 3, 4));
}

TEST_F(RegionMarkerTest, marks_nothing_without_a_window_of_the_display) {
  display.answer = [](const std::string&, QTD::ARGUMENTS*) { return 0u; };
  marker.Toggle();
  Drag({8, 4}, {43, 31});
  EXPECT_TRUE(marker.Region().isEmpty());
  EXPECT_EQ(window.presses, 0);
}

TEST_F(RegionMarkerTest, shows_a_cross_while_marking) {
  marker.Toggle();
  ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
  EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::CrossCursor);
  marker.Toggle();
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST(RegionMarker, leaves_no_cursor_behind_when_it_goes_while_marking) {
  RecordingDisplay display;
  {
    RegionMarker marker(&display);
    marker.Begin();
  }
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

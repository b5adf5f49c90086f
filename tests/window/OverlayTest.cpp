// Objects over the window and how they follow the view.
#include <cmath>
#include <mutex>
#include <thread>

#include "Harness.h"

namespace {

using windowtest::Picture;
using windowtest::Settle;
using windowtest::UpdateCounter;
using windowtest::ViewerTest;
using windowtest::WaitFor;

// A 800 by 600 picture in the 400 by 300 window, one to one: its corner lies at (-200, -150).
class OverlayTest : public ViewerTest {
 protected:
  struct Box {
    int x, y, w, h;
    bool operator==(const Box& other) const {
      return x == other.x && y == other.y && w == other.w && h == other.h;
    }
  };

  void SetUp() override {
    ViewerTest::SetUp();
    Show(picture);
  }

  static QTD::PROPERTIES In(const char* system) {
    QTD::PROPERTIES list;
    list.Set("cs", system);
    return list;
  }
  QTD::PROPERTIES Object(const std::string& id) {
    QTD::PROPERTIES object;
    EXPECT_TRUE(window->Objects().get(id, &object)) << id;
    return object;
  }
  Box BoxOf(const std::string& id) {
    QTD::PROPERTIES object = Object(id);
    return {object.GetInt("x"), object.GetInt("y"), object.GetInt("w"), object.GetInt("h")};
  }
  std::string Rect(int x, int y, int w, int h, QTD::PROPERTIES list) {
    return window->overlayRect(nullptr, x, y, w, h, &list);
  }
  std::string Text(const char* text, int x, int y, QTD::PROPERTIES list) {
    return window->overlayText(nullptr, text, x, y, &list);
  }
  void SetCenter(double fx, double fy) { window->Screen()->setCenter(fx, fy); }

  const Picture picture{800, 600};
};

}  // namespace

TEST_F(OverlayTest, an_object_of_the_window_stays_through_zoom) {
  const std::string rect = Rect(10, 20, 30, 40, In("win"));
  const std::string text = Text("text", 50, 60, QTD::PROPERTIES());
  Wheel(120);
  SetCenter(0.25, 0.75);
  EXPECT_TRUE((Box{10, 20, 30, 40}) == BoxOf(rect));
  EXPECT_EQ(50, Object(text).GetInt("x"));
  EXPECT_EQ(60, Object(text).GetInt("y"));
}

TEST_F(OverlayTest, an_object_of_the_picture_follows_it) {
  const std::string id = Rect(400, 300, 100, 50, In("img"));
  EXPECT_TRUE((Box{200, 150, 100, 50}) == BoxOf(id));
  SetCenter(0.625, 0.5);  // 100 pixels to the right
  EXPECT_TRUE((Box{100, 150, 100, 50}) == BoxOf(id));
  window->Screen()->setScale(0.5);  // twice as large, no "view.changed"
  window->Execute("view.changed", nullptr);
  // The picture is 1600 by 1200 from (200 - 1000, 150 - 600) on.
  EXPECT_TRUE((Box{0, 150, 200, 100}) == BoxOf(id));
  EXPECT_EQ("400", Object(id).GetString("x.cs"));
}

TEST_F(OverlayTest, the_size_takes_up_what_rounding_takes_from_the_position) {
  window->Screen()->setScale(1.7);  // no sum below ends on a half
  const auto expected = [](int x, int y, int w, int h) {
    const double left = 200 - 400 / 1.7 + x / 1.7;
    const double top = 150 - 300 / 1.7 + y / 1.7;
    const double across = w / 1.7 + (left - std::round(left));
    const double down = h / 1.7 + (top - std::round(top));
    return Box{static_cast<int>(std::round(left)), static_cast<int>(std::round(top)),
               static_cast<int>(std::round(across)), static_cast<int>(std::round(down))};
  };
  int corrected = 0;
  for (int offset = 0; offset < 16; ++offset) {
    const int x = 129 + offset, y = 140 + offset, w = 80 + 3 * offset, h = 70 + 5 * offset;
    const std::string id = Rect(x, y, w, h, In("img"));
    EXPECT_TRUE(expected(x, y, w, h) == BoxOf(id)) << offset;
    window->Execute("view.changed", nullptr);
    EXPECT_TRUE(expected(x, y, w, h) == BoxOf(id)) << offset;
    corrected += expected(x, y, w, h).w != static_cast<int>(std::round(w / 1.7));
  }
  EXPECT_GT(corrected, 0);
}

TEST_F(OverlayTest, a_text_of_the_picture_follows_with_its_position_alone) {
  const std::string id = Text("text", 410, 320, In("img"));
  EXPECT_EQ(210, Object(id).GetInt("x"));
  EXPECT_EQ(170, Object(id).GetInt("y"));
  const std::string width = Object(id).GetString("w", "none");
  SetCenter(0.625, 0.5);
  EXPECT_EQ(110, Object(id).GetInt("x"));
  EXPECT_EQ(170, Object(id).GetInt("y"));
  EXPECT_EQ(width, Object(id).GetString("w", "none"));
}

TEST_F(OverlayTest, the_zoomed_picture_is_a_system_too) {
  const std::string id = Rect(10, 20, 30, 40, In("scr"));
  EXPECT_TRUE((Box{-190, -130, 30, 40}) == BoxOf(id));
}

TEST_F(OverlayTest, system_names_ignore_case_and_none_is_the_window) {
  for (const char* name : {"win", "WIN", ""}) {
    const std::string rect = Rect(10, 20, 30, 40, In(name));
    EXPECT_TRUE((Box{10, 20, 30, 40}) == BoxOf(rect)) << name;
    const std::string text = Text("t", 11, 22, In(name));
    EXPECT_EQ(11, Object(text).GetInt("x")) << name;
  }
  EXPECT_EQ("win", Object(Rect(1, 2, 3, 4, In(""))).GetString("cs"));
  EXPECT_EQ("win", Object(window->overlayRect(nullptr, 1, 2, 3, 4, nullptr)).GetString("cs"));
  EXPECT_TRUE((Box{200, 150, 3, 4}) == BoxOf(Rect(400, 300, 3, 4, In("IMG"))));
}

TEST_F(OverlayTest, an_empty_text_does_nothing) {
  EXPECT_EQ("", window->overlayText("id", nullptr, 1, 1, nullptr));
  EXPECT_EQ("", window->overlayText("id", "", 1, 1, nullptr));
  EXPECT_EQ(0, window->Objects().count());
}

TEST_F(OverlayTest, keeps_the_position_as_it_was_given) {
  const std::string text = Text("t", 12, 34, In("img"));
  EXPECT_EQ("12", Object(text).GetString("x.cs"));
  EXPECT_EQ("34", Object(text).GetString("y.cs"));
  QTD::PROPERTIES rect = Object(Rect(1, 2, 3, 4, In("img")));
  EXPECT_EQ("1", rect.GetString("x.cs"));
  EXPECT_EQ("2", rect.GetString("y.cs"));
  EXPECT_EQ("3", rect.GetString("w.cs"));
  EXPECT_EQ("4", rect.GetString("h.cs"));
}

TEST_F(OverlayTest, a_known_identifier_is_replaced) {
  QTD::PROPERTIES list;
  list.Set("objectID", "mine");
  EXPECT_EQ("mine", window->overlayText(nullptr, "one", 1, 1, &list));
  EXPECT_EQ("mine", window->overlayText(nullptr, "two", 1, 1, &list));
  EXPECT_EQ("two", Object("mine").GetString("text"));
  EXPECT_EQ("mine", window->overlayRect(nullptr, 1, 1, 5, 5, &list));
  EXPECT_EQ("other", window->overlayRect("other", 1, 1, 5, 5, nullptr));
  EXPECT_EQ("third", window->overlayText("third", "t", 1, 1, nullptr));
  EXPECT_EQ(3, window->Objects().count());
}

TEST_F(OverlayTest, a_negative_y_makes_x_a_placement_and_resizing_places_again) {
  const std::string id = Text("some text", 3, -1, QTD::PROPERTIES());
  QTD::PROPERTIES object = Object(id);
  const int width = object.GetInt("w");
  ASSERT_GT(width, 0);
  EXPECT_EQ(3, object.GetInt("placement"));
  // Bottom right: 4 pixels from the right edge, 2 from the bottom.
  EXPECT_EQ(kWidth - width - 4, object.GetInt("x"));
  EXPECT_EQ(kHeight - 2 - object.GetInt("h"), object.GetInt("y"));
  window->resize(200, 100);
  EXPECT_EQ(200 - width - 4, Object(id).GetInt("x"));
  EXPECT_EQ(100 - 2 - object.GetInt("h"), Object(id).GetInt("y"));
}

TEST_F(OverlayTest, a_placed_text_is_laid_out_with_every_change_of_view) {
  const std::string id = Text("short", 3, -1, QTD::PROPERTIES());
  const int before = Object(id).GetInt("w");
  QTD::PROPERTIES longer = Object(id);
  longer.Set("text", "very much longer than that");
  window->Objects().store(&longer, true, true);
  EXPECT_EQ(before, Object(id).GetInt("w"));
  window->Execute("view.changed", nullptr);
  EXPECT_GT(Object(id).GetInt("w"), before);
}

TEST_F(OverlayTest, a_resize_lays_a_placed_text_out_once) {
  const std::string id = Text("t", 6, -1, QTD::PROPERTIES());  // moves up by its height with each layout
  const int height = Object(id).GetInt("h");
  const int before = Object(id).GetInt("y");
  window->resize(380, 290);
  window->render();
  EXPECT_EQ(before - height, Object(id).GetInt("y"));
}

TEST_F(OverlayTest, a_text_placed_by_code_0_moves_only_with_its_system) {
  const std::string id = Text("t", 0, -1, In("img"));  // at (0, -1) of the picture
  window->Execute("view.changed", nullptr);
  EXPECT_EQ(-200, Object(id).GetInt("x"));
  EXPECT_EQ(-151, Object(id).GetInt("y"));
  window->Execute("view.changed", nullptr);
  EXPECT_EQ(-151, Object(id).GetInt("y"));
}

TEST_F(OverlayTest, an_adjusted_rectangle_is_held_on_the_picture) {
  QTD::PROPERTIES list = In("img");
  list.Set("adjust", "1");
  // The picture reaches from (-200, -150) to (600, 450).
  EXPECT_TRUE((Box{-200, -150, 100, 50}) == BoxOf(Rect(-30, -40, 100, 50, list)));
  EXPECT_TRUE((Box{550, 400, 50, 50}) == BoxOf(Rect(750, 550, 100, 100, list)));
  list.Set("adjust", "0");
  EXPECT_TRUE((Box{550, 400, 100, 100}) == BoxOf(Rect(750, 550, 100, 100, list)));
}

TEST_F(OverlayTest, a_rectangle_repaints_when_asked_to) {
  Settle();
  UpdateCounter counter(window);
  Rect(1, 2, 3, 4, In("win"));
  Settle();
  EXPECT_EQ(0, counter.count);
  QTD::PROPERTIES list;
  list.Set("update", "1");
  Rect(1, 2, 3, 4, list);
  Settle();
  EXPECT_EQ(1, counter.count);
}

TEST_F(OverlayTest, an_unreadable_object_does_not_hold_up_the_others) {
  const std::string bad = Rect(10, 10, 5, 5, In("img"));
  const std::string good = Rect(400, 300, 5, 5, In("img"));
  QTD::PROPERTIES spoilt;
  spoilt.Set("x.cs", "left");
  window->Objects().update(bad, &spoilt);
  EXPECT_NO_THROW(SetCenter(0.625, 0.5));
  EXPECT_EQ(100, BoxOf(good).x);
}

TEST_F(OverlayTest, a_change_that_nobody_announced_moves_overlays_and_bars_before_the_next_painting) {
  const std::string id = Rect(400, 300, 10, 10, In("img"));
  ASSERT_EQ(200, BoxOf(id).x);
  window->Screen()->setScale(0.5);
  window->update();
  Settle();
  EXPECT_TRUE((Box{200, 150, 20, 20}) == BoxOf(id));
  EXPECT_EQ(1200, Bar(Qt::Horizontal)->maximum());
}

TEST_F(OverlayTest, a_picture_of_another_size_moves_them_at_once) {
  const std::string id = Rect(0, 0, 10, 10, In("img"));
  ASSERT_EQ(-200, BoxOf(id).x);
  const Picture other(600, 400);
  window->setImage(other.Record(), false);
  EXPECT_EQ(-100, BoxOf(id).x);
  EXPECT_EQ(200, Bar(Qt::Horizontal)->maximum());
  window->resize(500, 300);
  EXPECT_EQ(-50, BoxOf(id).x);
  window->setImage(nullptr, false);
}

TEST_F(OverlayTest, the_host_hears_of_a_changed_view_when_it_asked_for_it) {
  ConnectHost(4);
  SetCenter(0.3, 0.4);
  Settle();
  EXPECT_FALSE(WaitFor([&] { return host.CountOf("notification.view") > 0; }, 50));
  SetFlags(1);
  SetCenter(0.35, 0.4);
  ASSERT_TRUE(host.WaitForCode("view.changed"));
  EXPECT_EQ(1, host.CountOf("notification.view"));
}

TEST_F(OverlayTest, following_the_view_tells_nobody) {
  ConnectHost(1);
  window->Screen()->setScale(0.5);
  window->followView();
  EXPECT_FALSE(WaitFor([&] { return host.CountOf("notification.view") > 0; }, 50));
  EXPECT_EQ(1200, Bar(Qt::Horizontal)->maximum());
}

TEST_F(OverlayTest, overlays_are_painted_over_the_picture) {
  QTD::PROPERTIES list = In("img");
  list.Set("line.clr", "255");  // red
  Rect(300, 250, 40, 30, list);
  window->update();
  const QImage seen = Grab();
  EXPECT_EQ(qRgb(255, 0, 0), seen.pixel(100, 100));
  EXPECT_EQ(qRgb(255, 0, 0), seen.pixel(140, 115));
  EXPECT_EQ(qRgb(10, 200, 30), seen.pixel(120, 115));
  EXPECT_EQ(qRgb(10, 200, 30), seen.pixel(99, 100));
}

TEST_F(OverlayTest, templates_of_texts_see_the_picture) {
  const auto painted = [this](const char* text) {
    window->Objects().clear();
    Text(text, 10, 100, QTD::PROPERTIES());
    window->update();
    return Grab();
  };
  const QImage wide = painted("800x600"), narrow = painted("600x400");
  ASSERT_FALSE(wide == narrow);
  EXPECT_TRUE(painted("${image.dims}") == wide);

  // The text follows the picture without being given anew; both pictures fill the window with one colour.
  const Picture other(600, 400);
  Show(other);
  EXPECT_TRUE(Grab() == narrow);
  viewer->setImage(nullptr, false);
}

TEST_F(OverlayTest, placed_texts_are_measured_with_their_template_expanded) {
  window->update();
  Settle();
  const int expanded = Object(Text("${image.dims} ${image.dims}", 3, -1, QTD::PROPERTIES())).GetInt("w");
  const int literal = Object(Text("800x600 800x600", 3, -1, QTD::PROPERTIES())).GetInt("w");
  EXPECT_GT(literal, 0);
  EXPECT_EQ(literal, expanded);
}

// Reaches the locks that a pass over the objects meets on its way.
struct OpenStore : QTD::DrawObjects {
  static std::recursive_mutex& LockOf(QTD::DrawObjects& store) { return store.*&OpenStore::lock; }
};
struct OpenScreen : QTDScreen {
  static QTD::RMutex& LockOf(QTDScreen& screen) { return screen.*&OpenScreen::lock; }
};

// A pass on another thread is let into the store first and stopped at the screen next, with the object in its
// hands: meanwhile the object goes.
TEST_F(OverlayTest, an_object_that_is_deleted_while_it_is_moved_stays_deleted) {
  for (const char* placement : {"0", "-1"}) {
    QTD::PROPERTIES list = In("img");
    list.Set("placement", placement);
    const std::string id = Rect(400, 300, 10, 10, list);
    std::unique_lock<std::recursive_mutex> store(OpenStore::LockOf(window->Objects()));
    std::thread pass([&] { window->Execute("view.changed", nullptr); });
    QThread::msleep(50);
    {
      const std::lock_guard<QTD::RMutex> screen(OpenScreen::LockOf(*window->Screen()));
      store.unlock();
      QThread::msleep(50);
      EXPECT_TRUE(window->Objects().remove(id));
    }
    pass.join();
    EXPECT_FALSE(window->Objects().get(id, nullptr)) << "placement " << placement;
  }
}

TEST_F(OverlayTest, objects_come_and_views_change_from_many_threads) {
  std::atomic<bool> stop{false};
  std::thread adding([&] {
    for (int i = 0; !stop; ++i) {
      QTD::PROPERTIES list = In(i % 2 ? "img" : "win");
      list.Set("objectID", "object" + std::to_string(i % 7));
      window->overlayRect(nullptr, 400, 300, 10, 10, &list);
      window->overlayText(nullptr, "${image.id}", i % 10, i % 3 ? 5 : -1, nullptr);
      if (i % 20 == 0) window->Objects().clear();
      window->update();
    }
  });
  std::thread viewing([&] {
    for (int i = 0; !stop; ++i) {
      window->Screen()->setCenter(0.3 + 0.01 * (i % 40), 0.5);
      window->Screen()->zoom(i % 2, -1, false);
      window->update();
    }
  });
  for (int round = 0; round < 100; ++round) {
    window->setImage(round % 5 ? picture.Record() : nullptr, true);
    Settle();
  }
  stop = true;
  adding.join();
  viewing.join();

  window->setImage(picture.Record(), true);
  window->Objects().clear();
  const std::string id = Rect(400, 300, 10, 10, In("img"));
  window->Screen()->setScale(1.0);
  SetCenter(0.5, 0.5);
  Settle();
  EXPECT_TRUE((Box{200, 150, 10, 10}) == BoxOf(id));
}

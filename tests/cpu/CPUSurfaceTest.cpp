// Life and paint passes of CPUSurface; what it draws is tested beside it.
#include "cpu/screen/CPUSurface.h"

#include <QBackingStore>
#include <limits>
#include <thread>

#include "QTD/screen/SurfaceText.h"
#include "tests/cpu/CPUSurfaceFixture.h"

namespace {

using CPUSurfaceLife = CPUSurfaceFixture;

}  // namespace

TEST_F(CPUSurfaceLife, init_needs_a_list_with_a_living_window) {
  CPUSurface other;
  EXPECT_FALSE(other.init(nullptr));
  QTD::PROPERTIES none;
  EXPECT_FALSE(other.init(&none));
  std::string stale;
  {
    QWindow gone;
    stale = QTD::ToText(static_cast<const void*>(&gone));
  }
  none.Set("window", stale);
  EXPECT_FALSE(other.init(&none));
  EXPECT_FALSE(other.isValid());
}

TEST_F(CPUSurfaceLife, init_makes_the_native_window_that_a_backing_store_works_on) {
  QWindow young;
  young.resize(20, 10);
  list.Set("window", QTD::ToText(static_cast<const void*>(&young)));
  ASSERT_TRUE(surface.init(&list));
  EXPECT_NE(young.handle(), nullptr);
  EXPECT_TRUE(surface.begin(nullptr));
  surface.done();
}

TEST_F(CPUSurfaceLife, a_failed_init_gives_up_the_window_it_had) {
  EXPECT_TRUE(surface.isValid());
  EXPECT_FALSE(surface.init(nullptr));
  EXPECT_FALSE(surface.isValid());
  EXPECT_EQ(surface.Text(), nullptr);
}

TEST_F(CPUSurfaceLife, init_takes_size_and_area_from_the_window_and_writes_them_down) {
  EXPECT_EQ(surface.size.width, 120);
  EXPECT_EQ(surface.size.height, 90);
  EXPECT_EQ(surface.area.width, 120.0);
  EXPECT_EQ(surface.area.height, 90.0);
  EXPECT_EQ(surface.properties.GetString("size"), "120;90");
  EXPECT_EQ(surface.properties.GetString("area"), "0.000000;0.000000-120.000000;90.000000");
  EXPECT_EQ(surface.properties.GetPointer("window"), window.get());
  EXPECT_NE(surface.Text(), nullptr);
}

TEST_F(CPUSurfaceLife, init_lets_the_list_override_size_and_area) {
  list.Set("size.x", "70");
  list.Set("size.y", "60");
  list.Set("area.pos.x", "1.5");
  list.Set("area.pos.y", "-2");
  list.Set("area.dim.w", "30");
  list.Set("area.dim.h", "40.25");
  ASSERT_TRUE(surface.init(&list));
  EXPECT_EQ(surface.properties.GetString("size"), "70;60");
  EXPECT_EQ(surface.properties.GetString("area"), "1.500000;-2.000000-30.000000;40.250000");
  ASSERT_TRUE(surface.begin(nullptr));
  EXPECT_EQ(canvasSize(), QSize(120, 90));  // the backing store has the window's size
}

TEST_F(CPUSurfaceLife, a_position_that_is_not_given_is_zero_and_a_length_that_of_the_window) {
  list.Set("size.x", "70");
  list.Set("area.dim.h", "5");
  ASSERT_TRUE(surface.init(&list));
  EXPECT_EQ(surface.properties.GetString("size"), "70;90");
  EXPECT_EQ(surface.properties.GetString("area"), "0.000000;0.000000-120.000000;5.000000");
}

TEST_F(CPUSurfaceLife, done_frees_text_and_store_and_answers_true) {
  EXPECT_TRUE(surface.done());
  EXPECT_EQ(surface.Text(), nullptr);
  EXPECT_FALSE(surface.isValid());
  EXPECT_FALSE(surface.begin(nullptr));
  surface.flush(nullptr);
  EXPECT_TRUE(surface.done());
}

TEST_F(CPUSurfaceLife, done_within_a_paint_pass_ends_it) {
  ASSERT_TRUE(surface.begin(nullptr));
  EXPECT_TRUE(surface.done());
  EXPECT_EQ(surface.properties.GetString("painter"), "0");
}

TEST_F(CPUSurfaceLife, begin_and_end_hand_the_painter_to_list_and_text) {
  EXPECT_FALSE(surface.Text()->isValid());
  ASSERT_TRUE(surface.begin(nullptr));
  ASSERT_NE(painter(), nullptr);
  EXPECT_TRUE(painter()->isActive());
  EXPECT_TRUE(surface.Text()->isValid());
  surface.end(nullptr, true);
  EXPECT_EQ(surface.properties.GetString("painter"), "0");
  EXPECT_FALSE(surface.Text()->isValid());
  surface.end(nullptr, true);  // a second end is nothing
  surface.flush(nullptr);
}

TEST_F(CPUSurfaceLife, begin_twice_ends_the_first_pass) {
  ASSERT_TRUE(surface.begin(nullptr));
  ASSERT_TRUE(surface.begin(nullptr));
  EXPECT_TRUE(painter()->isActive());
  surface.end(nullptr, false);
  EXPECT_EQ(surface.properties.GetString("painter"), "0");
}

TEST_F(CPUSurfaceLife, resize_brings_the_backing_store_along) {
  surface.resize(200, 50);
  EXPECT_EQ(surface.size.width, 200);
  EXPECT_EQ(surface.size.height, 50);
  ASSERT_TRUE(surface.begin(nullptr));
  EXPECT_EQ(canvasSize(), QSize(200, 50));
}

TEST_F(CPUSurfaceLife, resize_to_nothing_keeps_the_backing_store_and_is_not_valid) {
  surface.resize(0, 100);
  EXPECT_EQ(surface.size.width, 0);
  EXPECT_EQ(surface.size.height, 100);
  EXPECT_FALSE(surface.isValid());
  EXPECT_FALSE(surface.begin(nullptr));
  surface.flush(nullptr);
  surface.size = {120, 90};
  ASSERT_TRUE(surface.begin(nullptr));
  EXPECT_EQ(canvasSize(), QSize(120, 90));
}

TEST_F(CPUSurfaceLife, resize_within_a_paint_pass_waits_for_its_end) {
  beginBlank();
  const QImage* before = &canvas();
  surface.resize(300, 200);
  ASSERT_EQ(&canvas(), before);
  EXPECT_EQ(canvasSize(), QSize(120, 90));
  surface.fill(-1, -1, -1, -1, nullptr);
  EXPECT_EQ(at(119, 89), 0xff000000);
  surface.end(nullptr, false);
  ASSERT_TRUE(surface.begin(nullptr));
  EXPECT_EQ(canvasSize(), QSize(300, 200));
}

TEST_F(CPUSurfaceLife, resize_on_another_thread_takes_effect_at_the_next_pass) {
  std::thread([&] { surface.resize(64, 32); }).join();
  ASSERT_TRUE(surface.begin(nullptr));
  EXPECT_EQ(canvasSize(), QSize(64, 32));
}

TEST_F(CPUSurfaceLife, absurd_sizes_keep_the_backing_store) {
  struct Row {
    int width, height;
    bool painted;  // something of the surface lies in the store
  };
  constexpr int kMost = std::numeric_limits<int>::max(), kLeast = std::numeric_limits<int>::min();
  // 32767 is possible for each side, but not for both together.
  for (const Row& row : {Row{100000, 100000, true}, Row{1 << 30, 1 << 30, true}, Row{kMost, kMost, true},
                         Row{32767, 32767, true}, Row{kMost, 1, true}, Row{-1, -1, false},
                         Row{-100000, -100000, false}, Row{-1, kMost, false}, Row{kLeast, kLeast, false}}) {
    beginBlank();
    surface.end(nullptr, false);
    surface.resize(row.width, row.height);
    EXPECT_TRUE(surface.isValid());
    ASSERT_EQ(surface.begin(nullptr), row.painted) << row.width << "x" << row.height;
    if (row.painted) {
      EXPECT_EQ(canvasSize(), QSize(120, 90)) << row.width << "x" << row.height;
      surface.fill(-1, -1, -1, -1, nullptr);
      EXPECT_EQ(at(0, 0), 0xff000000);
      EXPECT_EQ(at(119, 0), 0xff000000);
      EXPECT_EQ(at(119, 89), row.height == 1 ? kBlank : 0xff000000);
      surface.end(nullptr, false);
    }
    surface.flush(nullptr);
    surface.resize(120, 90);
  }
}

TEST_F(CPUSurfaceLife, outlives_its_window) {
  ASSERT_TRUE(surface.begin(nullptr));
  surface.end(nullptr, false);
  window.reset();
  EXPECT_FALSE(surface.isValid());
  EXPECT_FALSE(surface.begin(nullptr));
  surface.flush(nullptr);
  surface.resize(10, 10);
  EXPECT_TRUE(surface.done());
}

TEST_F(CPUSurfaceLife, a_window_deleted_within_a_pass_takes_the_store_along) {
  const ColorValue white(0xFFFFFF);
  beginBlank();
  window.reset();
  surface.fill(-1, -1, -1, -1, &white);  // the pixels are still there
  EXPECT_EQ(at(119, 89), 0xffffffff);
  surface.resize(40, 30);
  surface.end(nullptr, true);
  EXPECT_EQ(surface.properties.GetString("painter"), "0");
  EXPECT_NE(surface.describe("").find("[(nil)/(nil)]"), std::string::npos);
  surface.flush(nullptr);
  surface.end(nullptr, true);
  EXPECT_FALSE(surface.begin(nullptr));
  EXPECT_TRUE(surface.done());
}

TEST_F(CPUSurfaceLife, a_window_deleted_within_a_pass_can_be_followed_by_another) {
  beginBlank();
  window = std::make_unique<QWindow>();
  window->resize(20, 10);
  list.Set("window", QTD::ToText(static_cast<const void*>(window.get())));
  ASSERT_TRUE(surface.init(&list));
  EXPECT_TRUE(surface.begin(nullptr));
  surface.end(nullptr, false);
}

TEST_F(CPUSurfaceLife, describes_itself_with_store_and_painter) {
  const std::string base = "x (size=120;90; area=0.000000;0.000000-120.000000;90.000000) [0x";
  const std::string idle = surface.describe("x");
  EXPECT_EQ(idle.substr(0, base.size()), base);
  EXPECT_NE(idle.find("/(nil)]"), std::string::npos);
  ASSERT_TRUE(surface.begin(nullptr));
  const std::string tail = "/" + QTD::ToText(static_cast<const void*>(painter())) + "]";
  const std::string busy = surface.describe("");
  EXPECT_EQ(busy.substr(0, 6), "(size=");
  EXPECT_EQ(busy.substr(busy.size() - tail.size()), tail);
}

TEST(CPUSurface, without_a_window_answers_false_and_draws_nothing) {
  CPUSurface surface;
  const ColorValue color;
  const QTD::RectD rect{0, 0, 1, 1};
  EXPECT_FALSE(surface.isValid());
  EXPECT_FALSE(surface.begin(nullptr));
  surface.resize(10, 10);
  surface.polyline({{0, 0}, {1, 1}}, &color, 1, 0);
  surface.line(0, 0, 1, 1, &color, 1, 0);
  surface.rect(0, 0, 1, 1, &color, 1, 0);
  surface.fill(0, 0, 1, 1, &color);
  surface.image(nullptr, &rect, &rect);
  surface.text("text", 0, 0, "", &color);
  surface.end(nullptr, true);
  surface.flush(nullptr);
  EXPECT_EQ(surface.describe(nullptr),
            "(size=10;10; area=0.000000;0.000000-0.000000;0.000000) [(nil)/(nil)]");
}

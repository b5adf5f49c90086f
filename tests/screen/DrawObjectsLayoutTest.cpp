// Where placed texts stand.
#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>
#include <string>

#include "tests/screen/DrawObjectsFixture.h"

namespace {

// A view of 640 x 480 and a text of 13 x 15, which takes up 24 x 16.
struct Laid {
  explicit Laid(int viewX = 0, int viewY = 0) {
    store.setSurface(&surface);
    store.setViewport(viewX, viewY, 640, 480);
  }
  std::string Place(int code, bool adjust = false) {
    std::string id = "a";
    QTD::PROPERTIES list = List({{"x", "111"}, {"y", "222"}, {"adjust", adjust ? "1" : "0"}});
    store.setPlacedText(id, code, "text", &list);
    return store.value("a", "x") + "," + store.value("a", "y");
  }

  PaintedSurface surface;
  Store store;
};

}  // namespace

TEST(Layout, rounds_a_text_up_to_whole_blocks) {
  const int rows[][4] = {{13, 15, 24, 16}, {0, 0, 8, 2},     {1, 1, 8, 2},     {4, 2, 8, 4},
                         {5, 3, 16, 4},    {12, 16, 16, 18}, {20, 17, 24, 18}, {21, 18, 32, 20}};
  for (const auto& row : rows) {
    Laid laid;
    laid.surface.engine->textWidth = row[0];
    laid.surface.engine->textHeight = row[1];
    laid.Place(1);
    EXPECT_EQ(laid.store.value("a", "w"), std::to_string(row[2])) << row[0];
    EXPECT_EQ(laid.store.value("a", "h"), std::to_string(row[3])) << row[1];
  }
}

TEST(Layout, follows_the_placement_codes) {
  Laid laid;
  EXPECT_EQ(laid.Place(1), "4,2");
  EXPECT_EQ(laid.Place(2), "4,462");    // 480 - 2 - 16
  EXPECT_EQ(laid.Place(3), "612,462");  // 640 - 24 - 4
  EXPECT_EQ(laid.Place(4), "612,2");
  EXPECT_EQ(laid.Place(5), "308,216");  // (640 - 24) / 2, (480 - 16) / 2 - 16
  EXPECT_EQ(laid.Place(7), "308,462");
  EXPECT_EQ(laid.Place(9), "308,2");
  for (int code : {0, 6, 8, 10, 1000}) EXPECT_EQ(laid.Place(code), "111,206") << code;
}

TEST(Layout, reads_no_position_of_a_text_that_it_places) {
  Laid laid;
  for (int code : {1, 2, 3, 4, 5, 7, 9}) {
    std::string id = "a";
    QTD::PROPERTIES list = List({{"x", "abc"}, {"y", "def"}});
    EXPECT_NO_THROW(laid.store.setPlacedText(id, code, "t", &list)) << code;
    EXPECT_NO_THROW(std::stoi(laid.store.value("a", "x"))) << code;
    EXPECT_NO_THROW(std::stoi(laid.store.value("a", "y"))) << code;
  }
  std::string id = "b";
  QTD::PROPERTIES list = List({{"x", "abc"}});
  EXPECT_THROW(laid.store.setPlacedText(id, 6, "t", &list), std::invalid_argument) << "a place of its own";
}

TEST(Layout, leaves_a_text_without_a_placement) {
  Laid laid;
  EXPECT_EQ(laid.Place(-1), "111,222");
  EXPECT_EQ(laid.store.value("a", "w"), "absent");
  EXPECT_TRUE(laid.surface.engine->measured.empty());
}

TEST(Layout, lays_out_texts_only_and_by_their_exact_type) {
  Laid laid;
  for (const char* type : {"rect", "TEXT", "marker", ""}) {
    QTD::PROPERTIES object =
        List({{"type", type}, {"placement", "3"}, {"x", "7"}, {"y", "8"}, {"text", "t"}});
    int x = 0, y = 0;
    EXPECT_TRUE(laid.store.layout(&object, &x, &y));
    EXPECT_EQ(x, 7) << type;
    EXPECT_EQ(y, 8) << type;
  }
  EXPECT_FALSE(laid.store.layout(nullptr, nullptr, nullptr));
}

TEST(Layout, answers_the_position) {
  Laid laid;
  QTD::PROPERTIES object = List({{"type", "text"}, {"placement", "3"}, {"text", "t"}});
  int x = 0, y = 0;
  EXPECT_TRUE(laid.store.layout(&object, &x, &y));
  EXPECT_EQ(x, 612);
  EXPECT_EQ(y, 462);
  EXPECT_TRUE(laid.store.layout(&object, nullptr, nullptr));
}

TEST(Layout, needs_a_surface_with_a_text_object) {
  Store store;
  std::string id = "a";
  EXPECT_TRUE(store.setPlacedText(id, 3, "text", nullptr));
  EXPECT_EQ(store.value("a", "w"), "absent");
  QTDSurface bare;
  store.setSurface(&bare);
  store.place(nullptr, true);
  EXPECT_EQ(store.value("a", "w"), "absent");
}

TEST(Layout, measures_the_expanded_text_in_the_objects_font) {
  Laid laid;
  laid.Place(1);
  EXPECT_EQ(laid.surface.engine->measured.back(), "default:text");
  laid.store.Defaults().Set("text.font", "bold");
  laid.store.place(nullptr, true);
  EXPECT_EQ(laid.surface.engine->measured.back(), "bold:text");
  QTD::PROPERTIES list = List({{"text.font", "large"}});
  std::string id = "b";
  laid.store.setPlacedText(id, 1, "a${br}b${unknown}", &list);
  EXPECT_EQ(laid.surface.engine->measured.back(), "large:a\nb");
  EXPECT_EQ(laid.store.value("b", "text"), "a${br}b${unknown}") << "the template stays";
}

TEST(Layout, follows_the_viewport) {
  Laid laid;
  laid.Place(3);
  laid.store.setViewport(0, 0, 320, 240);
  EXPECT_EQ(laid.store.value("a", "x"), "292");
  EXPECT_EQ(laid.store.value("a", "y"), "222");
}

TEST(Layout, is_corrected_for_a_negative_view_only_when_asked_to) {
  Laid plain(-100, -50);
  EXPECT_EQ(plain.Place(1, false), "4,2");
  EXPECT_EQ(plain.Place(3, false), "612,462");

  Laid laid(-100, -50);
  laid.surface.setArea({0, 0, 2000, 2000});
  EXPECT_EQ(laid.Place(1, true), "104,52");   // 4 + 100, 18 + 50 - 16
  EXPECT_EQ(laid.Place(2, true), "104,462");  // the bottom lies above the picture's
  EXPECT_EQ(laid.Place(3, true), "72,462");   // 612 - (-100 + 640)
  EXPECT_EQ(laid.Place(4, true), "72,52");
  EXPECT_EQ(laid.Place(5, true), "308,216");   // never corrected
  EXPECT_EQ(laid.Place(7, true), "-232,462");  // 308 - 540: the correction of a right-hand text
  EXPECT_EQ(laid.Place(6, true), "111,206");
}

TEST(Layout, keeps_a_bottom_text_on_the_picture) {
  Laid laid(-100, -50);
  laid.surface.setArea({0, 10.5, 640, 300.9});
  // The picture ends at 311.4; less 2 and truncated that is 309. The text's bottom of 478 lies below it.
  EXPECT_EQ(laid.Place(2, true), "104,343");  // 309 + 50 - 16
  EXPECT_EQ(laid.Place(3, true), "72,343");
  EXPECT_EQ(laid.Place(7, true), "-232,343");
  EXPECT_EQ(laid.Place(2, false), "4,462");
}

TEST(Layout, corrects_each_axis_for_its_own_negative_position) {
  Laid across(-100, 0);
  EXPECT_EQ(across.Place(1, true), "104,2");
  Laid down(0, -50);
  EXPECT_EQ(down.Place(1, true), "4,52");
  Laid positive(100, 50);
  EXPECT_EQ(positive.Place(1, true), "4,2");
  EXPECT_EQ(positive.Place(9, true), "308,2");
}

TEST(Layout, always_corrects_the_top_centre) {
  Laid laid(-100, -50);
  EXPECT_EQ(laid.Place(9, false), "408,52");
  EXPECT_EQ(laid.Place(9, true), "408,52");
}

TEST(Layout, passes_over_objects_that_cannot_be_read) {
  Laid laid;
  std::string id = "z";
  laid.store.setPlacedText(id, 3, "text", nullptr);
  QTD::PROPERTIES bad = List({{"objectID", "a"}, {"type", "text"}, {"placement", "no number"}});
  EXPECT_NO_THROW(laid.store.add(&bad, true));
  EXPECT_NO_THROW(laid.store.setViewport(0, 0, 320, 240));
  EXPECT_EQ(laid.store.value("z", "x"), "292") << "the objects behind it are laid out";
}

TEST(Layout, stands_the_ends_of_the_number_range) {
  Laid laid;
  laid.surface.setArea({1e300, 1e300, 1e300, 1e300});
  for (int extreme : {INT_MAX, INT_MIN}) {
    for (int size : {INT_MAX, INT_MIN}) {
      laid.surface.engine->textWidth = size;
      laid.surface.engine->textHeight = size;
      laid.store.setViewport(extreme, extreme, extreme, extreme);
      for (int code = 0; code < 11; ++code) {
        EXPECT_NE(laid.Place(code, true), "");
        EXPECT_NE(laid.store.value("a", "w"), "absent");
      }
    }
  }
}

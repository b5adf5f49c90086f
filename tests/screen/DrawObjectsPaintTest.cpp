// Painting the objects of a store.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "ZynImage.h"
#include "tests/screen/DrawObjectsFixture.h"

namespace {

using Log = std::vector<std::string>;

void AddText(Store& store, const std::string& name, std::vector<std::pair<const char*, const char*>> items) {
  QTD::PROPERTIES list = List(items);
  std::string id = name;
  store.setText(id, list.GetInt("x", "10"), list.GetInt("y", "20"), list.GetString("text", "t").c_str(),
                &list);
}

}  // namespace

TEST(Paint, needs_a_surface_and_objects) {
  Store store;
  PaintedSurface surface;
  store.draw(nullptr, nullptr);
  store.draw(&surface, nullptr);
  EXPECT_TRUE(surface.log.empty());
  AddText(store, "a", {});
  store.draw(nullptr, nullptr);
  store.setSurface(&surface);
  store.draw(nullptr, nullptr);
  EXPECT_EQ(surface.log, (Log{"text 10 20 default t"}));
  PaintedSurface other;
  store.draw(&other, nullptr);
  EXPECT_EQ(other.log.size(), 1u);
  EXPECT_EQ(surface.log.size(), 1u);
}

TEST(Paint, goes_by_the_order_of_identifiers) {
  Store store;
  PaintedSurface surface;
  AddText(store, "c", {{"text", "third"}});
  AddText(store, "a", {{"text", "first"}});
  AddText(store, "b", {{"text", "second"}});
  store.draw(&surface, nullptr);
  EXPECT_EQ(surface.log,
            (Log{"text 10 20 default first", "text 10 20 default second", "text 10 20 default third"}));
}

TEST(Paint, draws_a_rectangle_with_the_attributes_of_store_and_object) {
  Store store;
  PaintedSurface surface;
  const QTD::RectI rect{1, 2, 30, 40};
  std::string id = "a";
  store.setRect(id, &rect, nullptr);
  store.Defaults().Set("line.width", "5");
  store.Defaults().Set("line.clr", "255");
  store.draw(&surface, nullptr);
  QTD::PROPERTIES own = List({{"line.width", "2"}, {"line.clr", "65280"}});
  store.setRect(id, &rect, &own);
  store.draw(&surface, nullptr);
  EXPECT_EQ(surface.log, (Log{"rect 1 2 30 40 5 0", "rect 1 2 30 40 2 0"}));
  EXPECT_EQ(surface.colors.at(0).red, 255);
  EXPECT_EQ(surface.colors.at(0).green, 0);
  EXPECT_EQ(surface.colors.at(1).red, 0);
  EXPECT_EQ(surface.colors.at(1).green, 255);
}

TEST(Paint, draws_a_text_expanded_in_its_font_and_colour) {
  Store store;
  PaintedSurface surface;
  AddText(store, "a",
          {{"text", "n ${image.id}"}, {"text.font", "large"}, {"text.clr", "1122867"}});  // 0x112233
  ZynImage image{};
  image.imageID = 42;
  store.setImage(&image);
  store.draw(&surface, nullptr);
  EXPECT_EQ(surface.log, (Log{"text 10 20 large n 00000042"}));
  EXPECT_EQ(surface.colors.at(0).red, 0x33);
  EXPECT_EQ(surface.colors.at(0).green, 0x22);
  EXPECT_EQ(surface.colors.at(0).blue, 0x11);
  EXPECT_EQ(surface.colors.at(0).mode, 1);
}

TEST(Paint, compares_types_without_regard_to_case) {
  Store store;
  PaintedSurface surface;
  QTD::PROPERTIES text = List({{"objectID", "a"}, {"type", "TeXt"}, {"text", "t"}});
  QTD::PROPERTIES rect = List({{"objectID", "b"}, {"type", "RECT"}});
  store.add(&text, true);
  store.add(&rect, true);
  store.draw(&surface, nullptr);
  EXPECT_EQ(surface.log, (Log{"text 0 0 default t", "rect 0 0 0 0 1 0"}));
}

TEST(Paint, keeps_other_types_from_the_surface) {
  Store store;
  PaintedSurface surface;
  std::string line, marker;
  store.setLine(line, 1, 2, 3, 4, nullptr);
  store.setMarker(marker, 1, 2, nullptr);
  for (const char* type : {"circle", "texts", "", "unknown"}) {
    QTD::PROPERTIES object = List({{"objectID", type}, {"type", type}, {"back.mode", "1"}});
    store.add(&object, true);
  }
  store.draw(&surface, nullptr);
  EXPECT_EQ(store.count(), 6);
  EXPECT_TRUE(surface.log.empty());
}

TEST(Paint, fills_a_band_above_the_text) {
  const struct {
    const char* mode;
    int level;
  } rows[] = {{"1", 255}, {"2", 0}, {"3", 128}, {"-1", 128}, {"99", 128}};
  for (const auto& row : rows) {
    Store store;
    PaintedSurface surface;
    AddText(store, "a", {{"back.mode", row.mode}, {"w", "24"}, {"h", "16"}});
    store.draw(&surface, nullptr);
    EXPECT_EQ(surface.log, (Log{"fill 8 4 28 16", "text 10 20 default t"})) << row.mode;
    EXPECT_EQ(surface.colors.at(0).red, row.level) << row.mode;
    EXPECT_EQ(surface.colors.at(0).green, row.level) << row.mode;
    EXPECT_EQ(surface.colors.at(0).blue, row.level) << row.mode;
  }
}

TEST(Paint, widens_the_band_by_four_even_where_its_left_is_held) {
  Store store;
  PaintedSurface surface;
  store.Defaults().Set("back.mode", "2");
  AddText(store, "a", {{"x", "1"}, {"w", "24"}, {"h", "16"}});
  store.draw(&surface, nullptr);
  EXPECT_EQ(surface.log.at(0), "fill 0 4 28 16");
}

TEST(Paint, brings_colours_to_the_depth_of_the_pass) {
  Store store;
  PaintedSurface surface;
  AddText(store, "a", {{"text.clr", "8454143"}});  // 0x80FFFF
  QTD::PROPERTIES pass = List({{"color.depth", "12"}});
  store.draw(&surface, &pass);
  const ColorValue& color = surface.colors.at(0);
  EXPECT_EQ(color.depth, 12);
  EXPECT_EQ(color.range, 4096);
  EXPECT_EQ(color.red, 4095);
  EXPECT_EQ(color.blue, 2048);
  EXPECT_EQ(color.redPart, 1.0);
  EXPECT_EQ(color.bluePart, 0.5);

  QTD::PROPERTIES other = List({{"x", "1"}});
  QTD::PROPERTIES unreadable = List({{"color.depth", "deep"}});
  store.draw(&surface, &other);
  EXPECT_EQ(surface.colors.at(1).range, 256);
  store.draw(&surface, &unreadable);
  EXPECT_EQ(surface.colors.at(2).range, 256);
}

TEST(Paint, replaces_colours_by_their_luminance_for_a_mono_owner) {
  Store store;
  PaintedSurface surface;
  store.mono = 1;
  AddText(store, "a", {{"text.clr", "65280"}});
  const QTD::RectI rect;
  std::string id = "b";
  QTD::PROPERTIES white = List({{"line.clr", "16777215"}});
  store.setRect(id, &rect, &white);
  store.draw(&surface, nullptr);
  EXPECT_EQ(surface.colors.at(0).red, 156);  // 0.6094 * 256 = 156.0064
  EXPECT_EQ(surface.colors.at(0).green, 156);
  EXPECT_EQ(surface.colors.at(0).blue, 156);
  EXPECT_EQ(surface.colors.at(1).red, 255);
}

TEST(Paint, takes_the_lower_24_bits_of_any_colour_number) {
  Store store;
  PaintedSurface surface;
  AddText(store, "a", {{"text.clr", "4278190335"}});  // 0xFF0000FF
  AddText(store, "b", {{"text.clr", "-1"}});
  store.draw(&surface, nullptr);
  EXPECT_EQ(surface.colors.at(0).red, 255);
  EXPECT_EQ(surface.colors.at(0).blue, 0);
  EXPECT_EQ(surface.colors.at(1).blue, 255);
}

TEST(Paint, passes_over_objects_that_cannot_be_read) {
  Store store;
  PaintedSurface surface;
  AddText(store, "a", {{"text.clr", "red"}});
  AddText(store, "b", {{"back.mode", "1"}, {"w", "99999999999999"}});
  AddText(store, "c", {});
  EXPECT_NO_THROW(store.draw(&surface, nullptr));
  EXPECT_EQ(surface.log, (Log{"text 10 20 default t"}));
}

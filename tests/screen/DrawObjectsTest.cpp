// Keeping objects: identifiers, storing, copying out, deleting, locks.
#include "QTD/screen/DrawObjects.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "tests/screen/DrawObjectsFixture.h"

namespace {

std::string Id(const Store& store, const char* serial) {
  char text[64];
  std::snprintf(text, sizeof text, "%s@%p", serial, static_cast<const void*>(&store));
  return text;
}

}  // namespace

TEST(DrawObjects, begins_empty_with_the_defaults) {
  Store store;
  EXPECT_EQ(store.count(), 0);
  EXPECT_EQ(store.Defaults().GetString("back.mode"), "0");
  EXPECT_EQ(store.Defaults().GetString("line.clr"), "0");
  EXPECT_EQ(store.Defaults().GetString("line.width"), "1");
  EXPECT_EQ(store.Defaults().GetString("text.clr"), "0");
  EXPECT_EQ(store.Defaults().GetString("text.font"), "default");
  ASSERT_NE(store.Parser(), nullptr);
  EXPECT_EQ(store.Parser()->name, "QTDImageParser");
  EXPECT_EQ(store.color.red, 116);
  EXPECT_EQ(store.color.green, 12);
  EXPECT_EQ(store.color.blue, 24);
  EXPECT_EQ(store.mono, 0);
}

TEST(DrawObjects, makes_identifiers_of_serial_and_address) {
  Store store;
  EXPECT_EQ(store.newId(""), Id(store, "01001"));
  EXPECT_EQ(store.newId("mine"), "mine");
  EXPECT_EQ(store.newId(""), Id(store, "01002"));
  store.serial = 99999;
  EXPECT_EQ(store.newId(""), Id(store, "100000"));
  store.serial = 999998;
  EXPECT_EQ(store.newId(""), Id(store, "999999"));
  EXPECT_EQ(store.newId(""), Id(store, "00001"));
}

TEST(DrawObjects, sorts_the_first_serial_of_a_new_round_first) {
  Store store;
  store.serial = 999998;
  std::string last, first;
  const QTD::RectI rect;
  store.setRect(last, &rect, nullptr);
  store.setRect(first, &rect, nullptr);
  EXPECT_EQ(store.idAt(0), first);
  EXPECT_EQ(first.substr(0, 6), "00001@");
  EXPECT_EQ(store.idAt(1), last);
}

TEST(DrawObjects, stores_a_text_at_a_position) {
  Store store;
  QTD::PROPERTIES list = List({{"text.font", "large"}, {"x", "99"}, {"cs", "img"}});
  std::string id = "t";
  EXPECT_TRUE(store.setText(id, 3, -4, "hello", &list));
  EXPECT_EQ(id, "t");
  EXPECT_EQ(store.value("t", "objectID"), "t");
  EXPECT_EQ(store.value("t", "type"), "text");
  EXPECT_EQ(store.value("t", "x"), "3");
  EXPECT_EQ(store.value("t", "y"), "-4");
  EXPECT_EQ(store.value("t", "text"), "hello");
  EXPECT_EQ(store.value("t", "text.font"), "large");
  EXPECT_EQ(store.value("t", "cs"), "img");
  EXPECT_EQ(store.value("t", "w"), "absent") << "a text without a placement is not measured";
  EXPECT_EQ(list.GetString("x"), "99") << "the caller's list stays";
}

TEST(DrawObjects, stores_a_text_at_a_placement) {
  Store store;
  std::string id;
  EXPECT_TRUE(store.setPlacedText(id, 7, "hello", nullptr));
  EXPECT_EQ(id, Id(store, "01001"));
  EXPECT_EQ(store.value(id, "placement"), "7");
  EXPECT_EQ(store.value(id, "type"), "text");
  EXPECT_EQ(store.value(id, "text"), "hello");
}

TEST(DrawObjects, stores_rectangles_lines_and_markers) {
  Store store;
  const QTD::RectI rect{1, 2, 3, 4};
  std::string r = "r", l = "l", m = "m";
  EXPECT_TRUE(store.setRect(r, &rect, nullptr));
  EXPECT_TRUE(store.setLine(l, -1, 6, 7, 8, nullptr));
  EXPECT_TRUE(store.setMarker(m, 9, -1, nullptr));
  EXPECT_EQ(store.value("r", "type"), "rect");
  EXPECT_EQ(store.value("r", "x") + store.value("r", "y") + store.value("r", "w") + store.value("r", "h"),
            "1234");
  EXPECT_EQ(store.value("l", "type"), "line");
  EXPECT_EQ(store.value("l", "x"), "-1");
  EXPECT_EQ(store.value("l", "y"), "6");
  EXPECT_EQ(store.value("l", "x2"), "7");
  EXPECT_EQ(store.value("l", "y2"), "8");
  EXPECT_EQ(store.value("m", "type"), "marker");
  EXPECT_EQ(store.value("m", "x"), "9");
  EXPECT_EQ(store.value("m", "y"), "-1");
  EXPECT_EQ(store.count(), 3);
}

TEST(DrawObjects, replaces_an_object_of_the_same_identifier) {
  Store store;
  QTD::PROPERTIES list = List({{"text.clr", "5"}});
  std::string id = "t";
  store.setText(id, 1, 1, "old", &list);
  store.setText(id, 2, 2, "new", nullptr);
  EXPECT_EQ(store.count(), 1);
  EXPECT_EQ(store.value("t", "text"), "new");
  EXPECT_EQ(store.value("t", "text.clr"), "absent");
}

TEST(DrawObjects, deletes_when_the_payload_is_missing) {
  Store store;
  const QTD::RectI rect;
  std::string id;
  const auto put = [&] {
    id = "x";
    store.setRect(id, &rect, nullptr);
  };
  put();
  EXPECT_TRUE(store.setText(id, 0, 0, nullptr, nullptr));
  EXPECT_EQ(store.count(), 0);
  EXPECT_FALSE(store.setText(id, 0, 0, nullptr, nullptr)) << "it is gone already";
  put();
  EXPECT_TRUE(store.setPlacedText(id, 1, nullptr, nullptr));
  put();
  EXPECT_TRUE(store.setRect(id, nullptr, nullptr));
  put();
  EXPECT_TRUE(store.setLine(id, -1, -1, 5, 5, nullptr));
  put();
  EXPECT_TRUE(store.setMarker(id, -1, -1, nullptr));
  EXPECT_EQ(store.count(), 0);
}

TEST(DrawObjects, does_nothing_for_neither_payload_nor_identifier) {
  Store store;
  const QTD::RectI rect;
  std::string kept = "x", id;
  store.setRect(kept, &rect, nullptr);
  EXPECT_FALSE(store.setText(id, 0, 0, nullptr, nullptr));
  EXPECT_FALSE(store.setPlacedText(id, 0, nullptr, nullptr));
  EXPECT_FALSE(store.setRect(id, nullptr, nullptr));
  EXPECT_FALSE(store.setLine(id, -1, -1, 0, 0, nullptr));
  EXPECT_FALSE(store.setMarker(id, -1, -1, nullptr));
  EXPECT_EQ(id, "");
  EXPECT_EQ(store.count(), 1);
}

TEST(DrawObjects, keeps_a_known_object_unless_it_may_be_replaced) {
  Store store;
  QTD::PROPERTIES old = List({{"objectID", "a"}, {"text", "old"}});
  QTD::PROPERTIES fresh = List({{"objectID", "a"}, {"text", "new"}});
  EXPECT_TRUE(store.store(&old, false, true));
  EXPECT_FALSE(store.store(&fresh, false, true));
  EXPECT_EQ(store.value("a", "text"), "old");
  EXPECT_TRUE(store.store(&fresh, true, false));
  EXPECT_EQ(store.value("a", "text"), "new");
  EXPECT_EQ(store.count(), 1);
  EXPECT_TRUE(store.store(store.find("a", true), true, true)) << "an object stored over itself";
  EXPECT_EQ(store.value("a", "text"), "new");
}

TEST(DrawObjects, answers_false_for_a_list_without_identifier) {
  Store store;
  QTD::PROPERTIES list = List({{"text", "x"}});
  EXPECT_FALSE(store.store(&list, true, true));
  EXPECT_EQ(store.value("", "text"), "x");
  EXPECT_FALSE(store.erase(""));
  EXPECT_EQ(store.count(), 1);
  EXPECT_FALSE(store.store(nullptr, true, true));
  EXPECT_FALSE(store.add(nullptr, true));
}

TEST(DrawObjects, lays_out_what_it_adds) {
  Store store;
  PaintedSurface surface;
  store.setSurface(&surface);
  store.setViewport(0, 0, 640, 480);
  QTD::PROPERTIES list = List({{"objectID", "a"}, {"type", "text"}, {"placement", "1"}, {"text", "x"}});
  EXPECT_TRUE(store.add(&list, false));
  EXPECT_EQ(store.value("a", "w"), "24");
  EXPECT_FALSE(store.add(&list, false));
  EXPECT_TRUE(store.add(&list, true));
}

TEST(DrawObjects, removes_objects) {
  Store store;
  const QTD::RectI rect;
  std::string a = "a", b = "b";
  store.setRect(a, &rect, nullptr);
  store.setRect(b, &rect, nullptr);
  EXPECT_TRUE(store.remove("a"));
  EXPECT_FALSE(store.remove("a"));
  EXPECT_TRUE(store.erase("b"));
  EXPECT_FALSE(store.erase("b"));
  EXPECT_FALSE(store.erase(""));
  EXPECT_FALSE(store.remove(""));
}

TEST(DrawObjects, clears_and_resets) {
  Store store;
  const QTD::RectI rect;
  std::string id;
  store.setRect(id, &rect, nullptr);
  store.clear();
  EXPECT_EQ(store.count(), 0);
  EXPECT_EQ(store.color.red, 116);
  id = "";
  store.setRect(id, &rect, nullptr);
  store.reset();
  EXPECT_EQ(store.count(), 0);
  EXPECT_EQ(store.color.red, 196);
  EXPECT_EQ(store.color.green, 0);
  EXPECT_EQ(store.color.blue, 0);
}

TEST(DrawObjects, merges_an_update_and_lays_out_again) {
  Store store;
  PaintedSurface surface;
  store.setSurface(&surface);
  store.setViewport(0, 0, 640, 480);
  std::string id = "a";
  store.setPlacedText(id, 3, "x", nullptr);
  EXPECT_EQ(store.value("a", "x"), "612") << "640 - 24 - 4";
  surface.engine->textWidth = 50;  // 7 blocks of 8
  QTD::PROPERTIES list = List({{"text", "longer"}, {"text.clr", "7"}});
  store.update("a", &list);
  EXPECT_EQ(store.value("a", "text"), "longer");
  EXPECT_EQ(store.value("a", "text.clr"), "7");
  EXPECT_EQ(store.value("a", "x"), "580") << "640 - 56 - 4";
  store.update("unknown", &list);
  store.update("a", nullptr);
  EXPECT_EQ(store.count(), 1);
}

TEST(DrawObjects, merges_into_an_object_that_is_there_and_makes_none) {
  Store store;
  PaintedSurface surface;
  store.setSurface(&surface);
  store.setViewport(0, 0, 640, 480);
  std::string id = "a";
  store.setPlacedText(id, 3, "x", nullptr);
  const size_t measured = surface.engine->measured.size();
  QTD::PROPERTIES list = List({{"x", "5"}, {"text.clr", "7"}});
  EXPECT_TRUE(store.merge("a", &list));
  EXPECT_EQ(store.value("a", "x"), "5") << "not laid out again";
  EXPECT_EQ(store.value("a", "text.clr"), "7");
  EXPECT_EQ(store.value("a", "text"), "x");
  EXPECT_EQ(surface.engine->measured.size(), measured);
  EXPECT_TRUE(store.merge("a", nullptr));
  EXPECT_FALSE(store.merge("b", &list));
  EXPECT_FALSE(store.merge("", &list));
  EXPECT_EQ(store.count(), 1);
}

TEST(DrawObjects, copies_objects_out) {
  Store store;
  const QTD::RectI rect{1, 2, 3, 4};
  std::string a = "a", b = "b";
  store.setRect(b, &rect, nullptr);
  store.setRect(a, &rect, nullptr);
  QTD::PROPERTIES list = List({{"rest", "of before"}});
  EXPECT_TRUE(store.get("a", &list));
  EXPECT_EQ(list.GetString("objectID"), "a");
  EXPECT_FALSE(list.Has("rest"));
  EXPECT_FALSE(store.get("c", &list));
  EXPECT_EQ(list.GetString("objectID"), "a");
  EXPECT_TRUE(store.get("a", nullptr));
  EXPECT_TRUE(store.getAt(1, &list));
  EXPECT_EQ(list.GetString("objectID"), "b");
  EXPECT_FALSE(store.getAt(2, &list));
  EXPECT_FALSE(store.getAt(-1, &list));
  EXPECT_EQ(store.idAt(0), "a");
  EXPECT_EQ(store.idAt(2), "");
  EXPECT_EQ(store.ids(), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(store.idAt(-1), "");
  ASSERT_NE(store.find("a", true), nullptr);
  EXPECT_EQ(store.find("a", false)->GetString("w"), "3");
  EXPECT_EQ(store.find("c", true), nullptr);
}

TEST(DrawObjects, waits_for_the_draw_lock_without_blocking_on_it) {
  Store store;
  std::atomic<bool> stored{false};
  std::thread other;
  {
    std::lock_guard<std::recursive_mutex> guard(store.drawLock);
    other = std::thread([&] {
      std::string id = "a";
      const QTD::RectI rect;
      store.setRect(id, &rect, nullptr);
      stored = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_FALSE(stored) << "nothing is stored while another thread draws";
  }
  other.join();
  EXPECT_TRUE(stored);
  EXPECT_EQ(store.count(), 1);
}

TEST(DrawObjects, stays_whole_when_hosts_write_while_the_window_paints) {
  Store store;
  PaintedSurface surface;
  store.setSurface(&surface);
  std::atomic<bool> stop{false};
  std::vector<std::thread> hosts;
  for (int t = 0; t < 3; ++t) {
    hosts.emplace_back([&, t] {
      for (int i = 0; i < 400; ++i) {
        std::string id = i % 4 == 0 ? "" : "object" + std::to_string((i + t) % 7);
        QTD::PROPERTIES list = List({{"text.clr", "255"}, {"cs", ""}});
        switch (i % 6) {
          case 0:
            store.setPlacedText(id, 1 + i % 9, "${br} ${unknown}", &list);
            break;
          case 1:
            store.setText(id, i, i, "text", &list);
            break;
          case 2:
            store.remove(id);
            break;
          case 3:
            store.update(id, &list);
            break;
          case 4:
            store.getAt(i % 5, &list);
            break;
          default:
            store.setText(id, i, i, i % 12 == 5 ? nullptr : "text", nullptr);
            break;
        }
        if (i % 100 == 99) store.clear();
      }
    });
  }
  std::thread resizer([&] {
    for (int i = 0; !stop; ++i) store.setViewport(-(i % 3), 0, 100 + i % 50, 100);
  });
  int passes = 0;
  for (; passes < 200; ++passes) {
    store.draw(&surface, nullptr);
    surface.log.clear();
    surface.colors.clear();
  }
  for (std::thread& host : hosts) host.join();
  stop = true;
  resizer.join();
  EXPECT_EQ(passes, 200);
  EXPECT_LE(store.count(), 3 * 100 + 7);
}

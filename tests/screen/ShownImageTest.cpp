// The picture whose values text templates show.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ZynImage.h"
#include "tests/screen/DrawObjectsFixture.h"

namespace {

struct Shown {
  Shown() {
    store.setSurface(&surface);
    store.setViewport(0, 0, 640, 480);
  }
  // What the store lays out for a template.
  std::string Text(const char* text) {
    std::string id = "a";
    store.setPlacedText(id, 1, text, nullptr);
    return surface.engine->measured.back();
  }
  const ZynImage* Held() {
    return static_cast<const ZynImage*>(store.Parser()->variables.GetPointer("image"));
  }

  PaintedSurface surface;
  Store store;
};

ZynImage Record(uint64_t id) {
  ZynImage record{};
  record.imageID = id;
  record.width = 64;
  record.height = 48;
  return record;
}

}  // namespace

TEST(ShownImage, stays_in_templates_as_it_was_when_it_was_set) {
  Shown shown;
  EXPECT_EQ(shown.Text("<${image.id}>"), "default:<>");
  ZynImage record = Record(41);
  shown.store.setImage(&record);
  record = Record(42);
  EXPECT_EQ(shown.Text("<${image.id}>"), "default:<00000041>") << "the owner may write into its record";
  EXPECT_EQ(shown.Text("${image.dims}"), "default:64x48");
  shown.store.setImage(&record);
  EXPECT_EQ(shown.Text("<${image.id}>"), "default:<00000042>");
}

TEST(ShownImage, is_taken_away_by_null) {
  Shown shown;
  const ZynImage record = Record(41);
  shown.store.setImage(&record);
  shown.store.setImage(nullptr);
  EXPECT_EQ(shown.Held(), nullptr);
  EXPECT_EQ(shown.store.Parser()->variables.GetString("image"), "(nil)");
  EXPECT_EQ(shown.Text("<${image.id}>"), "default:<>");
}

TEST(ShownImage, is_a_copy_without_pixels_under_its_own_address) {
  Shown shown;
  uint8_t pixel = 0;
  ZynImage record = Record(41);
  record.imageData = &pixel;
  record.ownedData = &pixel;
  record.attachments = &pixel;
  shown.store.setImage(&record);
  const ZynImage* held = shown.Held();
  ASSERT_NE(held, nullptr);
  EXPECT_NE(held, &record);
  char pointer[32];
  std::snprintf(pointer, sizeof pointer, "%p", static_cast<const void*>(held));
  EXPECT_EQ(shown.store.Parser()->variables.GetString("image"), pointer);
  EXPECT_EQ(held->imageID, 41u);
  EXPECT_EQ(held->imageData, nullptr);
  EXPECT_EQ(held->ownedData, nullptr);
  EXPECT_EQ(held->attachments, nullptr);
  EXPECT_EQ(record.imageData, &pixel);
}

TEST(ShownImage, waits_for_whoever_draws_or_lays_out) {
  for (std::recursive_mutex Store::*mutex : {&Store::lock, &Store::drawLock}) {
    Shown shown;
    const ZynImage record = Record(41);
    std::atomic<bool> set{false};
    std::thread other;
    {
      std::lock_guard<std::recursive_mutex> guard(shown.store.*mutex);
      other = std::thread([&] {
        shown.store.setImage(&record);
        set = true;
      });
      std::this_thread::sleep_for(std::chrono::milliseconds(30));
      EXPECT_FALSE(set);
    }
    other.join();
    EXPECT_TRUE(set);
  }
}

// The text engine looks at the draw lock from another thread while a text is laid out.
TEST(ShownImage, is_expanded_under_the_draw_lock) {
  class Watching : public FixedText {
   public:
    void measure(const char* font, const char* text, int* width, int* height) override {
      FixedText::measure(font, text, width, height);
      std::thread([this] {
        if (!store->drawLock.try_lock()) return;
        free = true;
        store->drawLock.unlock();
      }).join();
    }
    Store* store = nullptr;
    bool free = false;
  };
  class WatchedSurface : public PaintedSurface {
   public:
    WatchedSurface() { surfaceText.reset(engine = watching = new Watching); }
    Watching* watching;
  } surface;
  Store store;
  surface.watching->store = &store;
  store.setSurface(&surface);
  std::string id;
  store.setPlacedText(id, 1, "${image.id}", nullptr);
  ASSERT_EQ(surface.engine->measured.size(), 1u);
  EXPECT_FALSE(surface.watching->free);
}

// The thread sanitizer watches this one: the record is rewritten while templates are laid out.
TEST(ShownImage, may_be_rewritten_while_hosts_lay_texts_out) {
  Shown shown;
  std::atomic<bool> stop{false};
  std::vector<std::thread> hosts;
  for (int t = 0; t < 2; ++t) {
    hosts.emplace_back([&, t] {
      for (int i = 0; i < 300; ++i) {
        std::string id = std::to_string(t);
        shown.store.setPlacedText(id, 1, "${image.id} ${image.dims} ${image.time}", nullptr);
        shown.store.update(id, nullptr);
      }
      stop = true;
    });
  }
  ZynImage record = Record(0);
  uint64_t rounds = 0;
  for (; !stop || rounds < 50; ++rounds) {
    record.imageID = record.timestamp = rounds;
    record.width = record.height = static_cast<uint32_t>(rounds % 1000);
    shown.store.setImage(rounds % 10 == 9 ? nullptr : &record);
    shown.store.draw(&shown.surface, nullptr);
    shown.surface.log.clear();
    shown.surface.colors.clear();
  }
  for (std::thread& host : hosts) host.join();
  for (const std::string& text : shown.surface.engine->measured) {
    unsigned long long id = 0, time = 0;
    unsigned width = 0, height = 0;
    if (text == "default:  ") continue;  // no picture at that moment
    ASSERT_EQ(std::sscanf(text.c_str(), "default:%llu %ux%u %llu", &id, &width, &height, &time), 4) << text;
    EXPECT_EQ(id, time) << text;
    EXPECT_EQ(width, id % 1000) << text;
    EXPECT_EQ(height, width) << text;
  }
}

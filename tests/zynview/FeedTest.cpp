// The frames' way from a source to the display, and their pause.
#include "apps/zynview/sources/Feed.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include "zynview/RecordingDisplay.h"

using zynview::Feed;
using zynview::FrameKeeper;

namespace {

// Delivers frames 1, 2, ... `count`, and calls `between` after each.
struct CountedSource : zynview::FrameSource {
  CountedSource(uint64_t frameCount, std::function<void(uint64_t id)> afterEach)
      : count(frameCount), between(std::move(afterEach)) {}

  bool Open(QString*) override { return true; }
  ZynImage Format() const override { return zynview::MakeRecord(ZYN_PIXEL_MONO8, 2, 1, 0, nullptr); }
  QString Description() const override { return {}; }
  void Run(const Sink& sink) override {
    uint8_t pixels[2] = {};
    for (uint64_t id = 1; id <= count; ++id) {
      ZynImage frame = zynview::MakeRecord(ZYN_PIXEL_MONO8, 2, 1, 0, pixels);
      frame.imageID = id;
      if (!sink(frame)) return;
      between(id);
    }
  }

  uint64_t count;
  std::function<void(uint64_t id)> between;
};

using IDs = std::vector<uint64_t>;

}  // namespace

TEST(ViewerFeed, shows_and_keeps_one_frame_more_when_it_is_paused) {
  RecordingDisplay display;
  FrameKeeper keeper;
  Feed* running = nullptr;
  IDs holding;
  Feed feed(std::make_unique<CountedSource>(8,
                                            [&](uint64_t id) {
                                              if (running->IsHolding()) holding.push_back(id);
                                              if (id == 2) running->SetPaused(true);
                                              if (id == 6) running->SetPaused(false);
                                            }),
            &display, &keeper);
  running = &feed;
  feed.Start();
  while (!feed.Ended()) std::this_thread::yield();
  feed.Stop();
  EXPECT_EQ(display.shownIDs, (IDs{1, 2, 3, 7, 8}));
  EXPECT_EQ(holding, (IDs{3, 4, 5, 6}));
  EXPECT_EQ(feed.Delivered(), 5u);
  uint64_t kept = 0;
  EXPECT_TRUE(keeper.Look([&kept](const ZynImage& frame) { kept = frame.imageID; }));
  EXPECT_EQ(kept, 3u);
}

TEST(ViewerFeed, keeps_no_frame_that_the_display_refuses) {
  RecordingDisplay display;
  display.videoCode = 0x80FF0008;
  FrameKeeper keeper;
  keeper.Want();
  Feed feed(std::make_unique<CountedSource>(3, [](uint64_t) {}), &display, &keeper);
  feed.SetPaused(true);
  feed.Start();
  while (!feed.Ended()) std::this_thread::yield();
  feed.Stop();
  EXPECT_EQ(feed.Refused(), 3u);
  EXPECT_EQ(feed.LastCode(), 0x80FF0008u);
  EXPECT_FALSE(feed.IsHolding());
  EXPECT_EQ(keeper.Serial(), 0u);
}

// A source that can be held: says what it is told.
struct HeldSource : CountedSource {
  using CountedSource::CountedSource;
  bool CanHold() const override { return true; }
  void Hold(bool on) override { holds.push_back(on); }
  void Step(int frames) override { steps.push_back(frames); }
  std::vector<bool> holds;
  std::vector<int> steps;
};

TEST(ViewerFeed, lets_one_frame_of_a_live_source_pass_for_each_step) {
  RecordingDisplay display;
  FrameKeeper keeper;
  Feed* running = nullptr;
  Feed feed(std::make_unique<CountedSource>(9,
                                            [&](uint64_t id) {
                                              if (id == 2) running->Step(1);
                                              if (id == 5) running->Step(1);
                                              if (id == 7) running->Step(-1);
                                            }),
            &display, &keeper);
  running = &feed;
  feed.Start();
  while (!feed.Ended()) std::this_thread::yield();
  EXPECT_TRUE(feed.IsPaused()) << "the first step pauses";
  EXPECT_EQ(display.shownIDs, (IDs{1, 2, 3, 6, 8}));
}

TEST(ViewerFeed, hands_pauses_and_steps_to_a_source_that_can_hold) {
  RecordingDisplay display;
  FrameKeeper keeper;
  Feed* running = nullptr;
  auto source = std::make_unique<HeldSource>(4, [&](uint64_t id) {
    if (id == 1) running->Step(-1);
    if (id == 2) running->Step(3);
    if (id == 3) running->SetPaused(false);
  });
  HeldSource* held = source.get();
  Feed feed(std::move(source), &display, &keeper);
  running = &feed;
  feed.Start();
  while (!feed.Ended()) std::this_thread::yield();
  EXPECT_EQ(held->holds, (std::vector<bool>{true, false}));
  EXPECT_EQ(held->steps, (std::vector<int>{-1, 3}));
  EXPECT_EQ(display.shownIDs, (IDs{1, 2, 3, 4})) << "what it delivers while it is held is wanted";
  uint64_t kept = 0;
  keeper.Look([&kept](const ZynImage& frame) { kept = frame.imageID; });
  EXPECT_EQ(kept, 3u);
}

// Frames of the widths 2, 2, 3, 3, 2.
struct ChangingSource : CountedSource {
  ChangingSource() : CountedSource(5, [](uint64_t) {}) {}
  void Run(const Sink& sink) override {
    uint8_t pixels[3] = {};
    uint64_t id = 0;
    for (const uint32_t width : {2u, 2u, 3u, 3u, 2u}) {
      ZynImage frame = zynview::MakeRecord(ZYN_PIXEL_MONO8, width, 1, 0, pixels);
      frame.imageID = ++id;
      if (!sink(frame)) return;
    }
  }
};

TEST(ViewerFeed, has_the_display_prepared_for_each_change_of_the_format) {
  RecordingDisplay display;
  FrameKeeper keeper;
  std::vector<uint32_t> widths;
  bool refuses = false;
  Feed feed(std::make_unique<ChangingSource>(), &display, &keeper, [&](const ZynImage& format) {
    widths.push_back(format.width);
    return !refuses || format.width == 2;
  });
  feed.Start();
  while (!feed.Ended()) QCoreApplication::processEvents();
  EXPECT_EQ(widths, (std::vector<uint32_t>{3, 2}));
  EXPECT_EQ(display.shownIDs, (IDs{1, 2, 3, 4, 5}));
  refuses = true;
  feed.Start();
  while (!feed.Ended()) QCoreApplication::processEvents();
  EXPECT_EQ(widths, (std::vector<uint32_t>{3, 2, 3, 2})) << "asked once for each change";
  EXPECT_EQ(display.shownIDs, (IDs{1, 2, 3, 4, 5, 1, 2, 5}));
  EXPECT_EQ(feed.Refused(), 2u);
  EXPECT_EQ(feed.Delivered(), 3u) << "of this start alone";
}

TEST(ViewerFeed, stops_while_it_waits_for_the_display) {
  RecordingDisplay display;
  FrameKeeper keeper;
  Feed feed(std::make_unique<ChangingSource>(), &display, &keeper, [](const ZynImage&) {
    ADD_FAILURE() << "nobody waits any more";
    return true;
  });
  feed.Start();
  while (feed.Delivered() < 2) std::this_thread::yield();
  feed.Stop();
  EXPECT_TRUE(feed.Ended());
  EXPECT_EQ(display.shownIDs, (IDs{1, 2}));
  QCoreApplication::processEvents();
}

TEST(ViewerFeed, stops_in_mid_stream) {
  RecordingDisplay display;
  FrameKeeper keeper;
  std::atomic<bool> begun{false};
  Feed feed(std::make_unique<CountedSource>(UINT64_MAX, [&](uint64_t) { begun = true; }), &display, &keeper);
  feed.Start();
  while (!begun) std::this_thread::yield();
  feed.Stop();
  const std::size_t shown = display.shownIDs.size();
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
  EXPECT_EQ(display.shownIDs.size(), shown);
}

// Comes to rest only when it is told to, as a camera that does not answer.
struct SlowSource : CountedSource {
  SlowSource(std::atomic<bool>* mayRest, std::atomic<std::thread::id>* placeOfDeath)
      : CountedSource(UINT64_MAX, [](uint64_t) {}), rest(mayRest), died(placeOfDeath) {}
  ~SlowSource() override { *died = std::this_thread::get_id(); }
  void Run(const Sink& sink) override {
    CountedSource::Run(sink);
    while (!*rest) std::this_thread::yield();
  }
  std::atomic<bool>* rest;
  std::atomic<std::thread::id>* died;
};

TEST(ViewerFeed, leaves_a_source_that_is_slow_to_rest_to_the_errands) {
  RecordingDisplay display;
  FrameKeeper keeper;
  std::atomic<bool> mayRest{false};
  std::atomic<std::thread::id> died{std::thread::id()};
  {
    zynview::Errands errands;
    {
      Feed feed(std::make_unique<SlowSource>(&mayRest, &died), &display, &keeper, nullptr, &errands);
      feed.Start();
      while (feed.Delivered() == 0) std::this_thread::yield();
      feed.Stop();
      EXPECT_FALSE(feed.Ended()) << "it is at it still, and nobody waits";
      const std::size_t shown = display.shownIDs.size();
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      EXPECT_EQ(display.shownIDs.size(), shown) << "but no frame comes";
    }
    EXPECT_EQ(died.load(), std::thread::id()) << "the source is still there, and the feed is not";
    mayRest = true;
  }
  EXPECT_NE(died.load(), std::thread::id());
  EXPECT_NE(died.load(), std::this_thread::get_id());
}

TEST(ViewerFeed, begins_again_when_its_source_has_come_to_rest) {
  RecordingDisplay display;
  FrameKeeper keeper;
  std::atomic<bool> mayRest{false};
  std::atomic<std::thread::id> died{std::thread::id()};
  zynview::Errands errands;
  Feed feed(std::make_unique<SlowSource>(&mayRest, &died), &display, &keeper, nullptr, &errands);
  feed.Start();
  while (feed.Delivered() == 0) std::this_thread::yield();
  feed.Start();
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
  EXPECT_EQ(feed.Delivered(), 0u) << "a source runs once at a time";
  mayRest = true;
  while (feed.Delivered() == 0) std::this_thread::yield();
  EXPECT_FALSE(feed.Ended());
}

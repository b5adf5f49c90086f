// The frames' way from a source to the display, and their pause.
#include "apps/zynview/Feed.h"

#include <gtest/gtest.h>

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

// Copies of camera frames for those who ask.
#include "apps/zynview/sources/FrameKeeper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "ZynPixelFormat.h"
#include "apps/zynview/sources/FrameSource.h"

using zynview::FrameKeeper;

namespace {

struct Frame {
  explicit Frame(uint8_t value, uint32_t width = 4, uint32_t height = 3)
      : pixels(std::size_t{width} * height, value),
        record(zynview::MakeRecord(ZYN_PIXEL_MONO8, width, height, 0, pixels.data())) {
    record.imageID = value;
  }
  std::vector<uint8_t> pixels;
  ZynImage record;
};

}  // namespace

TEST(FrameKeeper, keeps_nothing_that_nobody_wants) {
  FrameKeeper keeper;
  keeper.Offer(Frame(1).record);
  EXPECT_EQ(keeper.Serial(), 0u);
  EXPECT_FALSE(keeper.Look([](const ZynImage&) { FAIL(); }));
}

TEST(FrameKeeper, keeps_one_frame_for_each_wish) {
  FrameKeeper keeper;
  keeper.Want();
  keeper.Want();
  for (const uint8_t id : {uint8_t{1}, uint8_t{2}, uint8_t{3}}) keeper.Offer(Frame(id).record);
  EXPECT_EQ(keeper.Serial(), 1u);
  uint64_t id = 0;
  EXPECT_TRUE(keeper.Look([&id](const ZynImage& frame) { id = frame.imageID; }));
  EXPECT_EQ(id, 1u);
  keeper.Want();
  keeper.Offer(Frame(4).record);
  keeper.Look([&id](const ZynImage& frame) { id = frame.imageID; });
  EXPECT_EQ(id, 4u);
  EXPECT_EQ(keeper.Serial(), 2u);
}

TEST(FrameKeeper, knows_whether_the_last_frame_is_kept) {
  FrameKeeper keeper;
  EXPECT_FALSE(keeper.HasLast());
  keeper.Want();
  keeper.Offer(Frame(1).record);
  EXPECT_TRUE(keeper.HasLast());
  keeper.Want();
  EXPECT_TRUE(keeper.HasLast());
  keeper.Offer(Frame(2).record);
  EXPECT_TRUE(keeper.HasLast());
  keeper.Offer(Frame(3).record);
  EXPECT_FALSE(keeper.HasLast());
  keeper.Want();
  keeper.Offer(Frame(4).record);
  keeper.Forget();
  EXPECT_FALSE(keeper.HasLast());
}

TEST(FrameKeeper, has_pixels_of_its_own_and_nothing_else_of_the_frame) {
  FrameKeeper keeper;
  keeper.Want();
  {
    Frame frame(9);
    frame.record.attachments = &frame;
    frame.record.ownedData = frame.pixels.data();
    keeper.Offer(frame.record);
    std::fill(frame.pixels.begin(), frame.pixels.end(), uint8_t{0});
  }
  zynview::OwnFrame copy;
  ASSERT_TRUE(keeper.Look([&copy](const ZynImage& frame) {
    EXPECT_EQ(frame.attachments, nullptr);
    EXPECT_EQ(frame.ownedData, nullptr);
    copy = zynview::CopyOf(frame);
  }));
  EXPECT_EQ(copy.pixels, std::vector<uint8_t>(12, 9));
  EXPECT_EQ(copy.record.imageData, nullptr);
  EXPECT_EQ(copy.record.width, 4u);
}

TEST(FrameKeeper, a_wish_waits_for_a_frame_with_pixels) {
  FrameKeeper keeper;
  keeper.Want();
  keeper.Offer(ZynImage{});
  EXPECT_EQ(keeper.Serial(), 0u);
  keeper.Offer(Frame(1).record);
  EXPECT_EQ(keeper.Serial(), 1u);
}

TEST(FrameKeeper, forgets_the_frames_of_another_source) {
  FrameKeeper keeper;
  keeper.Want();
  keeper.Offer(Frame(1).record);
  keeper.Forget();
  EXPECT_FALSE(keeper.Look([](const ZynImage&) { FAIL(); }));
  EXPECT_EQ(keeper.Serial(), 1u) << "who waits for a newer frame goes on waiting";
  keeper.Want();
  keeper.Offer(Frame(2).record);
  EXPECT_TRUE(keeper.Look([](const ZynImage&) {}));
}

// Sizes change as well, so that a frame that is half another one would show.
TEST(FrameKeeper, shows_whole_frames_while_others_come) {
  FrameKeeper keeper;
  std::atomic<bool> stop{false};
  std::thread feed([&] {
    for (unsigned i = 1; !stop; i = i % 200 + 1)
      keeper.Offer(Frame(static_cast<uint8_t>(i), i * 5, 7).record);
  });
  while (keeper.Serial() < 500) {
    keeper.Want();
    keeper.Look([](const ZynImage& frame) {
      ASSERT_EQ(frame.imageSize, frame.imageID * 35);
      ASSERT_TRUE(std::all_of(frame.imageData, frame.imageData + frame.imageSize,
                              [&frame](uint8_t pixel) { return pixel == frame.imageID; }));
    });
  }
  stop = true;
  feed.join();
}

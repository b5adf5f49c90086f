// The road of one image through the controller.
#include <QImage>
#include <QScreen>
#include <algorithm>
#include <thread>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "tests/display/DisplayFixture.h"

namespace display_test {

using Intake = DisplayTest;

TEST_F(Intake, an_image_runs_through_the_chain_to_the_window) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48, 0, 0x5A);
  image.record.imageID = 77;
  Start(image);
  EXPECT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitForImages(1));
  EXPECT_EQ(receiver.LastResult(), "0");
  const ZynImage* shown = display->GetProcessor()->Out();
  ASSERT_NE(shown, nullptr);
  EXPECT_EQ(shown->imageID, 77u);
  EXPECT_EQ(shown->pixelType, ZYN_PIXEL_RGB8);
  EXPECT_TRUE(std::all_of(shown->imageData, shown->imageData + 64 * 3, [](uint8_t v) { return v == 0x5A; }));
  EXPECT_TRUE(WaitFor([this] { return display->Viewer()->Window()->hasImage(); }));
}

TEST_F(Intake, the_host_may_reuse_its_buffer_when_the_call_returns) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48, 0, 10);
  Start(image);
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  std::fill(image.pixels.begin(), image.pixels.end(), uint8_t{200});
  ASSERT_TRUE(WaitForImages(1));
  EXPECT_EQ(display->GetProcessor()->Out()->imageData[0], 10);
}

TEST_F(Intake, a_smaller_image_is_refused_and_goes_through_after_its_own_initialisation) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48), smaller(ZYN_PIXEL_MONO8, 32, 24);
  Start(image);
  EXPECT_EQ(display->DisplayVideo(&smaller.record), Composed(8));
  EXPECT_EQ(display->LastError(), 8u);
  ASSERT_EQ(display->Initialize(&smaller.record), 0u);
  EXPECT_EQ(display->DisplayVideo(&smaller.record), 0u);
  ASSERT_TRUE(WaitForImages(1));
  EXPECT_EQ(receiver.LastResult(), "0");
}

TEST_F(Intake, a_larger_image_of_another_size_is_dropped_without_a_word) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48), larger(ZYN_PIXEL_MONO8, 128, 96);
  Start(image);
  EXPECT_EQ(display->DisplayVideo(&larger.record), 0u);
  Settle();
  EXPECT_EQ(receiver.Images(), 0u);
}

TEST_F(Intake, a_dropped_image_leaves_the_one_that_waits_alone) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48, 0, 9), larger(ZYN_PIXEL_MONO8, 128, 96);
  Start(image);
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_EQ(display->DisplayVideo(&larger.record), 0u);
  ASSERT_TRUE(WaitForImages(1));
  EXPECT_EQ(receiver.LastResult(), "0");
  EXPECT_EQ(display->GetProcessor()->Out()->imageData[0], 9);
}

TEST_F(Intake, an_image_without_size_or_pixels_is_a_bad_argument) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  // Before a format is known the size check does not stand in the way.
  ZynImage record = image.record;
  record.width = 0;
  EXPECT_EQ(display->DisplayVideo(&record), Composed(7));
  record = image.record;
  record.height = 0;
  EXPECT_EQ(display->DisplayVideo(&record), Composed(7));
  Start(image);
  record = image.record;
  record.imageData = nullptr;
  EXPECT_EQ(display->DisplayVideo(&record), Composed(7));
  EXPECT_EQ(display->LastError(), 7u);
  record = image.record;
  record.width = 0;
  EXPECT_EQ(display->DisplayVideo(&record), Composed(8));  // the size check comes first
}

TEST_F(Intake, before_initialisation_images_are_taken_and_end_with_8) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  EXPECT_EQ(display->DisplayVideo(&image.record), 0u);
  EXPECT_TRUE(WaitFor([this] { return display->LastError() == 8; }));
}

TEST_F(Intake, lines_that_are_padded_wider_count_as_fitting) {
  HostImage image(ZYN_PIXEL_MONO8, 6, 4);  // prepared pitch 8
  Start(image);
  HostImage padded(ZYN_PIXEL_MONO8, 6, 4, 20, 0xEE);
  for (uint32_t y = 0; y < 4; ++y) {
    for (uint32_t x = 0; x < 6; ++x) padded.pixels[y * 20 + x] = static_cast<uint8_t>(y * 16 + x);
  }
  EXPECT_EQ(display->DisplayVideo(&padded.record), 0u);
  ASSERT_TRUE(WaitForImages(1));
  EXPECT_EQ(receiver.LastResult(), "0");
  const ZynImage* shown = display->GetProcessor()->Out();
  for (uint32_t y = 0; y < 4; ++y) {
    for (uint32_t x = 0; x < 6; ++x) {
      EXPECT_EQ(shown->imageData[y * shown->linePitch + x * 3], y * 16 + x);
    }
  }
}

TEST_F(Intake, lines_without_padding_are_read_at_their_own_pitch) {
  HostImage image(ZYN_PIXEL_MONO8, 6, 4, 6);
  for (uint32_t i = 0; i < 24; ++i) image.pixels[i] = static_cast<uint8_t>(i);
  Start(image);
  EXPECT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitForImages(1));
  EXPECT_EQ(receiver.LastResult(), "0");
  const ZynImage* shown = display->GetProcessor()->Out();
  for (uint32_t i = 0; i < 24; ++i) EXPECT_EQ(shown->imageData[(i / 6) * shown->linePitch + (i % 6) * 3], i);
}

TEST_F(Intake, sizes_that_cannot_be_true_end_the_image_with_7) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  Start(image);
  ZynImage record = image.record;
  record.linePitch = 0x7FFFFFFF;
  EXPECT_EQ(display->DisplayVideo(&record), 0u);
  ASSERT_TRUE(WaitForImages(1));
  EXPECT_EQ(receiver.LastResult(), "7");
  record = image.record;
  record.linePitch = 65;
  EXPECT_EQ(display->DisplayVideo(&record), 0u);
  ASSERT_TRUE(WaitForImages(2));
  EXPECT_EQ(receiver.LastResult(), "7");
  record = image.record;
  record.imageSize = 100;
  EXPECT_EQ(display->DisplayVideo(&record), 0u);
  ASSERT_TRUE(WaitForImages(3));
  EXPECT_EQ(receiver.LastResult(), "7");
}

TEST_F(Intake, more_bytes_than_the_picture_can_have_end_it_with_7) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  Start(image);
  ZynImage record = image.record;
  record.imageSize = 0xFFFFFFFF;
  EXPECT_EQ(display->DisplayVideo(&record), 0u);
  ASSERT_TRUE(WaitForImages(1));
  EXPECT_EQ(receiver.LastResult(), "7");
}

TEST_F(Intake, one_line_has_no_next_one_however_large_its_pitch) {
  HostImage image(ZYN_PIXEL_MONO8, 16, 1);
  Start(image);
  for (uint32_t x = 0; x < 16; ++x) image.pixels[x] = static_cast<uint8_t>(x * 3);
  std::size_t images = 0;
  for (const uint32_t pitch : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    ZynImage record = image.record;
    record.linePitch = pitch;
    EXPECT_EQ(display->DisplayVideo(&record), 0u);
    ASSERT_TRUE(WaitForImages(++images)) << pitch;
    EXPECT_EQ(receiver.LastResult(), "0") << pitch;
    const ZynImage* shown = display->GetProcessor()->Out();
    for (uint32_t x = 0; x < 16; ++x) EXPECT_EQ(shown->imageData[x * 3], x * 3);
    // The same with the padding counted in.
    record.imageSize = pitch;
    EXPECT_EQ(display->DisplayVideo(&record), 0u);
    ASSERT_TRUE(WaitForImages(++images)) << pitch;
    EXPECT_EQ(receiver.LastResult(), "0") << pitch;
  }
}

TEST_F(Intake, a_second_line_beyond_all_buffers_ends_the_image_with_7) {
  HostImage image(ZYN_PIXEL_MONO8, 16, 2);
  Start(image);
  std::size_t images = 0;
  for (const uint32_t pitch : {0x80000000u, 0xFFFFFF00u}) {
    ZynImage record = image.record;
    record.linePitch = pitch;
    record.imageSize = pitch + 16;
    EXPECT_EQ(display->DisplayVideo(&record), 0u);
    ASSERT_TRUE(WaitForImages(++images)) << pitch;
    EXPECT_EQ(receiver.LastResult(), "7") << pitch;
  }
}

TEST_F(Intake, goes_on_after_a_queued_check_was_thrown_away) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  Start(image);
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  QCoreApplication::removePostedEvents(display.get());
  EXPECT_TRUE(WaitFor(
      [&] {
        display->DisplayVideo(&image.record);
        return receiver.Images() > 0;
      },
      5000));

  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  QCoreApplication::removePostedEvents(display.get());
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  const std::size_t before = receiver.Images();
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  EXPECT_TRUE(WaitFor([&] { return receiver.Images() > before; }, 500));  // at once
}

TEST_F(Intake, a_failed_image_stops_the_checks_until_the_next_image) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  Start(image);
  ZynImage lying = image.record;
  lying.imageSize = 100;
  ASSERT_EQ(display->DisplayVideo(&lying), 0u);
  ASSERT_TRUE(WaitForImages(1));
  EXPECT_EQ(display->LastError(), 7u);
  display->slotCheckIncomingBuffer();
  EXPECT_EQ(display->LastError(), 8u);
  EXPECT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitForImages(2));
  EXPECT_EQ(receiver.LastResult(), "0");
  EXPECT_EQ(display->LastError(), 0u);
}

TEST_F(Intake, a_frame_that_waits_behind_a_failure_is_dropped) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  Start(image);
  ZynImage noPixels = image.record;
  noPixels.imageData = nullptr;
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_EQ(display->DisplayVideo(&noPixels), Composed(7));
  display->slotCheckIncomingBuffer();
  ASSERT_EQ(display->LastError(), 8u);
  ASSERT_EQ(display->DisplayVideo(nullptr), 0u);
  display->slotCheckIncomingBuffer();
  Settle();
  EXPECT_EQ(receiver.Images(), 0u);
  EXPECT_EQ(display->LastError(), 0u);
}

TEST_F(Intake, null_takes_the_picture_away_and_clears_the_error) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  EXPECT_EQ(display->DisplayVideo(nullptr), 0u);
  Start(image);
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitFor([this] { return display->Viewer()->Window()->hasImage(); }));
  EXPECT_EQ(display->DisplayVideo(nullptr), 0u);
  EXPECT_FALSE(display->Viewer()->Window()->hasImage());
  ZynImage lying = image.record;
  lying.imageSize = 100;
  display->DisplayVideo(&lying);
  ASSERT_TRUE(WaitForImages(2));
  ASSERT_EQ(display->LastError(), 7u);
  EXPECT_EQ(display->DisplayVideo(nullptr), 0u);
  EXPECT_EQ(display->LastError(), 0u);
}

TEST_F(Intake, of_two_images_during_one_processing_the_second_is_shown) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48, 0, 1), second(ZYN_PIXEL_MONO8, 64, 48, 0, 2),
      third(ZYN_PIXEL_MONO8, 64, 48, 0, 3);
  Start(image);
  bool sent = false;
  receiver.OnMessage([&](const std::string& name) {
    if (name != "notification.image" || sent) return;
    sent = true;
    display->DisplayVideo(&second.record);
    display->DisplayVideo(&third.record);
  });
  display->DisplayVideo(&image.record);
  ASSERT_TRUE(WaitForImages(2));
  Settle();
  EXPECT_EQ(display->GetProcessor()->Out()->imageData[0], 3);
  EXPECT_EQ(display->InputRate().Total(), 3);
  EXPECT_EQ(display->OutputRate().Total(), 2);  // the second image was overwritten
  EXPECT_EQ(receiver.Images(), 2u);
}

TEST_F(Intake, many_images_between_two_checks_leave_one_processing) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  Start(image);
  std::thread host([&] {
    for (int i = 0; i < 1000; ++i) display->DisplayVideo(&image.record);
  });
  host.join();
  ASSERT_TRUE(WaitForImages(1));
  Settle();
  EXPECT_EQ(receiver.Images(), 1u);
  EXPECT_EQ(display->InputRate().Total(), 1000);
  EXPECT_EQ(display->OutputRate().Total(), 1);
}

TEST_F(Intake, a_rebuild_runs_the_last_image_again) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  EXPECT_EQ(display->RunCommand("cmd.image.rebuild", nullptr), 0u);
  Settle();
  EXPECT_EQ(display->LastError(), 0u);         // without an image the code stays
  EXPECT_EQ(display->InputRate().Total(), 1);  // but the signal came
  Start(image);
  EXPECT_EQ(display->RunCommand("cmd.image.rebuild", nullptr), 1u);
  Settle();
  EXPECT_EQ(display->OutputRate().Total(), 0);
  display->DisplayVideo(&image.record);
  ASSERT_TRUE(WaitForImages(1));
  Settle();
  const int64_t input = display->InputRate().Total();
  EXPECT_EQ(display->RunCommand("cmd.image.rebuild", nullptr), 1u);
  EXPECT_TRUE(WaitFor([this] { return display->OutputRate().Total() == 2; }));
  EXPECT_EQ(display->InputRate().Total(), input + 1);
  EXPECT_EQ(receiver.Images(), 1u);  // a rebuild is not notified
}

TEST_F(Intake, a_stage_that_a_host_removes_takes_its_picture_from_the_window) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  Start(image);
  display->DisplayVideo(&image.record);
  ASSERT_TRUE(WaitFor([this] { return display->Viewer()->Window()->hasImage(); }));
  EXPECT_EQ(display->GetProcessor()->RemoveProcessor("image.display"), 0u);
  EXPECT_FALSE(display->Viewer()->Window()->hasImage());
  Settle();
}

TEST_F(Intake, the_flags_switch_the_notification) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  Start(image);
  display->DisplayVideo(&image.record);
  ASSERT_TRUE(WaitForImages(1));
  EXPECT_EQ(receiver.LastArguments()["code"], "processed");
  // The pointer that a host holds.
  const ZynDisplayProcessor* const held = display.get();
  EXPECT_EQ(receiver.LastArguments()["from"], QTD::ToText(static_cast<const void*>(held)));
  display->SetParameterInt("image.notification.flags.clear", 1);
  display->DisplayVideo(&image.record);
  Settle();
  EXPECT_EQ(receiver.Images(), 1u);
}

TEST_F(Intake, the_rates_decay_with_the_timer) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  Start(image);
  for (int i = 0; i < 5; ++i) {
    display->DisplayVideo(&image.record);
    Settle(10);
  }
  EXPECT_TRUE(WaitFor(
      [this] {
        display->slotTimer();
        return display->InputRate().Rate() > 0;
      },
      3000));
  EXPECT_TRUE(WaitFor(
      [this] {
        display->slotTimer();
        return display->InputRate().Rate() == 0;
      },
      8000));
}

TEST_F(Intake, the_picture_stands_on_the_screen) {
  HostImage image(ZYN_PIXEL_RGB8, 40, 30);
  for (std::size_t i = 0; i < image.pixels.size(); i += 3) {
    image.pixels[i] = 200;
    image.pixels[i + 1] = 100;
    image.pixels[i + 2] = 50;
  }
  Start(image);
  display->DisplayVideo(&image.record);
  const QColor wanted(200, 100, 50);
  EXPECT_TRUE(WaitFor([&] {
    const QImage shot = parent.screen()->grabWindow(parent.winId()).toImage();
    return QColor(shot.pixel(shot.width() / 2, shot.height() / 2)) == wanted;
  }));
}

}  // namespace display_test

// Conversion of images without showing them.
#include <algorithm>
#include <thread>

#include "QTD/chain/QTDProcessor.h"
#include "cpu/stages/CPUIPImage.h"
#include "tests/display/DisplayFixture.h"

namespace display_test {

class Convert : public DisplayTest {
 protected:
  // A Mono12 ramp, and what it must become in RGB8: the upper eight bits in all three channels.
  HostImage input{ZYN_PIXEL_MONO12, 16, 8};
  HostImage output{ZYN_PIXEL_RGB8, 16, 8};

  void SetUp() override {
    auto* samples = reinterpret_cast<uint16_t*>(input.pixels.data());
    for (uint32_t i = 0; i < 16 * 8; ++i) samples[i] = static_cast<uint16_t>(i * 32);
  }
  void ExpectConverted() {
    for (uint32_t i = 0; i < 16 * 8; ++i) {
      for (uint32_t channel = 0; channel < 3; ++channel) {
        ASSERT_EQ(output.pixels[i * 3 + channel], (i * 32) >> 4) << i;
      }
    }
  }
};

TEST_F(Convert, needs_a_chain) {
  EXPECT_EQ(display->ConvertImage(&input.record, &output.record), Composed(8));
  EXPECT_EQ(display->InitConverter(&output.record), Composed(8));
  EXPECT_EQ(display->LastError(), 8u);
}

TEST_F(Convert, writes_into_the_hosts_image) {
  ASSERT_EQ(display->Initialize(&input.record), 0u);
  ASSERT_EQ(display->ConvertImage(&input.record, &output.record), 0u);
  ExpectConverted();
  EXPECT_EQ(display->LastError(), 0u);
}

TEST_F(Convert, works_from_another_thread_while_the_gui_thread_runs) {
  ASSERT_EQ(display->Initialize(&input.record), 0u);
  std::atomic<int64_t> result{-1};
  std::thread host([&] { result = display->ConvertImage(&input.record, &output.record); });
  EXPECT_TRUE(WaitFor([&] { return result >= 0; }));
  host.join();
  EXPECT_EQ(result, 0);
  ExpectConverted();
}

TEST_F(Convert, answers_7_for_images_that_do_not_fit) {
  ASSERT_EQ(display->Initialize(&input.record), 0u);
  ASSERT_EQ(display->InitConverter(&output.record), 0u);
  HostImage otherSize(ZYN_PIXEL_MONO12, 16, 9), otherType(ZYN_PIXEL_MONO10, 16, 8),
      otherOutput(ZYN_PIXEL_BGR8, 16, 8);
  EXPECT_EQ(display->ConvertImage(&otherSize.record, &output.record), Composed(7));
  EXPECT_EQ(display->ConvertImage(&otherType.record, &output.record), Composed(7));
  EXPECT_EQ(display->ConvertImage(&input.record, &otherOutput.record), Composed(7));
  EXPECT_EQ(display->ConvertImage(nullptr, &output.record), Composed(7));
  EXPECT_EQ(display->ConvertImage(&input.record, nullptr), Composed(7));
  EXPECT_EQ(display->LastError(), 7u);
  EXPECT_EQ(display->ConvertImage(&input.record, &output.record), 0u);
}

TEST_F(Convert, a_failing_run_answers_1_and_the_next_one_works) {
  ASSERT_EQ(display->Initialize(&input.record), 0u);
  ASSERT_EQ(display->InitConverter(&output.record), 0u);
  ZynImage noPixels = input.record;
  noPixels.imageData = nullptr;
  EXPECT_EQ(display->ConvertImage(&noPixels, &output.record), Composed(1));
  EXPECT_EQ(display->ConvertImage(&input.record, &output.record), 0u);
  ZynImage noBuffer = output.record;
  noBuffer.imageData = nullptr;
  EXPECT_EQ(display->ConvertImage(&input.record, &noBuffer), Composed(1));
  EXPECT_EQ(display->ConvertImage(&input.record, &output.record), 0u);
  ExpectConverted();
}

TEST_F(Convert, is_prepared_anew_after_a_release) {
  ASSERT_EQ(display->Initialize(&input.record), 0u);
  ASSERT_EQ(display->InitConverter(&output.record), 0u);
  HostImage other(ZYN_PIXEL_MONO8, 16, 8);
  EXPECT_EQ(display->ConvertImage(&input.record, &other.record), Composed(7));
  display->ReleaseConverter();
  EXPECT_EQ(display->ConvertImage(&input.record, &other.record), 0u);
  for (uint32_t i = 0; i < 16 * 8; ++i) ASSERT_EQ(other.pixels[i], (i * 32) >> 4);
}

TEST_F(Convert, a_lying_output_is_never_overrun) {
  ASSERT_EQ(display->Initialize(&input.record), 0u);
  HostImage guarded(ZYN_PIXEL_RGB8, 16, 8);
  guarded.record.linePitch = 4096;  // the buffer has 48 bytes a line
  EXPECT_NE(display->ConvertImage(&input.record, &guarded.record), 0u);
}

TEST_F(Convert, an_initialisation_ends_a_conversion_that_waits_with_8) {
  ASSERT_EQ(display->Initialize(&input.record), 0u);
  std::atomic<int64_t> result{-1};
  std::thread host([&] { result = display->ConvertImage(&input.record, &output.record); });
  // The GUI thread does not run its loop here, so the conversion can only wait.
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  ASSERT_EQ(display->Initialize(&input.record), 0u);
  EXPECT_TRUE(WaitFor([&] { return result >= 0; }));
  host.join();
  EXPECT_EQ(result, Composed(8));
}

TEST_F(Convert, several_threads_and_the_gui_thread_take_turns) {
  ASSERT_EQ(display->Initialize(&input.record), 0u);
  constexpr int kThreads = 3, kRounds = 20;
  std::atomic<int> good{0}, finished{0};
  std::vector<std::thread> hosts;
  for (int i = 0; i < kThreads; ++i) {
    hosts.emplace_back([&] {
      HostImage own(ZYN_PIXEL_RGB8, 16, 8);
      for (int round = 0; round < kRounds; ++round)
        good += display->ConvertImage(&input.record, &own.record) == 0;
      ++finished;
    });
  }
  for (int round = 0; round < kRounds; ++round)
    good += display->ConvertImage(&input.record, &output.record) == 0;
  EXPECT_TRUE(WaitFor([&] { return finished == kThreads; }, 60000));
  for (std::thread& host : hosts) host.join();
  EXPECT_EQ(good, (kThreads + 1) * kRounds);
  ExpectConverted();
}

TEST_F(Convert, does_not_wait_for_itself_inside_a_notification) {
  Start(input);
  std::atomic<int64_t> result{-1};
  receiver.OnMessage([&](const std::string& name) {
    if (name == "notification.image") result = display->ConvertImage(&input.record, &output.record);
  });
  display->DisplayVideo(&input.record);
  EXPECT_TRUE(WaitFor([&] { return result >= 0; }));
  EXPECT_EQ(result, 0);
  ExpectConverted();
}

TEST_F(Convert, a_notification_and_a_thread_convert_at_once) {
  Start(input);
  std::atomic<bool> finished{false};
  std::atomic<int> good{0};
  receiver.OnMessage([&](const std::string& name) {
    if (name == "notification.image") good += display->ConvertImage(&input.record, &output.record) == 0;
  });
  std::thread host([&] {
    HostImage own(ZYN_PIXEL_RGB8, 16, 8);
    for (int i = 0; i < 30; ++i) {
      // Prepared anew each time, which needs the lock that the notification holds.
      display->ReleaseConverter();
      good += display->ConvertImage(&input.record, &own.record) == 0;
    }
    finished = true;
  });
  EXPECT_TRUE(WaitFor(
      [&] {
        display->DisplayVideo(&input.record);
        return finished.load();
      },
      60000));
  host.join();
  EXPECT_GE(good, 30);
}

TEST_F(Convert, is_prepared_while_the_gui_thread_processes_frame_after_frame) {
  Start(input);
  receiver.OnMessage([this](const std::string& name) {
    if (name != "notification.image") return;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    display->DisplayVideo(&input.record);  // the next one waits before this one is done
  });
  constexpr int kConversions = 5;
  std::atomic<int> good{0};
  std::atomic<bool> finished{false};
  std::thread host([&] {
    for (int i = 0; i < kConversions; ++i) {
      display->ReleaseConverter();
      good += display->ConvertImage(&input.record, &output.record) == 0;
    }
    finished = true;
  });
  // Between two frames the processing lock is free for some microseconds only.
  display->DisplayVideo(&input.record);
  while (!finished && receiver.Images() < 3000) {
    display->slotCheckIncomingBuffer();
    QCoreApplication::sendPostedEvents(display.get(), QEvent::MetaCall);
  }
  EXPECT_LE(receiver.Images(), std::size_t{40} * kConversions);
  receiver.OnMessage(nullptr);
  EXPECT_TRUE(WaitFor([&] { return finished.load(); }));
  host.join();
  EXPECT_EQ(good, kConversions);
}

// A host's stage that calls the display from inside the chain.
class CallingStage : public CPUIPImage {
 public:
  explicit CallingStage(std::function<void()> hostCode) : CPUIPImage(nullptr), code(std::move(hostCode)) {}
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) override {
    code();
    return CPUIPImage::ProcessImage(source, output, data);
  }

 private:
  std::function<void()> code;
};

TEST_F(Convert, a_stage_that_calls_the_display_is_refused) {
  Start(input);
  HostImage own(ZYN_PIXEL_RGB8, 16, 8);
  uint32_t converted = 0, initialised = 0;
  auto* stage = new CallingStage([&] {
    converted = display->ConvertImage(&input.record, &own.record);
    initialised = display->Initialize(&input.record);
    display->Uninitialize();
  });
  const ZynImage* format = display->GetProcessor()->GetImageInfo(false);
  ASSERT_EQ(stage->Init(format, nullptr), 0u);
  ASSERT_EQ(display->GetProcessor()->InsertProcessor("image.output", "host", stage), 0u);
  display->DisplayVideo(&input.record);
  ASSERT_TRUE(WaitForImages(1));
  EXPECT_EQ(converted, Composed(1));
  EXPECT_EQ(initialised, Composed(8));
  ASSERT_NE(display->GetProcessor(), nullptr);

  // The same while another thread converts.
  converted = 0;
  std::atomic<bool> finished{false};
  std::thread host([&] {
    display->ConvertImage(&input.record, &output.record);
    finished = true;
  });
  EXPECT_TRUE(WaitFor([&] { return finished.load(); }));
  host.join();
  EXPECT_EQ(converted, Composed(1));
}

TEST_F(Convert, marks_the_result_as_top_down) {
  ASSERT_EQ(display->Initialize(&input.record), 0u);
  output.record.origin = 1;
  ASSERT_EQ(display->ConvertImage(&input.record, &output.record), 0u);
  EXPECT_EQ(output.record.origin, 0u);
}

}  // namespace display_test

// Hosts that do everything at once: several threads, other formats, deletion in mid-stream; and a display
// that cannot keep up.
#include <fstream>
#include <random>
#include <thread>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/display/ZynDisplayImpl.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "tests/display/DisplayFixture.h"

namespace display_test {

class CarelessHost : public testing::Test {
 protected:
  CarelessHost() {
    parent.resize(200, 150);
    parent.show();
  }
  ~CarelessHost() override { StopThreads(); }

  void AddThread(std::function<void()> step) {
    threads.emplace_back([this, step] {
      while (!stop) step();
    });
  }
  void StopThreads() {
    stop = true;
    // A thread may be waiting for the GUI thread.
    std::atomic<bool> joined{false};
    std::thread joiner([&] {
      for (std::thread& thread : threads) thread.join();
      joined = true;
    });
    EXPECT_TRUE(WaitFor([&] { return joined.load(); }, 30000));
    joiner.join();
    threads.clear();
    stop = false;
  }

  QWidget parent;
  std::atomic<bool> stop{false};
  std::vector<std::thread> threads;
};

TEST_F(CarelessHost, four_threads_deliver_while_the_format_changes) {
  ZynDisplay* display = ZynDisplay_CreateComponent();
  HostImage grey(ZYN_PIXEL_MONO8, 64, 48), deep(ZYN_PIXEL_MONO12, 33, 17), colour(ZYN_PIXEL_RGB8, 21, 40);
  const ZynImage* formats[] = {&grey.record, &deep.record, &colour.record};
  for (int i = 0; i < 4; ++i) {
    AddThread([&, i] { ZynDisplay_DisplayVideo(display, formats[i % 3]); });
  }
  for (int round = 0; round < 60; ++round) {
    EXPECT_EQ(ZynDisplay_Initialize(display, &parent, nullptr, formats[round % 3]), 0u);
    Settle(5);
  }
  StopThreads();
  Settle();
  // And it still works.
  ASSERT_EQ(ZynDisplay_Initialize(display, &parent, nullptr, &grey.record), 0u);
  EXPECT_EQ(ZynDisplay_DisplayVideo(display, &grey.record), 0u);
  ZynDisplay_DeleteComponent(display);
}

TEST_F(CarelessHost, a_display_is_deleted_in_mid_stream) {
  HostImage image(ZYN_PIXEL_MONO8, 320, 240);
  for (int round = 0; round < 15; ++round) {
    ZynDisplay* display = ZynDisplay_CreateComponent();
    ASSERT_EQ(ZynDisplay_Initialize(display, &parent, nullptr, &image.record), 0u);
    for (int i = 0; i < 3; ++i) AddThread([&, display] { ZynDisplay_DisplayVideo(display, &image.record); });
    Settle(10);
    ZynDisplay_DeleteComponent(display);
    EXPECT_EQ(ZynDisplay_DisplayVideo(display, &image.record), 0x80070007u);
    StopThreads();
  }
}

TEST_F(CarelessHost, deletion_ends_those_who_wait_for_the_gui_thread) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  for (int round = 0; round < 10; ++round) {
    ZynDisplay* display = ZynDisplay_CreateComponent();
    ASSERT_EQ(ZynDisplay_Initialize(display, &parent, nullptr, &image.record), 0u);
    AddThread([&, display] {
      HostImage output(ZYN_PIXEL_RGB8, 64, 48);
      ZynDisplay_ConvertImage(display, &image.record, &output.record);
    });
    AddThread([&, display] { ZynDisplay_Initialize(display, &parent, nullptr, &image.record); });
    AddThread([&, display] { ZynDisplay_DisplayVideo(display, nullptr); });
    Settle(20);
    ZynDisplay_DeleteComponent(display);
    StopThreads();
  }
}

TEST_F(CarelessHost, the_parent_is_deleted_in_mid_stream) {
  HostImage image(ZYN_PIXEL_MONO8, 320, 240);
  auto owner = std::make_unique<QWidget>();
  owner->resize(100, 100);
  owner->show();
  ZynDisplay* display = ZynDisplay_CreateComponent();
  ASSERT_EQ(ZynDisplay_Initialize(display, owner.get(), nullptr, &image.record), 0u);
  AddThread([&] { ZynDisplay_DisplayVideo(display, &image.record); });
  auto* controller = static_cast<ZynDisplayImpl*>(display)->Controller();
  AddThread([&] {
    controller->SetFit(1, true);
    controller->Zoom(true, 0, true);
  });
  Settle(100);
  owner.reset();
  Settle(50);
  StopThreads();
  ZynDisplay_DeleteComponent(display);
}

TEST_F(CarelessHost, absurd_records_are_answered) {
  ZynDisplay* display = ZynDisplay_CreateComponent();
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  std::mt19937 engine(7);
  const auto random = [&engine] { return static_cast<uint32_t>(engine()); };
  const uint32_t sizes[] = {0, 1, 47, 48, 63, 64, 65, 3072, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  const auto pick = [&] { return sizes[random() % std::size(sizes)]; };
  for (int round = 0; round < 3000; ++round) {
    if (round % 100 == 0) {
      ZynImage format = image.record;
      if (round % 200) {
        format.width = pick();
        format.height = pick();
        // Formats that would really be made large are of no interest here.
        if (uint64_t{format.width} * format.height > 1000000) format.width = format.height = 64;
        format.pixelType = (random() % 134) | (random() & 0xFF00);
      }
      ZynDisplay_Initialize(display, &parent, nullptr, &format);
    }
    ZynImage record = image.record;
    record.width = random() % 2 ? record.width : pick();
    record.height = random() % 2 ? record.height : pick();
    record.linePitch = random() % 2 ? record.linePitch : pick();
    // Sizes that lie below the truth; more than it has, no library can guard against.
    record.imageSize = std::min(random() % 2 ? record.imageSize : pick(), image.record.imageSize);
    if (record.linePitch > record.imageSize / 48) record.width = 64;
    record.pixelType = random() % 2 ? record.pixelType : random();
    record.bitDepth = random() % 64;
    record.channels = random() % 8;
    record.attachments = reinterpret_cast<void*>(uintptr_t{0x10});
    record.ownedData = reinterpret_cast<uint8_t*>(uintptr_t{0x20});
    ZynDisplay_DisplayVideo(display, &record);
    if (round % 10 == 0) Settle(1);
  }
  Settle();
  ZynDisplay_DeleteComponent(display);
}

TEST_F(CarelessHost, an_initialisation_that_gives_up_leaves_nothing_behind) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  for (int round = 0; round < 10; ++round) {
    ZynDisplay* display = ZynDisplay_CreateComponent();
    ASSERT_EQ(ZynDisplay_Initialize(display, &parent, nullptr, &image.record), 0u);
    AddThread([&, display] {
      // Gone as soon as the call returns.
      auto format = std::make_unique<ZynImage>(image.record);
      ZynDisplay_Initialize(display, &parent, nullptr, format.get());
    });
    Settle(5);
    std::thread deleter([display] { ZynDisplay_DeleteComponent(display); });
    deleter.join();
    StopThreads();
    Settle(5);
  }
}

TEST_F(CarelessHost, a_deletion_waits_for_a_parameter_call_that_is_under_way) {
  ZynDisplay* display = ZynDisplay_CreateComponent();
  auto* implementation = static_cast<ZynDisplayImpl*>(display);
  std::atomic<bool> locked{false}, released{false}, returned{false}, waited{false};
  // Holds the list's lock for a while, so that the host's call stays inside.
  std::thread holder([&] {
    std::lock_guard<std::recursive_mutex> guard(implementation->Parameters().Mutex());
    locked = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    released = true;
  });
  // The controller is the first that goes.
  QObject::connect(implementation->Controller(), &QObject::destroyed, [&] { waited = released.load(); });
  while (!locked) std::this_thread::yield();
  std::thread host([&] {
    implementation->SetParameterInt("text.pos.x", 5);
    returned = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(returned);
  ZynDisplay_DeleteComponent(display);
  EXPECT_TRUE(waited);
  EXPECT_TRUE(WaitFor([&] { return returned.load(); }));
  holder.join();
  host.join();
}

TEST_F(CarelessHost, a_receiver_may_go_when_the_deletion_has_returned) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  ZynDisplayProcessor* controller = ZynDisplayCPU::CreateComponent(&parent);
  ASSERT_EQ(controller->Initialize(&image.record), 0u);
  auto receiver = std::make_unique<Receiver>();
  auto* display = static_cast<QTDDisplay*>(controller);
  display->AddNotification(receiver.get());
  // Off the GUI thread the deletion itself happens later.
  std::thread deleter([controller] { ZynDisplayCPU::DeleteComponent(controller); });
  deleter.join();
  std::atomic<int> late{0};
  receiver->OnMessage([&](const std::string&) { ++late; });
  for (int i = 0; i < 10; ++i) {
    QTD::ARGUMENTS args{{"code", QTD::ToText(i)}};
    display->GetMessenger()->Post("notification.view", &args);
    display->GetMessenger()->Send("notification.view", &args);
  }
  Settle(50);
  EXPECT_EQ(late, 0);
}

TEST_F(CarelessHost, a_receiver_that_waits_for_the_gui_thread_can_be_removed_by_it) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  QTDDisplay display(&parent, false);
  ASSERT_EQ(display.Initialize(&image.record), 0u);
  Receiver receiver;
  std::atomic<bool> entered{false};
  std::atomic<int64_t> result{-1};
  receiver.OnMessage([&](const std::string& name) {
    if (name != "notification.test") return;
    entered = true;
    result = display.Initialize(&image.record);
  });
  display.AddNotification(&receiver);
  display.GetMessenger()->Post("notification.test", nullptr);
  while (!entered) std::this_thread::yield();  // on the messenger thread, which waits for this one
  display.DelNotification(&receiver);
  EXPECT_EQ(result, 0);
}

TEST_F(CarelessHost, threads_convert_into_different_formats) {
  HostImage image(ZYN_PIXEL_MONO12, 32, 16);
  ZynDisplay* display = ZynDisplay_CreateComponent();
  ASSERT_EQ(ZynDisplay_Initialize(display, &parent, nullptr, &image.record), 0u);
  std::atomic<int> failed{0}, finished{0};
  std::vector<std::thread> hosts;
  for (const uint32_t code : {ZYN_PIXEL_RGB8, ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8}) {
    hosts.emplace_back([&, code] {
      HostImage output(code, 32, 16);
      for (int i = 0; i < 40; ++i)
        failed += ZynDisplay_ConvertImage(display, &image.record, &output.record) != 0;
      ++finished;
    });
  }
  EXPECT_TRUE(WaitFor([&] { return finished == 3; }, 60000));
  for (std::thread& host : hosts) host.join();
  EXPECT_EQ(failed, 0);
  ZynDisplay_DeleteComponent(display);
}

// What a sanitizer keeps aside of freed memory counts as resident.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kTolerance = std::size_t{256} << 20;
#else
constexpr std::size_t kTolerance = std::size_t{4} << 20;
#endif

// Bytes of memory that the process holds at this moment.
std::size_t ResidentBytes() {
  std::ifstream status("/proc/self/statm");
  std::size_t total = 0, resident = 0;
  status >> total >> resident;
  return resident * 4096;
}

TEST_F(CarelessHost, memory_stays_flat_when_the_display_cannot_keep_up) {
  ZynDisplay* display = ZynDisplay_CreateComponent();
  HostImage image(ZYN_PIXEL_MONO8, 640, 480);
  ASSERT_EQ(ZynDisplay_Initialize(display, &parent, nullptr, &image.record), 0u);
  auto* controller = static_cast<ZynDisplayImpl*>(display)->Controller();
  Receiver receiver;
  // Ten times slower than the host, whatever the machine: at least ten frames come in for each that is drawn.
  std::atomic<int64_t> handedOver{0};
  int64_t next = 0;
  receiver.OnMessage([&](const std::string& name) {
    if (name != "notification.image") return;
    next = handedOver + 10;
  });
  controller->AddNotification(&receiver);
  controller->SetParameterInt("image.notification.flags.set", 1);
  AddThread([&] {
    ZynDisplay_DisplayVideo(display, &image.record);
    ++handedOver;
  });
  const auto run = [&](int64_t frames) {
    const int64_t end = handedOver + frames;
    while (handedOver < end) {
      while (handedOver < next) std::this_thread::yield();
      QCoreApplication::processEvents();
    }
  };
  run(3000);
  const std::size_t before = ResidentBytes();
  run(15000);  // ten minutes of a camera with 25 frames a second
  const std::size_t after = ResidentBytes();
  StopThreads();
  EXPECT_LT(after, before + kTolerance);
  EXPECT_LT(static_cast<int64_t>(receiver.Images()) * 5, handedOver.load());
  controller->DelNotification(&receiver);
  ZynDisplay_DeleteComponent(display);
}

}  // namespace display_test

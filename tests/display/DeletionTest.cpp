// Displays that are deleted while other threads are inside them, or that are not even made.
#include <pthread.h>

#include <cstddef>
#include <system_error>
#include <thread>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/display/LiveObjects.h"
#include "QTD/display/ZynDisplayImpl.h"
#include "QTD/platform/GuiThread.h"
#include "tests/display/DisplayFixture.h"

namespace display_test {
namespace {

using std::chrono::milliseconds;

// At most some seconds, without handling events.
bool Eventually(const std::function<bool()>& done) {
  for (int i = 0; i < 5000 && !done(); ++i) std::this_thread::sleep_for(milliseconds(1));
  return done();
}

}  // namespace

using Deletion = DisplayTest;

TEST_F(Deletion, goes_on_handling_events_while_a_receiver_that_needs_them_is_removed) {
  ZynDisplayProcessor* controller = ZynDisplayCPU::CreateComponent(&parent);
  auto* object = static_cast<QTDDisplay*>(controller);
  std::atomic<bool> entered{false}, answered{false}, asked{false}, removed{false};
  receiver.OnMessage([&](const std::string& name) {
    if (name != "notification.test") return;
    entered = true;
    QTD::platform::QueueOnGuiThread([&] { asked = true; });
    answered = Eventually([&] { return asked.load(); });
  });
  object->AddNotification(&receiver);
  object->GetMessenger()->Post("notification.test", nullptr);
  ASSERT_TRUE(Eventually([&] { return entered.load(); }));
  std::thread host([&] {
    QTD::ARGUMENTS args{
        {"proc", QTD::ToText(static_cast<const void*>(static_cast<ZynDisplayCommand*>(&receiver)))}};
    controller->RunCommand("cmd.system.notification.del", &args);
    removed = true;
  });
  std::this_thread::sleep_for(milliseconds(100));  // until the host waits for the receiver
  EXPECT_FALSE(removed);
  ZynDisplayCPU::DeleteComponent(controller);
  host.join();
  EXPECT_TRUE(answered);
}

TEST_F(Deletion, does_not_keep_an_initialisation_waiting_that_looks_for_its_window) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  ZynDisplay* other = ZynDisplay_CreateComponent();
  std::atomic<uint32_t> result{0};
  std::thread host([&] { result = ZynDisplay_Initialize(other, &parent, nullptr, &image.record); });
  std::this_thread::sleep_for(milliseconds(100));  // no event is handled meanwhile
  QElapsedTimer clock;
  clock.start();
  ZynDisplay_DeleteComponent(other);
  EXPECT_LT(clock.elapsed(), 1000);
  host.join();
  EXPECT_EQ(result, Composed(8));
}

TEST_F(Deletion, a_window_id_is_looked_up_however_long_the_gui_thread_is_busy) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  ZynDisplay* other = ZynDisplay_CreateComponent();
  auto* id = reinterpret_cast<void*>(parent.winId());
  std::atomic<int64_t> result{-1};
  std::thread host([&] { result = ZynDisplay_Initialize(other, id, nullptr, &image.record); });
  std::this_thread::sleep_for(milliseconds(2500));
  EXPECT_TRUE(WaitFor([&] { return result >= 0; }));
  host.join();
  EXPECT_EQ(result, 0);
  auto* controller = static_cast<ZynDisplayImpl*>(other)->Controller();
  EXPECT_EQ(controller->Parameters().GetPointer("system.parentWidget"), &parent);
  ZynDisplay_DeleteComponent(other);
}

// All of these wait for a lock that the GUI thread holds; a deletion must wait for them in turn.
TEST_F(Deletion, waits_for_the_calls_that_wait_for_a_lock) {
  const std::function<void(QTDDisplay&)> calls[] = {
      [](QTDDisplay& called) { called.GetProcessor(); },
      [](QTDDisplay& called) { called.Uninitialize(); },
      [](QTDDisplay& called) { called.ReleaseConverter(); },
  };
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  for (const auto& call : calls) {
    SCOPED_TRACE(&call - calls);
    auto owner = std::make_unique<QWidget>();
    owner->show();
    QTDDisplay other(owner.get(), false);
    ASSERT_EQ(other.Initialize(&image.record), 0u);
    auto* chain = static_cast<QTDProcessor*>(other.GetProcessor());
    std::atomic<bool> locked{false}, entering{false}, released{false}, waited{false};
    std::thread holder([&] {
      // The viewer's end frees the chain, and waits here while it holds the display's locks.
      const QTD::RMutexLock guard(chain->ChainLock());
      locked = true;
      std::this_thread::sleep_for(milliseconds(600));
      released = true;
    });
    std::thread host([&] {
      Eventually([&] { return locked.load(); });
      std::this_thread::sleep_for(milliseconds(150));
      entering = true;
      call(other);
    });
    std::thread deleter([&] {
      Eventually([&] { return entering.load(); });
      std::this_thread::sleep_for(milliseconds(150));
      QTD::LiveObjects::Controllers().Remove(static_cast<ZynDisplayProcessor*>(&other));
      waited = released.load();
    });
    Eventually([&] { return locked.load(); });
    owner.reset();
    for (std::thread* thread : {&holder, &host, &deleter}) thread->join();
    EXPECT_TRUE(waited);
  }
}

// A default size of stacks that no thread can have.
class NoThreads {
 public:
  NoThreads() {
    pthread_getattr_default_np(&before);
    pthread_attr_t huge;
    pthread_getattr_default_np(&huge);
    EXPECT_EQ(pthread_attr_setstacksize(&huge, std::size_t{1} << 62), 0);
    EXPECT_EQ(pthread_setattr_default_np(&huge), 0);
    pthread_attr_destroy(&huge);
  }
  ~NoThreads() {
    pthread_setattr_default_np(&before);
    pthread_attr_destroy(&before);
  }
  NoThreads(const NoThreads&) = delete;
  NoThreads& operator=(const NoThreads&) = delete;

 private:
  pthread_attr_t before;
};

TEST_F(Deletion, a_display_that_could_not_be_made_is_not_known_as_alive) {
  const auto* whole = reinterpret_cast<const std::byte*>(display.get());
  const auto* part = reinterpret_cast<const std::byte*>(static_cast<ZynDisplayProcessor*>(display.get()));
  alignas(QTDDisplay) std::byte place[sizeof(QTDDisplay)];
  {
    const NoThreads scope;
    EXPECT_THROW(new (place) QTDDisplay(nullptr, false), std::system_error);
  }
  const void* address = place + (part - whole);
  EXPECT_FALSE(QTD::LiveObjects::Controllers().Enter(address));
  EXPECT_TRUE(QTD::LiveObjects::Controllers().Enter(part));
  QTD::LiveObjects::Controllers().Leave(part);
}

}  // namespace display_test

// Host code that asks the display for its parameters while other threads set them: on the GUI thread it runs
// with the controller's locks held, which the other threads then wait for.
#include <QChildEvent>
#include <thread>

#include "QTD/display/ZynDisplayImpl.h"
#include "tests/display/DisplayFixture.h"
#include "tests/display/Watchdog.h"

namespace display_test {
namespace {

// A host's widget with code of the host's in it.
class HostWidget : public QWidget {
 public:
  void childEvent(QChildEvent* event) override {
    QWidget::childEvent(event);
    if (code) code();
  }
  std::function<void()> code;
};

class ParameterLocks : public testing::TestWithParam<const char*> {
 protected:
  ParameterLocks() : display(static_cast<ZynDisplayImpl*>(ZynDisplay_CreateComponent())) {
    parent.resize(200, 150);
    parent.show();
  }
  ~ParameterLocks() override {
    parent.code = nullptr;
    display->Controller()->DelNotification(&receiver);
    ZynDisplay_DeleteComponent(display);
  }

  // Another thread sets the test's parameter as soon as the host code runs; the host code then waits until
  // that thread has come to the lock, and asks. Only once.
  std::function<void()> HostCode() {
    return [this] {
      if (inside.exchange(true)) return;
      setter = std::thread([this] {
        isSetting = true;
        result = std::string(GetParam()) == "display.fit" ? display->SetParameterString("display.fit", "1")
                                                          : display->SetParameterInt(GetParam(), 7);
      });
      while (!isSetting) std::this_thread::yield();
      std::this_thread::sleep_for(std::chrono::milliseconds(150));
      int64_t read = 0;
      display->GetParameterInt("text.pos.x", &read);
      display->SetParameterInt("text.pos.x", read + 1);
      asked = true;
    };
  }
  void ExpectAllDone() {
    EXPECT_TRUE(WaitFor([this] { return asked.load(); }));
    ASSERT_TRUE(setter.joinable());
    // The setter may be waiting for the GUI thread.
    std::atomic<bool> joined{false};
    std::thread joiner([&] {
      setter.join();
      joined = true;
    });
    EXPECT_TRUE(WaitFor([&] { return joined.load(); }));
    joiner.join();
    int64_t read = 0;
    EXPECT_EQ(display->GetParameterInt("text.pos.x", &read), 0u);
    EXPECT_EQ(read, 6);
  }

  const Watchdog watchdog{"host code that asks for a parameter"};
  HostWidget parent;
  Receiver receiver;
  HostImage image{ZYN_PIXEL_MONO8, 64, 48};
  ZynDisplayImpl* display;
  std::thread setter;
  std::atomic<bool> inside{false}, isSetting{false}, asked{false};
  std::atomic<uint32_t> result{0};
};

}  // namespace

TEST_P(ParameterLocks, are_not_held_against_a_receiver_of_image_notifications) {
  ASSERT_EQ(display->Initialize(&parent, nullptr, &image.record), 0u);
  display->SetParameterInt("text.pos.x", 5);
  receiver.OnMessage([code = HostCode()](const std::string& name) {
    if (name == "notification.image") code();
  });
  display->Controller()->AddNotification(&receiver);
  display->Controller()->SetParameterInt("image.notification.flags.set", 1);
  EXPECT_EQ(display->DisplayVideo(&image.record), 0u);
  ExpectAllDone();
  EXPECT_EQ(result, 0u);
}

// Here there is no screen yet, so that a fit may be refused.
TEST_P(ParameterLocks, are_not_held_against_a_widget_that_gets_its_viewer) {
  display->SetParameterInt("text.pos.x", 5);
  parent.code = HostCode();
  EXPECT_EQ(display->Initialize(&parent, nullptr, &image.record), 0u);
  ExpectAllDone();
}

INSTANTIATE_TEST_SUITE_P(OfTheDisplay, ParameterLocks, testing::Values("display.bg.color", "display.fit"),
                         [](const testing::TestParamInfo<const char*>& tested) {
                           return std::string(tested.param) == "display.fit" ? "fit" : "background";
                         });

namespace {

// Notes whether the lock of the handlers is held while it is asked.
class ProbingDisplay : public ZynDisplayImpl {
 public:
  using ZynDisplayImpl::handlerLock;

  uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) override {
    Probe();
    return ZynDisplayImpl::RunCommand(name, args);
  }
  void Probe() {
    std::thread([this] {
      isFree = handlerLock.try_lock();
      if (isFree) handlerLock.unlock();
    }).join();
  }
  std::atomic<bool> isFree{false};
};

class ProbingHandler : public ZynDisplayCommand {
 public:
  explicit ProbingHandler(ProbingDisplay& probed) : display(probed) {}
  uint32_t RunCommand(const char*, QTD::ARGUMENTS*) override {
    display.Probe();
    return 1;
  }

 private:
  ProbingDisplay& display;
};

}  // namespace

TEST(ParameterLock, is_free_for_the_display_as_its_own_handler_and_held_for_any_other) {
  ProbingDisplay display;
  EXPECT_EQ(display.SetParameterInt("a", 1), 0u);
  EXPECT_TRUE(display.isFree);
  ProbingHandler other(display);
  display.SetParameterHandlers(&other, nullptr);
  EXPECT_EQ(display.SetParameterInt("a", 2), 1u);
  EXPECT_FALSE(display.isFree);
  int64_t read = 0;
  EXPECT_EQ(display.GetParameterInt("a", &read), 0u);
  EXPECT_EQ(read, 1);
}

}  // namespace display_test

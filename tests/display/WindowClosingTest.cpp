// The display's window is closed, and opened again, while other threads are at it.
#include <chrono>
#include <thread>

#include "tests/display/PictureFixture.h"
#include "tests/display/Watchdog.h"

namespace display_test {
namespace {

// Holds the processing lock for a while, as a parameter handler of the host's does.
class SlowHandler : public ZynDisplayCommand {
 public:
  uint32_t RunCommand(const char*, QTD::ARGUMENTS*) override {
    inside = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    left = true;
    return 0;
  }
  std::atomic<bool> inside{false}, left{false};
};

class WindowClosing : public PictureTest {};

}  // namespace

TEST_F(WindowClosing, waits_for_those_who_use_its_screen_under_the_displays_locks) {
  Show();
  SlowHandler handler;
  display->SetParameterHandlers(&handler, nullptr);
  std::thread other([this] { display->SetParameterInt("some", 1); });
  while (!handler.inside) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  bool told = false;
  const auto listening = QObject::connect(Window(), &QTDWindow::signalSurfaceChanged, [&] {
    told = true;
    EXPECT_TRUE(handler.left) << "the screen went under the other thread's hands";
  });
  Window()->close();
  QObject::disconnect(listening);
  EXPECT_TRUE(told);
  EXPECT_FALSE(Window()->isOpen());
  other.join();
  display->SetParameterHandlers(nullptr, nullptr);
}

TEST_F(WindowClosing, and_opening_it_again_bear_commands_on_other_threads) {
  const Watchdog watchdog("commands while the window closes", std::chrono::seconds(120));
  Show();
  std::atomic<bool> stop{false};
  std::atomic<int> rounds{0};
  const auto command = [&] {
    while (!stop) {
      QTD::ARGUMENTS place{{"pos.x", "3"}, {"pos.y", "4"}, {"cs.src", "win"}, {"cs.dst", "img"}};
      Run("cmd.display.view.translate", &place);
      Run("cmd.display.view.zoom.in");
      Run("cmd.display.view.at", {{"pos.x", "0.4"}, {"pos.y", "0.6"}});
      Run("cmd.display.view.fit", {{"mode", rounds % 2 ? "1" : "3"}});
      Run("cmd.display.view.image", {});
      Run("cmd.display.view.status");
      Run("cmd.display.overlay.text.add", {{"text.text", "text"},
                                           {"text.pos.x", "5"},
                                           {"text.pos.y", "5"},
                                           {"cs", "img"},
                                           {"objectID", "a"}});
      Run("cmd.parameter.get", {{"name", "display.view.scale"}});
      Run("cmd.parameter.set", {{"name", "display.view.bgcolor"}, {"value", "5"}});
      ++rounds;
    }
  };
  std::thread first(command), second(command);
  for (int round = 0; round < 150; ++round) {
    Window()->close();
    std::this_thread::sleep_for(std::chrono::microseconds(300));
    ASSERT_TRUE(Window()->open());
    display->DisplayVideo(&image.record);
    Settle(2);
  }
  EXPECT_TRUE(WaitFor([&] { return rounds > 20; }));
  stop = true;
  first.join();
  second.join();
  EXPECT_TRUE(Window()->isOpen());
}

}  // namespace display_test

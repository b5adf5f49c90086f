// The mouse messages of a display to a window of its host's.
#include <thread>

#include "ZynWindowMessage.h"
#include "tests/display/HostFixture.h"

namespace display_test {

// A host's window that hears mouse messages.
class HostWindow : public QWidget {
 public:
  struct Message {
    uint64_t first;
    int64_t second;
  };
  std::vector<Message> messages;
  int64_t answer = 0;

 protected:
  bool event(QEvent* event) override {
    if (event->type() != static_cast<QEvent::Type>(1280)) return QWidget::event(event);
    auto* message = static_cast<ZynWindowMessage*>(event);
    messages.push_back({message->firstWord, message->secondWord});
    message->result = answer;
    return true;
  }
};

class HostMouse : public HostPictureTest {
 protected:
  uint32_t Mouse(const char* code, const char* left, int x, int y) {
    QTD::ARGUMENTS args{{"code", code}, {"win.x", QTD::ToText(x)}, {"win.y", QTD::ToText(y)}};
    if (left) args["left"] = left;
    return Impl()->RunCommand("notification.mouse", &args);
  }
};

TEST_F(HostMouse, mouse_messages_reach_the_hosts_window) {
  HostWindow window;
  window.resize(50, 50);
  window.show();
  Component()->SetParameterInt("window.command", static_cast<int64_t>(window.winId()));
  const uint64_t signature = (reinterpret_cast<uintptr_t>(display) & 0xFFFF) << 16;

  window.answer = 42;
  EXPECT_EQ(Mouse("mouse.down", "1", 10, 20), 42u);
  EXPECT_EQ(Mouse("mouse.up", "1", 10, 20), 42u);
  ASSERT_EQ(window.messages.size(), 2u);
  EXPECT_EQ(window.messages[0].first, signature | 0x4002);
  EXPECT_EQ(window.messages[0].second, (20 << 16) | 10);
  EXPECT_EQ(window.messages[1].first, signature | 0x4003);

  EXPECT_EQ(Mouse("mouse.down", "0", 1, 2), 0u);
  EXPECT_EQ(Mouse("mouse.up", "0", 1, 2), 0u);  // tells nothing
  EXPECT_EQ(Mouse("mouse.move", nullptr, -1, -2), 0u);
  EXPECT_EQ(Mouse("mouse.free", nullptr, 1, 2), 0u);
  EXPECT_EQ(window.messages.size(), 2u);  // posted, not sent
  EXPECT_TRUE(WaitFor([&] { return window.messages.size() == 4; }));
  EXPECT_EQ(window.messages[2].first, signature | 0x4004);
  EXPECT_EQ(window.messages[3].first, signature | 0x4008);
  // y -2 above x -1, each in 16 bits, as a signed 32-bit value.
  EXPECT_EQ(window.messages[3].second, static_cast<int32_t>(0xFFFEFFFFu));
}

TEST_F(HostMouse, mouse_messages_to_no_window_are_dropped) {
  EXPECT_EQ(Mouse("mouse.down", "1", 1, 1), 0u);
  auto window = std::make_unique<HostWindow>();
  window->show();
  Component()->SetParameterInt("window.command", static_cast<int64_t>(window->winId()));
  window.reset();
  EXPECT_EQ(Mouse("mouse.down", "1", 1, 1), 0u);
}

TEST_F(HostMouse, a_mouse_message_from_another_thread_is_queued) {
  HostWindow window;
  window.show();
  window.answer = 7;
  Component()->SetParameterInt("window.command", static_cast<int64_t>(window.winId()));
  uint32_t result = 99;
  std::thread other([&] { result = Mouse("mouse.down", "1", 1, 1); });
  other.join();
  EXPECT_EQ(result, 0u);
  EXPECT_TRUE(window.messages.empty());
  EXPECT_TRUE(WaitFor([&] { return window.messages.size() == 1; }));
}

}  // namespace display_test

// Messages to the window of another X client; without an X server Qt runs on another platform and there are
// none.
#if __has_include(<xcb/xcb.h>)

#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QLibrary>
#include <cstdlib>
#include <memory>
#include <thread>

#include "QTD/platform/Platform.h"

namespace {

namespace platform = QTD::platform;

#define XCB(name) reinterpret_cast<decltype(&name)>(QLibrary::resolve(QStringLiteral("xcb"), 1, #name))

// A window on a connection of its own, as another toolkit would have.
class Client {
 public:
  Client() : connection(XCB(xcb_connect)(nullptr, nullptr)), window(XCB(xcb_generate_id)(connection)) {
    const xcb_screen_t* const screen = XCB(xcb_setup_roots_iterator)(XCB(xcb_get_setup)(connection)).data;
    XCB(xcb_create_window)
    (connection, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 10, 10, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
     screen->root_visual, 0, nullptr);
    Sync();
  }
  ~Client() { XCB(xcb_disconnect)(connection); }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  void Destroy() {
    XCB(xcb_destroy_window)(connection, window);
    Sync();
  }

  // The next client message; its type is 0 when none comes.
  xcb_client_message_event_t Next() {
    xcb_client_message_event_t message = {};
    for (QElapsedTimer timer = Started(); timer.elapsed() < 5000 && message.type == 0;) {
      xcb_generic_event_t* const event = XCB(xcb_poll_for_event)(connection);
      if (event && (event->response_type & 0x7F) == XCB_CLIENT_MESSAGE) {
        message = *reinterpret_cast<xcb_client_message_event_t*>(event);
      }
      std::free(event);
      QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return message;
  }

  std::string NameOf(xcb_atom_t atom) {
    auto* const reply =
        XCB(xcb_get_atom_name_reply)(connection, XCB(xcb_get_atom_name)(connection, atom), nullptr);
    if (!reply) return "";
    const std::string name(XCB(xcb_get_atom_name_name)(reply),
                           static_cast<size_t>(XCB(xcb_get_atom_name_name_length)(reply)));
    std::free(reply);
    return name;
  }

  uint64_t Id() const { return window; }

 private:
  static QElapsedTimer Started() {
    QElapsedTimer timer;
    timer.start();
    return timer;
  }
  void Sync() {
    std::free(XCB(xcb_get_input_focus_reply)(connection, XCB(xcb_get_input_focus)(connection), nullptr));
  }

  xcb_connection_t* connection;
  xcb_window_t window;
};

bool OnX11() {
  return QGuiApplication::platformName() == QLatin1String("xcb");
}

TEST(ForeignWindow, is_valid_while_the_x_server_knows_it) {
  if (!OnX11()) GTEST_SKIP() << "needs an X server";
  Client client;
  EXPECT_TRUE(platform::IsWindow(client.Id()));
  client.Destroy();
  EXPECT_FALSE(platform::IsWindow(client.Id()));
  platform::PostWindowMessage(client.Id(), 1280, 1, 2);
  EXPECT_FALSE(platform::IsWindow(client.Id())) << "the refused message leaves no trace";
}

TEST(ForeignWindow, gets_the_words_as_a_client_message) {
  if (!OnX11()) GTEST_SKIP() << "needs an X server";
  Client client;
  platform::PostWindowMessage(client.Id(), 1280, 0x12344008, -2);
  const xcb_client_message_event_t message = client.Next();
  EXPECT_EQ(client.NameOf(message.type), "ZYN_WINDOW_MESSAGE");
  EXPECT_EQ(message.format, 32);
  EXPECT_EQ(message.window, client.Id());
  EXPECT_EQ(message.data.data32[0], 1280u);
  EXPECT_EQ(message.data.data32[1], 0x12344008u);
  EXPECT_EQ(message.data.data32[2], 0xFFFFFFFEu);
}

TEST(ForeignWindow, takes_a_sent_message_as_posted) {
  if (!OnX11()) GTEST_SKIP() << "needs an X server";
  Client client;
  EXPECT_EQ(platform::SendWindowMessage(client.Id(), 1280, 0x4002, 3), 0);
  EXPECT_EQ(client.Next().data.data32[1], 0x4002u);
}

TEST(ForeignWindow, is_reached_from_another_thread) {
  if (!OnX11()) GTEST_SKIP() << "needs an X server";
  Client client;
  std::thread([&] { platform::PostWindowMessage(client.Id(), 1280, 0x4008, 4); }).join();
  EXPECT_EQ(client.Next().data.data32[2], 4u);
}

}  // namespace

#endif

#include "QTD/platform/ForeignWindows.h"

#if __has_include(<xcb/xcb.h>)

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <QLibrary>
#include <cstdlib>
#include <limits>
#include <memory>

namespace QTD::platform {
namespace {

struct Release {
  void operator()(void* block) const { std::free(block); }
};
template <typename T>
using Block = std::unique_ptr<T, Release>;

// The calls in use, looked up when they are first needed: Qt's own plugin has the library loaded then, and a
// host on another window system needs none.
struct Calls {
  QLibrary library{QStringLiteral("xcb"), 1};
// A declared name cannot stand in parentheses.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define ZYN_XCB_CALL(name) \
  decltype(&xcb_##name) name = reinterpret_cast<decltype(&xcb_##name)>(library.resolve("xcb_" #name))
  ZYN_XCB_CALL(connect);
  ZYN_XCB_CALL(connection_has_error);
  ZYN_XCB_CALL(disconnect);
  ZYN_XCB_CALL(flush);
  ZYN_XCB_CALL(poll_for_event);
  ZYN_XCB_CALL(get_window_attributes);
  ZYN_XCB_CALL(get_window_attributes_reply);
  ZYN_XCB_CALL(intern_atom);
  ZYN_XCB_CALL(intern_atom_reply);
  ZYN_XCB_CALL(send_event);
#undef ZYN_XCB_CALL
  // NOLINTEND(bugprone-macro-parentheses)

  bool Complete() const {
    return connect && connection_has_error && disconnect && flush && poll_for_event &&
           get_window_attributes && get_window_attributes_reply && intern_atom && intern_atom_reply &&
           send_event;
  }
};

// A connection of our own to the server that DISPLAY names: Qt shows its own to private headers only. It asks
// for no events; what arrives all the same (errors of sends, keyboard mappings) is thrown away before each
// use.
class Server {
 public:
  Server() = default;
  ~Server() { Close(); }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  bool Ready() {
    if (QGuiApplication::platformName() != QLatin1String("xcb") || !calls.Complete()) return false;
    if (connection && calls.connection_has_error(connection)) Close();
    if (!connection) Open();
    if (!connection) return false;
    while (Block<xcb_generic_event_t>(calls.poll_for_event(connection))) {
    }
    return true;
  }

  bool Knows(xcb_window_t window) {
    const auto request = calls.get_window_attributes(connection, window);
    xcb_generic_error_t* error = nullptr;
    const Block<xcb_get_window_attributes_reply_t> reply(
        calls.get_window_attributes_reply(connection, request, &error));
    const Block<xcb_generic_error_t> refused(error);
    return reply != nullptr;
  }

  void Send(const xcb_client_message_event_t& event) {
    calls.send_event(connection, 0, event.window, XCB_EVENT_MASK_NO_EVENT,
                     reinterpret_cast<const char*>(&event));
    calls.flush(connection);
  }

  xcb_atom_t MessageType() const { return messageType; }

 private:
  void Open() {
    connection = calls.connect(nullptr, nullptr);
    if (!calls.connection_has_error(connection)) {
      constexpr char kName[] = "ZYN_WINDOW_MESSAGE";
      const auto request = calls.intern_atom(connection, 0, sizeof kName - 1, kName);
      const Block<xcb_intern_atom_reply_t> reply(calls.intern_atom_reply(connection, request, nullptr));
      if (reply) messageType = reply->atom;
    }
    if (messageType == XCB_ATOM_NONE) Close();
  }

  void Close() {
    if (connection) calls.disconnect(connection);
    connection = nullptr;
    messageType = XCB_ATOM_NONE;
  }

  Calls calls;
  xcb_connection_t* connection = nullptr;
  xcb_atom_t messageType = XCB_ATOM_NONE;
};

// The server, or null where there is none.
Server* ReadyServer() {
  static Server server;
  return server.Ready() ? &server : nullptr;
}

bool IsWindowNumber(uint64_t window) {
  return window != XCB_WINDOW_NONE && window <= std::numeric_limits<xcb_window_t>::max();
}

}  // namespace

bool IsForeignWindow(uint64_t window) {
  if (!IsWindowNumber(window)) return false;
  Server* const server = ReadyServer();
  return server && server->Knows(static_cast<xcb_window_t>(window));
}

void SendForeignMessage(uint64_t window, int message, uint64_t firstWord, int64_t secondWord) {
  if (!IsWindowNumber(window)) return;
  Server* const server = ReadyServer();
  if (!server) return;
  xcb_client_message_event_t event = {};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = static_cast<xcb_window_t>(window);
  event.type = server->MessageType();
  event.data.data32[0] = static_cast<uint32_t>(message);
  event.data.data32[1] = static_cast<uint32_t>(firstWord);
  event.data.data32[2] = static_cast<uint32_t>(secondWord);
  server->Send(event);
}

}  // namespace QTD::platform

#else

namespace QTD::platform {

bool IsForeignWindow(uint64_t) {
  return false;
}
void SendForeignMessage(uint64_t, int, uint64_t, int64_t) {}

}  // namespace QTD::platform

#endif

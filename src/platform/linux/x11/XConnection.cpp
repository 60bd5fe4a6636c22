#include "platform/linux/x11/XConnection.h"

#include <cstdio>
#include <utility>

namespace orvo {

namespace {

xcb_window_t rootOf(xcb_connection_t* connection, int screen) {
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (; screen > 0 && screens.rem > 1; --screen) xcb_screen_next(&screens);
  return screens.data->root;
}

}  // namespace

bool XConnection::canOpen() {
  xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
  const bool opened = xcb_connection_has_error(connection) == 0;
  xcb_disconnect(connection);
  return opened;
}

std::unique_ptr<XConnection> XConnection::open(const std::string& display, const std::string& user) {
  int screen = 0;
  xcb_connection_t* connection = xcb_connect(display.empty() ? nullptr : display.c_str(), &screen);
  if (xcb_connection_has_error(connection) != 0) {
    xcb_disconnect(connection);
    std::fprintf(stderr, "orvo: %s: there is no X server to connect to\n", user.c_str());
    return nullptr;
  }
  return std::unique_ptr<XConnection>(new XConnection(connection, rootOf(connection, screen), user));
}

XConnection::XConnection(xcb_connection_t* connection, xcb_window_t root, std::string user)
    : connection_(connection), root_(root), user_(std::move(user)) {}

XConnection::~XConnection() { xcb_disconnect(connection_); }

xcb_atom_t XConnection::atom(const std::string& name) const {
  const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
  const auto reply = owned(xcb_intern_atom_reply(connection_, cookie, nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

bool XConnection::hasExtension(xcb_extension_t& extension) const {
  const auto* data = xcb_get_extension_data(connection_, &extension);
  return data != nullptr && data->present != 0;
}

XReply<xcb_query_pointer_reply_t> XConnection::queryPointer() const {
  return owned(xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, root_), nullptr));
}

void XConnection::say(const std::string& text) const {
  std::fprintf(stderr, "orvo: %s: %s\n", user_.c_str(), text.c_str());
}

void XConnection::sayUnexpected(const xcb_generic_error_t& error) const {
  switch (error.error_code) {
    case XCB_WINDOW:
    case XCB_DRAWABLE:
    case XCB_MATCH:
      return;
    default:
      say("X error " + std::to_string(error.error_code) + " on request " + std::to_string(error.major_code) + "." +
          std::to_string(error.minor_code));
  }
}

}  // namespace orvo

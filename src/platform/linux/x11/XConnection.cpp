#include "platform/linux/x11/XConnection.h"

#include <algorithm>
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
  const Handle connection(xcb_connect(nullptr, nullptr), xcb_disconnect);
  return xcb_connection_has_error(connection.get()) == 0;
}

std::unique_ptr<XConnection> XConnection::open(const std::string& user) {
  int screen = 0;
  Handle connection(xcb_connect(nullptr, &screen), xcb_disconnect);
  if (xcb_connection_has_error(connection.get()) != 0) {
    std::fprintf(stderr, "orvo: %s: there is no X server to connect to\n", user.c_str());
    return nullptr;
  }
  return std::unique_ptr<XConnection>(new XConnection(std::move(connection), screen, user));
}

std::unique_ptr<XConnection> XConnection::borrow(xcb_connection_t* connection, const std::string& user) {
  char* host = nullptr;
  int display = 0;
  int screen = 0;
  xcb_parse_display(nullptr, &host, &display, &screen);
  std::free(host);
  Handle borrowed(connection, [](xcb_connection_t*) {});
  return std::unique_ptr<XConnection>(new XConnection(std::move(borrowed), screen, user));
}

XConnection::XConnection(Handle connection, int screen, std::string user)
    : connection_(std::move(connection)), screen_(screen), root_(rootOf(get(), screen)), user_(std::move(user)) {}

xcb_atom_t XConnection::atom(const std::string& name) const {
  const auto cookie = xcb_intern_atom(get(), 0, static_cast<std::uint16_t>(name.size()), name.c_str());
  const auto reply = owned(xcb_intern_atom_reply(get(), cookie, nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

bool XConnection::hasExtension(xcb_extension_t& extension) const {
  const auto* data = xcb_get_extension_data(get(), &extension);
  return data != nullptr && data->present != 0;
}

bool XConnection::tellsProcesses() const {
  if (!hasExtension(xcb_res_id)) return false;
  const auto reply = owned(xcb_res_query_version_reply(get(), xcb_res_query_version(get(), 1, 2), nullptr));
  return reply && std::pair(reply->server_major, reply->server_minor) >= std::pair<std::uint16_t, std::uint16_t>(1, 2);
}

xcb_res_query_client_ids_cookie_t XConnection::askProcess(xcb_window_t window) const {
  const xcb_res_client_id_spec_t wanted{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
  return xcb_res_query_client_ids(get(), 1, &wanted);
}

std::int32_t XConnection::process(xcb_res_query_client_ids_cookie_t asked) const {
  const auto reply = owned(xcb_res_query_client_ids_reply(get(), asked, nullptr));
  if (!reply) return 0;
  const auto id = xcb_res_query_client_ids_ids_iterator(reply.get());
  if (id.rem == 0 || xcb_res_client_id_value_value_length(id.data) < 1) return 0;
  return static_cast<std::int32_t>(*xcb_res_client_id_value_value(id.data));
}

XReply<xcb_query_pointer_reply_t> XConnection::queryPointer() const {
  return owned(xcb_query_pointer_reply(get(), xcb_query_pointer(get(), root_), nullptr));
}

// All questions go out before the first answer is awaited.
std::vector<xcb_window_t> XConnection::childrenOf(const std::vector<xcb_window_t>& windows, std::size_t most) const {
  std::vector<xcb_query_tree_cookie_t> asked;
  asked.reserve(windows.size());
  for (const auto window : windows) asked.push_back(xcb_query_tree(get(), window));
  std::vector<xcb_window_t> all;
  for (const auto cookie : asked) {
    const auto reply = owned(xcb_query_tree_reply(get(), cookie, nullptr));
    if (!reply) continue;
    const auto* first = xcb_query_tree_children(reply.get());
    all.insert(all.end(), first, first + std::min<std::size_t>(reply->children_len, most));
  }
  return all;
}

std::vector<std::uint32_t> XConnection::values(xcb_get_property_cookie_t property) const {
  const auto reply = owned(xcb_get_property_reply(get(), property, nullptr));
  if (!reply || reply->format != 32) return {};
  const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
  return {first, first + reply->value_len};
}

void XConnection::log(const std::string& text) const {
  std::fprintf(stderr, "orvo: %s: %s\n", user_.c_str(), text.c_str());
}

void XConnection::logUnexpected(const xcb_generic_error_t& error) const {
  switch (error.error_code) {
    case XCB_WINDOW:
    case XCB_DRAWABLE:
    case XCB_MATCH:
      return;
    default:
      log("X error " + std::to_string(error.error_code) + " on request " + std::to_string(error.major_code) + "." +
          std::to_string(error.minor_code));
  }
}

}  // namespace orvo

// A connection to the X server and what every user of one needs. Owned by one adapter; requests may
// come from any thread. Errors of the server never end the process, as they would through Xlib.
#pragma once

#include <xcb/res.h>
#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace orvo {

// How much is read of a list of windows: any client may have written it.
inline constexpr std::uint32_t mostWindows = 4096;

struct FreeDeleter {
  void operator()(void* memory) const { std::free(memory); }
};

// What the server sent; libxcb allocates it, absent on error.
template <typename T>
using XReply = std::unique_ptr<T, FreeDeleter>;

template <typename T>
XReply<T> owned(T* memory) {
  return XReply<T>(memory);
}

class XConnection {
 public:
  // To DISPLAY. `user` names the adapter in messages, such as "hot keys".
  // Absent, with a line on standard error, when there is no server.
  static std::unique_ptr<XConnection> open(const std::string& user);

  // One that somebody else opened to DISPLAY, and closes.
  static std::unique_ptr<XConnection> borrow(xcb_connection_t* connection, const std::string& user);

  // Whether there is a server behind DISPLAY; says nothing.
  static bool canOpen();

  xcb_connection_t* get() const { return connection_.get(); }
  int screen() const { return screen_; }
  xcb_window_t root() const { return root_; }  // of that screen
  // True until the server has gone or the connection was closed.
  bool works() const { return xcb_connection_has_error(get()) == 0; }

  xcb_atom_t atom(const std::string& name) const;
  bool hasExtension(xcb_extension_t& extension) const;
  // Whether the server can say which process a window's client is.
  bool tellsProcesses() const;
  xcb_res_query_client_ids_cookie_t askProcess(xcb_window_t window) const;
  std::int32_t process(xcb_res_query_client_ids_cookie_t asked) const;  // 0 for a window that has gone
  XReply<xcb_query_pointer_reply_t> queryPointer() const;
  // The children of all these windows, at most so many of each, and of each in stacking order from below.
  std::vector<xcb_window_t> childrenOf(const std::vector<xcb_window_t>& windows,
                                       std::size_t most = std::numeric_limits<std::size_t>::max()) const;
  // What a property of a window holds, in units of 32 bits; empty for one of another kind, or none.
  std::vector<std::uint32_t> values(xcb_get_property_cookie_t property) const;

  // One line on standard error.
  void log(const std::string& text) const;
  // As log(), for an error that no vanished window explains.
  void logUnexpected(const xcb_generic_error_t& error) const;

 private:
  using Handle = std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)>;

  XConnection(Handle connection, int screen, std::string user);

  Handle connection_;
  int screen_;
  xcb_window_t root_;
  std::string user_;
};

// The code of an event without the mark of one that another client sent.
inline unsigned eventCode(const xcb_generic_event_t& event) { return event.response_type & 0x7FU; }
// Whether a client sent it, so that nothing of the kind need have happened.
inline bool isPretended(const xcb_generic_event_t& event) { return (event.response_type & 0x80U) != 0; }

}  // namespace orvo

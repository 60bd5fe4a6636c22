// A connection to the X server and what every user of one needs. Owned by one adapter; requests may
// come from any thread. Errors of the server never end the process, as they would through Xlib.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

namespace orvo {

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
  // An empty `display` stands for DISPLAY. `user` names the adapter in messages, such as "hot keys".
  // Absent, with a line on standard error, when there is no server.
  static std::unique_ptr<XConnection> open(const std::string& display, const std::string& user);

  // Whether there is a server behind DISPLAY; says nothing.
  static bool canOpen();

  ~XConnection();
  XConnection(const XConnection&) = delete;
  XConnection& operator=(const XConnection&) = delete;

  xcb_connection_t* get() const { return connection_; }
  xcb_window_t root() const { return root_; }
  // True until the server has gone or the connection was closed.
  bool works() const { return xcb_connection_has_error(connection_) == 0; }

  xcb_atom_t atom(const std::string& name) const;
  bool hasExtension(xcb_extension_t& extension) const;
  XReply<xcb_query_pointer_reply_t> queryPointer() const;

  // One line on standard error.
  void say(const std::string& text) const;
  // As say(), for an error that no vanished window explains.
  void sayUnexpected(const xcb_generic_error_t& error) const;

 private:
  XConnection(xcb_connection_t* connection, xcb_window_t root, std::string user);

  xcb_connection_t* connection_;
  xcb_window_t root_;
  std::string user_;
};

// The code of an event without the mark of one that another client sent.
inline unsigned eventCode(const xcb_generic_event_t& event) { return event.response_type & 0x7FU; }

}  // namespace orvo

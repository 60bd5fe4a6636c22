#include "platform/linux/x11/TestDesktop.h"

#include "support/ManualMainQueue.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <thread>

namespace orvo {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto limit = 5s;
constexpr auto look = 2ms;
constexpr int firstDisplay = 151;
constexpr int lastDisplay = 159;

template <typename T>
std::unique_ptr<T, decltype(&std::free)> owned(T* memory) {
  return {memory, &std::free};
}

constexpr const char* panelSettings = R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=10;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="30"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/><value type="int" value="2"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="separator">
      <property name="expand" type="bool" value="true"/>
    </property>
    <property name="plugin-2" type="string" value="clock"/>
  </property>
</channel>
)";

xcb_atom_t atom(xcb_connection_t* connection, const char* name) {
  const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
  const auto reply = owned(xcb_intern_atom_reply(connection, cookie, nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::vector<xcb_window_t> children(xcb_connection_t* connection, xcb_window_t window) {
  const auto tree = owned(xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
  if (!tree) return {};
  const auto* first = xcb_query_tree_children(tree.get());
  return {first, first + xcb_query_tree_children_length(tree.get())};
}

bool isViewable(xcb_connection_t* connection, xcb_window_t window) {
  const auto cookie = xcb_get_window_attributes(connection, window);
  const auto reply = owned(xcb_get_window_attributes_reply(connection, cookie, nullptr));
  return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

std::string property(xcb_connection_t* connection, xcb_window_t window, const char* name) {
  const auto cookie =
      xcb_get_property(connection, 0, window, atom(connection, name), XCB_GET_PROPERTY_TYPE_ANY, 0, 256);
  const auto reply = owned(xcb_get_property_reply(connection, cookie, nullptr));
  if (!reply) return {};
  return {static_cast<const char*>(xcb_get_property_value(reply.get())),
          static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

// Every viewable window of the panel's class that a window manager or the root shows, docks apart.
void collectPanelWindows(xcb_connection_t* connection, xcb_window_t window, int depth, std::vector<xcb_window_t>& docks,
                         std::vector<xcb_window_t>& others) {
  const auto dock = atom(connection, "_NET_WM_WINDOW_TYPE_DOCK");
  for (const auto child : children(connection, window)) {
    if (!isViewable(connection, child)) continue;
    if (property(connection, child, "WM_CLASS").starts_with("xfce4-panel")) {
      const auto type = property(connection, child, "_NET_WM_WINDOW_TYPE");
      const bool isDock = type.size() >= 4 && std::memcmp(type.data(), &dock, sizeof dock) == 0;
      (isDock ? docks : others).push_back(child);
    } else if (depth > 0) {
      collectPanelWindows(connection, child, depth - 1, docks, others);
    }
  }
}

}  // namespace

TestDesktop::TestDesktop() {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  std::string name = (std::filesystem::temp_directory_path() / "orvo-x11-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
  folder_ = name;
  startServer();
}

TestDesktop::~TestDesktop() {
  if (connection_ != nullptr) xcb_disconnect(connection_);
  for (pid_t* process : {&panel_, &windowManager_, &busProcess_, &server_}) end(*process);
  // What those had started has become ours.
  std::ifstream list("/proc/self/task/" + std::to_string(getpid()) + "/children");
  for (pid_t process = 0; list >> process;) end(process);
  std::filesystem::remove_all(folder_);
}

pid_t TestDesktop::start(const std::vector<std::string>& command, const std::vector<std::string>& environment) {
  std::vector<char*> arguments;
  for (const auto& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  std::vector<char*> variables;
  for (const auto& variable : environment) variables.push_back(const_cast<char*>(variable.c_str()));
  variables.push_back(nullptr);
  const std::string log = folder_ + "/log";

  const pid_t process = fork();
  if (process == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int output = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    execvpe(arguments[0], arguments.data(), variables.data());
    _exit(127);
  }
  return process;
}

std::vector<std::string> TestDesktop::environment() const {
  return {"PATH=/usr/bin:/bin",
          "HOME=" + folder_,
          "XDG_RUNTIME_DIR=" + folder_,
          "XDG_CONFIG_HOME=" + folder_,
          "DISPLAY=" + display_,
          "DBUS_SESSION_BUS_ADDRESS=" + bus_,
          "NO_AT_BRIDGE=1",
          "LC_ALL=C.UTF-8"};
}

void TestDesktop::startServer() {
  for (int number = firstDisplay; number <= lastDisplay; ++number) {
    int ready[2];
    if (pipe(&ready[0]) != 0) break;
    display_ = ":" + std::to_string(number);
    server_ = start(
        {"Xvfb", display_, "-screen", "0", "800x600x24", "-nolisten", "tcp", "-displayfd", std::to_string(ready[1])},
        environment());
    close(ready[1]);
    char digit = 0;
    const bool started = read(ready[0], &digit, 1) == 1;
    close(ready[0]);
    if (started) {
      connection_ = xcb_connect(display_.c_str(), nullptr);
      root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
      return;
    }
    end(server_);
  }
  throw std::runtime_error("no X server could be started");
}

void TestDesktop::startWindowManager() {
  windowManager_ = start({"openbox"}, environment());
  if (!eventually([this] { return !property(connection_, root_, "_NET_SUPPORTING_WM_CHECK").empty(); })) {
    throw std::runtime_error("the window manager did not start");
  }
  // It announces itself before it listens: what is mapped in between is never shown.
  const auto probe = xcb_generate_id(connection_);
  xcb_create_window(connection_, XCB_COPY_FROM_PARENT, probe, root_, 0, 0, 10, 10, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                    XCB_COPY_FROM_PARENT, 0, nullptr);
  const bool manages = eventually([this, probe] {
    xcb_map_window(connection_, probe);
    return isViewable(connection_, probe);
  });
  xcb_destroy_window(connection_, probe);
  if (!manages) throw std::runtime_error("the window manager shows nothing");
}

void TestDesktop::signalWindowManager(int signal) const { kill(windowManager_, signal); }

void TestDesktop::startBus() {
  bus_ = "unix:path=" + folder_ + "/bus";
  busProcess_ = start({"dbus-daemon", "--session", "--nofork", "--nosyslog", "--address=" + bus_}, environment());
  if (!eventually([this] { return std::filesystem::exists(folder_ + "/bus"); })) throw std::runtime_error("no bus");
}

void TestDesktop::startPanel() {
  if (bus_.empty()) startBus();
  const auto folder = folder_ + "/xfce4/xfconf/xfce-perchannel-xml";
  std::filesystem::create_directories(folder);
  std::ofstream(folder + "/xfce4-panel.xml") << panelSettings;
  panel_ = start({"xfce4-panel"}, environment());
  const bool shown = eventually([this] {
    const auto frame = clockFrame();
    return frame.width > 0 && frame.y > 500;
  });
  if (!shown) throw std::runtime_error("the panel did not come up");
}

void TestDesktop::stopPanel() { end(panel_); }

void TestDesktop::stopServer() { end(server_); }

Rect TestDesktop::clockFrame() {
  std::vector<xcb_window_t> docks;
  std::vector<xcb_window_t> others;
  collectPanelWindows(connection_, root_, 1, docks, others);
  if (docks.empty()) return {};
  const auto size = owned(xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, docks[0]), nullptr));
  const auto cookie = xcb_translate_coordinates(connection_, docks[0], root_, 0, 0);
  const auto origin = owned(xcb_translate_coordinates_reply(connection_, cookie, nullptr));
  if (!size || !origin) return {};
  constexpr int clockWidth = 30;  // part of it, at least
  return {static_cast<double>(origin->dst_x + size->width - clockWidth), static_cast<double>(origin->dst_y), clockWidth,
          static_cast<double>(size->height)};
}

int TestDesktop::openPanelWindows() {
  std::vector<xcb_window_t> docks;
  std::vector<xcb_window_t> others;
  collectPanelWindows(connection_, root_, 1, docks, others);
  return static_cast<int>(others.size());
}

void TestDesktop::end(pid_t& process) {
  if (process <= 0) return;
  kill(process, SIGKILL);
  waitpid(process, nullptr, 0);
  process = 0;
}

Dock::Dock(const TestDesktop& desktop, Rect frame, xcb_window_t parent)
    : connection_(xcb_connect(desktop.display().c_str(), nullptr)), window_(xcb_generate_id(connection_)) {
  const std::uint32_t mask = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE;
  const bool embedded = parent != XCB_WINDOW_NONE;
  xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, embedded ? parent : desktop.root(),
                    static_cast<std::int16_t>(frame.x), static_cast<std::int16_t>(frame.y),
                    static_cast<std::uint16_t>(frame.width), static_cast<std::uint16_t>(frame.height), 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
  if (!embedded) {
    const auto type = atom(connection_, "_NET_WM_WINDOW_TYPE_DOCK");
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, atom(connection_, "_NET_WM_WINDOW_TYPE"),
                        XCB_ATOM_ATOM, 32, 1, &type);
    // Position and size asked for by the program (flags 4 and 8).
    const std::uint32_t hints[18] = {4U | 8U};
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS,
                        32, 18, &hints[0]);
  }
  xcb_map_window(connection_, window_);
  xcb_flush(connection_);
  if (!eventually([this] { return isViewable(connection_, window_); }))
    throw std::runtime_error("the dock did not show");
}

Dock::~Dock() { xcb_disconnect(connection_); }

const std::vector<Dock::Button>& Dock::buttons() {
  while (const auto event = owned(xcb_poll_for_event(connection_))) {
    const auto code = event->response_type & 0x7FU;
    if (code != XCB_BUTTON_PRESS && code != XCB_BUTTON_RELEASE) continue;
    const auto* button = reinterpret_cast<const xcb_button_press_event_t*>(event.get());
    buttons_.push_back({button->detail,
                        code == XCB_BUTTON_PRESS,
                        {static_cast<double>(button->root_x), static_cast<double>(button->root_y)}});
  }
  return buttons_;
}

int Dock::covers() { return coversBelow(window_); }

int Dock::coversBelow(xcb_window_t window) {
  int count = 0;
  for (const auto child : children(connection_, window)) {
    const auto cookie = xcb_get_window_attributes(connection_, child);
    const auto reply = owned(xcb_get_window_attributes_reply(connection_, cookie, nullptr));
    if (!reply) continue;
    const bool cover = reply->_class == XCB_WINDOW_CLASS_INPUT_ONLY && reply->map_state == XCB_MAP_STATE_VIEWABLE;
    count += cover ? 1 : coversBelow(child);
  }
  return count;
}

bool eventually(ManualMainQueue& queue, const std::function<bool()>& condition) {
  const auto start = Clock::now();
  auto last = start;
  while (!condition()) {
    const auto now = Clock::now();
    if (now - start > limit) return false;
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(now - last);
    last += passed;
    queue.advance(passed);
    queue.runPosted();
    std::this_thread::sleep_for(look);
  }
  return true;
}

bool eventually(const std::function<bool()>& condition) {
  const auto end = Clock::now() + limit;
  while (!condition()) {
    if (Clock::now() > end) return false;
    std::this_thread::sleep_for(look);
  }
  return true;
}

void holdFor(ManualMainQueue& queue, std::chrono::milliseconds time) {
  const auto end = Clock::now() + time;
  eventually(queue, [end] { return Clock::now() >= end; });
}

}  // namespace orvo

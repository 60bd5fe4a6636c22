#include "person/Person.h"

#include <chrono>
#include <stdexcept>
#include <string_view>
#include <thread>

#include <X11/Xlib.h>
#include <X11/extensions/XInput.h>
#include <X11/extensions/XTest.h>

namespace orvo {

// No hand is faster, and the server's clock counts milliseconds: a release and a press of the same
// moment would be what a held key sends.
constexpr std::chrono::milliseconds shortestPause{5};

struct Person::Devices {
  explicit Devices(const std::string& name) : display(XOpenDisplay(name.c_str())) {
    if (display == nullptr) throw std::runtime_error("no display " + name);
    if (mouse = openMouse(); mouse == nullptr) throw std::runtime_error("no mouse of its own on " + name);
  }
  ~Devices() { XCloseDisplay(display); }
  Devices(const Devices&) = delete;
  Devices& operator=(const Devices&) = delete;

  XDevice* openMouse() const {
    int count = 0;
    XDeviceInfo* list = XListInputDevices(display, &count);
    XDevice* device = nullptr;
    for (int index = 0; index < count && device == nullptr; ++index) {
      const bool replays = std::string_view(list[index].name).find("XTEST") != std::string_view::npos;
      if (list[index].use == IsXExtensionPointer && !replays) device = XOpenDevice(display, list[index].id);
    }
    XFreeDeviceList(list);
    return device;
  }

  Display* display;
  XDevice* mouse = nullptr;
};

Person::Person(const std::string& display) : devices_(std::make_unique<Devices>(display)) {}
Person::~Person() = default;

void Person::moveTo(Point point) {
  int axes[] = {static_cast<int>(point.x), static_cast<int>(point.y)};
  XTestFakeDeviceMotionEvent(devices_->display, devices_->mouse, False, 0, &axes[0], 2, CurrentTime);
  XSync(devices_->display, False);
}

void Person::button(unsigned number, bool down) {
  XTestFakeDeviceButtonEvent(devices_->display, devices_->mouse, number, down ? True : False, nullptr, 0, CurrentTime);
  XSync(devices_->display, False);
}

void Person::click(Point point, unsigned number) {
  moveTo(point);
  press(number);
  release(number);
}

void Person::pressChord(std::initializer_list<const char*> names) {
  for (const auto* name : names) {
    std::this_thread::sleep_for(shortestPause);
    key(name, true);
  }
}

void Person::releaseChord(std::initializer_list<const char*> names) {
  for (const auto* name = names.end(); name != names.begin();) key(*--name, false);
}

void Person::key(const char* name, bool down) {
  const auto code = XKeysymToKeycode(devices_->display, XStringToKeysym(name));
  XTestFakeKeyEvent(devices_->display, code, down ? True : False, CurrentTime);
  XSync(devices_->display, False);
}

}  // namespace orvo

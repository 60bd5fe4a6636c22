#include "person/Person.h"

#include <chrono>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <vector>

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
    mouse = open(IsXExtensionPointer);
    keyboard = open(IsXExtensionKeyboard);
    if (mouse == nullptr || keyboard == nullptr) throw std::runtime_error("no devices of its own on " + name);
  }
  ~Devices() { XCloseDisplay(display); }
  Devices(const Devices&) = delete;
  Devices& operator=(const Devices&) = delete;

  XDevice* open(int use) const {
    int count = 0;
    XDeviceInfo* list = XListInputDevices(display, &count);
    XDevice* device = nullptr;
    for (int index = 0; index < count && device == nullptr; ++index) {
      const XDeviceInfo& info = list[index];
      const bool replays = std::string_view(info.name).find("XTEST") != std::string_view::npos;
      if (info.use == use && !replays) device = XOpenDevice(display, info.id);
    }
    XFreeDeviceList(list);
    return device;
  }

  Display* display;
  XDevice* mouse = nullptr;
  XDevice* keyboard = nullptr;
};

Person::Person(const std::string& display) : devices_(std::make_unique<Devices>(display)) {}
Person::~Person() = default;

void Person::moveTo(Point point) {
  int axes[] = {static_cast<int>(point.x), static_cast<int>(point.y)};
  XTestFakeDeviceMotionEvent(devices_->display, devices_->mouse, False, 0, &axes[0], 2, CurrentTime);
  XSync(devices_->display, False);
}

Point Person::pointer() {
  Window root = None;
  Window child = None;
  int x = 0;
  int y = 0;
  int windowX = 0;
  int windowY = 0;
  unsigned mask = 0;
  XQueryPointer(devices_->display, DefaultRootWindow(devices_->display), &root, &child, &x, &y, &windowX, &windowY,
                &mask);
  return {static_cast<double>(x), static_cast<double>(y)};
}

void Person::press(unsigned button) {
  XTestFakeDeviceButtonEvent(devices_->display, devices_->mouse, button, True, nullptr, 0, CurrentTime);
  XSync(devices_->display, False);
}

void Person::release(unsigned button) {
  XTestFakeDeviceButtonEvent(devices_->display, devices_->mouse, button, False, nullptr, 0, CurrentTime);
  XSync(devices_->display, False);
}

void Person::click(Point point, unsigned button) {
  moveTo(point);
  press(button);
  release(button);
}

void Person::turnWheel() {
  XTestFakeButtonEvent(devices_->display, Button5, True, CurrentTime);
  XTestFakeButtonEvent(devices_->display, Button5, False, CurrentTime);
  XSync(devices_->display, False);
}

void Person::pressKey(const std::string& name) {
  std::this_thread::sleep_for(shortestPause);
  key(name, true);
}

void Person::releaseKey(const std::string& name) { key(name, false); }

void Person::pressChord(std::initializer_list<const char*> names) {
  const std::vector<std::string> keys(names.begin(), names.end());
  for (const auto& name : keys) pressKey(name);
  for (auto name = keys.rbegin(); name != keys.rend(); ++name) releaseKey(*name);
}

void Person::key(const std::string& name, bool down) {
  const auto code = XKeysymToKeycode(devices_->display, XStringToKeysym(name.c_str()));
  XTestFakeDeviceKeyEvent(devices_->display, devices_->keyboard, code, down ? True : False, nullptr, 0, CurrentTime);
  XSync(devices_->display, False);
}

}  // namespace orvo

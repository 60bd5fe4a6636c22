// The person in front of an X display: works the server's own mouse, not the device through which
// programs replay clicks. Every call has reached the server when it returns.
#pragma once

#include "core/Rect.h"

#include <initializer_list>
#include <memory>
#include <string>

namespace orvo {

class Person {
 public:
  // Throws std::runtime_error when the display is not there or has no mouse of its own.
  explicit Person(const std::string& display);
  ~Person();
  Person(const Person&) = delete;
  Person& operator=(const Person&) = delete;

  void moveTo(Point point);
  void press(unsigned number) { button(number, true); }
  void release(unsigned number) { button(number, false); }
  void click(Point point, unsigned number);

  // By key symbol names, such as "Control_L" or "b"; let go in the reverse order.
  void pressChord(std::initializer_list<const char*> names);
  void releaseChord(std::initializer_list<const char*> names);
  void chord(std::initializer_list<const char*> names) {
    pressChord(names);
    releaseChord(names);
  }

 private:
  struct Devices;
  void button(unsigned number, bool down);
  void key(const char* name, bool down);

  std::unique_ptr<Devices> devices_;
};

}  // namespace orvo

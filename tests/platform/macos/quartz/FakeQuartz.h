// Scripted stand-ins for the C functions of Core Foundation, Accessibility, Quartz and Carbon that the
// adapters call: they count references, note what is asked of them and answer as the test says.
#pragma once

#include <Carbon/Carbon.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace orvo::fake {

enum class Kind : CFTypeID { text = 1, number, dictionary, array, element, value, event, port, source };

struct Object {
  explicit Object(Kind made);
  ~Object();
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  const Kind kind;
  int references = 1;
  std::string text;
  std::vector<Object*> members;  // owned
  CGRect rect{};
  bool unpacks = true;
  CGPoint location{};
  std::int64_t userData = 0;
};

Object* text(const std::string& utf8);
Object* rectangle(CGRect rect);
Object* array(std::vector<Object*> members);

struct World {
  // Every object that has not been freed, and how often one that has been was used.
  std::set<const void*> live;
  int misuses = 0;

  bool trusted = false;
  std::vector<bool> prompts;
  bool makesElements = true;
  AXError error = kAXErrorSuccess;
  pid_t process = 0;
  float timeout = 0;
  // Gives the caller a reference to what it returns, as the real one does; may be null.
  std::function<Object*(const std::string& attribute)> attribute;

  // What was asked of taps and hot keys, in order.
  std::vector<std::string> calls;
  bool makesTap = true;
  bool makesSource = true;
  bool makesCopies = true;
  CGEventTapCallBack tapCallback = nullptr;
  void* tapInfo = nullptr;
  bool sourceAdded = false;
  bool tapEnabled = false;
  // Replays that came back through the tap as the same pointer.
  std::vector<CGEventType> passedReplays;

  OSStatus installStatus = 0;
  OSStatus registerStatus = 0;
  EventHandlerUPP handler = nullptr;
  void* handlerData = nullptr;
};

World& world();

// What a window server does with a mouse event; true when the tap let it pass.
bool click(CGEventType type, CGPoint location);
// Tells the tap that it was disabled, with an event or without; true when the same came back.
bool disableTap(CGEventType type, bool withEvent);

}  // namespace orvo::fake

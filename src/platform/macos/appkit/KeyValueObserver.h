// Calls a function after each change of an object's property. For Objective-C++ only. The observation
// ends with the object, which the observer keeps.
#pragma once

#include "platform/macos/foundation/Retained.h"

#include <functional>

@class OrvoKeyValueObserver;

namespace orvo {

class KeyValueObserver {
 public:
  // The change dictionary holds the old and the new value. Called on the thread that made the change.
  using Changed = std::function<void(NSDictionary* change)>;

  KeyValueObserver(id object, NSString* path, Changed changed);
  ~KeyValueObserver();
  KeyValueObserver(const KeyValueObserver&) = delete;
  KeyValueObserver& operator=(const KeyValueObserver&) = delete;

 private:
  Retained<id> object_;
  Retained<NSString*> path_;
  Retained<OrvoKeyValueObserver*> observer_;
};

}  // namespace orvo

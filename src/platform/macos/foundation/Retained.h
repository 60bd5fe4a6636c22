// Holds one reference to an Objective-C object and releases it, in files without automatic reference
// counting. For Objective-C++ only; any thread.
#pragma once

#import <Foundation/Foundation.h>

#include <utility>

namespace orvo {

// `Object` is an object pointer type such as NSString*; nil holds nothing.
template <typename Object>
class Retained {
 public:
  Retained() = default;
  // Takes over the reference that a message of the families "alloc", "new" and "copy" has given.
  static Retained owning(Object given) {
    Retained result;
    result.object_ = given;
    return result;
  }
  // Adds a reference to one that belongs to somebody else.
  static Retained retaining(Object borrowed) { return owning([borrowed retain]); }
  ~Retained() { [object_ release]; }
  Retained(Retained&& other) noexcept : object_(std::exchange(other.object_, Object())) {}
  Retained& operator=(Retained&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  Retained(const Retained&) = delete;
  Retained& operator=(const Retained&) = delete;

  Object get() const { return object_; }
  explicit operator bool() const { return object_ != Object(); }

 private:
  Object object_ = Object();
};

}  // namespace orvo

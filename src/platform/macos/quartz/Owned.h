// Holds one reference to a Core Foundation object and releases it. Any thread.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace orvo {

// `Reference` is a pointer type such as CFStringRef; null holds nothing.
template <typename Reference>
class Owned {
 public:
  Owned() = default;
  // Takes over the reference that a function with "Create" or "Copy" in its name has given.
  explicit Owned(Reference given) : reference_(given) {}
  // Adds a reference to one that belongs to somebody else.
  static Owned retaining(Reference borrowed) {
    if (borrowed != nullptr) CFRetain(borrowed);
    return Owned(borrowed);
  }
  ~Owned() {
    if (reference_ != nullptr) CFRelease(reference_);
  }
  Owned(Owned&& other) noexcept : reference_(std::exchange(other.reference_, nullptr)) {}
  Owned& operator=(Owned&& other) noexcept {
    std::swap(reference_, other.reference_);
    return *this;
  }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;

  Reference get() const { return reference_; }
  explicit operator bool() const { return reference_ != nullptr; }
  void reset() { Owned dropped(std::exchange(reference_, nullptr)); }

 private:
  Reference reference_ = nullptr;
};

}  // namespace orvo

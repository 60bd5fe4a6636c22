// The private framework as a loader sees it: a path, classes and messages by name, and objects. The
// bridge alone uses it. Any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace orvo {

// What the framework may raise; any other exception type passes through the bridge.
struct FrameworkException {
  std::optional<std::string> reason;
};

struct FrameworkError {
  std::string domain;
  std::int64_t code = 0;
  std::string localizedDescription;

  bool operator==(const FrameworkError&) const = default;
};

// An instance; the last reference frees it.
class FrameworkObject {
 public:
  virtual ~FrameworkObject() = default;
};
using FrameworkObjectRef = std::shared_ptr<FrameworkObject>;

// A class object; lives as long as the process, absent when null.
class FrameworkClass;
using FrameworkClassRef = const FrameworkClass*;

// What is there once it is loaded.
class FrameworkClasses {
 public:
  // Called once, on a thread of the framework's choosing; absent error on success.
  using CompletionHandler = std::function<void(const std::optional<FrameworkError>&)>;

  virtual ~FrameworkClasses() = default;

  virtual FrameworkClassRef classNamed(const char* name) = 0;
  virtual bool instancesRespondTo(FrameworkClassRef type, const char* message) = 0;
  virtual bool respondsTo(const FrameworkObject& object, const char* message) = 0;

  // "initWithAllowedSystemItems:allowedBundleIdentifiers:"; may be null, may raise.
  virtual FrameworkObjectRef makeConfiguration(FrameworkClassRef type, std::span<const int> allowedSystemItems,
                                               const std::vector<std::string>& allowedBundleIdentifiers) = 0;
  // Plain initialisation; may be null, may raise.
  virtual FrameworkObjectRef makeAssertion(FrameworkClassRef type) = 0;
  // "activateWithConfiguration:completionHandler:"; may raise.
  virtual void activate(FrameworkObject& assertion, const FrameworkObjectRef& configuration,
                        CompletionHandler completion) = 0;
  // "invalidate"; may raise.
  virtual void invalidate(FrameworkObject& assertion) = 0;
};

class ConcealmentFramework {
 public:
  virtual ~ConcealmentFramework() = default;

  // Lazy binding, local symbol scope; never unloaded. `path` is absolute on the target system;
  // elsewhere it is taken below the program's own root. Null where there is none; lives as long as this.
  virtual FrameworkClasses* load(const char* path) = 0;

  // One line to the system log.
  virtual void log(const std::string& line) = 0;
};

}  // namespace orvo

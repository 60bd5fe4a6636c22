// The private framework through the Objective-C runtime. Owned by main.cpp and outlives every object
// that it hands out; any thread.
#pragma once

#include "platform/ConcealmentFramework.h"

namespace orvo {

class SystemFramework final : public FrameworkClasses, public ConcealmentFramework {
 public:
  // `root` stands before every path to load; empty for the system's own.
  explicit SystemFramework(std::string root = {}) : root_(std::move(root)) {}

  FrameworkClasses* load(const char* path) override;
  FrameworkClassRef classNamed(const char* name) override;
  bool instancesRespondTo(FrameworkClassRef type, const char* message) override;
  bool respondsTo(const FrameworkObject& object, const char* message) override;
  FrameworkObjectRef makeConfiguration(FrameworkClassRef type, std::span<const int> allowedSystemItems,
                                       const std::vector<std::string>& allowedBundleIdentifiers) override;
  FrameworkObjectRef makeAssertion(FrameworkClassRef type) override;
  void activate(FrameworkObject& assertion, const FrameworkObjectRef& configuration,
                CompletionHandler completion) override;
  void invalidate(FrameworkObject& assertion) override;
  void log(const std::string& line) override;

 private:
  const std::string root_;
};

}  // namespace orvo

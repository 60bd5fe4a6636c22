// The concealment framework as Orvo finds it on Linux: a shared library inside the program's own
// bundle, loaded at run time. Owned by main.cpp, which hands it to the bridge; any thread. Once it is
// destroyed no completion is called any more, so what completions use has to outlive it.
#pragma once

#include "platform/ConcealmentFramework.h"
#include "platform/linux/framework/FrameworkEntries.h"

#include <memory>
#include <string>

namespace orvo {

struct CompletionGate;

class FrameworkLibrary : public ConcealmentFramework {
 public:
  // The folder below which framework paths are looked up, without a trailing slash.
  explicit FrameworkLibrary(std::string root);
  FrameworkLibrary(const FrameworkLibrary&) = delete;
  FrameworkLibrary& operator=(const FrameworkLibrary&) = delete;
  ~FrameworkLibrary() override;

  bool load(const char* path) override;
  FrameworkClassRef classNamed(const char* name) override;
  // No for every message while the agent cannot conceal anything; waits for the agent's word within
  // a short limit.
  bool instancesRespondTo(FrameworkClassRef type, const char* message) override;
  bool respondsTo(const FrameworkObject& object, const char* message) override;
  FrameworkObjectRef makeConfiguration(FrameworkClassRef type, std::span<const int> allowedSystemItems,
                                       const std::vector<std::string>& allowedBundleIdentifiers) override;
  FrameworkObjectRef makeAssertion(FrameworkClassRef type) override;
  void activate(FrameworkObject& assertion, const FrameworkObjectRef& configuration,
                CompletionHandler completion) override;
  void invalidate(FrameworkObject& assertion) override;
  // To standard error as well.
  void log(const std::string& line) override;

 private:
  std::string root_;
  std::shared_ptr<CompletionGate> gate_;
  const OrvoFrameworkEntries* entries_ = nullptr;
};

}  // namespace orvo

// An imitation of the concealment framework with faults that a test chooses. Callable from any thread;
// the faults are set before.
#pragma once

#include "platform/ConcealmentFramework.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvo {

class MemoryFramework : public ConcealmentFramework {
 public:
  enum class Step { makeConfiguration, makeAssertion, activate, invalidate };

  // One request that reached activation.
  struct Activation {
    const FrameworkObject* assertion = nullptr;
    std::vector<int> allowedSystemItems;
    std::vector<std::string> allowedBundleIdentifiers;
  };

  bool load(const char* path) override;
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

  // Faults.
  bool loads = true;
  std::set<std::string> missingClasses;
  std::set<std::string> missingMessages;
  bool configurationIsNull = false;
  bool assertionIsNull = false;
  // Runs at the start of the step and throws; see `raising`.
  std::map<Step, std::function<void()>> raises;
  // Runs at the end of every activation, with its number; may answer at once, on any thread, or throw.
  std::function<void(std::size_t)> onActivate;

  // Throws the framework's exception; absent reason allowed.
  static std::function<void()> raising(std::optional<std::string> reason);
  static std::function<void()> raisingForeign();

  // Calls a request's completion, on this thread; may be done again, also after the release. A
  // completion that was forgotten is not called.
  void answer(std::size_t activation, const std::optional<FrameworkError>& error = std::nullopt);
  // Drops a request's completion, so that it can never be called.
  void forgetCompletion(std::size_t activation);

  std::vector<std::string> loadedPaths() const;
  std::vector<Activation> activations() const;
  // Those of `activations` that conceal now, in order.
  std::vector<Activation> active() const;
  std::vector<std::string> logged() const;
  // Assertion and configuration objects that exist now.
  std::size_t liveObjects() const { return *liveObjects_; }
  // Message tests in order, by message name.
  std::vector<std::string> tested() const;

 private:
  struct Request {
    Activation activation;
    // Expires with the assertion, whose end is the concealment's.
    std::weak_ptr<FrameworkObject> concealing;
    CompletionHandler completion;
  };

  bool offers(const char* message);
  void raiseIn(Step step) const;

  mutable std::mutex mutex_;
  std::shared_ptr<std::atomic<std::size_t>> liveObjects_ = std::make_shared<std::atomic<std::size_t>>(0);
  std::vector<std::string> loadedPaths_;
  std::vector<std::string> tested_;
  std::vector<Request> requests_;
  std::vector<std::string> logged_;
};

}  // namespace orvo

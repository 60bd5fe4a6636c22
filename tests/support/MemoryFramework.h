// An imitation of the concealment framework with faults that a test chooses. Nothing is locked: one thread at a time.
#pragma once

#include "platform/ConcealmentFramework.h"

#include <map>
#include <set>

namespace orvo {

struct MemoryFramework : FrameworkClasses, ConcealmentFramework {
  enum class Step { makeConfiguration, makeAssertion, activate, respondsTo, invalidate };

  struct Activation {
    std::vector<int> allowedSystemItems;
    std::vector<std::string> allowedBundleIdentifiers;
    CompletionHandler completion;
    // Expires with the concealment.
    std::weak_ptr<void> concealing;
  };

  // Faults. Names are of classes and messages, and "configuration" and "assertion" of their objects.
  bool loads = true;
  std::set<std::string> missing;
  std::map<Step, std::function<void()>> raises;
  // Runs at the end of every activation, with its number; may answer at once, or throw.
  std::function<void(std::size_t)> onActivate;
  // Throws the framework's exception; absent reason allowed.
  static std::function<void()> raising(const std::optional<std::string>& reason) {
    return [reason] { throw FrameworkException{reason}; };
  }

  std::vector<std::string> loaded, logged;
  std::vector<Activation> activations;
  // Has as many owners as there are assertion and configuration objects, and one more.
  const std::shared_ptr<void> alive = std::make_shared<int>();
  std::size_t liveObjects() const { return static_cast<std::size_t>(alive.use_count()) - 1; }
  std::size_t active() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(activations, [](const Activation& each) { return !each.concealing.expired(); }));
  }
  // Calls a request's completion, on this thread; may be done again, also after the release.
  void answer(std::size_t activation, const std::optional<FrameworkError>& error = std::nullopt) {
    const CompletionHandler completion = activations.at(activation).completion;
    if (completion) completion(error);
  }

  struct Object : FrameworkObject {
    explicit Object(std::shared_ptr<void> token) : alive(std::move(token)) {}
    std::shared_ptr<void> alive;
    // A configuration's.
    Activation wanted;
    // An assertion's, from activation until it is invalidated or goes.
    std::shared_ptr<void> concealment;
  };
  FrameworkClasses* load(const char* path) override { return loaded.emplace_back(path), loads ? this : nullptr; }
  // Class objects are opaque to everybody else.
  FrameworkClassRef classNamed(const char* name) override {
    return missing.contains(name) ? nullptr : reinterpret_cast<FrameworkClassRef>(this);
  }
  bool instancesRespondTo(FrameworkClassRef, const char* message) override { return !missing.contains(message); }
  bool respondsTo(const FrameworkObject&, const char*) override { return raiseIn(Step::respondsTo), true; }
  FrameworkObjectRef makeConfiguration(FrameworkClassRef, std::span<const int> items,
                                       const std::vector<std::string>& bundles) override {
    raiseIn(Step::makeConfiguration);
    const auto made = std::make_shared<Object>(alive);
    made->wanted = {{items.begin(), items.end()}, bundles, {}, {}};
    return missing.contains("configuration") ? nullptr : made;
  }
  FrameworkObjectRef makeAssertion(FrameworkClassRef) override {
    raiseIn(Step::makeAssertion);
    return missing.contains("assertion") ? nullptr : std::make_shared<Object>(alive);
  }
  void activate(FrameworkObject& assertion, const FrameworkObjectRef& with, CompletionHandler completion) override {
    raiseIn(Step::activate);
    auto& concealment = dynamic_cast<Object&>(assertion).concealment = std::make_shared<int>();
    Activation& request = activations.emplace_back(dynamic_cast<const Object&>(*with).wanted);
    request.completion = std::move(completion);
    request.concealing = concealment;
    if (onActivate) onActivate(activations.size() - 1);
  }
  void invalidate(FrameworkObject& assertion) override {
    raiseIn(Step::invalidate);
    dynamic_cast<Object&>(assertion).concealment.reset();
  }
  void log(const std::string& line) override { logged.push_back(line); }
  void raiseIn(Step step) const {
    if (raises.contains(step)) raises.at(step)();
  }
};

}  // namespace orvo

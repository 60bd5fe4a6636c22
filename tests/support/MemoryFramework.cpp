#include "support/MemoryFramework.h"

#include <array>
#include <stdexcept>
#include <utility>

namespace orvo {

namespace {

// Class objects are opaque to everybody else, so their names stand for them.
constexpr std::array<const char*, 2> classNames{"MBAssessmentModeConfiguration", "MBAssessmentModeAssertion"};
FrameworkClassRef classObject(const char* const& name) { return reinterpret_cast<FrameworkClassRef>(&name); }

using Counter = std::shared_ptr<std::atomic<std::size_t>>;

class Counted : public FrameworkObject, public std::enable_shared_from_this<Counted> {
 public:
  explicit Counted(Counter counter) : counter_(std::move(counter)) { ++*counter_; }
  ~Counted() override { --*counter_; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

 private:
  Counter counter_;
};

class Configuration : public Counted {
 public:
  Configuration(Counter counter, std::span<const int> allowedItems, std::vector<std::string> allowedBundles)
      : Counted(std::move(counter)),
        items(allowedItems.begin(), allowedItems.end()),
        bundles(std::move(allowedBundles)) {}

  std::vector<int> items;
  std::vector<std::string> bundles;
};

}  // namespace

bool MemoryFramework::load(const char* path) {
  const std::lock_guard lock(mutex_);
  loadedPaths_.emplace_back(path);
  return loads;
}

FrameworkClassRef MemoryFramework::classNamed(const char* name) {
  for (const char* const& known : classNames) {
    if (std::string(known) == name && !missingClasses.contains(name)) return classObject(known);
  }
  return nullptr;
}

bool MemoryFramework::instancesRespondTo(FrameworkClassRef type, const char* message) {
  const bool configuration = std::string(message).starts_with("init");
  return offers(message) && type == classObject(configuration ? classNames.front() : classNames.back());
}

bool MemoryFramework::respondsTo(const FrameworkObject& object, const char* message) {
  return offers(message) && dynamic_cast<const Configuration*>(&object) == nullptr;
}

bool MemoryFramework::offers(const char* message) {
  static const std::set<std::string> known{"initWithAllowedSystemItems:allowedBundleIdentifiers:",
                                           "activateWithConfiguration:completionHandler:", "invalidate"};
  const std::lock_guard lock(mutex_);
  tested_.emplace_back(message);
  return known.contains(message) && !missingMessages.contains(message);
}

FrameworkObjectRef MemoryFramework::makeConfiguration(FrameworkClassRef, std::span<const int> allowedSystemItems,
                                                      const std::vector<std::string>& allowedBundleIdentifiers) {
  raiseIn(Step::makeConfiguration);
  if (configurationIsNull) return nullptr;
  return std::make_shared<Configuration>(liveObjects_, allowedSystemItems, allowedBundleIdentifiers);
}

FrameworkObjectRef MemoryFramework::makeAssertion(FrameworkClassRef) {
  raiseIn(Step::makeAssertion);
  if (assertionIsNull) return nullptr;
  return std::make_shared<Counted>(liveObjects_);
}

void MemoryFramework::activate(FrameworkObject& assertion, const FrameworkObjectRef& configuration,
                               CompletionHandler completion) {
  raiseIn(Step::activate);
  const auto& wanted = dynamic_cast<const Configuration&>(*configuration);
  std::size_t number = 0;
  {
    const std::lock_guard lock(mutex_);
    number = requests_.size();
    requests_.push_back({{&assertion, wanted.items, wanted.bundles},
                         dynamic_cast<Counted&>(assertion).weak_from_this(),
                         std::move(completion)});
  }
  if (onActivate) onActivate(number);
}

void MemoryFramework::invalidate(FrameworkObject& assertion) {
  raiseIn(Step::invalidate);
  const std::lock_guard lock(mutex_);
  for (Request& request : requests_) {
    if (request.activation.assertion == &assertion) request.concealing.reset();
  }
}

void MemoryFramework::log(const std::string& line) {
  const std::lock_guard lock(mutex_);
  logged_.push_back(line);
}

std::function<void()> MemoryFramework::raising(std::optional<std::string> reason) {
  return [reason = std::move(reason)] { throw FrameworkException{reason}; };
}

std::function<void()> MemoryFramework::raisingForeign() {
  return [] { throw std::runtime_error("not the framework's own"); };
}

void MemoryFramework::answer(std::size_t activation, const std::optional<FrameworkError>& error) {
  CompletionHandler completion;
  {
    const std::lock_guard lock(mutex_);
    completion = requests_.at(activation).completion;
  }
  if (completion) completion(error);
}

void MemoryFramework::forgetCompletion(std::size_t activation) {
  CompletionHandler dropped;
  const std::lock_guard lock(mutex_);
  dropped = std::exchange(requests_.at(activation).completion, {});
}

std::vector<std::string> MemoryFramework::loadedPaths() const {
  const std::lock_guard lock(mutex_);
  return loadedPaths_;
}

std::vector<MemoryFramework::Activation> MemoryFramework::activations() const {
  const std::lock_guard lock(mutex_);
  std::vector<Activation> all;
  all.reserve(requests_.size());
  for (const Request& request : requests_) all.push_back(request.activation);
  return all;
}

std::vector<MemoryFramework::Activation> MemoryFramework::active() const {
  const std::lock_guard lock(mutex_);
  std::vector<Activation> all;
  for (const Request& request : requests_) {
    if (!request.concealing.expired()) all.push_back(request.activation);
  }
  return all;
}

std::vector<std::string> MemoryFramework::logged() const {
  const std::lock_guard lock(mutex_);
  return logged_;
}

std::vector<std::string> MemoryFramework::tested() const {
  const std::lock_guard lock(mutex_);
  return tested_;
}

void MemoryFramework::raiseIn(Step step) const {
  const auto found = raises.find(step);
  if (found != raises.end()) found->second();
}

}  // namespace orvo

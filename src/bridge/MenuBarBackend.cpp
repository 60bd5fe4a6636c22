#include "bridge/MenuBarBackend.h"

#include "bridge/FrameworkEntry.h"
#include "platform/ConcealmentFramework.h"

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// What the caller owns: the framework's assertion and the framework that is to end it.
struct QLAssertion {
  orvo::ConcealmentFramework& framework;
  orvo::FrameworkClasses& classes;
  orvo::FrameworkObjectRef object;
};

namespace orvo {
namespace {

constexpr const char* frameworkPath = "/System/Library/PrivateFrameworks/MenuBarClientCore.framework/MenuBarClientCore";
constexpr const char* configurationClass = "MBAssessmentModeConfiguration";
constexpr const char* assertionClass = "MBAssessmentModeAssertion";
constexpr const char* initializeMessage = "initWithAllowedSystemItems:allowedBundleIdentifiers:";
constexpr const char* activateMessage = "activateWithConfiguration:completionHandler:";
constexpr const char* invalidateMessage = "invalidate";

// Every kind of system item that the framework numbers.
constexpr std::array<int, 9> allowedSystemItems{0, 1, 2, 3, 4, 5, 6, 7, 8};

constexpr const char* errorDomain = "Orvo.MenuBar";
constexpr std::int64_t errorCode = 1;
constexpr const char* fallbackErrorText = "Menu bar activation failed.";
constexpr const char* releaseFailurePrefix = "Orvo: could not release menu bar assertion: ";
// How the system log shows an absent text.
constexpr const char* absentText = "(null)";

// The framework and what it was found to offer, filled on first use.
struct Backend {
  Backend(ConcealmentFramework* with, const Words& told) : framework(with), words(told) {}

  ConcealmentFramework* framework;
  const Words& words;
  std::once_flag resolved;
  FrameworkClasses* classes = nullptr;
  FrameworkClassRef configurationType = nullptr;
  FrameworkClassRef assertionType = nullptr;
};

std::optional<Backend>& backend() {
  static std::optional<Backend> only(std::in_place, nullptr, macWords);
  return only;
}

void resolveBackend(Backend& unresolved) {
  if (unresolved.framework != nullptr) unresolved.classes = unresolved.framework->load(frameworkPath);
  if (unresolved.classes == nullptr) return;
  unresolved.configurationType = unresolved.classes->classNamed(configurationClass);
  unresolved.assertionType = unresolved.classes->classNamed(assertionClass);
}

bool isAvailable(Backend& current) {
  std::call_once(current.resolved, resolveBackend, std::ref(current));
  if (current.configurationType == nullptr || current.assertionType == nullptr) return false;
  return current.classes->instancesRespondTo(current.configurationType, initializeMessage) &&
         current.classes->instancesRespondTo(current.assertionType, activateMessage) &&
         current.classes->instancesRespondTo(current.assertionType, invalidateMessage);
}

// The caller's completion: invoked by whoever comes first, released when the last holder lets go.
class Completion : public std::enable_shared_from_this<Completion> {
 public:
  explicit Completion(const QLCompletion& completion) : completion_(completion) {}
  ~Completion() {
    if (completion_.release != nullptr) completion_.release(completion_.context);
  }
  Completion(const Completion&) = delete;
  Completion& operator=(const Completion&) = delete;

  void invoke(const std::optional<FrameworkError>& error) {
    // The framework may drop its handler, and with it the last reference, while it is calling it.
    const std::shared_ptr<Completion> self = shared_from_this();
    if (invoked_.exchange(true) || completion_.invoke == nullptr) return;
    if (!error) return completion_.invoke(completion_.context, nullptr);
    const QLError told{error->domain.c_str(), error->code, error->localizedDescription.c_str()};
    completion_.invoke(completion_.context, &told);
  }

 private:
  const QLCompletion completion_;
  std::atomic<bool> invoked_{false};
};

// Null when the framework yields no object; what it raises passes through.
std::unique_ptr<QLAssertion> activated(const Backend& current, const std::vector<std::string>& allowedBundles,
                                       const std::shared_ptr<Completion>& completion) {
  FrameworkClasses& classes = *current.classes;
  const FrameworkObjectRef configuration =
      classes.makeConfiguration(current.configurationType, allowedSystemItems, allowedBundles);
  if (!configuration) return nullptr;
  FrameworkObjectRef object = classes.makeAssertion(current.assertionType);
  if (!object) return nullptr;
  auto assertion = std::make_unique<QLAssertion>(QLAssertion{*current.framework, classes, std::move(object)});
  classes.activate(*assertion->object, configuration,
                   [completion](const std::optional<FrameworkError>& error) { completion->invoke(error); });
  return assertion;
}

void invalidate(QLAssertion& assertion) {
  FrameworkClasses& classes = assertion.classes;
  try {
    if (classes.respondsTo(*assertion.object, invalidateMessage)) classes.invalidate(*assertion.object);
  } catch (const FrameworkException& exception) {
    assertion.framework.log(releaseFailurePrefix + exception.reason.value_or(absentText));
  }
}

}  // namespace

void setConcealmentFramework(ConcealmentFramework* framework, const Words& words) {
  backend().emplace(framework, words);
}

}  // namespace orvo

bool QLMenuBarBackendAvailable() { return orvo::isAvailable(*orvo::backend()); }

const char* QLMenuBarBackendDescription() {
  const orvo::Words& words = orvo::backend()->words;
  return QLMenuBarBackendAvailable() ? words.backendAvailable : words.backendMissing;
}

QLAssertionRef QLCreateMenuBarAssertion(const char* const* allowedBundleIdentifiers, size_t count,
                                        QLCompletion completion) {
  const auto shared = std::make_shared<orvo::Completion>(completion);
  if (!QLMenuBarBackendAvailable()) return nullptr;
  const std::vector<std::string> bundles(allowedBundleIdentifiers, allowedBundleIdentifiers + count);
  try {
    return orvo::activated(*orvo::backend(), bundles, shared).release();
  } catch (const orvo::FrameworkException& exception) {
    shared->invoke(
        orvo::FrameworkError{orvo::errorDomain, orvo::errorCode, exception.reason.value_or(orvo::fallbackErrorText)});
    return nullptr;
  }
}

void QLReleaseMenuBarAssertion(QLAssertionRef assertion) {
  const std::unique_ptr<QLAssertion> owned(assertion);
  if (owned) orvo::invalidate(*owned);
}

#include "platform/linux/framework/FrameworkLibrary.h"

#include <cstdio>
#include <utility>

#include <dlfcn.h>
#include <syslog.h>
#include <unistd.h>

namespace orvo {

bool FrameworkLibrary::load(const char* path) {
  const std::string file = root_ + path;
  void* const library = ::dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (library == nullptr) {
    // A missing library is an everyday state; one that is there and broken is worth a line.
    const char* reason = ::dlerror();
    if (::access(file.c_str(), F_OK) == 0) log(std::string("Orvo: ") + (reason != nullptr ? reason : file.c_str()));
    return false;
  }
  if (const auto make = reinterpret_cast<FrameworkEntry>(::dlsym(library, frameworkEntry))) classes_.reset(make());
  return true;
}

FrameworkClassRef FrameworkLibrary::classNamed(const char* name) {
  return classes_ ? classes_->classNamed(name) : nullptr;
}

bool FrameworkLibrary::instancesRespondTo(FrameworkClassRef type, const char* message) {
  return classes_->instancesRespondTo(type, message);
}

bool FrameworkLibrary::respondsTo(const FrameworkObject& object, const char* message) {
  return classes_->respondsTo(object, message);
}

FrameworkObjectRef FrameworkLibrary::makeConfiguration(FrameworkClassRef type, std::span<const int> allowedSystemItems,
                                                       const std::vector<std::string>& allowedBundleIdentifiers) {
  return classes_->makeConfiguration(type, allowedSystemItems, allowedBundleIdentifiers);
}

FrameworkObjectRef FrameworkLibrary::makeAssertion(FrameworkClassRef type) { return classes_->makeAssertion(type); }

void FrameworkLibrary::activate(FrameworkObject& assertion, const FrameworkObjectRef& configuration,
                                CompletionHandler completion) {
  classes_->activate(assertion, configuration, std::move(completion));
}

void FrameworkLibrary::invalidate(FrameworkObject& assertion) { classes_->invalidate(assertion); }

void FrameworkLibrary::log(const std::string& line) {
  std::fprintf(stderr, "%s\n", line.c_str());
  ::syslog(LOG_USER | LOG_ERR, "%s", line.c_str());
}

}  // namespace orvo

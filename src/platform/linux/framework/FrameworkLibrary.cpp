#include "platform/linux/framework/FrameworkLibrary.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <utility>

#include <dlfcn.h>
#include <syslog.h>
#include <unistd.h>

namespace orvo {

namespace {

class LibraryObject : public FrameworkObject {
 public:
  LibraryObject(const OrvoFrameworkEntries& entries, void* object) : entries_(entries), object_(object) {}
  LibraryObject(const LibraryObject&) = delete;
  LibraryObject& operator=(const LibraryObject&) = delete;
  ~LibraryObject() override { entries_.release(object_); }

  void* get() const { return object_; }

 private:
  const OrvoFrameworkEntries& entries_;
  void* object_;
};

void* handleOf(const FrameworkObject& object) { return static_cast<const LibraryObject&>(object).get(); }

FrameworkObjectRef wrap(const OrvoFrameworkEntries& entries, void* object) {
  if (object == nullptr) return nullptr;
  return std::make_shared<LibraryObject>(entries, object);
}

void throwWhatWasRaised(const OrvoFrameworkRaised& raised) {
  if (!raised.raised) return;
  FrameworkException exception;
  if (raised.hasReason) exception.reason = raised.reason;
  throw std::move(exception);
}

}  // namespace

// Stands between the library's thread and completions that must not run after this object.
struct CompletionGate {
  std::mutex mutex;
  bool open = true;
};

namespace {

struct Handler {
  std::shared_ptr<CompletionGate> gate;
  ConcealmentFramework::CompletionHandler completion;

  static void invoke(void* context, const OrvoFrameworkError* error) {
    const auto& self = *static_cast<Handler*>(context);
    const std::lock_guard lock(self.gate->mutex);
    if (!self.gate->open) return;
    if (error == nullptr) {
      self.completion(std::nullopt);
    } else {
      self.completion(FrameworkError{error->domain, error->code, error->localizedDescription});
    }
  }

  static void release(void* context) { delete static_cast<Handler*>(context); }
};

OrvoFrameworkCompletion handOver(std::shared_ptr<CompletionGate> gate,
                                 ConcealmentFramework::CompletionHandler completion) {
  return {Handler::invoke, Handler::release, new Handler{std::move(gate), std::move(completion)}};
}

}  // namespace

FrameworkLibrary::FrameworkLibrary(std::string root)
    : root_(std::move(root)), gate_(std::make_shared<CompletionGate>()) {}

FrameworkLibrary::~FrameworkLibrary() {
  const std::lock_guard lock(gate_->mutex);
  gate_->open = false;
}

bool FrameworkLibrary::load(const char* path) {
  const std::string file = root_ + path;
  void* library = ::dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (library == nullptr) {
    // A missing library is an everyday state; one that is there and broken is worth a line.
    const char* reason = ::dlerror();
    if (::access(file.c_str(), F_OK) == 0) log(std::string("Orvo: ") + (reason != nullptr ? reason : file.c_str()));
    return false;
  }
  const auto entries = reinterpret_cast<FrameworkEntriesFunction>(::dlsym(library, frameworkEntriesSymbol));
  const OrvoFrameworkEntries* table = entries != nullptr ? entries() : nullptr;
  if (table != nullptr && table->version == frameworkEntriesVersion) entries_ = table;
  return true;
}

FrameworkClassRef FrameworkLibrary::classNamed(const char* name) {
  if (entries_ == nullptr) return nullptr;
  return static_cast<FrameworkClassRef>(entries_->classNamed(name));
}

bool FrameworkLibrary::instancesRespondTo(FrameworkClassRef type, const char* message) {
  return entries_->instancesRespondTo(type, message);
}

bool FrameworkLibrary::respondsTo(const FrameworkObject& object, const char* message) {
  return entries_->respondsTo(handleOf(object), message);
}

FrameworkObjectRef FrameworkLibrary::makeConfiguration(FrameworkClassRef type, std::span<const int> allowedSystemItems,
                                                       const std::vector<std::string>& allowedBundleIdentifiers) {
  std::vector<const char*> identifiers;
  identifiers.reserve(allowedBundleIdentifiers.size());
  for (const std::string& identifier : allowedBundleIdentifiers) identifiers.push_back(identifier.c_str());
  OrvoFrameworkRaised raised{};
  void* configuration = entries_->makeConfiguration(type, allowedSystemItems.data(), allowedSystemItems.size(),
                                                    identifiers.data(), identifiers.size(), &raised);
  throwWhatWasRaised(raised);
  return wrap(*entries_, configuration);
}

FrameworkObjectRef FrameworkLibrary::makeAssertion(FrameworkClassRef type) {
  OrvoFrameworkRaised raised{};
  void* assertion = entries_->makeAssertion(type, &raised);
  throwWhatWasRaised(raised);
  return wrap(*entries_, assertion);
}

void FrameworkLibrary::activate(FrameworkObject& assertion, const FrameworkObjectRef& configuration,
                                CompletionHandler completion) {
  OrvoFrameworkRaised raised{};
  entries_->activate(handleOf(assertion), handleOf(*configuration), handOver(gate_, std::move(completion)), &raised);
  throwWhatWasRaised(raised);
}

void FrameworkLibrary::invalidate(FrameworkObject& assertion) {
  OrvoFrameworkRaised raised{};
  entries_->invalidate(handleOf(assertion), &raised);
  throwWhatWasRaised(raised);
}

void FrameworkLibrary::log(const std::string& line) {
  std::fprintf(stderr, "%s\n", line.c_str());
  ::syslog(LOG_USER | LOG_ERR, "%s", line.c_str());
}

}  // namespace orvo

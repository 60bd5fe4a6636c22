#include "platform/linux/framework/FrameworkLibrary.h"

#include <cstdio>

#include <dlfcn.h>
#include <syslog.h>
#include <unistd.h>

namespace orvo {

FrameworkClasses* FrameworkLibrary::load(const char* path) {
  const std::string file = root_ + path;
  void* const library = ::dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (library == nullptr) {
    // A missing library is an everyday state; one that is there and broken is worth a line.
    const char* reason = ::dlerror();
    if (::access(file.c_str(), F_OK) == 0) log(std::string("Orvo: ") + (reason != nullptr ? reason : file.c_str()));
    return nullptr;
  }
  if (const auto make = reinterpret_cast<FrameworkEntry>(::dlsym(library, frameworkEntry))) classes_.reset(make());
  return classes_.get();
}

void FrameworkLibrary::log(const std::string& line) {
  std::fprintf(stderr, "%s\n", line.c_str());
  ::syslog(LOG_USER | LOG_ERR, "%s", line.c_str());
}

}  // namespace orvo

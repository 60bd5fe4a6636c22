// The concealment framework as Orvo finds it on Linux: a shared library inside the program's own
// bundle, loaded at run time. Owned by main.cpp, which hands it to the bridge; any thread. Once it is
// destroyed no completion is called any more, so what completions use has to outlive it; its objects go before it.
#pragma once

#include "platform/ConcealmentFramework.h"

#include <memory>
#include <string>
#include <utility>

namespace orvo {

// The library's one exported function, by this name and type. The caller owns what it makes.
inline constexpr const char* frameworkEntry = "orvoMakeFramework";
using FrameworkEntry = FrameworkClasses* (*)();

class FrameworkLibrary final : public ConcealmentFramework {
 public:
  // The folder below which framework paths are looked up, without a trailing slash.
  explicit FrameworkLibrary(std::string root) : root_(std::move(root)) {}

  FrameworkClasses* load(const char* path) override;
  // To standard error as well.
  void log(const std::string& line) override;

 private:
  const std::string root_;
  std::unique_ptr<FrameworkClasses> classes_;  // null until the library is loaded
};

}  // namespace orvo

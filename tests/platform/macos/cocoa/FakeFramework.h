// A stand-in for the private framework: a library of its own, loaded by the adapter under test, whose
// classes do what the test says.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvo::fake {

enum class Fault {
  none,
  configurationIsNil,
  configurationRaises,
  assertionIsNil,
  assertionRaises,
  activationRaises,
  activationRaisesTooLate,  // after it has answered
  invalidationRaises,
};

struct FakeFramework {
  Fault fault = Fault::none;
  // What is raised has this reason, or none.
  const char* reason = nullptr;
  bool answersAtOnce = false;

  // Objects that exist now.
  int configurations = 0;
  int assertions = 0;
  int invalidations = 0;
  std::vector<int> items;
  std::vector<std::string> bundles;
  // Calls the handler of the latest activation on the calling thread; `code` zero answers no error.
  void (*answer)(const std::string& domain, std::int64_t code, const std::string& text) = nullptr;
  // Lets go of that handler without an answer.
  void (*forget)() = nullptr;
};

}  // namespace orvo::fake

// The library's one exported function.
extern "C" orvo::fake::FakeFramework* orvoFakeFramework();

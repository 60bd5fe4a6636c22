// The table of functions that the framework library offers to its loader: plain C types only, so that
// no exception, no C++ object and no symbol but one crosses the border. Every entry may be called on
// any thread; none waits for the agent but the test of a class for a message, and that without running
// the caller's event loop: nothing of the caller's happens inside an entry.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

// What an entry raised; the loader turns it into an exception. `reason` is cut to what fits.
struct OrvoFrameworkRaised {
  bool raised;
  bool hasReason;
  char reason[256];
};

// Texts are UTF-8 and live for the call only.
struct OrvoFrameworkError {
  const char* domain;
  int code;
  const char* localizedDescription;
};

// `invoke` is called exactly once, later, on a thread of the library, with null on success, unless the
// activation raised. `release` is called exactly once, after it.
struct OrvoFrameworkCompletion {
  void (*invoke)(void* context, const OrvoFrameworkError* error);
  void (*release)(void* context);
  void* context;
};

struct OrvoFrameworkEntries {
  std::uint32_t version;
  // Null for an unknown name; lives as long as the process.
  const void* (*classNamed)(const char* name);
  // False for every message while the agent does not hold the watcher's name; may wait for its word.
  bool (*instancesRespondTo)(const void* type, const char* message);
  bool (*respondsTo)(const void* object, const char* message);
  // Objects belong to the caller until `release`. Null when the class makes no such objects.
  void* (*makeConfiguration)(const void* type, const int* allowedSystemItems, std::size_t itemCount,
                             const char* const* allowedBundleIdentifiers, std::size_t identifierCount,
                             OrvoFrameworkRaised* raised);
  void* (*makeAssertion)(const void* type, OrvoFrameworkRaised* raised);
  void (*activate)(void* assertion, void* configuration, OrvoFrameworkCompletion completion,
                   OrvoFrameworkRaised* raised);
  void (*invalidate)(void* assertion, OrvoFrameworkRaised* raised);
  // An assertion that is still active ends with its object.
  void (*release)(void* object);
};

}  // extern "C"

namespace orvo {

// The one exported function: const OrvoFrameworkEntries* orvoFrameworkEntries().
inline constexpr const char* frameworkEntriesSymbol = "orvoFrameworkEntries";
using FrameworkEntriesFunction = const OrvoFrameworkEntries* (*)();
inline constexpr std::uint32_t frameworkEntriesVersion = 1;

}  // namespace orvo

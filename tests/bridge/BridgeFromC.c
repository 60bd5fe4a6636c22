/* A caller without C++: the header must compile here, and the functions must link. */
#include "bridge/MenuBarBackend.h"

QLAssertionRef createFromC(const char* const* bundles, size_t count, QLCompletion completion);

QLAssertionRef createFromC(const char* const* bundles, size_t count, QLCompletion completion) {
  return QLMenuBarBackendAvailable() ? QLCreateMenuBarAssertion(bundles, count, completion) : NULL;
}

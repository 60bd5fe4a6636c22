/* The concealment bridge: four functions, callable from C, between Orvo and the private menu bar
   framework. Callable from any thread; Orvo calls them on the main thread. */
#ifndef ORVO_BRIDGE_MENUBARBACKEND_H
#define ORVO_BRIDGE_MENUBARBACKEND_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Texts are UTF-8 and live for the call only. */
typedef struct QLError {
  const char* domain;
  int64_t code;
  const char* localizedDescription;
} QLError;

/* `invoke` is called at most once: on the calling thread inside QLCreateMenuBarAssertion when the
   framework raised an exception, else later on a thread of the framework's choosing; `error` is
   null on success. `release`, which may be null, is called exactly once, on any thread, when nobody
   can invoke any more; that may be inside the call. */
typedef struct QLCompletion {
  void (*invoke)(void* context, const QLError* error);
  void (*release)(void* context);
  void* context;
} QLCompletion;

typedef struct QLAssertion* QLAssertionRef;

bool QLMenuBarBackendAvailable(void);

/* One line of text; lives as long as the process. */
const char* QLMenuBarBackendDescription(void);

/* Returns an active assertion that the caller owns, or null. */
QLAssertionRef QLCreateMenuBarAssertion(const char* const* allowedBundleIdentifiers, size_t count,
                                        QLCompletion completion);

/* Ends the concealment and consumes the reference; null is ignored. */
void QLReleaseMenuBarAssertion(QLAssertionRef assertion);

#ifdef __cplusplus
}
#endif

#endif

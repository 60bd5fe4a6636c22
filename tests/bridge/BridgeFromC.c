/* A caller without C++: the header must compile here, and the functions must link. */
#include "bridge/MenuBarBackend.h"

#include <string.h>

int bridgeFromC(void);

static void countInvoke(void* context, const QLError* error) { ((int*)context)[0] += error == NULL ? 1 : 100; }
static void countRelease(void* context) { ((int*)context)[1] += 1; }

/* Zero when everything happened as it should, else the number of the first line that did not. */
int bridgeFromC(void) {
  const char* const bundles[] = {"first", "second"};
  int counts[2] = {0, 0};
  const QLCompletion completion = {countInvoke, countRelease, counts};
  if (!QLMenuBarBackendAvailable()) return __LINE__;
  if (strstr(QLMenuBarBackendDescription(), "is available.") == NULL) return __LINE__;
  QLAssertionRef assertion = QLCreateMenuBarAssertion(bundles, 2, completion);
  if (assertion == NULL) return __LINE__;
  if (counts[0] != 1 || counts[1] != 0) return __LINE__;
  QLReleaseMenuBarAssertion(assertion);
  QLReleaseMenuBarAssertion(NULL);
  const QLCompletion silent = {NULL, NULL, NULL};
  QLReleaseMenuBarAssertion(QLCreateMenuBarAssertion(NULL, 0, silent));
  return 0;
}

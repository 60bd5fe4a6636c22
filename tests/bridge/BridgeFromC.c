/* A caller without C++: the header must compile here, and the functions must link. */
#include "bridge/MenuBarBackend.h"

bool bridgeFromC(void);

static void countInvoke(void* context, const QLError* error) { ((int*)context)[0] += error == NULL ? 1 : 100; }
static void countRelease(void* context) { ((int*)context)[1] += 1; }

/* Whether everything happened as it should. */
bool bridgeFromC(void) {
  const char* const bundles[] = {"first", "second"};
  /* Outlives the call: a framework may keep its handler, and release it, long afterwards. */
  static int counts[2];
  const QLCompletion completion = {countInvoke, countRelease, counts};
  QLAssertionRef assertion = QLCreateMenuBarAssertion(bundles, 2, completion);
  const bool answered = assertion != NULL && counts[0] == 1 && counts[1] == 0;
  QLReleaseMenuBarAssertion(assertion);
  QLReleaseMenuBarAssertion(NULL);
  const QLCompletion silent = {NULL, NULL, NULL};
  QLReleaseMenuBarAssertion(QLCreateMenuBarAssertion(NULL, 0, silent));
  return answered;
}

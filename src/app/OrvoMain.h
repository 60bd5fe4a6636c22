// The entry point: prints the diagnostic report, hands over to a copy that is already running, or runs
// the application. Holds no state; main thread only.
#pragma once

#include "platform/Platform.h"

#include <functional>
#include <iosfwd>

namespace orvo {

class OrvoMain {
 public:
  // The few services that come before the decision how to run; they must be cheap to make.
  struct EarlyServices {
    const Bundle& bundle;
    const ProcessInfo& processInfo;
    const Accessibility& accessibility;
    Workspace& workspace;
    const Words& words;
  };

  // `out` receives the report and nothing else. `makePlatform` is called at most once, when the
  // application itself is to run; what it returns must outlive the call of main, null where nothing can run.
  static void main(const EarlyServices& early, std::ostream& out, const std::function<const Platform*()>& makePlatform);
};

}  // namespace orvo

#include "platform/macos/dispatch/TerminationSignals.h"

#include <cstdint>
#include <utility>

namespace orvo {

TerminationSignals::TerminationSignals(std::function<void()> received) : received_(std::move(received)) {
  for (Handled& handled : handled_) handle(handled);
}

TerminationSignals::~TerminationSignals() {
  for (const Handled& handled : handled_) {
    if (handled.source == nullptr) continue;
    std::signal(handled.signal, SIG_DFL);
    dispatch_source_cancel(handled.source);
    dispatch_release(handled.source);
  }
}

// Dispatch sees a signal whatever its action is; ignoring it keeps it from ending the process.
void TerminationSignals::handle(Handled& handled) {
  if (std::signal(handled.signal, SIG_IGN) == SIG_IGN) return;
  handled.source = dispatch_source_create(DISPATCH_SOURCE_TYPE_SIGNAL, static_cast<std::uintptr_t>(handled.signal), 0,
                                          dispatch_get_main_queue());
  if (handled.source == nullptr) {
    std::signal(handled.signal, SIG_DFL);
    return;
  }
  dispatch_set_context(handled.source, &handled);
  dispatch_source_set_event_handler_f(handled.source, [](void* context) {
    const Handled& received = *static_cast<const Handled*>(context);
    std::signal(received.signal, SIG_DFL);
    received.owner->received_();
  });
  dispatch_resume(handled.source);
}

}  // namespace orvo

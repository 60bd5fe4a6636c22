// The one settable entry through which the bridge finds its framework, since C functions take no
// context.
#pragma once

namespace orvo {

class ConcealmentFramework;

// Not owned; null, as at process start, means that there is no framework. Makes the bridge
// unresolved again. Called by main.cpp before anything else, and by tests; never while another
// thread is inside the bridge.
void setConcealmentFramework(ConcealmentFramework* framework);

}  // namespace orvo

// The one settable entry through which the bridge finds its framework, since C functions take no
// context.
#pragma once

#include "platform/Words.h"

namespace orvo {

class ConcealmentFramework;

// Neither is owned. A null framework, as at process start, means that there is no framework. Makes the bridge
// unresolved again. Called by main.cpp before anything else, and by tests; never while another
// thread is inside the bridge.
void setConcealmentFramework(ConcealmentFramework* framework, const Words& words = macWords);

}  // namespace orvo

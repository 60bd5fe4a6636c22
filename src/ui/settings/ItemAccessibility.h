// Tells assistive programs which items are disabled: Qt 6.4 leaves that state out for Qt Quick.
#pragma once

namespace orvo {

// From now on, for every accessible Qt Quick item of the process. Harmless when called again.
void installItemAccessibility();

}  // namespace orvo

// Tells assistive programs what Qt 6.4 leaves out or has wrong for Qt Quick: which items are disabled, that the focus
// is one item's, what a text or a picker says, and that a message has come.
#pragma once

namespace orvo {

// From now on, for every accessible Qt Quick item of the process. Harmless when called again.
void installItemAccessibility();

}  // namespace orvo

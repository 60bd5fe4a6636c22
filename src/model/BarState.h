// The states of the bar, which the model alone changes. A value; any thread.
#pragma once

namespace orvo {

// The bar's hide state.
enum class BarState {
  visible,   // every icon shows
  applying,  // a hide request waits for the system's answer, at most 5 seconds
  hidden,    // the system confirmed the request
};

}  // namespace orvo

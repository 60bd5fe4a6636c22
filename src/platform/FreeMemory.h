// Gives memory that was freed back to the system, where the allocator keeps it. Any thread.
#pragma once

namespace orvo {

void returnFreeMemory();

}  // namespace orvo

#include "platform/FreeMemory.h"

#include <malloc.h>

namespace orvo {

void returnFreeMemory() { malloc_trim(0); }

}  // namespace orvo

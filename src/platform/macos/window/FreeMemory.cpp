#include "platform/FreeMemory.h"

#include <malloc/malloc.h>

namespace orvo {

// Every zone, and as much as there is.
void returnFreeMemory() { malloc_zone_pressure_relief(nullptr, 0); }

}  // namespace orvo

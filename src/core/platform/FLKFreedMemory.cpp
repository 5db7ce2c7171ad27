#include "core/platform/FLKFreedMemory.h"

#include <malloc.h>

namespace flk {
void giveFreedMemoryBack() { malloc_trim(0); }
}  // namespace flk

#include "core/platform/FLKThreadPriority.h"

#include <sys/resource.h>
#include <unistd.h>

namespace flk {
void lowerCurrentThreadPriority() {
    constexpr int kBackgroundNiceness = 10;
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), kBackgroundNiceness);
}
}  // namespace flk

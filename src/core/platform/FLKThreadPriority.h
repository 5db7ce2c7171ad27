#pragma once

namespace flk {
// Background work (thumbnails, decoding ahead, exports) yields to the threads
// that draw and answer the user: the calling thread runs at niceness 10 from
// now on, and so does every thread it starts afterwards. A thread cannot take
// its priority back, so call it on a thread of its own.
void lowerCurrentThreadPriority();
}  // namespace flk

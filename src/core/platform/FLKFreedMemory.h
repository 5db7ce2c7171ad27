#pragma once

namespace flk {
// Hands the pages of memory freed since to the system. The allocator keeps
// freed memory for the thread that freed it; after a decoder with tens of
// megabytes of reference frames goes, the next one runs on another thread
// and would take fresh pages while the old ones stay resident. Any thread;
// takes a few milliseconds, so call it when something large went, not per frame.
void giveFreedMemoryBack();
}  // namespace flk

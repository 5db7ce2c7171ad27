#pragma once

#include <thread>

// Threads whose owner is released on the thread itself cannot be joined
// there. Instead of detaching them, owners hand them here; a program joins
// them before it returns from main(), so that no thread of ours still runs
// while static objects are destroyed.
namespace flk {
// Takes a thread that is about to end by itself. Any thread may call it.
void joinLater(std::thread thread);
// Joins every thread handed over so far. Call from a thread that was never
// handed over (the main thread); returns how many were joined. `atExit`:
// threads handed over afterwards are detached, since nobody is left to join
// them.
size_t joinReleasedThreads(bool atExit = false);
}  // namespace flk

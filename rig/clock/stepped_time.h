// The program's time: how far it has come, and what moves it.
//
// A swap ends a frame and moves the time to the frame's beginning plus a step.
// Within a frame it stands still, except that
// - a sleep or a wait that timed out moves it by as much on the thread that swaps
//   (before the first swap: the main thread); the frame then takes the step or
//   what was slept, whichever is longer. Other threads' sleeps depend on the
//   machine's speed and move nothing;
// - a thread that asks very often in one frame is waiting for it to move on, and
//   it does. A sleep of a thread that does not swap counts as many questions.
//
// All functions may be called on any thread.
#pragma once

#include <cstdint>

namespace rig {

constexpr int64_t kSecond = 1000000000;

// Nanoseconds. A question: it may move the time.
int64_t sinceStart();
// A sleep of that many nanoseconds is over.
void slept(int64_t nanoseconds);
// A swap, on the calling thread.
void endFrame(int64_t step);

}  // namespace rig

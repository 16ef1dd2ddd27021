// The processes that a program leaves behind.
#pragma once

#include <sys/types.h>

#include <chrono>

namespace rig {

// Makes this process the parent of those below it that lose theirs.
void adoptOrphans();

// Sends the signal to every process below this one.
void signalDescendants(int signal);

// Ends and reaps every process below this one: asked by SIGTERM, killed after
// `patience`. One that even SIGKILL does not end is given up after two seconds.
void endDescendants(std::chrono::milliseconds patience);

}  // namespace rig

// How either half of the launcher ends.
#pragma once

#include <cstdio>
#include <exception>

#include "rig/run/exit_codes.h"
#include "rig/run/signals.h"

namespace rig {

// What `work` returns, or the exit code for what it throws, which standard error tells.
template <class Work>
int exitCodeOf(const Work& work) {
    try {
        return work();
    } catch (const EndedEarly& ended) {
        return 128 + ended.signal;
    } catch (const std::exception& error) {
        fprintf(stderr, "vesko-run: %s\n", error.what());
        return kExitDevice;
    }
}

}  // namespace rig

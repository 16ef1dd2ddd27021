// Descriptors that a monitor's own housekeeping cannot close.
#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace android {

// Resetting a monitor that never started closes descriptor 0, so nothing of ours
// may live there. Takes the descriptor over and returns it, or a copy of it with
// another number; negative values pass.
inline int keptFromZero(int descriptor) {
    if (descriptor != 0) return descriptor;
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(descriptor);
    return moved;
}

}  // namespace android

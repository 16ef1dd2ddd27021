// Descriptors that a monitor's own housekeeping cannot close, and that the
// application may close without harm.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
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

// What a descriptor refers to. Some applications close all descriptors that they
// do not know, and then the number may become another file's. Not for files that
// share one inode, as all of eventfd do.
class FileIdentity {
public:
    FileIdentity() = default;
    explicit FileIdentity(int descriptor) : known(fstat(descriptor, &file) == 0) {}

    bool isThatOf(int descriptor) const {
        struct stat now = {};
        return known && fstat(descriptor, &now) == 0 && now.st_dev == file.st_dev &&
               now.st_ino == file.st_ino;
    }

private:
    struct stat file = {};
    bool known = false;
};

}  // namespace android

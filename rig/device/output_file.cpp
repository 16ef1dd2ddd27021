#include "rig/device/output_file.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>

namespace rig {

namespace {

// Process ids would not do: those of two programs in namespaces may be equal.
std::string temporaryBeside(const std::string& file) {
    uint64_t number = 0;
    if (getrandom(&number, sizeof number, 0) != sizeof number) number = 0;
    char suffix[32];
    snprintf(suffix, sizeof suffix, ".%016llx.new", static_cast<unsigned long long>(number));
    return file + suffix;
}

bool writeAll(int descriptor, const std::string& bytes) {
    for (size_t done = 0; done < bytes.size();) {
        const ssize_t wrote = write(descriptor, bytes.data() + done, bytes.size() - done);
        if (wrote < 0 && errno != EINTR) return false;
        if (wrote > 0) done += static_cast<size_t>(wrote);
    }
    return true;
}

}  // namespace

bool writeOutputFile(const std::string& file, const std::string& bytes) {
    const std::string unfinished = temporaryBeside(file);
    const int descriptor =
        open(unfinished.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (descriptor < 0) return false;
    struct stat before = {};
    if (stat(file.c_str(), &before) == 0) fchmod(descriptor, before.st_mode & 0777);
    bool done = writeAll(descriptor, bytes);
    done = close(descriptor) == 0 && done;
    if (done && rename(unfinished.c_str(), file.c_str()) == 0) return true;
    const int reason = errno;
    unlink(unfinished.c_str());
    errno = reason;
    return false;
}

}  // namespace rig

#include "rig/run/paths.h"

#include <unistd.h>

#include <climits>

namespace rig {

std::string absolutePath(const std::string& path) {
    if (path[0] == '/') return path;
    char directory[PATH_MAX];
    if (getcwd(directory, sizeof directory) == nullptr) return path;
    return std::string(directory) + "/" + path;
}

std::string ownPath() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
    return length > 0 ? std::string(path, static_cast<size_t>(length)) : "./vesko-run";
}

std::string rigDirectory() {
    const std::string own = ownPath();
    return own.substr(0, own.rfind('/')) + "/rig";
}

}  // namespace rig

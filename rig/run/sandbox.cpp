#include "rig/run/sandbox.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstring>

#include "platform/device/names.h"
#include "rig/device/parameter_node.h"

namespace rig {

namespace {

using Arguments = std::vector<std::string>;

constexpr char kNodeSource[] = "/proc/sys/kernel/domainname";

void add(Arguments& arguments, std::initializer_list<std::string> more) {
    arguments.insert(arguments.end(), more);
}

bool isDirectory(const std::string& path) {
    struct stat info = {};
    return lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

void showEntry(Arguments& arguments, const std::string& path) {
    char target[PATH_MAX];
    const ssize_t length = readlink(path.c_str(), target, sizeof target - 1);
    if (length > 0) {
        add(arguments, {"--symlink", std::string(target, static_cast<size_t>(length)), path});
    } else {
        add(arguments, {"--dev-bind-try", path, path});
    }
}

// The folders of the machine that get an empty file system over them, and what is
// new in each.
struct Room {
    const char* folder;
    const char* content;
};
constexpr Room kRooms[] = {{"/", "data"},
                           // A machine's own /data stays visible around ours.
                           {"/data", "system"},
                           {"/data/system", "vkd"},
                           {"/data/system/vkd", "qogl"},
                           {"/sys/class", "gpu_vesko"}};

// Puts an empty file system over the directory and shows its entries again,
// all but `hidden`, so that something new can come into it.
void makeRoom(Arguments& arguments, const std::string& directory, const std::string& hidden) {
    add(arguments, {"--tmpfs", directory});
    DIR* entries = opendir(directory.c_str());
    if (entries == nullptr) return;
    const std::string prefix = directory == "/" ? "/" : directory + "/";
    while (const dirent* entry = readdir(entries)) {
        const std::string name = entry->d_name;
        if (name != "." && name != ".." && name != hidden) showEntry(arguments, prefix + name);
    }
    closedir(entries);
}

void addUser(Arguments& arguments) {
    if (geteuid() != 0) add(arguments, {"--unshare-user"});
}

// The first process of the namespace ends with bubblewrap, and all others with it.
// Without the namespace it must be able to end the others itself, when it sees that
// the launcher is gone.
void addProcesses(Arguments& arguments) {
    add(arguments, {"--die-with-parent", "--unshare-pid", "--as-pid-1", "--proc", "/proc"});
}

}  // namespace

std::vector<std::string> processNamespaceTrial() {
    Arguments arguments = {"bwrap", "--dev-bind", "/", "/"};
    addUser(arguments);
    addProcesses(arguments);
    add(arguments, {"--", "/proc/self/exe", "--version"});  // bubblewrap once more
    return arguments;
}

std::vector<std::string> sandboxArguments(const std::string& configFile, bool ownProcesses) {
    Arguments arguments = {"bwrap", "--unshare-uts", "--cap-add", "CAP_SYS_ADMIN"};
    addUser(arguments);
    for (const Room& room : kRooms) {
        if (isDirectory(room.folder)) makeRoom(arguments, room.folder, room.content);
    }
    add(arguments, {"--dir", "/data/system/vkd", "--dir", kPrivateDirectory});
    if (!configFile.empty()) add(arguments, {"--ro-bind", configFile, android::kGameConfigPath});
    add(arguments, {"--dev-bind", kNodeSource, android::kParameterNodePath});
    if (ownProcesses) addProcesses(arguments);
    return arguments;
}

bool isPrivateInside(const std::string& folder) {
    for (const Room& room : kRooms) {
        if (folder == room.folder) return true;
    }
    return false;
}

}  // namespace rig

// Options that name files. Output files are refused here, before the program
// starts, where writing them could only fail or destroy something.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "rig/run/option_readers.h"
#include "rig/run/paths.h"
#include "rig/run/sandbox.h"

namespace rig {

namespace {

[[noreturn]] void refuse(const RawOption& option, const std::string& file, const std::string& why) {
    throw BadOption(option.name, "'" + file + "' " + why);
}

std::string realPath(const std::string& path) {
    char resolved[PATH_MAX];
    return realpath(path.c_str(), resolved) != nullptr ? resolved : "";
}

// Only trying tells: of rights, of read-only file systems, and of those without
// ordinary files.
bool canCreateIn(const std::string& directory) {
    std::string file = directory + "/.vesko-run-XXXXXX";
    const int descriptor = mkstemp(file.data());
    if (descriptor < 0) return false;
    close(descriptor);
    unlink(file.c_str());
    return true;
}

std::string outputFile(const RawOption& option, const std::string& name) {
    if (name.empty()) refuse(option, name, "is no file name");
    const std::string path = absolutePath(name);
    std::string file = realPath(path);
    struct stat info = {};
    if (!file.empty() && stat(file.c_str(), &info) == 0) {
        if (S_ISDIR(info.st_mode)) refuse(option, name, "is a folder; name a file in it");
        if (!S_ISREG(info.st_mode)) refuse(option, name, "is not a regular file; name another");
        if (access(file.c_str(), W_OK) != 0) {
            refuse(option, name, std::string("cannot be written: ") + strerror(errno));
        }
    } else {
        const size_t slash = path.rfind('/');
        const std::string folder = realPath(path.substr(0, slash + 1));
        if (folder.empty() || slash + 1 == path.size() || lstat(path.c_str(), &info) == 0) {
            refuse(option, name,
                   "cannot be written: there is no such folder; create it or name another one");
        }
        file = (folder == "/" ? "" : folder) + path.substr(slash);
    }
    const std::string folder = file.substr(0, std::max<size_t>(file.rfind('/'), 1));
    if (isPrivateInside(folder)) {
        refuse(option, name,
               "would be lost, since the program has a " + folder + " of its own; name a file in " +
                   "another folder");
    }
    if (!canCreateIn(folder)) {
        refuse(option, name, "cannot be written into " + folder + ": " + strerror(errno));
    }
    return file;
}

}  // namespace

kinds::OutputFile readOutputFile(const RawOption& option) {
    return option.given() ? outputFile(option, option.text()) : "";
}

kinds::OutputFiles readOutputFiles(const RawOption& option) {
    std::vector<std::string> files;
    for (const std::string& text : option.texts) files.push_back(outputFile(option, text));
    return files;
}

kinds::InputFile readInputFile(const RawOption& option) {
    if (!option.given()) return "";
    const std::string& name = option.text();
    if (name.empty()) refuse(option, name, "is no file name");
    std::string file = absolutePath(name);
    struct stat info = {};
    if (stat(file.c_str(), &info) != 0 || access(file.c_str(), R_OK) != 0) {
        refuse(option, name,
               std::string("cannot be read: ") + strerror(errno) + "; name a readable text file");
    }
    if (!S_ISREG(info.st_mode)) refuse(option, name, "is not a regular file");
    return file;
}

}  // namespace rig

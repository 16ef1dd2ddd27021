#include "rig/run/program.h"

#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "rig/run/exit_codes.h"
#include "rig/run/games.h"
#include "rig/run/paths.h"

namespace rig {

namespace {

// As a shell finds it. Sets exitCode where it does not.
std::string findProgram(const std::string& name, int& exitCode) {
    std::vector<std::string> candidates;
    if (name.find('/') != std::string::npos) {
        candidates.push_back(absolutePath(name));
    } else {
        const char* path = getenv("PATH");
        std::istringstream directories(path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin");
        for (std::string directory; std::getline(directories, directory, ':');) {
            candidates.push_back(absolutePath(directory.empty() ? "." : directory) + "/" + name);
        }
    }
    exitCode = kExitNotFound;
    for (const std::string& candidate : candidates) {
        struct stat info = {};
        if (stat(candidate.c_str(), &info) != 0) continue;
        if (S_ISREG(info.st_mode) && access(candidate.c_str(), X_OK) == 0) {
            exitCode = 0;
            return candidate;
        }
        exitCode = kExitCannotRun;
    }
    return "";
}

bool isScript(const std::string& file) {
    char magic[2] = {};
    std::ifstream(file).read(magic, 2);
    return magic[0] == '#' && magic[1] == '!';
}

}  // namespace

int chooseProgram(const std::vector<std::string>& command, Plan& plan) {
    if (command.empty()) {
        fprintf(stderr,
                "vesko-run: there is no program; name it after --, as in: vesko-run "
                "--set FB0Factor=75 -- glmark2-es2 -b build\n");
        return kExitUsage;
    }
    int exitCode = 0;
    plan.program = findProgram(command[0], exitCode);
    if (exitCode != 0) {
        fprintf(stderr, "vesko-run: the program '%s' %s\n", command[0].c_str(),
                exitCode == kExitNotFound ? "was not found; check its name or install it"
                                          : "is not an executable file");
        return exitCode;
    }
    plan.arguments = command;
    const std::string gamesName = processNameOf(plan.settings.game);
    if (!gamesName.empty()) plan.arguments[0] = gamesName;
    if (!gamesName.empty() && isScript(plan.program)) {
        fprintf(stderr,
                "vesko-run: '%s' is a script, so its process bears its interpreter's name and the "
                "plug-in sees no game; name the program that the script starts\n",
                command[0].c_str());
    }
    return 0;
}

}  // namespace rig

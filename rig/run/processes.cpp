#include "rig/run/processes.h"

#include <dirent.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace rig {

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto kLookInterval = 5ms;
constexpr auto kPatienceWithKilled = 2000ms;

// 0 where the process has just gone.
pid_t parentOf(const std::string& process) {
    std::ifstream stream("/proc/" + process + "/stat");
    const std::string line{std::istreambuf_iterator<char>(stream), {}};
    const size_t name = line.rfind(')');  // a name may hold anything
    int parent = 0;
    if (name == std::string::npos) return 0;
    return sscanf(line.c_str() + name + 1, " %*c %d", &parent) == 1 ? parent : 0;
}

std::vector<pid_t> descendants() {
    std::multimap<pid_t, pid_t> children;
    if (DIR* processes = opendir("/proc")) {
        while (const dirent* entry = readdir(processes)) {
            const pid_t process = atoi(entry->d_name);
            if (process > 0) children.emplace(parentOf(entry->d_name), process);
        }
        closedir(processes);
    }
    std::vector<pid_t> found = {getpid()};
    for (size_t i = 0; i < found.size(); ++i) {
        const auto [begin, end] = children.equal_range(found[i]);
        for (auto child = begin; child != end; ++child) found.push_back(child->second);
    }
    found.erase(found.begin());
    return found;
}

}  // namespace

void adoptOrphans() { prctl(PR_SET_CHILD_SUBREAPER, 1); }

void signalDescendants(int signal) {
    for (const pid_t process : descendants()) kill(process, signal);
}

void endDescendants(std::chrono::milliseconds patience) {
    signalDescendants(SIGTERM);
    signalDescendants(SIGCONT);
    const auto start = Clock::now();
    for (;;) {
        bool any = false;
        for (const pid_t process : descendants()) {
            any = waitpid(process, nullptr, WNOHANG) != process || any;
        }
        const auto waited = Clock::now() - start;
        if (!any || waited > patience + kPatienceWithKilled) return;
        if (waited > patience) signalDescendants(SIGKILL);
        std::this_thread::sleep_for(kLookInterval);
    }
}

}  // namespace rig

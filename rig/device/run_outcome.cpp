#include "rig/device/run_outcome.h"

#include "rig/device/shared_memory.h"

namespace rig {

RunOutcome& RunOutcome::create(const std::string& file) {
    return *static_cast<RunOutcome*>(createShared(file, sizeof(RunOutcome)));
}

RunOutcome& RunOutcome::open(const std::string& file) {
    return *static_cast<RunOutcome*>(openShared(file, sizeof(RunOutcome)));
}

std::vector<std::string> RunOutcome::missing(const Settings& settings) const {
    const uint32_t reached = swaps.load();
    std::string why;
    if (processes.load() == 0) {
        why = "the program made no EGL call that comes through the rig";
    } else if (reached == 0) {
        why = "the program swapped no frame";
    }
    std::vector<std::string> lines;
    for (size_t i = 0; i < settings.captures.size(); ++i) {
        const Capture& capture = settings.captures[i];
        if (captured[i] != 0) continue;
        const std::string frame = "frame " + std::to_string(capture.frame);
        const bool passed = reached >= static_cast<uint32_t>(capture.frame);
        lines.push_back("--capture " + capture.file + ": there is no picture of " + frame + ": " +
                        (!why.empty() ? why
                         : passed     ? "it could not be written"
                                      : "the program swapped " + std::to_string(reached)));
    }
    if (!settings.statsFile.empty() && statisticsWritten == 0) {
        lines.push_back("--stats " + settings.statsFile + ": nothing was recorded: " +
                        (why.empty() ? "the file could not be written" : why));
    }
    return lines;
}

}  // namespace rig

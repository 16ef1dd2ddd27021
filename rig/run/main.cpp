// vesko-run: see --help.
#include <cstdlib>
#include <cstring>
#include <utility>

#include "rig/run/launch.h"
#include "rig/run/options.h"
#include "rig/run/supervise.h"

int main(int argc, char** argv) {
    if (argc == 4 && strcmp(argv[1], rig::kSuperviseArgument) == 0) {
        return rig::supervise(atoi(argv[2]), atoi(argv[3]));
    }
    int exitCode = 0;
    auto plan = rig::parseCommandLine(argc, argv, exitCode);
    return plan ? rig::launch(std::move(*plan)) : exitCode;
}

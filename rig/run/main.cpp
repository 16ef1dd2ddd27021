// vesko-run: see --help.
#include <cstdlib>
#include <cstring>

#include "rig/run/launch.h"
#include "rig/run/options.h"
#include "rig/run/supervise.h"

int main(int argc, char** argv) {
    if (argc == 3 && strcmp(argv[1], rig::kSuperviseArgument) == 0)
        return rig::supervise(atoi(argv[2]));
    int exitCode = 0;
    const auto plan = rig::parseCommandLine(argc, argv, exitCode);
    return plan ? rig::launch(*plan) : exitCode;
}

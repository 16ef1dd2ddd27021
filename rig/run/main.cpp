// vesko-run: see --help.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <utility>

#include "rig/run/launch.h"
#include "rig/run/options.h"
#include "rig/run/supervise.h"

// Descriptors that are made later must not pass for a stream that was closed.
static void openStandardStreams() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (fcntl(stream, F_GETFD) < 0) open("/dev/null", O_RDWR);
    }
}

int main(int argc, char** argv) {
    openStandardStreams();
    if (argc == 4 && strcmp(argv[1], rig::kSuperviseArgument) == 0) {
        return rig::supervise(atoi(argv[2]), atoi(argv[3]));
    }
    int exitCode = 0;
    auto plan = rig::parseCommandLine(argc, argv, exitCode);
    return plan ? rig::launch(std::move(*plan)) : exitCode;
}

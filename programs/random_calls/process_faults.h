// What a process does to itself while frames run. Each fault acts before every
// frame of its time.
#pragma once

#include <string>
#include <vector>

#include "programs/random_calls/surroundings.h"

namespace fuzz {

struct Program {
    Surroundings& surroundings;
    std::unique_ptr<Painter>& painter;
    uint64_t seed;
};

class ProcessFault {
public:
    // "NAME@FROM-TO"; throws std::invalid_argument that says what is wrong.
    explicit ProcessFault(const std::string& text);
    void beforeFrame(Program& program, int frame) const;
    // "name: what it does" for each, for the help text.
    static std::string help();

private:
    size_t kind = 0;
    int from = 0, to = 0;
};

// Called before main and after it, with RANDOM_CALLS_OUTSIDE_MAIN in the
// environment: a picture into a surface of its own.
void paintOutsideMain();

}  // namespace fuzz

// The kinds of options, each a type of value. How the command line's texts become
// such a value is in rig/run/option_readers.h.
//
// A value's initial state is "not asked for", which is what a program gets that is
// started without the launcher.
#pragma once

#include <climits>
#include <string>
#include <vector>

namespace rig {

struct Parameter {
    std::string name;
    int value = 0;
};

// Takes effect right after swap `frame`.
struct ParameterChange {
    int frame = 0;
    std::string name;
    int value = 0;
};

struct Property {
    std::string name;
    std::string value;
};

struct PbufferSize {
    int width = 0;
    int height = 0;
};

// In force from frame fromFrame to frame toFrame, both included.
struct QuirkRequest {
    std::string name;
    int fromFrame = 1;
    int toFrame = INT_MAX;
};

// The value of --game for programs that are scaled as themselves.
constexpr char kAnyProgram[] = "any";

namespace kinds {

using Flag = bool;
using Choice = std::string;
using ThreadName = std::string;  // empty: leave thread names alone
using ServiceAnswer = std::string;
using Percentage = std::string;  // from 0 to 100; empty: not given
using InputFile = std::string;   // absolute; empty: none
using OutputFile = std::string;  // absolute; empty: none
using OutputFiles = std::vector<std::string>;
using FrameCount = int;  // 0: no end
using Frames = std::vector<int>;
using Size = PbufferSize;     // 0 x 0: as the program asks
using ClockStep = long long;  // nanoseconds for each swap; 0: real time
using Parameters = std::vector<Parameter>;
using ParameterChanges = std::vector<ParameterChange>;
using Properties = std::vector<Property>;
using QuirkRequests = std::vector<QuirkRequest>;

}  // namespace kinds

}  // namespace rig

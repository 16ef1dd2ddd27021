// Changes of the node's parameters and of the filter from standard input: NAME=VALUE,
// filter NAME, or sharpness PERCENT, one a line.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "rig/device/filter_switch.h"
#include "rig/device/parameter_node.h"

namespace rig {

// Never waits. However many lines come in, each read takes a few of them, and the
// node gets the values that are in force, its texts spaced so that a monitor can
// read each.
class NodeInput {
public:
    using Clock = std::chrono::steady_clock;

    // All outlive the object.
    NodeInput(ParameterNode& parameterNode, FilterSwitch& filterSwitch, int inputDescriptor)
        : node(parameterNode), filter(filterSwitch), input(inputDescriptor) {}

    // For poll(2); -1 while nothing is to be read.
    int descriptor() const { return writing || Clock::now() < next ? -1 : input; }
    // When to call proceed even if nothing can be read.
    std::optional<Clock::time_point> when() const;
    // Takes what can be read, where `readable`, and writes what is due.
    void proceed(bool readable);

private:
    void takeChunk();
    void takeLine(const std::string& line);
    void complain(const std::string& what);

    ParameterNode& node;
    FilterSwitch& filter;
    int input;  // -1 at its end
    std::string unfinished;
    bool skipping = false;  // the rest of a line that is too long
    int complaints = 0;     // about the chunk that was read last
    bool writing = false;
    size_t text = 0;         // the one to be written next
    Clock::time_point next;  // when to write, or read, again
};

}  // namespace rig

#include "rig/run/node_input.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <exception>

namespace rig {

namespace {

using namespace std::chrono_literals;

constexpr size_t kLineMax = 256;
constexpr int kComplaintsMax = 10;  // for each chunk
constexpr auto kSpacing = 20ms;

std::string trimmed(const std::string& line) {
    constexpr char kBlanks[] = " \t\r";
    const size_t first = line.find_first_not_of(kBlanks);
    if (first == std::string::npos) return "";
    return line.substr(first, line.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

std::optional<NodeInput::Clock::time_point> NodeInput::when() const {
    if (writing || (input >= 0 && Clock::now() < next)) return next;
    return std::nullopt;
}

void NodeInput::proceed(bool readable) {
    if (readable && !writing) takeChunk();
    if (!writing || Clock::now() < next) return;
    bool written = true;
    writing = !node.writeText(text++, &written).empty();
    if (!written) fprintf(stderr, "vesko-run: cannot write the parameter node\n");
    if (writing) next = Clock::now() + kSpacing;
}

void NodeInput::takeChunk() {
    char buffer[4096];
    const ssize_t got = read(input, buffer, sizeof buffer);
    if (got < 0 && (errno == EINTR || errno == EAGAIN)) return;
    complaints = 0;
    if (got <= 0) {
        input = -1;
        if (!skipping) takeLine(unfinished);
    }
    for (ssize_t i = 0; i < got; ++i) {
        if (buffer[i] == '\n') {
            if (!skipping) takeLine(unfinished);
            unfinished.clear();
            skipping = false;
        } else if (unfinished.size() == kLineMax) {
            if (!skipping) complain("a line is longer than 256 characters");
            skipping = true;
        } else {
            unfinished += buffer[i];
        }
    }
    if (complaints > kComplaintsMax) {
        fprintf(stderr, "vesko-run: standard input: %d more bad lines\n",
                complaints - kComplaintsMax);
    }
    if (!writing) next = Clock::now() + kSpacing;
}

// A bad line must not end a running program.
void NodeInput::takeLine(const std::string& line) {
    const std::string assignment = trimmed(line);
    if (assignment.empty()) return;
    try {
        if (filter.take(assignment)) return;
        const Parameter parameter = parseAssignment(assignment);
        if (!isKnownParameter(parameter.name)) {
            complain("the plug-in knows no parameter '" + parameter.name + "'; passed on as it is");
        }
        node.set(parameter.name, parameter.value);
        writing = true;
        text = 0;
        next = Clock::now();
    } catch (const std::exception& error) {
        complain(
            std::string(error.what()) +
            "; a line is NAME=VALUE, for example FB0Factor=75, or 'filter NAME', or 'sharpness "
            "PERCENT'");
    }
}

void NodeInput::complain(const std::string& what) {
    if (++complaints <= kComplaintsMax) {
        fprintf(stderr, "vesko-run: standard input: %s\n", what.c_str());
    }
}

}  // namespace rig

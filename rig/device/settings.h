// What the launcher tells the loader inside the program: one JSON text in the
// environment variable kSettingsVariable. A program that is started with the
// rig's libraries but without the launcher has no such variable and gets the
// defaults: the plug-in, and nothing else.
#pragma once

#include <climits>
#include <string>
#include <vector>

namespace rig {

constexpr char kSettingsVariable[] = "VESKO_RIG";

struct Parameter {
    std::string name;
    int value = 0;
};

struct Property {
    std::string name;
    std::string value;
};

struct Capture {
    std::string file;
    int frame = 1;  // counted from 1
};

// In force from frame fromFrame to frame toFrame, both included.
struct QuirkRequest {
    std::string name;
    int fromFrame = 1;
    int toFrame = INT_MAX;
};

// Takes effect right after swap `frame`.
struct ParameterChange {
    int frame = 0;
    std::string name;
    int value = 0;
};

struct Settings {
    bool plugin = true;
    bool bare = false;         // do not guard the application's program
    std::string log = "info";  // debug, info, error or none
    std::string game = "none";
    std::string threadName;      // empty: leave thread names alone
    std::string parametersFile;  // see ParameterNode; empty: there is no node
    std::vector<ParameterChange> changes;
    std::vector<Property> properties;
    std::string service = "absent";
    int width = 0;  // of pbuffers; 0: as the program asks
    int height = 0;
    std::vector<Capture> captures;
    int frames = 0;  // end after so many swaps; 0: never
    std::string statsFile;
    std::string countsFile;   // see CallCounts; empty: calls are not counted
    std::string outcomeFile;  // see RunOutcome; empty: nobody asks
    std::vector<QuirkRequest> quirks;
    long long clockStep = 0;  // nanoseconds by which a swap moves the program's clock; 0: real time
    bool status = false;      // say once a second what the plug-in does
};

std::string toJson(const Settings& settings);
// Throws std::exception on a text that toJson did not make.
Settings settingsFromJson(const std::string& text);
// From the environment; the defaults where there is none.
Settings settingsFromEnvironment();

}  // namespace rig

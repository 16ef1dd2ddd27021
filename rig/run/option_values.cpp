#include "rig/run/option_values.h"

#include <glob.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/Error.hpp>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "rig/device/parameter_node.h"
#include "rig/device/quirk_names.h"
#include "rig/device/run_outcome.h"
#include "rig/run/paths.h"

namespace rig {

namespace {

constexpr size_t kThreadNameMax = 15;
constexpr size_t kPropertyMax = 91;
constexpr int kSizeMax = 16384;

[[noreturn]] void refuse(const std::string& option, const std::string& why) {
    throw CLI::ValidationError(option + ": " + why);
}

std::string outputFile(const std::string& option, const std::string& path) {
    const std::string file = absolutePath(path);
    const std::string directory = file.substr(0, file.rfind('/') + 1);
    if (access(directory.c_str(), W_OK) != 0)
        refuse(option, "cannot write into " + directory + ": " + strerror(errno) +
                           "; create the directory or name another one");
    return file;
}

// A whole number that fills the text, or an error.
int number(const std::string& option, const std::string& text, int low, int high) {
    try {
        size_t used = 0;
        const int value = std::stoi(text, &used);
        if (used == text.size() && value >= low && value <= high) return value;
    } catch (const std::exception&) {
    }
    refuse(option, "'" + text + "' is not a whole number from " + std::to_string(low) + " to " +
                       std::to_string(high));
}

Parameter assignment(const std::string& option, const std::string& text) {
    try {
        return parseAssignment(text);
    } catch (const std::invalid_argument& error) {
        refuse(option, std::string(error.what()) + "; give NAME=VALUE, for example FB0Factor=75");
    }
}

void warnIfUnknown(const std::string& option, const std::string& name) {
    if (!isKnownParameter(name))
        fprintf(stderr, "vesko-run: %s: the plug-in knows no parameter '%s'; passed on as it is\n",
                option.c_str(), name.c_str());
}

// Factors that the node never names stay -1 in the plug-in, which scales to
// nothing: hence the defaults.
std::vector<Parameter> parametersFrom(const std::vector<std::string>& set) {
    std::vector<Parameter> parameters = {
        {"status", 7}, {"enable", 1}, {"FB0Factor", 100}, {"gameInternalFBOFactor", 100}};
    for (const std::string& text : set) {
        const Parameter given = assignment("--set", text);
        warnIfUnknown("--set", given.name);
        auto known = parameters.begin();
        while (known != parameters.end() && known->name != given.name) ++known;
        if (known != parameters.end())
            known->value = given.value;
        else
            parameters.push_back(given);
    }
    return parameters;
}

std::vector<ParameterChange> changesFrom(const std::vector<std::string>& at) {
    std::vector<ParameterChange> changes;
    for (const std::string& text : at) {
        const size_t colon = text.find(':');
        if (colon == std::string::npos)
            refuse("--at", "'" + text +
                               "' has no ':'; give FRAME:NAME=VALUE, for example "
                               "100:FB0Factor=75");
        const int frame = number("--at", text.substr(0, colon), 1, INT_MAX);
        const Parameter parameter = assignment("--at", text.substr(colon + 1));
        warnIfUnknown("--at", parameter.name);
        changes.push_back({frame, parameter.name, parameter.value});
    }
    return changes;
}

std::vector<Property> propertiesFrom(const std::vector<std::string>& texts) {
    std::vector<Property> properties;
    for (const std::string& text : texts) {
        const size_t equals = text.find('=');
        if (equals == 0 || equals == std::string::npos)
            refuse("--property", "'" + text + "' is not NAME=VALUE");
        if (text.size() - equals - 1 > kPropertyMax)
            refuse("--property", "the value in '" + text + "' is longer than 91 characters");
        properties.push_back({text.substr(0, equals), text.substr(equals + 1)});
    }
    return properties;
}

void readFrames(const std::string& text, QuirkRequest& request) {
    const size_t dash = text.find('-');
    request.fromFrame = number("--quirk", text.substr(0, dash), 1, INT_MAX);
    if (dash == std::string::npos) return;
    request.toFrame = number("--quirk", text.substr(dash + 1), request.fromFrame, INT_MAX);
}

std::vector<QuirkRequest> quirksFrom(const std::vector<std::string>& texts) {
    std::vector<QuirkRequest> quirks;
    for (const std::string& text : texts) {
        const size_t at = text.find('@');
        QuirkRequest request{text.substr(0, at), 1};
        std::string all;
        bool known = false;
        for (const QuirkName& quirk : kQuirkNames) {
            known = known || request.name == quirk.name;
            all += std::string(all.empty() ? "" : ", ") + quirk.name;
        }
        if (!known) refuse("--quirk", "'" + request.name + "' is none of " + all);
        if (at != std::string::npos) readFrames(text.substr(at + 1), request);
        for (const QuirkRequest& other : quirks)
            if (other.name == request.name)
                refuse("--quirk", "'" + request.name + "' is given twice");
        quirks.push_back(request);
    }
    return quirks;
}

std::vector<Capture> capturesFrom(const Given& given) {
    if (!given.captureFrames.empty() && given.captureFrames.size() != given.captures.size())
        refuse("--frame", "give one --frame for each --capture, or none for frame 1");
    if (given.captures.size() > RunOutcome::kCapturesMax)
        refuse("--capture", "a run makes at most 256 pictures");
    std::vector<Capture> captures;
    for (size_t i = 0; i < given.captures.size(); ++i)
        captures.push_back({outputFile("--capture", given.captures[i]),
                            given.captureFrames.empty() ? 1 : given.captureFrames[i]});
    return captures;
}

void readSize(const std::string& text, Settings& settings) {
    if (text.empty()) return;
    const size_t x = text.find('x');
    if (x == std::string::npos)
        refuse("--size", "'" + text + "' is not WIDTHxHEIGHT, for example 1280x720");
    settings.width = number("--size", text.substr(0, x), 1, kSizeMax);
    settings.height = number("--size", text.substr(x + 1), 1, kSizeMax);
}

// Nanoseconds; 0 for the machine's own clock.
long long clockStepFrom(const std::string& text) {
    if (text == "real") return 0;
    try {
        size_t used = 0;
        const std::string step = text.rfind("step:", 0) == 0 ? text.substr(5) : "";
        const double milliseconds = std::stod(step, &used);
        if (used == step.size() && milliseconds >= 0.001 && milliseconds <= 10000)
            return std::llround(milliseconds * 1e6);
    } catch (const std::exception&) {
    }
    refuse("--clock", "'" + text +
                          "' is neither 'real' nor 'step:MS' with milliseconds from 0.001 to "
                          "10000, for example step:16.667");
}

std::string configFrom(const std::string& path) {
    if (path.empty()) return path;
    const std::string file = absolutePath(path);
    struct stat info = {};
    if (stat(file.c_str(), &info) != 0 || access(file.c_str(), R_OK) != 0)
        refuse("--config",
               "cannot read " + path + ": " + strerror(errno) + "; name a readable text file");
    if (!S_ISREG(info.st_mode)) refuse("--config", path + " is not a regular file");
    return file;
}

void checkService(const std::string& service) {
    if (service == "absent" || service == "fail" || service == "exception") return;
    try {
        size_t used = 0;
        (void)std::stoi(service, &used);
        if (used == service.size()) return;
    } catch (const std::exception&) {
    }
    refuse("--service", "'" + service + "' is none of absent, fail, exception or a whole number");
}

std::vector<EnvironmentChange> driverEnvironment(const std::string& driver) {
    if (driver == "system") return {};
    if (driver != "zink") return {{"LIBGL_ALWAYS_SOFTWARE", "1"}, {"GALLIUM_DRIVER", driver}};
    glob_t found = {};
    glob("/usr/share/vulkan/icd.d/lvp_icd*.json", 0, nullptr, &found);
    const std::string lavapipe = found.gl_pathc > 0 ? found.gl_pathv[0] : "";
    globfree(&found);
    if (lavapipe.empty())
        refuse("--driver",
               "zink needs the lavapipe Vulkan driver; install the package "
               "mesa-vulkan-drivers");
    return {{"MESA_LOADER_DRIVER_OVERRIDE", "zink"},
            {"GALLIUM_DRIVER", "zink"},
            {"LIBGL_ALWAYS_SOFTWARE", "1"},
            {"VK_ICD_FILENAMES", lavapipe},
            {"VK_DRIVER_FILES", lavapipe}};
}

}  // namespace

Plan planFrom(const Given& given) {
    Plan plan;
    Settings& settings = plan.settings;
    if (given.threadName.size() > kThreadNameMax)
        refuse("--thread-name", "'" + given.threadName + "' is longer than 15 characters");
    settings.plugin = !given.noPlugin;
    settings.bare = given.bare;
    settings.log = given.log;
    settings.game = given.game;
    settings.threadName = given.threadName;
    settings.changes = changesFrom(given.at);
    settings.properties = propertiesFrom(given.properties);
    checkService(given.service);
    settings.service = given.service;
    readSize(given.size, settings);
    settings.captures = capturesFrom(given);
    settings.frames = given.frames;
    if (!given.stats.empty()) settings.statsFile = outputFile("--stats", given.stats);
    if (!given.count.empty()) plan.countFile = outputFile("--count", given.count);
    settings.quirks = quirksFrom(given.quirks);
    settings.clockStep = clockStepFrom(given.clock);
    settings.status = given.status;
    plan.parameters = parametersFrom(given.set);
    plan.configFile = configFrom(given.config);
    plan.display = given.display;
    plan.environment = driverEnvironment(given.driver);
    return plan;
}

}  // namespace rig

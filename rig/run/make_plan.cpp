#include "rig/run/make_plan.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "rig/device/parameter_node.h"
#include "rig/device/run_outcome.h"
#include "rig/run/games.h"
#include "rig/run/mesa_driver.h"
#include "rig/run/option_readers.h"

namespace rig {

namespace {

std::vector<Capture> pairCaptures(const RawOptions& raw, const LaunchSettings& launch) {
    const size_t count = launch.captureFiles.size();
    const bool framesGiven = raw.captureFrames.given();
    if (framesGiven && launch.captureFrames.size() != count) {
        throw BadOption(raw.captureFrames.name,
                        "give one --frame for each --capture, or none for frame 1");
    }
    if (count > RunOutcome::kCapturesMax) {
        throw BadOption(
            raw.captureFiles.name,
            "a run makes at most " + std::to_string(RunOutcome::kCapturesMax) + " pictures");
    }
    std::vector<Capture> captures;
    for (size_t i = 0; i < count; ++i) {
        captures.push_back({launch.captureFiles[i], framesGiven ? launch.captureFrames[i] : 1});
    }
    return captures;
}

// One would replace the other.
void refuseSharedFiles(const RawOptions& raw, const Plan& plan) {
    const std::pair<const RawOption&, std::vector<std::string>> outputs[] = {
        {raw.captureFiles, plan.launch.captureFiles},
        {raw.statsFile, {plan.settings.statsFile}},
        {raw.countFile, {plan.launch.countFile}}};
    std::set<std::string> taken;
    for (const auto& [option, files] : outputs) {
        for (const std::string& file : files) {
            if (file.empty() || taken.insert(file).second) continue;
            throw BadOption(option.name, "'" + file + "' is named twice; give each its own file");
        }
    }
}

void limitParameters(const RawOptions& raw, const Plan& plan) {
    constexpr size_t kMost = ParameterNode::kParametersMax;
    std::set<std::string> names;
    for (const Parameter& parameter : plan.launch.parameters) names.insert(parameter.name);
    const std::string& option = names.size() > kMost ? raw.parameters.name : raw.changes.name;
    for (const ParameterChange& change : plan.settings.changes) names.insert(change.name);
    if (names.size() <= kMost) return;
    throw BadOption(option, "there are " + std::to_string(names.size()) +
                                " different parameters, and the node takes " +
                                std::to_string(kMost));
}

}  // namespace

Plan makePlan(const RawOptions& raw) {
    Plan plan;
#define LOADER_OPTION(kind, member, name, argument, initial, help) \
    plan.settings.member = read##kind(raw.member);
#define LAUNCHER_OPTION(kind, member, name, argument, initial, help) \
    plan.launch.member = read##kind(raw.member);
#include "rig/device/options.in"
    plan.settings.captures = pairCaptures(raw, plan.launch);
    refuseSharedFiles(raw, plan);
    limitParameters(raw, plan);
    if (!raw.threadName.given()) plan.settings.threadName = threadNameOf(plan.settings.game);
    plan.environment = driverEnvironment(plan.launch.driver);
    return plan;
}

}  // namespace rig

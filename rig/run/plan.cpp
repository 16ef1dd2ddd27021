#include "rig/run/plan.h"

#include "rig/device/json_bytes.h"
#include "rig/device/settings_json.h"

namespace rig {

using nlohmann::json;

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(EnvironmentChange, name, value)

static void to_json(json& out, const LaunchSettings& launch) {
#define LAUNCHER_OPTION(kind, member, name, argument, initial, help) out[#member] = launch.member;
#include "rig/device/options.in"
}

static void from_json(const json& in, LaunchSettings& launch) {
#define LAUNCHER_OPTION(kind, member, name, argument, initial, help) \
    in.at(#member).get_to(launch.member);
#include "rig/device/options.in"
}

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Plan, settings, launch, environment, displayAuthority, program,
                                   arguments)

std::string toJson(const Plan& plan) { return textFromJson(plan); }

Plan planFromJson(const std::string& text) { return jsonFromText(text).get<Plan>(); }

}  // namespace rig

#include "rig/run/plan.h"

#include <nlohmann/json.hpp>

namespace rig {

using nlohmann::json;

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Parameter, name, value)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(EnvironmentChange, name, value)

static void to_json(json& out, const Plan& plan) {
    out = {{"settings", toJson(plan.settings)}, {"parameters", plan.parameters},
           {"display", plan.display},           {"environment", plan.environment},
           {"program", plan.program},           {"processName", plan.processName},
           {"arguments", plan.arguments},       {"countFile", plan.countFile}};
}

static void from_json(const json& in, Plan& plan) {
    plan.settings = settingsFromJson(in.at("settings").get<std::string>());
    in.at("parameters").get_to(plan.parameters);
    in.at("display").get_to(plan.display);
    in.at("environment").get_to(plan.environment);
    in.at("program").get_to(plan.program);
    in.at("processName").get_to(plan.processName);
    in.at("arguments").get_to(plan.arguments);
    in.at("countFile").get_to(plan.countFile);
}

// Arguments need not be UTF-8; nothing else can be anything else.
std::string toJson(const Plan& plan) { return json(plan).dump(); }

Plan planFromJson(const std::string& text) { return json::parse(text).get<Plan>(); }

}  // namespace rig

// Options' values as JSON.
#pragma once

#include <nlohmann/json.hpp>

#include "rig/device/settings.h"

namespace rig {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Parameter, name, value)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ParameterChange, frame, name, value)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Property, name, value)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PbufferSize, width, height)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(QuirkRequest, name, fromFrame, toFrame)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Capture, file, frame)

inline void to_json(nlohmann::json& out, const Settings& settings) {
#define LOADER_OPTION(kind, member, name, argument, initial, help) out[#member] = settings.member;
#include "rig/device/options.in"
    out["captures"] = settings.captures;
    out["parametersFile"] = settings.parametersFile;
    out["filterFile"] = settings.filterFile;
    out["countsFile"] = settings.countsFile;
    out["outcomeFile"] = settings.outcomeFile;
}

inline void from_json(const nlohmann::json& in, Settings& settings) {
#define LOADER_OPTION(kind, member, name, argument, initial, help) \
    in.at(#member).get_to(settings.member);
#include "rig/device/options.in"
    in.at("captures").get_to(settings.captures);
    in.at("parametersFile").get_to(settings.parametersFile);
    in.at("filterFile").get_to(settings.filterFile);
    in.at("countsFile").get_to(settings.countsFile);
    in.at("outcomeFile").get_to(settings.outcomeFile);
}

}  // namespace rig

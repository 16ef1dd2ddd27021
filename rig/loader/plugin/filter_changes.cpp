#include "rig/loader/plugin/filter_changes.h"

namespace rig {

FilterChanges::FilterChanges(const Settings& settings, const Plugin& plugin)
    : setProperty(plugin.setProperty) {
    if (!settings.filterFile.empty()) typed = &FilterSwitch::open(settings.filterFile);
}

void FilterChanges::takeOver() {
    if (typed == nullptr || setProperty == nullptr) return;
    const uint32_t current = typed->generation;
    if (generation.exchange(current) == current) return;
    const std::string filter = typed->filterText();
    const std::string sharpness = typed->sharpnessText();
    if (!filter.empty()) setProperty(kFilterProperty, filter.c_str());
    if (!sharpness.empty()) setProperty(kSharpnessProperty, sharpness.c_str());
}

}  // namespace rig

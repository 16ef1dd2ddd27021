#include "rig/device/filter_switch.h"

#include <charconv>
#include <iterator>
#include <stdexcept>

#include "rig/device/shared_memory.h"

namespace rig {

namespace {

constexpr const char* kNames[] = {
#define FILTER(id, name) name,
#include "GameImpl/Filter/filters.in"
};
constexpr uint32_t kSharpnessMax = 100;

}  // namespace

std::string filterArgument() {
    std::string all;
    for (const char* name : kNames) all += (all.empty() ? "" : "|") + std::string(name);
    return all;
}

FilterSwitch& FilterSwitch::create(const std::string& file) {
    return *static_cast<FilterSwitch*>(createShared(file, sizeof(FilterSwitch)));
}

FilterSwitch& FilterSwitch::open(const std::string& file) {
    return *static_cast<FilterSwitch*>(openShared(file, sizeof(FilterSwitch)));
}

bool FilterSwitch::take(const std::string& line) {
    const size_t blank = line.find(' ');
    const std::string word = line.substr(0, blank);
    if (word != "filter" && word != "sharpness") return false;
    const size_t begin = line.find_first_not_of(' ', blank);
    const std::string value = begin == std::string::npos ? "" : line.substr(begin);
    if (word == "filter") {
        uint32_t number = 1;
        for (; number <= std::size(kNames) && value != kNames[number - 1]; ++number) {
        }
        if (number > std::size(kNames)) {
            throw std::invalid_argument("the filter '" + value + "' is none of " +
                                        filterArgument());
        }
        filter = number;
    } else {
        uint32_t percent = 0;
        const char* const end = value.data() + value.size();
        const auto [stop, error] = std::from_chars(value.data(), end, percent);
        if (error != std::errc() || stop != end || percent > kSharpnessMax) {
            throw std::invalid_argument("the sharpness '" + value +
                                        "' is not a percentage from 0 to 100");
        }
        sharpness = percent + 1;
    }
    ++generation;
    return true;
}

std::string FilterSwitch::filterText() const { return filter != 0 ? kNames[filter - 1] : ""; }

std::string FilterSwitch::sharpnessText() const {
    return sharpness != 0 ? std::to_string(sharpness - 1) : "";
}

}  // namespace rig

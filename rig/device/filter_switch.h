// The filter and the sharpness that were typed while the program runs. The supervisor
// writes them into shared memory, and the loader inside the program makes properties of
// them at its next swap.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace rig {

// The filters' names, as an option lists them: "bilinear|bicubic|...".
std::string filterArgument();

struct FilterSwitch {
    // In shared memory, all zeros; lives as long as the process. Both throw
    // std::runtime_error.
    static FilterSwitch& create(const std::string& file);
    static FilterSwitch& open(const std::string& file);

    // Takes a line such as "filter sharp" or "sharpness 50". False for one that is about
    // something else; throws std::invalid_argument that says what is wrong with it.
    bool take(const std::string& line);

    // The properties' values; empty where nothing was typed.
    std::string filterText() const;
    std::string sharpnessText() const;

    static_assert(std::atomic<uint32_t>::is_always_lock_free, "shared between processes");
    std::atomic<uint32_t> generation;  // counts the changes

private:
    std::atomic<uint32_t> filter;     // its number, from 1; 0: nothing was typed
    std::atomic<uint32_t> sharpness;  // plus 1; 0: nothing was typed
};

}  // namespace rig

#pragma once

#include <string>
#include <vector>

namespace rig {

// For exec; valid as long as the texts are.
inline std::vector<char*> toArgv(const std::vector<std::string>& texts) {
    std::vector<char*> argv;
    argv.reserve(texts.size() + 1);
    for (const std::string& text : texts) argv.push_back(const_cast<char*>(text.c_str()));
    argv.push_back(nullptr);
    return argv;
}

}  // namespace rig

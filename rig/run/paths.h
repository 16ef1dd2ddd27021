#pragma once

#include <string>

namespace rig {

// `path` seen from the current directory; links are left as they are.
std::string absolutePath(const std::string& path);

}  // namespace rig

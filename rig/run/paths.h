#pragma once

#include <string>

namespace rig {

// `path` seen from the current directory; links are left as they are.
std::string absolutePath(const std::string& path);

// This program's file.
std::string ownPath();

// The folder of the libraries that the program gets in place of the system's.
std::string rigDirectory();

}  // namespace rig

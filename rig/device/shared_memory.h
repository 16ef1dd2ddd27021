// Memory that the supervisor and every process of the program share, so that
// what it holds is known however a process ends.
#pragma once

#include <cstddef>
#include <string>

namespace rig {

// A file of `size` bytes, mapped for as long as the process lives. createShared
// makes it, all zeros, in place of what has that name. Both throw
// std::runtime_error that names the file.
void* createShared(const std::string& file, size_t size);
void* openShared(const std::string& file, size_t size);

}  // namespace rig

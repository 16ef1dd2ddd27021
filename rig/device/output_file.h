// Files that the user named to be written.
#pragma once

#include <string>

namespace rig {

// Replaces the file through a temporary beside it, so that nobody meets half of
// it. False where that fails, with the reason in errno; the file is as it was
// then. Any thread.
bool writeOutputFile(const std::string& file, const std::string& bytes);

}  // namespace rig

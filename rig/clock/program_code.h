// Whose call it is.
#pragma once

namespace rig {

// Whether the address is in the program itself or in a library that is loaded
// with it; the rig, the C++ library, and what is opened later are not.
bool isProgram(const void* caller);

}  // namespace rig

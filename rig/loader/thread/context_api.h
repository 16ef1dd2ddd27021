// What is current on the calling thread.
#pragma once

namespace rig {

enum class ContextApi { None, Es1, Es2, Desktop };  // Es2: OpenGL ES 2 and later

// None until setCurrentApi was called on the thread.
ContextApi currentApi();
void setCurrentApi(ContextApi api);

}  // namespace rig

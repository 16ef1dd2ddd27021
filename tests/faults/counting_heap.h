// The heap of this process, counted at malloc and its like.
#pragma once

namespace test {

// False under sanitizers, which bring an allocator of their own.
bool heapIsCounted();
long heapBlocks();
// How many blocks were ever asked for.
long heapRequests();

}  // namespace test

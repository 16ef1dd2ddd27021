// What the launcher's two halves say to each other, over a pair of sockets that
// are made before the inner half exists, so that nothing said meanwhile is lost.
// The end of the stream says that the other half is gone.
//
//   inner  kReady       my signals are blocked
//   outer  kReady       from now on you get the terminal's signals yourself
//   outer  N            signal N came
#pragma once

#include <optional>

namespace rig {

constexpr unsigned char kReady = 0;

void sendControl(int socket, unsigned char message);
// One that waits already; none: see `gone`, which is set at the end of the stream.
std::optional<unsigned char> receiveControl(int socket, bool& gone);

}  // namespace rig

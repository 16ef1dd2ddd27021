#include "rig/run/control.h"

#include <sys/socket.h>

#include <cerrno>

namespace rig {

void sendControl(int socket, unsigned char message) {
    while (send(socket, &message, 1, MSG_NOSIGNAL) < 0 && errno == EINTR) {
    }
}

std::optional<unsigned char> receiveControl(int socket, bool& gone) {
    unsigned char message = 0;
    const ssize_t got = recv(socket, &message, 1, MSG_DONTWAIT);
    if (got == 1) return message;
    if (got == 0 || (errno != EAGAIN && errno != EINTR)) gone = true;
    return std::nullopt;
}

}  // namespace rig

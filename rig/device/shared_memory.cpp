#include "rig/device/shared_memory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace rig {

namespace {

void* map(const std::string& file, size_t size, int flags) {
    const int descriptor = open(file.c_str(), O_RDWR | O_CLOEXEC | flags, 0600);
    void* memory = MAP_FAILED;
    if (descriptor >= 0 && ftruncate(descriptor, static_cast<off_t>(size)) == 0) {
        memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    }
    const int error = errno;
    if (descriptor >= 0) close(descriptor);
    if (memory == MAP_FAILED) {
        throw std::runtime_error("cannot map " + file + ": " + strerror(error));
    }
    return memory;
}

}  // namespace

void* createShared(const std::string& file, size_t size) {
    return map(file, size, O_CREAT | O_TRUNC);
}

void* openShared(const std::string& file, size_t size) { return map(file, size, 0); }

}  // namespace rig

#include "rig/loader/statistics/statistics_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "rig/device/output_file.h"

namespace rig {

namespace {

constexpr size_t kPendingMax = 1 << 20;

bool writeAt(int descriptor, const std::string& text, int64_t offset) {
    for (size_t done = 0; done < text.size();) {
        const ssize_t written = pwrite(descriptor, text.data() + done, text.size() - done,
                                       offset + static_cast<int64_t>(done));
        if (written < 0 && errno != EINTR) return false;
        if (written > 0) done += static_cast<size_t>(written);
    }
    return true;
}

uint64_t inodeOf(int descriptor) {
    struct stat status = {};
    return fstat(descriptor, &status) == 0 ? status.st_ino : 0;
}

}  // namespace

StatisticsFile::StatisticsFile(std::string path, RunOutcome* runOutcome)
    : file(std::move(path)), outcome(runOutcome) {}

void StatisticsFile::begin(const std::string& header) {
    pending = header.substr(0, header.rfind('}')) + ",\"frames\":[";
}

void StatisticsFile::add(const std::string& frame) {
    if (!claim()) return;
    if (framesKept + framesPending == kFramesMax) {
        if (framesLeftOut++ == 0) {
            fprintf(stderr, "vesko-run: --stats %s: frames after %u are only counted\n",
                    file.c_str(), kFramesMax);
        }
        return;
    }
    pending += (framesKept + framesPending == 0 ? "\n" : ",\n") + frame;
    ++framesPending;
    if (framesKept == 0 || pending.size() >= kPendingMax) flush();
}

void StatisticsFile::flush() {
    if (state != State::Writing || getpid() != writer) return;
    const int descriptor = open(file.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0) return giveUp(strerror(errno));
    const bool same = inodeOf(descriptor) == inode;
    const bool written = same && writeAt(descriptor, pending + tail(), end);
    const int error = errno;
    close(descriptor);
    if (!same) return giveUp("somebody has put another file in its place");
    if (!written) return giveUp(strerror(error));
    end += static_cast<int64_t>(pending.size());
    pending.clear();
    framesKept += std::exchange(framesPending, 0);
    if (outcome != nullptr) outcome->statisticsWritten = framesKept;
}

bool StatisticsFile::claim() {
    if (state == State::GivenUp) return false;
    const int self = getpid();
    uint32_t owner = static_cast<uint32_t>(writer);
    if (state == State::Unclaimed) {
        owner = 0;
        if (outcome == nullptr ||
            outcome->statisticsWriter.compare_exchange_strong(owner, static_cast<uint32_t>(self))) {
            owner = static_cast<uint32_t>(self);
        }
    }
    if (owner != static_cast<uint32_t>(self)) {
        giveUp("it holds the frames of process " + std::to_string(owner) + "; those of process " +
               std::to_string(self) + " are not recorded");
        return false;
    }
    if (state == State::Writing) return true;
    writer = self;
    state = State::Writing;
    return create();
}

bool StatisticsFile::create() {
    const bool written = writeOutputFile(file, pending + tail());
    const int descriptor = written ? open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC) : -1;
    if (descriptor < 0) {
        giveUp(strerror(errno));
        return false;
    }
    inode = inodeOf(descriptor);
    close(descriptor);
    end = static_cast<int64_t>(pending.size());
    pending.clear();
    return true;
}

void StatisticsFile::giveUp(const std::string& why) {
    fprintf(stderr, "vesko-run: --stats %s: %s\n", file.c_str(), why.c_str());
    state = State::GivenUp;
    pending.clear();
}

std::string StatisticsFile::tail() const {
    return "\n],\"framesLeftOut\":" + std::to_string(framesLeftOut) + "}\n";
}

}  // namespace rig

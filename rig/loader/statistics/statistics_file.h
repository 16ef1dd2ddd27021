// The file of --stats: one JSON object, complete at every moment, to which
// frames are added at its end.
//
// The file belongs to the first process of the run that ends a frame: a forked
// child and a second program that the run starts write nothing and say so. It is
// opened for each write only, since programs close descriptors that they do not
// know. What is not written yet is small, however long the run is.
#pragma once

#include <cstdint>
#include <string>

#include "rig/device/run_outcome.h"

namespace rig {

class StatisticsFile {
public:
    // Frames beyond these are counted, but not kept: some 60 MB.
    static constexpr uint32_t kFramesMax = 100000;

    // `outcome` may be null, when nobody asks what became of the file.
    StatisticsFile(std::string path, RunOutcome* outcome);

    // Both take JSON texts: an object of what is not frames (of something, not
    // empty), and then frame after frame.
    // What is wrong with the file is said on standard error, once.
    void begin(const std::string& header);
    void add(const std::string& frame);
    // Writes what has been added. A program that is killed loses what came in
    // since the last time.
    void flush();

private:
    enum class State { Unclaimed, Writing, GivenUp };

    bool claim();
    bool create();
    void giveUp(const std::string& why);
    std::string tail() const;

    const std::string file;
    RunOutcome* const outcome;
    State state = State::Unclaimed;
    int writer = 0;  // the process that claimed the file
    uint64_t inode = 0;
    int64_t end = 0;      // where the next frame goes
    std::string pending;  // from there on
    uint32_t framesPending = 0;
    uint32_t framesKept = 0;
    uint32_t framesLeftOut = 0;
};

}  // namespace rig

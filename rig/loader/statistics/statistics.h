// What the driver was made to do, frame by frame, for --stats FILE.
//
// The framebuffers are seen at the driver, below the plug-in, with the sizes
// that the driver answers for their attachments. Frames are counted over all
// threads: the caller lets one thread in at a time.
#pragma once

#include <chrono>
#include <mutex>
#include <string>

#include <nlohmann/json.hpp>

#include "rig/device/run_outcome.h"
#include "rig/device/settings.h"
#include "rig/loader/driver/driver.h"
#include "rig/loader/statistics/frame_record.h"
#include "rig/loader/statistics/statistics_file.h"

namespace rig {

class Statistics {
public:
    // Puts the watching entries into `table`, a copy of the driver's. All but the
    // settings must live as long as the process, the object included; `outcome`
    // may be null. What is recorded is also written when the process exits.
    Statistics(const Settings& settings, const Driver& below, GLTable& table, RunOutcome* outcome);
    Statistics(const Statistics&) = delete;

    // A frame's time runs from its beginning until it is drawn (after a glFinish)
    // and again while it is swapped: captures and waits between are left out.
    // `values` are the plug-in's parameters, by name.
    void frameBegins(int frame, const nlohmann::json& values);
    // The application has drawn its frame; `whyNotScaled` is empty where the
    // plug-in scales it. From here to frameDrawn is the plug-in's blit.
    void presentationBegins(const std::string& whyNotScaled);
    void frameDrawn(void* display, void* surface);
    void swapBegins();
    void frameEnds();

    // On any thread.
    void save();

private:
    using Clock = std::chrono::steady_clock;

    const Driver& driver;
    std::timed_mutex fileMutex;
    StatisticsFile file;
    nlohmann::json header;
    bool begun = false;
    FrameRecord record;
    nlohmann::json frame;  // the parts of the current frame that do not come from `record`
    Clock::duration spent{};
    Clock::time_point since;
    Clock::time_point presentationBegan;
    Clock::time_point saved = Clock::now();
};

}  // namespace rig

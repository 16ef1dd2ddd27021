// The entries that watch what a frame draws, for the statistics.
#pragma once

#include "rig/loader/driver/driver.h"
#include "rig/loader/statistics/frame_record.h"

namespace rig {

// Replaces the entries that draw, clear, attach and allocate in `table`, a copy
// of the driver's; what they see goes into `record`. Both must live as long as
// the process. Once per process.
void installWatchingEntries(const Driver& driver, GLTable& table, FrameRecord& record);

}  // namespace rig

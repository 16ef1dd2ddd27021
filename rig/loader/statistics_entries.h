// The entries that watch what a frame draws, for the statistics.
#pragma once

#include "rig/loader/entry_wrap.h"
#include "rig/loader/statistics_record.h"

namespace rig {

// Replaces the entries that draw, clear, attach and allocate in `table`; what
// they see goes into `record`, which must live as long as the process.
void installWatchingEntries(GLTable& table, FrameRecord& record);

}  // namespace rig

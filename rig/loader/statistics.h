// What the driver was made to do, frame by frame, for --stats FILE.
//
// Without the option every function here returns at once and no entry of the
// driver's table is replaced. The framebuffers are seen at the driver, below
// the plug-in, with the sizes that the driver answers for their attachments.
#pragma once

#include "rig/device/settings.h"
#include "rig/loader/driver.h"

namespace rig {

// Puts the counting entries into `table`.
void startStatistics(const Driver& driver, const Settings& settings, android::gl_hooks_t& table);

// A frame's time runs from its beginning until it is drawn (after a glFinish)
// and again while it is swapped: captures and waits between are left out.
void statisticsFrameBegins(int frame);
// The application has drawn its frame; `whyNotScaled` is empty where the plug-in
// scales it. From here to statisticsFrameDrawn is the plug-in's blit.
void statisticsPresentationBegins(const std::string& whyNotScaled);
void statisticsFrameDrawn(void* display, void* surface);
void statisticsSwapBegins();
void statisticsFrameEnds();

}  // namespace rig

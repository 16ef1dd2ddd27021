// Ways of a device's driver, and of a failing driver, that the desktop's does
// not have. A quirk replaces entries of the table that contexts get; the
// plug-in and the program meet it alike. Each can be asked for in certain frames
// only, so that a program may build its own objects undisturbed, and to see what
// is left of a fault that is over.
#pragma once

#include <vector>

#include "rig/device/settings.h"
#include "rig/loader/entry_wrap.h"

namespace rig {

// What a quirk may replace entries of.
struct DriverTables {
    GLTable& gl;
    android::platform_impl_t& egl;
};

// Throws std::runtime_error for an unknown name.
void installQuirks(const std::vector<QuirkRequest>& requests, const DriverTables& tables);

// On in the frames for which the quirk was asked.
class QuirkSwitch {
public:
    void set(const QuirkRequest& request) { request_ = request; }
    bool on() const;

private:
    QuirkRequest request_{"", 1, 0};  // in no frame
};

using Installer = void(const DriverTables& tables, const QuirkRequest& request);
Installer installAttachmentSizes;
Installer installShadingRate;
Installer installIncompleteFramebuffer;
Installer installShaderCompile;
Installer installProgramLink;
Installer installNoInfoLogs;
Installer installNoNames;
Installer installPendingError;
Installer installContextLost;
Installer installZeroSizes;

}  // namespace rig

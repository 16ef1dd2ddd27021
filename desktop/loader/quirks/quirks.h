// Ways of a device's driver, and of a failing driver, that the desktop's does
// not have. A quirk replaces entries of the table that contexts get; the
// plug-in and the program meet it alike. Each can be asked for from a certain
// frame on, so that a program may build its own objects undisturbed.
#pragma once

#include <vector>

#include "desktop/device/settings.h"
#include "desktop/loader/entry_wrap.h"

namespace rig {

// Throws std::runtime_error for an unknown name.
void installQuirks(const std::vector<QuirkRequest>& requests, android::gl_hooks_t& table);

// Off until the frame from which the quirk was asked for.
class QuirkSwitch {
public:
    void from(int frame) { fromFrame_ = frame; }
    bool on() const;

private:
    int fromFrame_ = 1;
};

void installAttachmentSizes(GLTable& table, int fromFrame);
void installShadingRate(GLTable& table, int fromFrame);
void installIncompleteFramebuffer(GLTable& table, int fromFrame);
void installShaderCompile(GLTable& table, int fromFrame);
void installProgramLink(GLTable& table, int fromFrame);
void installNoNames(GLTable& table, int fromFrame);
void installPendingError(GLTable& table, int fromFrame);

}  // namespace rig

// Functions in front of the program's calls, one for each row of limits.in. A function that
// several rows name serves them all.
#pragma once

#include "rig/loader/driver/driver.h"

namespace rig {

void watchArrays(GLTable& served);
void watchArrayBuffer(GLTable& served);
void watchProgram(GLTable& served);
void watchViewport(GLTable& served);
void watchScissor(GLTable& served);
void watchClear(GLTable& served);
void watchTextures(GLTable& served);
void watchBinds(GLTable& served);
void watchReads(GLTable& served);
void watchAttachments(GLTable& served);
void watchBoxes(GLTable& served);
void watchUploads(GLTable& served);

// In front of the driver's glClear: the plug-in's clears are told from the program's by where
// they happen.
void noteClearBelow();

}  // namespace rig

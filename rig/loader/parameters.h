// Brings the node's parameters to the plug-in.
//
// The plug-in's monitor overlooks what the node holds while the monitor starts,
// and may overlook one text while it reads another. So the node is written
// again until the plug-in shows the values; frames then begin with known
// parameters, however slow the machine is.
#pragma once

#include <string>

#include "rig/device/settings.h"
#include "rig/loader/plugin.h"

namespace rig {

void startParameters(const Settings& settings, const Plugin& plugin);

// Sets the value; awaitParameters brings it to the plug-in.
void changeParameter(const std::string& name, int value);

// Both write the node and, when the plug-in monitors it, wait, at most two
// seconds, until the plug-in has taken the values in; they warn where it does
// not. awaitParameters, after a context has become current, also serves values
// that were never taken in; awaitChanges costs one load where nothing changed.
void awaitParameters();
void awaitChanges();

// The plug-in's own value; `otherwise` where there is none.
int pluginParameter(const std::string& name, int otherwise);

}  // namespace rig

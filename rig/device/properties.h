// The system properties of the program's process.
#pragma once

// Safe on any thread, also while the plug-in reads properties.
extern "C" void rig_set_property(const char* key, const char* value);

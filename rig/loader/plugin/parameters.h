// Brings the node's parameters to the plug-in.
//
// The plug-in's monitor overlooks what the node holds while the monitor starts,
// and may overlook one text while it reads another. So the node is written
// again until the plug-in shows the values; frames then begin with known
// parameters, however slow the machine is.
#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <string>

#include "rig/device/parameter_node.h"
#include "rig/device/settings.h"
#include "rig/loader/plugin/plugin.h"

namespace rig {

// All operations may be called on any thread. The object lives as long as the
// process: threads may swap while it exits.
class Parameters {
public:
    // Tells the supervisor that the loader is there. `monitored` must outlive the
    // object. Throws std::runtime_error.
    Parameters(const Settings& settings, const Plugin& monitored);
    Parameters(const Parameters&) = delete;

    // Sets the value; awaitChanges brings it to the plug-in.
    void change(const std::string& name, int value);

    // Both write the node and, when the plug-in monitors it, wait, at most two
    // seconds, until the plug-in has taken the values in; they warn where it does
    // not. awaitAll, when a context becomes current, also serves values that
    // were never taken in; awaitChanges costs one load where nothing changed.
    void awaitAll();
    void awaitChanges();

    // The plug-in's own value; `otherwise` where there is none.
    int shown(const std::string& name, int otherwise) const;

private:
    using Clock = std::chrono::steady_clock;

    std::optional<int> value(const std::string& name) const;
    bool pluginMonitors() const;
    bool shows(const std::vector<Parameter>& text) const;
    bool bringText(size_t index, Clock::time_point deadline);
    bool bringAll();
    void bringChanges();

    const Plugin& plugin;
    const std::string game;
    std::mutex mutex;
    std::optional<ParameterNode> node;
    bool takenIn = false;                 // by the plug-in, at least once
    std::atomic<uint32_t> generation{0};  // the one that was written last
};

}  // namespace rig

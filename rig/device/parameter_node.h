// The kernel's game parameter node and the current value of every parameter.
//
// The node is the domain name of a private UTS namespace, which the launcher
// binds over the device's path: setdomainname(2) replaces its text and wakes
// whoever polls it with POLLPRI. A text has at most 64 bytes, so a long list
// of parameters goes out in several texts, one after the other; the plug-in
// keeps what a text does not name.
//
// The values live in a file that the supervisor and the loader inside the
// program both map; each may change one and write the node. A file lock keeps
// the texts that they write in step with the values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "rig/device/settings.h"

namespace rig {

// The parameters that the plug-in knows by name.
bool isKnownParameter(const std::string& name);
// "NAME=VALUE"; throws std::invalid_argument that says what is wrong with it.
Parameter parseAssignment(const std::string& text);
// The texts, each of at most 64 bytes, that together name all parameters.
std::vector<std::vector<Parameter>> splitIntoTexts(const std::vector<Parameter>& parameters);

class ParameterNode {
public:
    // How many different parameters fit.
    static constexpr size_t kParametersMax = 64;

    // Both throw std::runtime_error. create makes the file.
    static ParameterNode create(const std::string& file, const std::vector<Parameter>& parameters);
    static ParameterNode open(const std::string& file);

    ParameterNode(ParameterNode&& other) noexcept;
    ParameterNode& operator=(ParameterNode&&) = delete;
    ~ParameterNode();

    // Whether the program has come as far as the rig's loader.
    void announceLoader();
    bool loaderIsThere() const;

    // Counts the changes made by anyone; costs one load.
    uint32_t generation() const;
    // Does not write the node. Throws std::runtime_error where no more
    // parameters fit.
    void set(const std::string& name, int value);
    std::vector<Parameter> parameters() const;

    // Writes text number `index` of the current values and returns what it
    // holds; empty where there is no such text. False in *written (which may be
    // null) when the kernel refused.
    std::vector<Parameter> writeText(size_t index, bool* written = nullptr);
    // All texts, one right after the other: before anybody monitors the node. Throws
    // std::runtime_error when the kernel refuses.
    void writeAll();

private:
    struct Shared;
    ParameterNode(int openedDescriptor, Shared* mapped)
        : descriptor(openedDescriptor), shared(mapped) {}
    std::vector<Parameter> readLocked() const;

    int descriptor;
    Shared* shared;
};

}  // namespace rig

// The window system of the program: the user's own, a private Xvfb, or none.
#pragma once

#include <sys/types.h>

#include <string>

namespace rig {

// Sets the environment for the program that is started next; a private Xvfb
// ends with the object.
class Display {
public:
    // auto, xvfb or none; throws std::runtime_error.
    explicit Display(const std::string& mode);
    Display(const Display&) = delete;
    ~Display();

private:
    void startXvfb();

    pid_t server_ = -1;
};

}  // namespace rig

// The library as its loader sees it, for programs that measure it: opened by
// path, so that one program measures any build of it.
#pragma once

#include "hook/GPUVeskoMode.h"
#include "platform/loader/records.h"

namespace bench {

class Plugin {
public:
    // Opens and starts the library on this driver. What fails is told on stderr
    // and ends the program with code 3. The library stays open for good.
    Plugin(const char* path, const android::platform_impl_t& driver);

    // Binds the calling thread as an EGL call does, then installs the plug-in's GL
    // table for this driver, which must outlive the thread's calls.
    const android::gl_hooks_t::gl_t& bindThread(const android::gl_hooks_t& driver);

    // The second half of bindThread, and the table that the thread's calls go through
    // afterwards.
    void handOver(const android::gl_hooks_t& driver) const;
    static const android::gl_hooks_t::gl_t& threadTable();

    // An exported variable of the library.
    template <typename T>
    T& variable(const char* symbol) const {
        return *static_cast<T*>(find(symbol));
    }

    void* handle = nullptr;
    android::platform_impl_t* egl = nullptr;  // the plug-in's table

private:
    void* find(const char* symbol) const;

    android::egl_connection_t connection = {};
    android::QoGPUVeskoModeImpl* entry = nullptr;
};

}  // namespace bench

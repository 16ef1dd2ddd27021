// The EGL side of the program: a window, a second surface, contexts of one share
// group and one of its own, and workers with a context each. Failures throw.
#pragma once

#include <EGL/egl.h>

#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "programs/random_calls/painter.h"

namespace fuzz {

class Surroundings {
public:
    // `window`: a window of an X server; otherwise a pbuffer.
    Surroundings(int width, int height, bool window);
    ~Surroundings();
    Surroundings(const Surroundings&) = delete;

    EGLContext makeContext(EGLContext shared) const;
    EGLSurface makePbuffer(int width, int height) const;
    void makeCurrent(EGLSurface surface, EGLContext context) const;
    void swap() const;

    // The window again, at another size where one is given; the same context stays.
    void rebuildWindow(int width, int height);
    // A context in place of the main one, with nothing but what is shared.
    void rebuildContext();
    // Asks the X server; the surface follows with a swap to come.
    void resizeWindow(int width, int height);

    EGLDisplay display;
    EGLConfig config = nullptr;
    EGLSurface window = EGL_NO_SURFACE;
    EGLSurface side = EGL_NO_SURFACE;
    EGLContext context = EGL_NO_CONTEXT;
    EGLContext group = EGL_NO_CONTEXT;  // never current: the group outlives its contexts
    int width, height;

private:
    void makeWindow();

    void* xDisplay = nullptr;
    unsigned long xWindow = 0;
};

// A thread with a context and a small surface of its own. Its work is done while
// the caller waits, so that the calls of all threads have one order.
class Worker {
public:
    static constexpr int kSize = 64;

    Worker(const Surroundings& around, EGLContext shared, uint64_t seed);
    ~Worker();
    Worker(const Worker&) = delete;

    std::string run(const std::function<std::string(Painter&)>& work);
    const std::vector<GLuint>& textures() const { return painter->textures(); }

private:
    void serve(EGLContext shared, uint64_t seed);

    const Surroundings& surroundings;
    std::unique_ptr<Painter> painter;
    std::promise<std::function<std::string(Painter&)>> order;
    std::promise<std::string> answer;
    std::thread thread;
};

}  // namespace fuzz

#include "rig/real_driver/real_driver.h"

#include <dlfcn.h>
#include <link.h>

#include <cstring>

namespace test {

namespace {

using GetProcAddress = android::__eglMustCastToProperFunctionPointerType (*)(const char*);

// The driver's table: entries of which the driver knows nothing stay null.
void fillTables(android::gl_hooks_t& hooks, android::platform_impl_t& platform) {
    void* egl = dlopen("libEGL.so.1", RTLD_NOW);
    void* gles = dlopen("libGLESv2.so.2", RTLD_NOW);
    if (egl == nullptr || gles == nullptr) return;
    const auto lookUp = reinterpret_cast<GetProcAddress>(dlsym(egl, "eglGetProcAddress"));
    const auto find = [&](void* library, const char* name) {
        void* known = dlsym(library, name);
        return known != nullptr ? known : reinterpret_cast<void*>(lookUp(name));
    };
#define GL_ENTRY(result, name, parameters, arguments) \
    hooks.gl.name = reinterpret_cast<decltype(hooks.gl.name)>(find(gles, #name));
#include "platform/gl_entries.in"
#define EGL_ENTRY(result, name, parameters, arguments) \
    platform.name = reinterpret_cast<decltype(platform.name)>(find(egl, #name));
#include "platform/egl_entries.in"
}

// What the driver has loaded stays, or a leak report at exit could not tell whose
// the leaks are.
int keepLoaded(dl_phdr_info* info, size_t, void*) {
    const char* const name = info->dlpi_name;
    if (strstr(name, "/dri/") != nullptr || strstr(name, "vulkan") != nullptr) {
        dlopen(name, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
    }
    return 0;
}

}  // namespace

RealDriver::RealDriver(int width, int height) {
    fillTables(hooks, platform);
    if (platform.eglGetDisplay == nullptr) return;
    display = platform.eglGetDisplay(nullptr);
    if (!platform.eglInitialize(display, nullptr, nullptr)) return;
    platform.eglBindAPI(EGL_OPENGL_ES_API);
    const int configAttributes[] = {EGL_SURFACE_TYPE,
                                    EGL_PBUFFER_BIT,
                                    EGL_RENDERABLE_TYPE,
                                    EGL_OPENGL_ES3_BIT,
                                    EGL_RED_SIZE,
                                    8,
                                    EGL_GREEN_SIZE,
                                    8,
                                    EGL_BLUE_SIZE,
                                    8,
                                    EGL_ALPHA_SIZE,
                                    8,
                                    EGL_DEPTH_SIZE,
                                    24,
                                    EGL_STENCIL_SIZE,
                                    8,
                                    EGL_NONE};
    android::EGLConfig config = nullptr;
    int count = 0;
    if (!platform.eglChooseConfig(display, configAttributes, &config, 1, &count) || count == 0) {
        return;
    }
    const int surfaceAttributes[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
    surface = platform.eglCreatePbufferSurface(display, config, surfaceAttributes);
    const int contextAttributes[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_NONE};
    context = platform.eglCreateContext(display, config, nullptr, contextAttributes);
    if (!platform.eglMakeCurrent(display, surface, surface, context)) context = nullptr;
    dl_iterate_phdr(keepLoaded, nullptr);
}

RealDriver::~RealDriver() {
    if (!ok()) return;
    platform.eglMakeCurrent(display, nullptr, nullptr, nullptr);
    platform.eglDestroyContext(display, context);
    platform.eglDestroySurface(display, surface);
    platform.eglTerminate(display);
}

bool RealDriver::supports(const std::string& extension) const {
    const auto* all = reinterpret_cast<const char*>(hooks.gl.glGetString(GL_EXTENSIONS));
    return all != nullptr && (std::string(all) + " ").find(extension + " ") != std::string::npos;
}

Pixel RealDriver::windowPixel(int x, int y) const {
    GLint bound = 0;
    hooks.gl.glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &bound);
    hooks.gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    unsigned char bytes[4] = {};
    hooks.gl.glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, bytes);
    hooks.gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(bound));
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}

int RealDriver::integer(unsigned name) const {
    GLint value = -1;
    hooks.gl.glGetIntegerv(name, &value);
    return value;
}

bool RealDriver::isEnabled(unsigned capability) const {
    return hooks.gl.glIsEnabled(capability) != 0;
}

std::array<int, 2> RealDriver::textureSize(unsigned texture) const {
    std::array<int, 2> size = {};
    hooks.gl.glBindTexture(GL_TEXTURE_2D, texture);
    hooks.gl.glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &size[0]);
    hooks.gl.glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &size[1]);
    return size;
}

}  // namespace test

// The fundamental types behind the GL and EGL parameter types of the entry
// lists, as the loader's ABI fixes them for both ARM processors. They are declared here, in
// our own namespace, because a desktop's Khronos headers spell some of them
// differently (a 64-bit GLuint64 as unsigned long) and the exported C++ names
// must not depend on the machine that builds them.
#pragma once

#include <cstdint>

struct __GLsync;
struct ANativeWindow;
struct AHardwareBuffer;
struct egl_native_pixmap_t;

namespace android {

using GLenum = unsigned int;
using GLuint = unsigned int;
using GLbitfield = unsigned int;
using GLboolean = unsigned char;
using GLubyte = unsigned char;
using GLint = int;
using GLsizei = int;
using GLfixed = int;
using GLclampx = int;
using GLshort = short;
using GLchar = char;
using GLfloat = float;
using GLclampf = float;
using GLdouble = double;
using GLintptr = long;
using GLsizeiptr = long;
using GLint64 = long long;
using GLint64EXT = long long;
using GLuint64 = unsigned long long;
using GLuint64EXT = unsigned long long;
using GLsync = __GLsync*;
using GLeglImageOES = void*;
using GLeglClientBufferEXT = void*;
using GLDEBUGPROC = void (*)(unsigned int source, unsigned int type, unsigned int id,
                             unsigned int severity, int length, const char* message,
                             const void* userParam);
using GLDEBUGPROCKHR = GLDEBUGPROC;
using GLVULKANPROCNV = void (*)();

using EGLDisplay = void*;
using EGLSurface = void*;
using EGLContext = void*;
using EGLConfig = void*;
using EGLImage = void*;
using EGLImageKHR = void*;
using EGLSync = void*;
using EGLSyncKHR = void*;
using EGLStreamKHR = void*;
using EGLClientBuffer = void*;
using EGLNativeDisplayType = void*;
using EGLint = int;
using EGLNativeFileDescriptorKHR = int;
using EGLenum = unsigned int;
using EGLBoolean = unsigned int;
using EGLAttrib = intptr_t;
using EGLnsecsANDROID = long long;
using EGLTimeKHR = unsigned long long;
using EGLuint64KHR = unsigned long long;
using EGLuint64NV = unsigned long long;
using NativeWindowType = ANativeWindow*;
using NativePixmapType = egl_native_pixmap_t*;
using __eglMustCastToProperFunctionPointerType = void (*)();

}  // namespace android

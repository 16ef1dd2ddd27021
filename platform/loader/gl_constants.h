// GL and EGL constants from the Khronos headers, without their prototypes:
// nothing in this library may call GL or EGL except through a driver table.
#pragma once

#define GL_GLES_PROTOTYPES 0
#define EGL_EGL_PROTOTYPES 0
#define EGL_NO_X11

#include <GLES3/gl32.h>

#include <GLES2/gl2ext.h>

#include <EGL/egl.h>

// Which entry serves an EGL name: the one of that name, except for
// eglClientWaitSync, whose KHR twin (same meaning, same signature) serves both.
// The driver's own eglClientWaitSync is never called. Deliberate, and known to
// integrators: the two rules below are its only place.
#pragma once

#define SERVED_BY(name) SERVED_BY_PICK(SERVED_BY_EXCEPTION_##name, name)

#define SERVED_BY_EXCEPTION_eglClientWaitSync , eglClientWaitSyncKHR
#define SERVED_BY_PICK(exception, name) SERVED_BY_SECOND(exception, name, )
#define SERVED_BY_SECOND(first, second, ...) second

// Stands in for the platform's liblog.so. The line is formatted here, as there, into
// as much as the platform's own buffer holds, and goes to the rig's log.
#include <cstdarg>
#include <cstdio>

#include "tests/arm/platform/forward.h"

extern "C" [[gnu::format(printf, 3, 4)]] int __android_log_print(int priority, const char* tag,
                                                                 const char* format, ...) {
    using Write = int (*)(int, const char*, const char*);
    const auto write = reinterpret_cast<Write>(platform::supplied("__android_log_write"));
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    if (write != nullptr) return write(priority, tag, text);
    return fprintf(stderr, "%s %d %s\n", tag, priority, text);
}

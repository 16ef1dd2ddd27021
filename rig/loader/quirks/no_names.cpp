// no-names: glGen* hands out zeros, and shaders and programs cannot be created.
#include <algorithm>

#include "rig/loader/quirks/quirks.h"

namespace rig::quirks {

namespace {

using namespace android;

QuirkSwitch quirk;
GLTable next;

template <void (*GLTable::*Entry)(GLsizei, GLuint*)>
void generate(GLsizei count, GLuint* names) {
    if (!quirk.on()) return (next.*Entry)(count, names);
    std::fill_n(names, std::max(count, 0), 0u);
}

GLuint createShader(GLenum type) { return quirk.on() ? 0 : next.glCreateShader(type); }
GLuint createProgram() { return quirk.on() ? 0 : next.glCreateProgram(); }

}  // namespace

void noNames(const DriverTables& tables, const QuirkSwitch& asked) {
    GLTable& table = tables.gl;
    quirk = asked;
    next = table;
    table.glGenBuffers = generate<&GLTable::glGenBuffers>;
    table.glGenFramebuffers = generate<&GLTable::glGenFramebuffers>;
    table.glGenRenderbuffers = generate<&GLTable::glGenRenderbuffers>;
    table.glGenTextures = generate<&GLTable::glGenTextures>;
    table.glGenVertexArrays = generate<&GLTable::glGenVertexArrays>;
    table.glCreateShader = createShader;
    table.glCreateProgram = createProgram;
}

}  // namespace rig::quirks

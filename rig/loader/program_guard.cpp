#include "rig/loader/program_guard.h"

#include "platform/loader/gl_constants.h"
#include "rig/loader/loader.h"

namespace rig {

namespace {

bool isGuarded() {
    const Loader& l = loader();
    return l.plugin.entryObject != nullptr && !l.settings.bare && currentApi() == ContextApi::es2;
}

unsigned currentProgram() {
    GLint program = 0;
    loader().driver.gl.gl.glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    return static_cast<unsigned>(program);
}

}  // namespace

unsigned programInUse() { return isGuarded() ? currentProgram() : 0; }

void useProgramAgain(unsigned program) {
    if (isGuarded() && currentProgram() != program) loader().driver.gl.gl.glUseProgram(program);
}

}  // namespace rig

#include "rig/loader/frames/program_guard.h"

#include "platform/loader/gl_constants.h"
#include "rig/loader/thread/context_api.h"

namespace rig {

namespace {

unsigned currentProgram(const GLTable& gl) {
    GLint program = 0;
    gl.glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    return static_cast<unsigned>(program);
}

}  // namespace

bool ProgramGuard::guards() const { return on && currentApi() == ContextApi::Es2; }

unsigned ProgramGuard::programInUse() const { return guards() ? currentProgram(driver.gl.gl) : 0; }

void ProgramGuard::useAgain(unsigned program) const {
    const GLTable& gl = driver.gl.gl;
    if (!guards() || currentProgram(gl) == program) return;
    if (program == 0 || gl.glIsProgram(program)) gl.glUseProgram(program);
}

}  // namespace rig

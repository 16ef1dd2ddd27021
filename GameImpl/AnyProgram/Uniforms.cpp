// ScaledGl: uniforms by their locations, which are those of the program's own texts.
#include "GameImpl/AnyProgram/ScaledGl.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

GLint ScaledGl::driverLocation(GLuint program, GLint location) {
    const AddedUniforms* added = group->shaders.added(program);
    return added != nullptr ? added->driverLocation(location) : location;
}

// In the program that is in use, or else in the active one of the pipeline.
GLint ScaledGl::driverLocation(GLint location) {
    if (usedUniforms != nullptr) return usedUniforms->driverLocation(location);
    if (usedProgram != 0 || !group->shaders.hasMoved() || !hasES31) return location;
    GLint pipeline = 0;
    GLint active = 0;
    gl().glGetIntegerv(GL_PROGRAM_PIPELINE_BINDING, &pipeline);
    if (pipeline == 0) return location;
    gl().glGetProgramPipelineiv(static_cast<GLuint>(pipeline), GL_ACTIVE_PROGRAM, &active);
    return driverLocation(static_cast<GLuint>(active), location);
}

#define UNIFORM_CALL(name, parameters, arguments) \
    void ScaledGl::name parameters { gl().name arguments; }
#include "GameImpl/AnyProgram/uniform_calls.in"

}  // namespace android::any

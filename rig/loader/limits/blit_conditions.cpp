#include "rig/loader/limits/blit_conditions.h"

#include "rig/loader/limits/snapshot.h"

namespace rig {

// The blit's triangles are counter-clockwise.
bool cullsBlit(const GLTable& gl) {
    if (gl.glIsEnabled(GL_CULL_FACE) == GL_FALSE) return false;
    const GLint mode = integer(gl, GL_CULL_FACE_MODE);
    const bool isFront = integer(gl, GL_FRONT_FACE) == GL_CCW;
    return mode == GL_FRONT_AND_BACK || mode == (isFront ? GL_FRONT : GL_BACK);
}

bool samplesMipmaps(const GLTable& gl) {
    if (!isEs3(gl)) return false;
    const GLint active = integer(gl, GL_ACTIVE_TEXTURE);
    gl.glActiveTexture(GL_TEXTURE0);
    const auto sampler = static_cast<GLuint>(integer(gl, GL_SAMPLER_BINDING));
    gl.glActiveTexture(static_cast<GLenum>(active));
    if (sampler == 0) return false;
    GLint filter = GL_NEAREST;
    gl.glGetSamplerParameteriv(sampler, GL_TEXTURE_MIN_FILTER, &filter);
    return filter != GL_NEAREST && filter != GL_LINEAR;
}

bool hasDivisor(const GLTable& gl) {
    if (!isEs3(gl)) return false;
    GLint divisors[2] = {};
    for (GLuint i = 0; i < 2; ++i) {
        gl.glGetVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_DIVISOR, &divisors[i]);
    }
    return divisors[0] != 0 || divisors[1] != 0;
}

bool discards(const GLTable& gl) {
    return isEs3(gl) && gl.glIsEnabled(GL_RASTERIZER_DISCARD) != GL_FALSE;
}

bool feedsBack(const GLTable& gl) {
    return isEs3(gl) && integer(gl, GL_TRANSFORM_FEEDBACK_ACTIVE) != GL_FALSE;
}

}  // namespace rig

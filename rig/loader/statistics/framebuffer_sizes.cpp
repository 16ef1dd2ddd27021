#include "rig/loader/statistics/framebuffer_sizes.h"

#include <map>

#include "platform/loader/gl_constants.h"

namespace rig {

namespace {

// Per thread: names belong to contexts, and those to threads.
thread_local std::map<unsigned, unsigned> textureTargets;

struct TargetBinding {
    GLenum target;
    GLenum binding;
};

constexpr TargetBinding kTargets[] = {
    {GL_TEXTURE_2D, GL_TEXTURE_BINDING_2D},
    {GL_TEXTURE_2D_ARRAY, GL_TEXTURE_BINDING_2D_ARRAY},
    {GL_TEXTURE_3D, GL_TEXTURE_BINDING_3D},
    {GL_TEXTURE_CUBE_MAP, GL_TEXTURE_BINDING_CUBE_MAP},
    {GL_TEXTURE_2D_MULTISAMPLE, GL_TEXTURE_BINDING_2D_MULTISAMPLE},
};

GLint attachmentValue(const GLTable& gl, GLenum attachment, GLenum name) {
    GLint value = 0;
    gl.glGetFramebufferAttachmentParameteriv(GL_DRAW_FRAMEBUFFER, attachment, name, &value);
    return value;
}

Size renderbufferSize(const GLTable& gl, GLuint name) {
    GLint bound = 0;
    Size size;
    gl.glGetIntegerv(GL_RENDERBUFFER_BINDING, &bound);
    gl.glBindRenderbuffer(GL_RENDERBUFFER, name);
    gl.glGetRenderbufferParameteriv(GL_RENDERBUFFER, GL_RENDERBUFFER_WIDTH, &size.width);
    gl.glGetRenderbufferParameteriv(GL_RENDERBUFFER, GL_RENDERBUFFER_HEIGHT, &size.height);
    gl.glBindRenderbuffer(GL_RENDERBUFFER, static_cast<GLuint>(bound));
    return size;
}

Size textureSize(const GLTable& gl, GLuint name, GLint level, GLint cubeFace) {
    const auto noted = textureTargets.find(name);
    const GLenum target = noted != textureTargets.end() ? noted->second : GL_TEXTURE_2D;
    GLenum binding = GL_TEXTURE_BINDING_2D;
    for (const TargetBinding& row : kTargets) {
        if (row.target == target) binding = row.binding;
    }
    GLint bound = 0;
    Size size;
    const GLenum asked = target == GL_TEXTURE_CUBE_MAP ? static_cast<GLenum>(cubeFace) : target;
    gl.glGetIntegerv(binding, &bound);
    gl.glBindTexture(target, name);
    gl.glGetTexLevelParameteriv(asked, level, GL_TEXTURE_WIDTH, &size.width);
    gl.glGetTexLevelParameteriv(asked, level, GL_TEXTURE_HEIGHT, &size.height);
    gl.glBindTexture(target, static_cast<GLuint>(bound));
    return size;
}

}  // namespace

void noteTextureTarget(unsigned texture, unsigned target) {
    if (texture != 0) textureTargets[texture] = target;
}

Size drawFramebufferSize(const Driver& driver, unsigned framebuffer) {
    if (framebuffer == 0) return windowSize(driver);
    const GLTable& gl = driver.gl.gl;
    for (const GLenum attachment : {GL_COLOR_ATTACHMENT0, GL_DEPTH_ATTACHMENT}) {
        const GLint type = attachmentValue(gl, attachment, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE);
        if (type != GL_TEXTURE && type != GL_RENDERBUFFER) continue;
        const auto name = static_cast<GLuint>(
            attachmentValue(gl, attachment, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME));
        if (type == GL_RENDERBUFFER) return renderbufferSize(gl, name);
        const GLint level =
            attachmentValue(gl, attachment, GL_FRAMEBUFFER_ATTACHMENT_TEXTURE_LEVEL);
        const GLint face =
            attachmentValue(gl, attachment, GL_FRAMEBUFFER_ATTACHMENT_TEXTURE_CUBE_MAP_FACE);
        return textureSize(gl, name, level, face);
    }
    return {};
}

}  // namespace rig

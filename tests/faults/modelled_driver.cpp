#include "tests/faults/modelled_driver.h"

#include <algorithm>

namespace test {

using android::GLchar;

ModelledDriver::ModelledDriver() {
    recording = false;
    modelNames();
    modelShaders();
    modelTargets();
    modelDraws();
    modelErrors();
    modelSurfaces();
}

// The lowest name that is free, as most drivers do: a name that the plug-in has
// given up soon belongs to the game.
unsigned ModelledDriver::create(Kind kind) {
    unsigned name = 1;
    for (const auto& [taken, object] : live[kind]) {
        if (taken != name) break;
        ++name;
    }
    live[kind][name].game = gameIsCalling;
    return name;
}

void ModelledDriver::erase(Kind kind, unsigned name) {
    const auto found = live[kind].find(name);
    if (found == live[kind].end()) return;
    if (found->second.game && !gameIsCalling) ++stolen;
    live[kind].erase(found);
    if (kind == Framebuffer && boundFramebuffer == name) boundFramebuffer = 0;
    if (kind == Texture && boundTexture == name) boundTexture = 0;
}

const ModelledDriver::Object* ModelledDriver::find(Kind kind, unsigned name) const {
    const auto found = live[kind].find(name);
    return found == live[kind].end() ? nullptr : &found->second;
}

size_t ModelledDriver::objects() const {
    size_t count = 0;
    for (const auto& kind : live) count += kind.size();
    return count;
}

size_t ModelledDriver::pluginObjects() const {
    size_t count = 0;
    for (const auto& kind : live) {
        count += std::count_if(kind.begin(), kind.end(), [](auto& o) { return !o.second.game; });
    }
    return count;
}

void ModelledDriver::modelNames() {
    const auto generate = [this](Kind kind) {
        return [this, kind](GLsizei count, GLuint* names) {
            if (faults.silentNames || !works()) return;
            for (int i = 0; i < count; ++i) names[i] = faults.noNames ? 0 : create(kind);
        };
    };
    const auto remove = [this](Kind kind) {
        return [this, kind](GLsizei count, const GLuint* names) {
            for (int i = 0; i < count; ++i) erase(kind, names[i]);
        };
    };
    on(&GL::glGenFramebuffers, generate(Framebuffer));
    on(&GL::glGenTextures, generate(Texture));
    on(&GL::glGenRenderbuffers, generate(Renderbuffer));
    on(&GL::glGenBuffers, generate(Buffer));
    on(&GL::glDeleteFramebuffers, remove(Framebuffer));
    on(&GL::glDeleteTextures, remove(Texture));
    on(&GL::glDeleteRenderbuffers, remove(Renderbuffer));
    on(&GL::glDeleteBuffers, remove(Buffer));
    on(&GL::glCreateShader,
       [this](GLenum) { return faults.noNames || !works() ? 0u : create(Shader); });
    on(&GL::glCreateProgram, [this] { return faults.noNames || !works() ? 0u : create(Program); });
    on(&GL::glDeleteShader, [this](GLuint name) { erase(Shader, name); });
    on(&GL::glDeleteProgram, [this](GLuint name) { erase(Program, name); });
}

void ModelledDriver::modelShaders() {
    const auto status = [this](const bool Faults::*fault, GLenum statusName) {
        return [this, fault, statusName](GLuint, GLenum name, GLint* value) {
            if (!works()) return;
            if (name == statusName) *value = faults.*fault ? 0 : 1;
            if (name == GL_INFO_LOG_LENGTH) *value = faults.infoLogs ? 8 : 0;
        };
    };
    const auto log = [this](GLuint, GLsizei size, GLsizei*, GLchar* text) {
        if (faults.infoLogs && works()) snprintf(text, static_cast<size_t>(size), "refused");
    };
    on(&GL::glGetShaderiv, status(&Faults::noShaders, GL_COMPILE_STATUS));
    on(&GL::glGetProgramiv, status(&Faults::noLinks, GL_LINK_STATUS));
    on(&GL::glGetShaderInfoLog, log);
    on(&GL::glGetProgramInfoLog, log);
    on(&GL::glUseProgram, [this](GLuint name) {
        if (works()) boundProgram = name;
    });
}

void ModelledDriver::modelTargets() {
    on(&GL::glBindFramebuffer, [this](GLenum target, GLuint name) {
        const bool valid = target == GL_FRAMEBUFFER || target == GL_DRAW_FRAMEBUFFER;
        if (valid && works()) boundFramebuffer = name;
    });
    on(&GL::glBindTexture, [this](GLenum, GLuint name) {
        if (works()) boundTexture = name;
    });
    on(&GL::glBindRenderbuffer, [this](GLenum, GLuint name) { boundRenderbuffer = name; });
    const auto size = [this](Kind kind, unsigned name, int width, int height) {
        const auto found = live[kind].find(name);
        if (found == live[kind].end() || !works()) return;
        found->second.width = width;
        found->second.height = height;
    };
    on(&GL::glTexImage2D,
       [this, size](GLenum, GLint, GLint, GLsizei width, GLsizei height, GLint, GLenum, GLenum,
                    const void*) { size(Texture, boundTexture, width, height); });
    on(&GL::glTexStorage2D, [this, size](GLenum, GLsizei, GLenum, GLsizei width, GLsizei height) {
        size(Texture, boundTexture, width, height);
    });
    on(&GL::glRenderbufferStorage, [this, size](GLenum, GLenum, GLsizei width, GLsizei height) {
        size(Renderbuffer, boundRenderbuffer, width, height);
    });
    const auto attach = [this](GLenum attachment, GLuint name) {
        const auto found = live[Framebuffer].find(boundFramebuffer);
        if (found != live[Framebuffer].end() && works()) {
            found->second.attachments[attachment] = name;
        }
    };
    on(&GL::glFramebufferTexture2D, [attach](GLenum, GLenum attachment, GLenum, GLuint name,
                                             GLint) { attach(attachment, name); });
    on(&GL::glFramebufferRenderbuffer,
       [attach](GLenum, GLenum attachment, GLenum, GLuint name) { attach(attachment, name); });
    on(&GL::glGetFramebufferAttachmentParameteriv,
       [this](GLenum, GLenum attachment, GLenum name, GLint* value) {
           const auto found = attachmentParameters.find({attachment, name});
           if (found != attachmentParameters.end() && works()) *value = found->second;
       });
    on(&GL::glCheckFramebufferStatus, [this](GLenum) -> GLenum {
        if (!works()) return 0;
        if (faults.incomplete) return GL_FRAMEBUFFER_UNSUPPORTED;
        if (boundFramebuffer == 0) return GL_FRAMEBUFFER_COMPLETE;
        const Object* framebuffer = find(Framebuffer, boundFramebuffer);
        if (framebuffer == nullptr || framebuffer->attachments.empty()) {
            return GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT;
        }
        for (const auto& [attachment, name] : framebuffer->attachments) {
            const Object* image = find(Texture, name);
            if (attachment != GL_COLOR_ATTACHMENT0 && image == nullptr) {
                image = find(Renderbuffer, name);
            }
            if (image == nullptr || image->width < 1 || image->height < 1) {
                return GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT;
            }
        }
        return GL_FRAMEBUFFER_COMPLETE;
    });
}

void ModelledDriver::modelDraws() {
    on(&GL::glViewport, [this](GLint x, GLint y, GLsizei width, GLsizei height) {
        const int box[] = {x, y, width, height};
        if (works()) std::copy(box, box + 4, viewport);
    });
    on(&GL::glDrawArrays, [this](GLenum, GLint, GLsizei) {
        if (!works()) return;
        const bool program = gameIsCalling || find(Program, boundProgram) != nullptr;
        draws.push_back({boundFramebuffer, viewport[2], viewport[3], boundTexture, program});
    });
    on(&GL::glGetIntegerv, [this](GLenum name, GLint* values) {
        if (!works()) return;
        std::copy(state[name].begin(), state[name].end(), values);
        if (name == GL_CURRENT_PROGRAM) *values = static_cast<int>(boundProgram);
        if (name == GL_TEXTURE_BINDING_2D) *values = static_cast<int>(boundTexture);
    });
}

void ModelledDriver::modelErrors() {
    on(&GL::glGetError, [this]() -> GLenum {
        if (faults.endlessErrors) return GL_CONTEXT_LOST;
        errorPending = !errorPending && (faults.pendingErrors || faults.lost);
        return errorPending ? GL_INVALID_OPERATION : GL_NO_ERROR;
    });
}

void ModelledDriver::modelSurfaces() {
    on(&EGL::eglQuerySurface, [this](void*, void*, EGLint attribute, EGLint* value) -> unsigned {
        if (faults.silentSizes) return EGL_FALSE;
        if (attribute == EGL_WIDTH) *value = faults.zeroSizes ? 0 : surfaceWidth;
        if (attribute == EGL_HEIGHT) *value = faults.zeroSizes ? 0 : surfaceHeight;
        return EGL_TRUE;
    });
    on(&EGL::eglSwapBuffers, [this](void*, void*) { return faults.noSwaps ? 0u : 1u; });
}

std::string ModelledDriver::judgeTarget(const Draw& draw, const Draw& blit) const {
    const Object* target = find(Framebuffer, draw.framebuffer);
    if (target == nullptr) return "drawn into no framebuffer, " + std::to_string(draw.framebuffer);
    const auto color = target->attachments.find(GL_COLOR_ATTACHMENT0);
    if (color == target->attachments.end()) return "drawn without a colour attachment";
    const Object* image = find(Texture, color->second);
    if (image == nullptr) return "drawn into a texture that does not exist";
    if (draw.width != image->width || draw.height != image->height) {
        return "drawn at " + std::to_string(draw.width) + " wide into " +
               std::to_string(image->width);
    }
    if (blit.texture != color->second) return "another texture was shown";
    return "";
}

// The game draws its world into a framebuffer of its own, then that texture into
// the window.
std::string ModelledDriver::judgeFrame() {
    const std::vector<Draw> frame = std::exchange(draws, {});
    scaled = frame.size() == 3;
    if (frame.size() != 2 && !scaled) return std::to_string(frame.size()) + " draws";
    std::string fault = judgeTarget(frame[0], frame[1]);
    if (!fault.empty()) return "world: " + fault;
    const Draw& last = frame.back();
    if (last.framebuffer != 0) return "the window was not drawn to last";
    if (last.width != surfaceWidth || last.height != surfaceHeight) {
        return "the window was drawn to at " + std::to_string(last.width) + " of " +
               std::to_string(surfaceWidth);
    }
    if (!scaled) return "";
    if (!last.program) return "blitted without a program";
    fault = judgeTarget(frame[1], frame[2]);
    return fault.empty() ? "" : "window: " + fault;
}

}  // namespace test

// incomplete-framebuffer, shader-compile, program-link: the driver does its
// work and then says that it failed. no-info-logs: it does not say why.
#include <algorithm>
#include <cstring>

#include "platform/loader/gl_constants.h"
#include "rig/loader/quirks/quirks.h"

namespace rig::quirks {

namespace {

constexpr char kLog[] = "refused on demand";

QuirkSwitch framebufferQuirk;
QuirkSwitch shaderQuirk;
QuirkSwitch programQuirk;
QuirkSwitch noLogsQuirk;
// One each: a later quirk's table holds the earlier one's entries.
GLTable belowFramebuffer;
GLTable belowShader;
GLTable belowProgram;

GLenum checkFramebufferStatus(GLenum target) {
    const GLenum status = belowFramebuffer.glCheckFramebufferStatus(target);
    return framebufferQuirk.on() ? GLenum{GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT} : status;
}

void answerLog(GLsizei size, GLsizei* length, GLchar* log) {
    if (noLogsQuirk.on()) {
        if (length != nullptr) *length = 0;
        return;
    }
    const GLsizei copied = std::min<GLsizei>(size - 1, sizeof kLog - 1);
    if (length != nullptr) *length = std::max(copied, 0);
    if (size <= 0) return;
    memcpy(log, kLog, static_cast<size_t>(copied));
    log[copied] = '\0';
}

void falsify(GLenum asked, GLenum status, GLint* value) {
    if (asked == status) *value = GL_FALSE;
    if (asked == GL_INFO_LOG_LENGTH) *value = noLogsQuirk.on() ? 0 : sizeof kLog;
}

void getShaderiv(GLuint shader, GLenum name, GLint* value) {
    belowShader.glGetShaderiv(shader, name, value);
    if (shaderQuirk.on()) falsify(name, GL_COMPILE_STATUS, value);
}

void getShaderInfoLog(GLuint shader, GLsizei size, GLsizei* length, GLchar* log) {
    if (!shaderQuirk.on()) return belowShader.glGetShaderInfoLog(shader, size, length, log);
    answerLog(size, length, log);
}

void getProgramiv(GLuint program, GLenum name, GLint* value) {
    belowProgram.glGetProgramiv(program, name, value);
    if (programQuirk.on()) falsify(name, GL_LINK_STATUS, value);
}

void getProgramInfoLog(GLuint program, GLsizei size, GLsizei* length, GLchar* log) {
    if (!programQuirk.on()) return belowProgram.glGetProgramInfoLog(program, size, length, log);
    answerLog(size, length, log);
}

}  // namespace

void incompleteFramebuffer(const DriverTables& tables, const QuirkSwitch& asked) {
    GLTable& table = tables.gl;
    framebufferQuirk = asked;
    belowFramebuffer = table;
    table.glCheckFramebufferStatus = checkFramebufferStatus;
}

void shaderCompile(const DriverTables& tables, const QuirkSwitch& asked) {
    GLTable& table = tables.gl;
    shaderQuirk = asked;
    belowShader = table;
    table.glGetShaderiv = getShaderiv;
    table.glGetShaderInfoLog = getShaderInfoLog;
}

void programLink(const DriverTables& tables, const QuirkSwitch& asked) {
    GLTable& table = tables.gl;
    programQuirk = asked;
    belowProgram = table;
    table.glGetProgramiv = getProgramiv;
    table.glGetProgramInfoLog = getProgramInfoLog;
}

void noInfoLogs(const DriverTables&, const QuirkSwitch& asked) { noLogsQuirk = asked; }

}  // namespace rig::quirks

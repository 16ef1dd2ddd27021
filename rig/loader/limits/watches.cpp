#include "rig/loader/limits/watches.h"

#include <map>

#include "rig/loader/limits/program_view.h"
#include "rig/loader/tables/precede.h"

namespace rig {

namespace {

thread_local unsigned clearsBelow;
// Textures that were made smaller than asked, and their widths. Their names belong to contexts,
// and those to threads.
thread_local std::map<GLint, GLint> lowered;

void onDraw() { view().draws(); }

void onPointer(GLuint index, GLint, GLenum, GLboolean, GLsizei, const void*) {
    view().givesPointer(index);
}
void onIntegerPointer(GLuint index, GLint, GLenum, GLsizei, const void*) {
    view().givesPointer(index);
}
void onDisable(GLuint index) { view().setsArray(index); }
void onBinding(GLuint index, GLuint) { view().setsArray(index); }
void onVertexBuffer(GLuint index, GLuint, GLintptr, GLsizei) { view().setsArray(index); }

void onBindBuffer(GLenum target, GLuint buffer) {
    if (target == GL_ARRAY_BUFFER) view().bindsArrayBuffer(buffer);
}
template <class... Rest>
void onBufferUse(GLenum target, Rest...) {
    if (target == GL_ARRAY_BUFFER) view().uses(Limit::ArrayBuffer);
}

void onUseProgram(GLuint) { view().sets(Limit::Program); }
void onClearColor(GLfloat, GLfloat, GLfloat, GLfloat) { view().sets(Limit::ClearColor); }
void onClear(GLbitfield mask) { view().clears(mask); }

void onActiveTexture(GLenum unit) { view().choosesUnit(unit); }
void onBindTexture(GLenum target, GLuint texture) {
    if (target == GL_TEXTURE_2D) view().bindsTexture2D(texture);
}
void onDeleteTextures() { view().forgetsTextures(); }

template <Limit Which>
void onBox(GLint x, GLint y, GLsizei width, GLsizei height) {
    view().setsBox(Which, {x, y, width, height});
}

void onRead() {
    if (view().readsTarget()) meet(Limit::WindowRead);
}

bool isWindows(GLenum attachment) {
    return attachment == GL_BACK || attachment == GL_COLOR || attachment == GL_DEPTH ||
           attachment == GL_STENCIL;
}
void onDrawBuffers(GLsizei count, const GLenum* buffers) {
    for (GLsizei i = 0; buffers != nullptr && i < count; ++i) {
        const bool refused = buffers[i] == GL_BACK || buffers[i] == GL_NONE;
        if (refused && view().drawsToTarget()) meet(Limit::BackRefused);
    }
}
void onReadBuffer(GLenum source) {
    if (source == GL_BACK && view().readsTarget()) meet(Limit::BackRefused);
}
template <class... Rest>
void onInvalidate(GLenum target, GLsizei count, const GLenum* attachments, Rest...) {
    const bool read = target == GL_READ_FRAMEBUFFER;
    for (GLsizei i = 0; attachments != nullptr && i < count; ++i) {
        if (!isWindows(attachments[i])) continue;
        if (read ? view().readsTarget() : view().drawsToTarget()) meet(Limit::BackRefused);
    }
}
void onAttachmentQuery(GLenum target, GLenum attachment, GLenum, GLint*) {
    onInvalidate(target, 1, &attachment);
}

void onDeleteFramebuffers(GLsizei count, const GLuint* names) {
    for (GLsizei i = 0; names != nullptr && i < count; ++i) view().forgetsFramebuffer(names[i]);
}

// Entries whose outcome is looked at: `next` is the plug-in's.
template <auto Member>
struct Bind {
    static inline void (*next)(GLenum, GLuint) = nullptr;
    static void call(GLenum target, GLuint name) {
        const unsigned before = clearsBelow;
        next(target, name);
        view().bindsFramebuffer(target, name, clearsBelow != before);
    }
    static void install(GLTable& table) {
        next = table.*Member;
        table.*Member = call;
    }
};

void (*nextGetIntegerv)(GLenum, GLint*);
void getIntegerv(GLenum name, GLint* values) {
    nextGetIntegerv(name, values);
    if (values == nullptr || (name != GL_VIEWPORT && name != GL_SCISSOR_BOX)) return;
    view().asksForBox(name == GL_VIEWPORT ? Limit::Viewport : Limit::ScissorBox,
                      {values[0], values[1], values[2], values[3]});
}

void (*nextTexStorage2D)(GLenum, GLsizei, GLenum, GLsizei, GLsizei);
void texStorage2D(GLenum target, GLsizei levels, GLenum format, GLsizei width, GLsizei height) {
    nextTexStorage2D(target, levels, format, width, height);
    if (target != GL_TEXTURE_2D || esVersion(glBelow()) < 31) return;
    GLint made = 0;
    glBelow().glGetTexLevelParameteriv(target, 0, GL_TEXTURE_WIDTH, &made);
    const GLint texture = integer(glBelow(), GL_TEXTURE_BINDING_2D);
    lowered.erase(texture);
    if (made > 0 && made < width) lowered[texture] = made;
}
void onUpload(GLenum target, GLint level, GLint x, GLint, GLsizei width, GLsizei, GLenum, GLenum,
              const void*) {
    if (target != GL_TEXTURE_2D || level != 0 || lowered.empty()) return;
    const auto found = lowered.find(integer(glBelow(), GL_TEXTURE_BINDING_2D));
    if (found != lowered.end() && x + width > found->second) meet(Limit::Upload);
}

}  // namespace

void noteClearBelow() { ++clearsBelow; }

void watchArrays(GLTable& t) {
    precede<&GLTable::glVertexAttribPointer, onPointer>(t);
    precede<&GLTable::glVertexAttribIPointer, onIntegerPointer>(t);
    precede<&GLTable::glDisableVertexAttribArray, onDisable>(t);
    precede<&GLTable::glVertexAttribBinding, onBinding>(t);
    precede<&GLTable::glBindVertexBuffer, onVertexBuffer>(t);
#define GL_ENTRY(result, name, parameters, arguments)                          \
    if constexpr (kindOf(#name) == Kind::Draw && !startsWith(#name, "glBlit")) \
        precede<&GLTable::name, onDraw>(t);
#include "platform/gl_entries.in"
}

void watchArrayBuffer(GLTable& t) {
    precede<&GLTable::glBindBuffer, onBindBuffer>(t);
    precede<&GLTable::glBufferData, onBufferUse<GLsizeiptr, const void*, GLenum>>(t);
    precede<&GLTable::glBufferSubData, onBufferUse<GLintptr, GLsizeiptr, const void*>>(t);
    precede<&GLTable::glMapBufferRange, onBufferUse<GLintptr, GLsizeiptr, GLbitfield>>(t);
}

void watchProgram(GLTable& t) { precede<&GLTable::glUseProgram, onUseProgram>(t); }
void watchViewport(GLTable& t) { precede<&GLTable::glViewport, onBox<Limit::Viewport>>(t); }
void watchScissor(GLTable& t) { precede<&GLTable::glScissor, onBox<Limit::ScissorBox>>(t); }

void watchClear(GLTable& t) {
    precede<&GLTable::glClearColor, onClearColor>(t);
    precede<&GLTable::glClear, onClear>(t);
}

void watchTextures(GLTable& t) {
    precede<&GLTable::glActiveTexture, onActiveTexture>(t);
    precede<&GLTable::glBindTexture, onBindTexture>(t);
    precede<&GLTable::glDeleteTextures, onDeleteTextures>(t);
}

void watchBinds(GLTable& t) {
    Bind<&GLTable::glBindFramebuffer>::install(t);
    Bind<&GLTable::glBindFramebufferOES>::install(t);
    precede<&GLTable::glDeleteFramebuffers, onDeleteFramebuffers>(t);
}

void watchReads(GLTable& t) {
    precede<&GLTable::glReadPixels, onRead>(t);
    precede<&GLTable::glReadnPixels, onRead>(t);
    precede<&GLTable::glReadnPixelsEXT, onRead>(t);
    precede<&GLTable::glReadnPixelsKHR, onRead>(t);
    precede<&GLTable::glCopyTexImage2D, onRead>(t);
    precede<&GLTable::glCopyTexSubImage2D, onRead>(t);
    precede<&GLTable::glCopyTexSubImage3D, onRead>(t);
    precede<&GLTable::glBlitFramebuffer, onRead>(t);
}

void watchAttachments(GLTable& t) {
    precede<&GLTable::glDrawBuffers, onDrawBuffers>(t);
    precede<&GLTable::glDrawBuffersEXT, onDrawBuffers>(t);
    precede<&GLTable::glReadBuffer, onReadBuffer>(t);
    precede<&GLTable::glInvalidateFramebuffer, onInvalidate<>>(t);
    precede<&GLTable::glDiscardFramebufferEXT, onInvalidate<>>(t);
    precede<&GLTable::glInvalidateSubFramebuffer, onInvalidate<GLint, GLint, GLsizei, GLsizei>>(t);
    precede<&GLTable::glGetFramebufferAttachmentParameteriv, onAttachmentQuery>(t);
}

void watchBoxes(GLTable& t) {
    nextGetIntegerv = t.glGetIntegerv;
    t.glGetIntegerv = getIntegerv;
}

void watchUploads(GLTable& t) {
    nextTexStorage2D = t.glTexStorage2D;
    t.glTexStorage2D = texStorage2D;
    precede<&GLTable::glTexSubImage2D, onUpload>(t);
}

}  // namespace rig

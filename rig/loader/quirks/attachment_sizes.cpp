// attachment-sizes: the device's driver answers the component sizes of depth
// and stencil attachments with the colour attachment's. A conformant driver
// answers zeros, and the plug-in then takes no framebuffer for a
// high-precision one.
#include "platform/loader/gl_constants.h"
#include "rig/loader/quirks/quirks.h"

namespace rig::quirks {

namespace {

QuirkSwitch quirk;
GLTable next;

bool isComponentSize(GLenum name) {
    return name >= GL_FRAMEBUFFER_ATTACHMENT_RED_SIZE &&
           name <= GL_FRAMEBUFFER_ATTACHMENT_ALPHA_SIZE;
}

void getAttachmentParameter(GLenum target, GLenum attachment, GLenum name, GLint* value) {
    const bool depthOrStencil = attachment == GL_DEPTH_ATTACHMENT ||
                                attachment == GL_STENCIL_ATTACHMENT ||
                                attachment == GL_DEPTH_STENCIL_ATTACHMENT;
    if (quirk.on() && depthOrStencil && isComponentSize(name)) attachment = GL_COLOR_ATTACHMENT0;
    next.glGetFramebufferAttachmentParameteriv(target, attachment, name, value);
}

}  // namespace

void attachmentSizes(const DriverTables& tables, const QuirkSwitch& asked) {
    GLTable& table = tables.gl;
    quirk = asked;
    next = table;
    table.glGetFramebufferAttachmentParameteriv = getAttachmentParameter;
}

}  // namespace rig::quirks

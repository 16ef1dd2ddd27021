// shading-rate: GL_QCOM_shading_rate among the extensions. Its one function is
// no entry of the table; the plug-in only looks for the name.
#include <string>

#include "platform/loader/gl_constants.h"
#include "rig/loader/quirks/quirks.h"

namespace rig::quirks {

namespace {

constexpr char kExtension[] = "GL_QCOM_shading_rate";

QuirkSwitch quirk;
GLTable next;

const GLubyte* getString(GLenum name) {
    const GLubyte* own = next.glGetString(name);
    if (!quirk.on() || name != GL_EXTENSIONS || own == nullptr) return own;
    // The program keeps the pointer.
    static const auto* extended =
        new std::string(std::string(reinterpret_cast<const char*>(own)) + " " + kExtension);
    return reinterpret_cast<const GLubyte*>(extended->c_str());
}

void getIntegerv(GLenum name, GLint* data) {
    next.glGetIntegerv(name, data);
    if (quirk.on() && name == GL_NUM_EXTENSIONS) ++*data;
}

const GLubyte* getStringi(GLenum name, GLuint index) {
    GLint count = 0;
    if (quirk.on() && name == GL_EXTENSIONS) next.glGetIntegerv(GL_NUM_EXTENSIONS, &count);
    if (count > 0 && index == static_cast<GLuint>(count)) {
        return reinterpret_cast<const GLubyte*>(kExtension);
    }
    return next.glGetStringi(name, index);
}

}  // namespace

void shadingRate(const DriverTables& tables, const QuirkSwitch& asked) {
    GLTable& table = tables.gl;
    quirk = asked;
    next = table;
    table.glGetString = getString;
    table.glGetIntegerv = getIntegerv;
    table.glGetStringi = getStringi;
}

}  // namespace rig::quirks

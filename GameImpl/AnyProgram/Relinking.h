// A program that is linked again from other texts of its shaders.
//
// What a program sees of it stays: the attached shaders, the places of attributes,
// the values of uniforms and the bindings of blocks. Allocates. The context of the
// table is current on the calling thread; GL errors are the caller's to drain.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "GameImpl/AnyProgram/ShaderTable.h"
#include "platform/loader/records.h"

namespace android::any {

class Relinking {
public:
    // Remembers what the program has, which is linked; of values only those that can
    // be others than after linking.
    Relinking(const gl_hooks_t::gl_t& driverTable, GLuint linkedProgram, bool hasValues);

    // Whether it is linked from these texts now. Otherwise it may not be linked at all.
    bool link(const std::vector<ShaderText>& texts);
    // The program is the one in use.
    void restoreValues() const;
    // As AddedUniforms::moved has them.
    std::vector<std::pair<GLint, GLint>> movedUniforms() const;

private:
    struct Uniform {
        std::string name;
        GLenum type;
        GLint location;
        float values[16];  // or as many integers
    };
    struct Attribute {
        std::string name;
        GLint location;
    };

    void learnUniforms(bool hasValues);
    void learnAttributes();
    void bindAttributes();
    bool attributesMoved() const;
    bool linkOnce(const std::vector<ShaderText>& texts);

    const gl_hooks_t::gl_t& gl;
    const GLuint program;
    std::vector<Uniform> uniforms;  // an element each
    std::vector<Attribute> attributes;
    std::vector<GLint> blockBindings;
};

}  // namespace android::any

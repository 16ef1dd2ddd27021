// The filters on a real driver, taken for OpenGL ES 3 and for 2: the same pixels, an exact
// copy where the sizes are equal, and edges that take in nothing of the opposite ones.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "GameImpl/Filter/WindowPainter.h"
#include "rig/real_driver/real_driver.h"

namespace {

using namespace android;
using Bytes = std::vector<unsigned char>;

constexpr int kWidth = 96;
constexpr int kHeight = 64;

decltype(gl_hooks_t::gl_t::glGetString) realGetString;
const char* claimed;  // null: the driver's own version

const GLubyte* getString(GLenum name) {
    const bool claims = name == GL_VERSION && claimed != nullptr;
    return claims ? reinterpret_cast<const GLubyte*>(claimed) : realGetString(name);
}

class FiltersOnDriver : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(driver.ok()) << "no OpenGL ES 3 driver with pbuffers";
        realGetString = gl.glGetString;
        gl.glGetString = getString;
        gl.glGenTextures(1, &texture);
    }

    // Left half dark, right half noise, at this size.
    Bytes picture(int width, int height) {
        Bytes bytes(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
        unsigned random = 1;
        for (size_t i = 0; i < bytes.size(); ++i) {
            random = random * 1664525 + 1013904223;
            const bool dark = i / 4 % static_cast<size_t>(width) < static_cast<size_t>(width) / 2;
            bytes[i] = i % 4 == 3 ? 255 : dark ? 0 : static_cast<unsigned char>(random >> 24);
        }
        gl.glBindTexture(GL_TEXTURE_2D, texture);
        gl.glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                        bytes.data());
        return bytes;
    }

    Bytes painted(WindowPainter& painter, const char* version, int width, int height, Filter filter,
                  bool upsideDown = false) {
        claimed = version;
        gl.glViewport(0, 0, kWidth, kHeight);
        gl.glScissor(0, 0, kWidth, kHeight);
        gl.glVertexAttribPointer(0, 3, GL_SHORT, GL_TRUE, 20, nullptr);
        EXPECT_TRUE(painter.mayPaint(gl));
        EXPECT_TRUE(painter.paint(gl, {texture, width, height, upsideDown, false}, kWidth, kHeight,
                                  {filter, 100}));
        GLint size = 0;
        gl.glGetVertexAttribiv(0, GL_VERTEX_ATTRIB_ARRAY_SIZE, &size);
        EXPECT_EQ(size, 3);
        EXPECT_EQ(gl.glGetError(), 0u);
        Bytes bytes(size_t{kWidth} * kHeight * 4);
        gl.glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
        return bytes;
    }

    test::RealDriver driver{kWidth, kHeight};
    gl_hooks_t::gl_t& gl = driver.hooks.gl;
    GLuint texture = 0;
};

TEST_F(FiltersOnDriver, DrawTheSameInBothVersions) {
    WindowPainter three;
    WindowPainter two;
    for (const Filter filter : {Filter::Bilinear, Filter::Bicubic, Filter::Sharp}) {
        SCOPED_TRACE(nameOf(filter));
        picture(kWidth / 2, kHeight / 2);
        const Bytes drawn = painted(three, nullptr, kWidth / 2, kHeight / 2, filter);
        EXPECT_EQ(painted(two, "OpenGL ES 2.0", kWidth / 2, kHeight / 2, filter), drawn);
        for (int y = 0; y < kHeight; ++y) {
            EXPECT_EQ(drawn[static_cast<size_t>(y) * kWidth * 4], 0) << "row " << y;
        }
        const Bytes turned = painted(three, nullptr, kWidth / 2, kHeight / 2, filter, true);
        EXPECT_NE(turned, drawn);
        const Bytes whole = picture(kWidth, kHeight);
        EXPECT_EQ(painted(three, nullptr, kWidth, kHeight, filter), whole);
        EXPECT_EQ(painted(two, "OpenGL ES 2.0", kWidth, kHeight, filter), whole);
    }
    three.release(gl);
    two.release(gl);
}

}  // namespace

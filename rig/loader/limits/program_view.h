// What the program on the calling thread takes for bound and set. Since the plug-in has drawn,
// the driver may have something else.
#pragma once

#include "rig/loader/limits/snapshot.h"

namespace rig {

enum class Limit {
#define LIMIT(name, section, words, watch, atSwap) name,
#include "rig/loader/limits/limits.in"
#undef LIMIT
};

// On any thread; isMet until they are taken.
void meet(Limit limit);
bool isMet(Limit limit);

// Once, before anything else.
void setDriverBelow(const Driver& below);
const GLTable& glBelow();

class ProgramView {
public:
    void begin();
    void beforeSwap();
    void afterSwap();

    void bindsFramebuffer(GLenum target, GLuint name, bool cleared);
    void forgetsFramebuffer(GLuint name);
    void bindsArrayBuffer(GLuint name);
    void setsArray(GLuint index);
    void givesPointer(GLuint index);
    void choosesUnit(GLenum texture) { unit = static_cast<GLint>(texture) - GL_TEXTURE0; }
    void bindsTexture2D(GLuint name) { textures[unit] = static_cast<GLint>(name); }
    void forgetsTextures() { textures.clear(); }
    void setsBox(Limit limit, const Box& box);
    void asksForBox(Limit limit, const Box& answer);
    void sets(Limit limit) { stale &= ~bit(limit); }
    // Meets the limit where the state is still what the blit has left.
    void uses(Limit limit) const;
    void draws();
    void clears(GLbitfield mask);
    // Whether what the program takes for the window is the plug-in's target.
    bool drawsToTarget();
    bool readsTarget() const;

private:
    static unsigned bit(Limit limit) { return 1u << static_cast<unsigned>(limit); }
    void usesArrays() const;
    void usesTextures() const;
    void compareArrays(const Snapshot& after);

    struct BoxView {
        Box answer = {};
        bool asked = false;
    };

    GLuint drawBinding = 0;
    GLuint readBinding = 0;
    GLuint arrayBuffer = 0;
    GLuint targetName = 0;  // of the plug-in's target, once seen
    bool drawn = false;     // to the window, since it was last cleared
    bool wiped = false;     // draws are gone, and nothing of the program has cleared since
    unsigned stale = 0;     // a bit for each Limit: what the blit has left
    unsigned staleArrays = 0;
    unsigned clientArrays = 0;  // of these, those that read from the program's memory
    GLint staleVertexArray = 0;
    GLint unit = 0;                   // from 0
    std::map<GLint, GLint> textures;  // the 2D ones by unit, as far as they were bound
    BoxView viewport;
    BoxView scissor;
    Snapshot atSwap;
};

// The calling thread's.
ProgramView& view();

}  // namespace rig

// A driver that keeps books: which objects exist, who made them, and what a
// frame's drawing went into, so that a test can tell without pixels whether the
// picture is right. Its faults are switched on and off at any time.
#pragma once

#include <map>
#include <string>

#include "tests/support/recording_driver.h"

namespace test {

class ModelledDriver : public RecordingDriver {
public:
    enum Kind { Framebuffer, Texture, Renderbuffer, Buffer, Shader, Program, kKinds };

    ModelledDriver();

    // Each may be on together with any other.
    struct Faults {
        bool noNames = false;      // glGen* and glCreate* answer 0
        bool silentNames = false;  // glGen* answers nothing at all
        bool noShaders = false, noLinks = false;
        bool infoLogs = true;
        bool incomplete = false;
        bool pendingErrors = false;  // one after each call
        bool endlessErrors = false;  // glGetError never answers 0
        bool lost = false;           // no call has an effect or an answer
        bool zeroSizes = false;      // of surfaces
        bool silentSizes = false;
        bool noSwaps = false;
    } faults;

    // Set while a call is the game's own: what it makes then is the game's.
    bool gameIsCalling = false;

    size_t objects() const;
    size_t pluginObjects() const;
    // The game's objects that the plug-in has deleted.
    int stolen = 0;

    // What the picture of the frame since the last call of this is made of:
    // empty where it is right, else what is wrong with it.
    std::string judgeFrame();
    // Whether the frame before that was drawn into a smaller target.
    bool scaled = false;

    unsigned boundTexture = 0;

private:
    struct Object {
        bool game = false;
        int width = 0, height = 0;                 // of images
        std::map<unsigned, unsigned> attachments;  // of framebuffers
    };
    struct Draw {
        unsigned framebuffer = 0;
        int width = 0, height = 0;  // of the viewport
        unsigned texture = 0;
        bool program = false;
    };

    void modelNames();
    void modelShaders();
    void modelTargets();
    void modelDraws();
    void modelErrors();
    void modelSurfaces();
    bool works() const { return !faults.lost; }
    unsigned create(Kind kind);
    void erase(Kind kind, unsigned name);
    const Object* find(Kind kind, unsigned name) const;
    std::string judgeTarget(const Draw& draw, const Draw& blit) const;

    std::map<unsigned, Object> live[kKinds];
    unsigned boundFramebuffer = 0;
    unsigned boundRenderbuffer = 0;
    unsigned boundProgram = 0;
    bool errorPending = false;
    std::vector<Draw> draws;
    int viewport[4] = {};
};

}  // namespace test

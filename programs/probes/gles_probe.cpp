// A small GLES program for the rig's tests. It draws to a pbuffer that it asks
// to be 64x48 and prints what it learnt, one "name value" a line.
//
// usage: gles_probe [loaded|procs] [es1|desktop] [facts] [clock] [rebind] [deleted]
//                   [handler] [loading] [habit NAME] [frames N] [pause MS] [limit MS]
//   loaded, procs   take the entries by dlsym, or by eglGetProcAddress alone
//   es1, desktop    draw with an OpenGL ES 1, or a desktop GL context
//   facts           print what the driver quirks change, after the first frame
//   clock           print the program's own time in each frame, by four ways, and
//                   move the triangle by it
//   rebind          bind the window once more in the middle of each frame
//   deleted         delete the program in the first frame, while it is in use, and
//                   print the GL error that each swap leaves
//   handler         print a line when exit runs the program's handlers
//   loading         fill textures meanwhile, on a thread with a shared context
//   habit NAME      do what some programs do: see drawFrame and endFrame
//   pause, limit    sleep after each frame: once, or a millisecond at a time until
//                   so much time has passed since the last one
#define EGL_NO_X11
#define GL_GLEXT_PROTOTYPES
#include <EGL/egl.h>
#include <GLES/gl.h>
#include <GLES3/gl32.h>
#include <dlfcn.h>
#include <sys/prctl.h>
#include <sys/time.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <thread>
#include <vector>

namespace {

bool onlyProcs;
const char* habit = "";

bool does(const char* name) { return strcmp(habit, name) == 0; }

#ifdef PROBE_LINKED
template <class Function>
Function* entry(Function* linked, const char*) {
    return linked;
}
#define CALL(name) entry(name, #name)
#else
template <class Function>
Function* entry(const char* name) {
    static void* const egl = dlopen("libEGL.so.1", RTLD_NOW | RTLD_LOCAL);
    static void* const gl = dlopen("libGLESv2.so.2", RTLD_NOW | RTLD_LOCAL);
    using GetProcAddress = void* (*)(const char*);
    static const auto getProc = reinterpret_cast<GetProcAddress>(dlsym(egl, "eglGetProcAddress"));
    void* found = onlyProcs ? getProc(name) : dlsym(strncmp(name, "egl", 3) == 0 ? egl : gl, name);
    if (found == nullptr) {
        fprintf(stderr, "no %s\n", name);
        exit(1);
    }
    return reinterpret_cast<Function*>(found);
}
#define CALL(name) entry<decltype(name)>(#name)
#endif

constexpr float kTriangle[] = {-0.9f, -0.9f, 0.9f, -0.9f, 0.0f, 0.9f};

EGLDisplay display;
EGLSurface surface;

void require(bool condition, const char* what) {
    if (condition) return;
    fprintf(stderr, "%s failed: 0x%x\n", what, CALL(eglGetError)());
    exit(1);
}

// Never ends.
void fillTextures(EGLContext context, EGLSurface own) {
    CALL(eglMakeCurrent)(display, own, own, context);
    for (;;) {
        GLuint texture = 0;
        GLuint framebuffer = 0;
        CALL(glGenTextures)(1, &texture);
        CALL(glGenFramebuffers)(1, &framebuffer);
        CALL(glBindTexture)(GL_TEXTURE_2D, texture);
        CALL(glTexStorage2D)(GL_TEXTURE_2D, 1, GL_RGBA8, 4, 4);
        CALL(glBindFramebuffer)(GL_FRAMEBUFFER, framebuffer);
        CALL(glFramebufferTexture2D)
        (GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
        CALL(glClear)(GL_COLOR_BUFFER_BIT);
        CALL(glDeleteFramebuffers)(1, &framebuffer);
        CALL(glDeleteTextures)(1, &texture);
    }
}

void makeContext(bool es1, bool desktop, bool loading) {
    display = CALL(eglGetDisplay)(EGL_DEFAULT_DISPLAY);
    require(CALL(eglInitialize)(display, nullptr, nullptr), "eglInitialize");
    const EGLint wanted[] = {EGL_SURFACE_TYPE,
                             EGL_PBUFFER_BIT,
                             EGL_RENDERABLE_TYPE,
                             desktop ? EGL_OPENGL_BIT
                             : es1   ? EGL_OPENGL_ES_BIT
                                     : EGL_OPENGL_ES3_BIT,
                             EGL_RED_SIZE,
                             8,
                             EGL_ALPHA_SIZE,
                             8,
                             EGL_DEPTH_SIZE,
                             24,
                             EGL_NONE};
    if (desktop) require(CALL(eglBindAPI)(EGL_OPENGL_API), "eglBindAPI");
    EGLConfig config = nullptr;
    EGLint count = 0;
    CALL(eglChooseConfig)(display, wanted, &config, 1, &count);
    require(count == 1, "eglChooseConfig");
    const EGLint size[] = {EGL_WIDTH, 64, EGL_HEIGHT, 48, EGL_NONE};
    surface = CALL(eglCreatePbufferSurface)(display, config, size);
    const EGLint version[] = {EGL_CONTEXT_CLIENT_VERSION, es1 ? 1 : 3, EGL_NONE};
    EGLContext context =
        CALL(eglCreateContext)(display, config, EGL_NO_CONTEXT, desktop ? nullptr : version);
    if (loading) {
        std::thread(fillTextures, CALL(eglCreateContext)(display, config, context, version),
                    CALL(eglCreatePbufferSurface)(display, config, size))
            .detach();
    }
    require(CALL(eglMakeCurrent)(display, surface, surface, context), "eglMakeCurrent");
}

GLuint shader(GLenum type, const char* text) {
    const GLuint name = CALL(glCreateShader)(type);
    CALL(glShaderSource)(name, 1, &text, nullptr);
    CALL(glCompileShader)(name);
    return name;
}

GLuint makeProgram() {
    const GLuint program = CALL(glCreateProgram)();
    CALL(glAttachShader)
    (program, shader(GL_VERTEX_SHADER,
                     "attribute vec2 p; varying vec2 v;"
                     "void main() { v = p; gl_Position = vec4(p, 0, 1); }"));
    CALL(glAttachShader)
    (program, shader(GL_FRAGMENT_SHADER,
                     "precision highp float; varying vec2 "
                     "v; void main() { gl_FragColor = vec4(v * .5 + .5, 1, 1); }"));
    CALL(glLinkProgram)(program);
    CALL(glUseProgram)(program);  // once, as some programs do
    return program;
}

void setArrays() {
    if (!does("client")) CALL(glBindBuffer)(GL_ARRAY_BUFFER, 0);
    CALL(glVertexAttribPointer)(0, 2, GL_FLOAT, GL_FALSE, 0, kTriangle);
    CALL(glEnableVertexAttribArray)(0);
}

void makeArrays() {
    GLuint buffer = 0;
    CALL(glGenBuffers)(1, &buffer);
    CALL(glBindBuffer)(GL_ARRAY_BUFFER, buffer);
    CALL(glBufferData)(GL_ARRAY_BUFFER, sizeof kTriangle, kTriangle, GL_STATIC_DRAW);
    CALL(glVertexAttribPointer)(0, 2, GL_FLOAT, GL_FALSE, 0, nullptr);
    CALL(glEnableVertexAttribArray)(0);
}

void fillStorage() {
    static const std::vector<char> pixels(size_t{1440} * 648 * 4);
    GLuint texture = 0;
    CALL(glGenTextures)(1, &texture);
    CALL(glBindTexture)(GL_TEXTURE_2D, texture);
    CALL(glTexStorage2D)(GL_TEXTURE_2D, 1, GL_RGBA8, 1440, 648);
    CALL(glTexSubImage2D)
    (GL_TEXTURE_2D, 0, 0, 0, 1440, 648, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    CALL(glDeleteTextures)(1, &texture);
}

// What the window is asked for while it is drawn to.
void useWindow() {
    GLint box[4] = {};
    GLint bound = 0;
    const GLenum color = GL_COLOR;
    const GLenum none = GL_NONE;
    CALL(glGetIntegerv)(GL_VIEWPORT, box);
    CALL(glGetIntegerv)(GL_FRAMEBUFFER_BINDING, &bound);
    if (does("box")) CALL(glViewport)(box[0], box[1], box[2], box[3]);
    if (does("restore")) CALL(glBindFramebuffer)(GL_FRAMEBUFFER, static_cast<GLuint>(bound));
    if (does("read")) CALL(glReadPixels)(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, box);
    if (does("invalidate")) CALL(glInvalidateFramebuffer)(GL_FRAMEBUFFER, 1, &color);
    if (does("none")) CALL(glDrawBuffers)(1, &none);
}

// What is on at the swap.
void endFrame() {
    if (does("corner")) CALL(glScissor)(0, 0, 8, 8);
    if (does("sampler")) {
        GLuint sampler = 0;
        CALL(glGenSamplers)(1, &sampler);  // which wants mipmaps until it is told otherwise
        CALL(glBindSampler)(0, sampler);
    }
    if (does("divisor")) CALL(glVertexAttribDivisor)(1, 1);
    if (does("discard")) CALL(glEnable)(GL_RASTERIZER_DISCARD);
    if (does("clockwise")) CALL(glEnable)(GL_CULL_FACE), CALL(glFrontFace)(GL_CW);
    if (does("fill")) fillStorage();
}

void drawFrame(bool rebind, int x, bool first) {
    CALL(glDisable)(GL_RASTERIZER_DISCARD);
    CALL(glBindFramebuffer)(GL_FRAMEBUFFER, 0);
    if (does("viewport")) {
        if (first) CALL(glViewport)(0, 0, 16, 12);
    } else {
        CALL(glViewport)(x, 0, 64, 48);
    }
    if (first || !does("color")) CALL(glClearColor)(0.5f, 0, 0, 1);
    CALL(glClear)(GL_COLOR_BUFFER_BIT);
    if (does("corner")) CALL(glEnable)(GL_SCISSOR_TEST);
    const bool once = does("once") || does("bound");
    if (!once) setArrays();
    if (once && first) makeArrays();
    if (does("bound")) CALL(glVertexAttribPointer)(0, 2, GL_FLOAT, GL_FALSE, 0, nullptr);
    CALL(glDrawArrays)(GL_TRIANGLES, 0, 3);
    useWindow();
    endFrame();
    if (!rebind) return;
    CALL(glBindFramebuffer)(GL_FRAMEBUFFER, 0);
    CALL(glViewport)(0, 0, 16, 12);
    CALL(glDrawArrays)(GL_TRIANGLES, 0, 3);
}

void drawFrameDesktop() {
    CALL(glDisable)(GL_SCISSOR_TEST);
    CALL(glClearColor)(0.5f, 0, 0, 1);
    CALL(glClear)(GL_COLOR_BUFFER_BIT);
    CALL(glEnable)(GL_SCISSOR_TEST);
    CALL(glScissor)(10, 10, 31, 17);
    CALL(glClearColor)(0, 1, 0.5f, 1);
    CALL(glClear)(GL_COLOR_BUFFER_BIT);
}

#ifdef PROBE_LINKED
void drawFrameEs1() {}
#else
// The ES 1 entries are in a library of their own.
template <class Function>
Function* es1Entry(const char* name) {
    static void* const gl = dlopen("libGLESv1_CM.so.1", RTLD_NOW | RTLD_LOCAL);
    return reinterpret_cast<Function*>(dlsym(gl, name));
}
#define CALL1(name) es1Entry<decltype(name)>(#name)

void drawFrameEs1() {
    CALL1(glClearColor)(0.5f, 0, 0, 1);
    CALL1(glClear)(GL_COLOR_BUFFER_BIT);
    CALL1(glColor4f)(0, 1, 1, 1);
    CALL1(glEnableClientState)(GL_VERTEX_ARRAY);
    CALL1(glVertexPointer)(2, GL_FLOAT, 0, kTriangle);
    CALL1(glDrawArrays)(GL_TRIANGLES, 0, 3);
}
#endif

void printFacts(GLuint program) {
    GLint value = 0;
    CALL(glGetIntegerv)(GL_MAX_TEXTURE_SIZE, &value);
    const GLenum first = CALL(glGetError)();
    printf("error 0x%x then 0x%x\n", first, CALL(glGetError)());
    const GLuint vertexShader = shader(GL_VERTEX_SHADER, "void main() { gl_Position = vec4(0); }");
    CALL(glGetShaderiv)(vertexShader, GL_COMPILE_STATUS, &value);
    printf("compiled %d\n", value);
    CALL(glGetShaderiv)(vertexShader, GL_INFO_LOG_LENGTH, &value);
    printf("log %d\n", value);
    EGLint width = 1;
    CALL(eglQuerySurface)(display, surface, EGL_WIDTH, &width);
    printf("width %d\n", width);
    CALL(glGetProgramiv)(program, GL_LINK_STATUS, &value);
    printf("linked %d\n", value);
    GLuint names[3] = {7, 7, 7};
    CALL(glGenTextures)(3, names);
    printf("named %d\n", names[0] != 0 && names[2] != 0);
    CALL(glGetIntegerv)(GL_NUM_EXTENSIONS, &value);
    const auto* last = CALL(glGetStringi)(GL_EXTENSIONS, static_cast<GLuint>(value) - 1);
    const char* all = reinterpret_cast<const char*>(CALL(glGetString)(GL_EXTENSIONS));
    printf("shading-rate %d %d\n", all != nullptr && strstr(all, "GL_QCOM_shading_rate"),
           last != nullptr &&
               strcmp(reinterpret_cast<const char*>(last), "GL_QCOM_shading_rate") == 0);

    GLuint framebuffer = 0;
    GLuint textures[2] = {0, 0};
    CALL(glGenFramebuffers)(1, &framebuffer);
    CALL(glGenTextures)(2, textures);
    CALL(glBindFramebuffer)(GL_FRAMEBUFFER, framebuffer);
    const GLenum formats[2] = {GL_RGBA8, GL_DEPTH24_STENCIL8};
    const GLenum points[2] = {GL_COLOR_ATTACHMENT0, GL_DEPTH_STENCIL_ATTACHMENT};
    for (int i = 0; i < 2; ++i) {
        CALL(glBindTexture)(GL_TEXTURE_2D, textures[i]);
        CALL(glTexStorage2D)(GL_TEXTURE_2D, 1, formats[i], 32, 16);
        CALL(glFramebufferTexture2D)(GL_FRAMEBUFFER, points[i], GL_TEXTURE_2D, textures[i], 0);
    }
    CALL(glGetFramebufferAttachmentParameteriv)
    (GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_BLUE_SIZE, &value);
    printf("complete %d\n",
           CALL(glCheckFramebufferStatus)(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE);
    printf("depth-blue %d\n", value);
}

// Milliseconds since the epoch or since the machine's start; returns their last
// digits.
int printTime() {
    timespec monotonic = {};
    timeval day = {};
    clock_gettime(CLOCK_MONOTONIC, &monotonic);
    gettimeofday(&day, nullptr);
    const auto steady = std::chrono::steady_clock::now().time_since_epoch();
    printf("time %ld %ld %ld %ld\n",
           static_cast<long>(monotonic.tv_sec * 1000 + monotonic.tv_nsec / 1000000),
           static_cast<long>(day.tv_sec * 1000 + day.tv_usec / 1000),
           static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(steady).count()),
           static_cast<long>(time(nullptr) * 1000));
    return static_cast<int>(monotonic.tv_nsec / 1000000 % 40);
}

void waitByPolling(int milliseconds) {
    using Clock = std::chrono::steady_clock;
    static Clock::time_point last = Clock::now();
    while (Clock::now() - last < std::chrono::milliseconds(milliseconds)) usleep(1000);
    last = Clock::now();
}

}  // namespace

int main(int argc, char** argv) {
    bool es1 = false;
    bool desktop = false;
    bool facts = false;
    bool clock = false;
    bool rebind = false;
    int frames = 3;
    int pause = 0;
    int limit = 0;
    bool deleted = false;
    bool loading = false;
    for (int i = 1; i < argc; ++i) {
        onlyProcs = onlyProcs || strcmp(argv[i], "procs") == 0;
        es1 = es1 || strcmp(argv[i], "es1") == 0;
        desktop = desktop || strcmp(argv[i], "desktop") == 0;
        facts = facts || strcmp(argv[i], "facts") == 0;
        clock = clock || strcmp(argv[i], "clock") == 0;
        rebind = rebind || strcmp(argv[i], "rebind") == 0;
        loading = loading || strcmp(argv[i], "loading") == 0;
        deleted = deleted || strcmp(argv[i], "deleted") == 0;
        if (strcmp(argv[i], "habit") == 0) habit = argv[i + 1];
        if (strcmp(argv[i], "handler") == 0) atexit([] { puts("exit handler"); });
        if (strcmp(argv[i], "limit") == 0) limit = atoi(argv[i + 1]);
        if (strcmp(argv[i], "frames") == 0) frames = atoi(argv[i + 1]);
        if (strcmp(argv[i], "pause") == 0) pause = atoi(argv[i + 1]);
    }
    makeContext(es1, desktop, loading);
    char threadName[16] = {};
    prctl(PR_GET_NAME, threadName);
    printf("process %s\nthread %s\n", argv[0], threadName);
    const GLuint program = es1 || desktop ? 0 : makeProgram();
    for (int frame = 1; frame <= frames; ++frame) {
        const int x = clock ? printTime() : 0;
        if (es1) {
            drawFrameEs1();
        } else if (desktop) {
            drawFrameDesktop();
        } else {
            drawFrame(rebind, x, frame == 1);
        }
        if (deleted && frame == 1) CALL(glDeleteProgram)(program);
        require(CALL(eglSwapBuffers)(display, surface), "eglSwapBuffers");
        if (deleted) printf("left 0x%x\n", CALL(glGetError)());
        if (facts && frame == 1) printFacts(program);
        printf("frame %d\n", frame);
        fflush(stdout);
        usleep(static_cast<useconds_t>(pause) * 1000);
        waitByPolling(limit);
    }
    return 0;
}

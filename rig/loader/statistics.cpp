#include "rig/loader/statistics.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include <nlohmann/json.hpp>

#include "platform/loader/gl_constants.h"
#include "rig/loader/loader.h"
#include "rig/loader/parameters.h"
#include "rig/loader/statistics_entries.h"

namespace rig {

namespace {

using Clock = std::chrono::steady_clock;
using nlohmann::json;

constexpr auto kSaveInterval = std::chrono::seconds(2);

struct Statistics {
    std::string file;
    json document;
    FrameRecord record;
    json frame;  // the parts of the current frame that do not come from `record`
    Clock::duration spent{};
    Clock::time_point since;
    Clock::time_point presentationBegan;
    Clock::time_point saved = Clock::now();
    unsigned savedFrames = 0;
};

// Null without --stats.
Statistics* statistics;

double milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

void save() {
    Statistics& s = *statistics;
    if (s.document["frames"].size() == s.savedFrames) return;
    const std::string unfinished = s.file + ".new";
    std::ofstream stream(unfinished);
    stream << s.document.dump(1, ' ', false, json::error_handler_t::replace) << '\n';
    stream.close();
    RunOutcome* const outcome = loader().outcome;
    if (!stream || rename(unfinished.c_str(), s.file.c_str()) != 0)
        fprintf(stderr, "vesko-run: --stats %s: cannot write the file\n", s.file.c_str());
    else if (outcome != nullptr)
        outcome->statisticsWritten = static_cast<uint32_t>(s.document["frames"].size());
    s.saved = Clock::now();
    s.savedFrames = static_cast<unsigned>(s.document["frames"].size());
}

json describeDriver() {
    const auto& gl = loader().driver.gl.gl;
    const auto text = [&gl](GLenum name) {
        const auto* value = reinterpret_cast<const char*>(gl.glGetString(name));
        return std::string(value != nullptr ? value : "");
    };
    return {{"vendor", text(GL_VENDOR)},
            {"renderer", text(GL_RENDERER)},
            {"version", text(GL_VERSION)}};
}

json describe(const FrameRecord& record) {
    json framebuffers = json::array();
    for (const auto& [name, uses] : record.framebuffers)
        for (const FramebufferUse& use : uses)
            framebuffers.push_back({{"name", name},
                                    {"width", use.width},
                                    {"height", use.height},
                                    {"draws", use.draws},
                                    {"wiped", use.wiped},
                                    {"clears", use.clears},
                                    {"viewports", use.viewports}});
    return framebuffers;
}

json describe(const std::vector<TextureStorage>& storages) {
    json result = json::array();
    for (const TextureStorage& storage : storages)
        result.push_back({{"width", storage.width},
                          {"height", storage.height},
                          {"internalFormat", storage.internalFormat},
                          {"levels", storage.levels}});
    return result;
}

}  // namespace

void startStatistics(const Driver&, const Settings& settings, android::gl_hooks_t& table) {
    statistics = new Statistics;
    statistics->file = settings.statsFile;
    json quirks = json::array();
    for (const QuirkRequest& quirk : settings.quirks)
        quirks.push_back({{"name", quirk.name}, {"fromFrame", quirk.fromFrame}});
    statistics->document = {{"game", settings.game},
                            {"plugin", !settings.noPlugin},
                            {"quirks", quirks},
                            {"frames", json::array()}};
    // Objects that come before the first frame count into it.
    statistics->record.frame = 1;
    installWatchingEntries(table.gl, statistics->record);
    atexit(save);
}

void statisticsFrameBegins(int frame) {
    if (statistics == nullptr) return;
    Statistics& s = *statistics;
    if (!s.document.contains("driver")) s.document["driver"] = describeDriver();
    if (frame != s.record.frame) s.record = {};
    s.record.frame = frame;
    s.frame = {{"frame", frame},
               {"FB0Factor", pluginParameter("FB0Factor", -1)},
               {"gameInternalFBOFactor", pluginParameter("gameInternalFBOFactor", -1)},
               {"internalEnable", pluginParameter("internalEnable", 0)}};
    s.spent = {};
    s.since = Clock::now();
}

void statisticsPresentationBegins(const std::string& whyNotScaled) {
    if (statistics == nullptr) return;
    Statistics& s = *statistics;
    s.frame["whyNotScaled"] = whyNotScaled;
    loader().driver.gl.gl.glFinish();
    s.presentationBegan = Clock::now();
}

void statisticsFrameDrawn(void* display, void* surface) {
    if (statistics == nullptr) return;
    Statistics& s = *statistics;
    loader().driver.gl.gl.glFinish();
    const Clock::time_point now = Clock::now();
    s.spent += now - s.since;
    s.frame["blitMs"] = milliseconds(now - s.presentationBegan);
    int width = 0;
    int height = 0;
    loader().driver.egl.eglQuerySurface(display, surface, EGL_WIDTH, &width);
    loader().driver.egl.eglQuerySurface(display, surface, EGL_HEIGHT, &height);
    s.frame["window"] = {{"width", width}, {"height", height}};
}

void statisticsSwapBegins() {
    if (statistics != nullptr) statistics->since = Clock::now();
}

void statisticsFrameEnds() {
    if (statistics == nullptr) return;
    Statistics& s = *statistics;
    s.spent += Clock::now() - s.since;
    s.frame["ms"] = milliseconds(s.spent);
    s.frame["framebuffers"] = describe(s.record);
    s.frame["textureStorage"] = describe(s.record.textureStorage);
    s.document["frames"].push_back(s.frame);
    if (Clock::now() - s.saved >= kSaveInterval) save();
}

}  // namespace rig

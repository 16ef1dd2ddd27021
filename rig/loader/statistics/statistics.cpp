#include "rig/loader/statistics/statistics.h"

#include <cstdlib>

#include "platform/loader/gl_constants.h"
#include "rig/loader/statistics/watching_entries.h"

namespace rig {

namespace {

using nlohmann::json;

using WallClock = std::chrono::system_clock;

constexpr auto kSaveInterval = std::chrono::seconds(2);
constexpr auto kSavePatience = std::chrono::seconds(1);

// For the exit handler, which gets no argument.
Statistics* atExit;

double milliseconds(std::chrono::steady_clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

// Names may hold bytes that are not UTF-8.
std::string textOf(const json& value) {
    return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

json describe(const FrameRecord& record) {
    json framebuffers = json::array();
    for (const auto& [name, uses] : record.framebuffers) {
        for (const FramebufferUse& use : uses) {
            framebuffers.push_back({{"name", name},
                                    {"width", use.width},
                                    {"height", use.height},
                                    {"draws", use.draws},
                                    {"wiped", use.wiped},
                                    {"clears", use.clears},
                                    {"viewports", use.viewports}});
        }
    }
    return framebuffers;
}

json describe(const std::vector<TextureStorage>& storages) {
    json result = json::array();
    for (const TextureStorage& storage : storages) {
        result.push_back({{"width", storage.width},
                          {"height", storage.height},
                          {"internalFormat", storage.internalFormat},
                          {"levels", storage.levels}});
    }
    return result;
}

}  // namespace

Statistics::Statistics(const Settings& settings, const Driver& below, GLTable& table,
                       RunOutcome* outcome)
    : driver(below), file(settings.statsFile, outcome) {
    json quirks = json::array();
    for (const QuirkRequest& quirk : settings.quirks) {
        quirks.push_back({{"name", quirk.name}, {"fromFrame", quirk.fromFrame}});
    }
    header = {{"game", settings.game}, {"plugin", !settings.noPlugin}, {"quirks", quirks}};
    // Objects that come before the first frame count into it.
    record.frame = 1;
    installWatchingEntries(driver, table, record);
    atExit = this;
    atexit([] { atExit->save(); });
}

void Statistics::frameBegins(int number, const json& values) {
    if (!begun) {
        header["driver"] = {{"vendor", driverText(driver, GL_VENDOR)},
                            {"renderer", driverText(driver, GL_RENDERER)},
                            {"version", driverText(driver, GL_VERSION)}};
        file.begin(textOf(header));
        begun = true;
    }
    if (number != record.frame) {
        std::lock_guard<std::mutex> lock(record.mutex);
        record.begin(number);
    }
    frame = values;
    frame["frame"] = number;
    spent = {};
    since = Clock::now();
}

void Statistics::presentationBegins(const std::string& whyNotScaled) {
    frame["whyNotScaled"] = whyNotScaled;
    driver.gl.gl.glFinish();
    presentationBegan = Clock::now();
}

void Statistics::frameDrawn(void* display, void* surface) {
    driver.gl.gl.glFinish();
    const Clock::time_point now = Clock::now();
    spent += now - since;
    frame["blitMs"] = milliseconds(now - presentationBegan);
    const Size window = surfaceSize(driver, display, surface);
    frame["window"] = {{"width", window.width}, {"height", window.height}};
}

void Statistics::swapBegins() { since = Clock::now(); }

void Statistics::frameEnds() {
    const Clock::time_point now = Clock::now();
    spent += now - since;
    frame["ms"] = milliseconds(spent);
    frame["endedAt"] = std::chrono::duration<double>(WallClock::now().time_since_epoch()).count();
    {
        std::lock_guard<std::mutex> lock(record.mutex);
        frame["framebuffers"] = describe(record);
        frame["textureStorage"] = describe(record.textureStorage);
    }
    std::lock_guard<std::timed_mutex> lock(fileMutex);
    file.add(textOf(frame));
    if (now - saved < kSaveInterval) return;
    file.flush();
    saved = now;
}

// Does not wait for ever: an exit may have interrupted a write on this very thread.
void Statistics::save() {
    std::unique_lock<std::timed_mutex> lock(fileMutex, kSavePatience);
    if (lock.owns_lock()) file.flush();
}

}  // namespace rig

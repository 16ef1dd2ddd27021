#include "rig/loader/tables/counting.h"

#include "platform/loader/gl_slot.h"

namespace rig {

namespace {

using android::gl_hooks_t;
using android::platform_impl_t;

// Null without --count.
CallCounts* counts;

template <Route Way, int Entry, class Result, class... Arguments>
struct Counted {
    static inline Result (*next)(Arguments...) = nullptr;
    static Result call(Arguments... arguments) {
        counts->calls[static_cast<int>(Way)][Entry].fetch_add(1, std::memory_order_relaxed);
        return next(arguments...);
    }
};

template <Route Way, int Entry, class Result, class... Arguments>
void countEntry(Result (*&entry)(Arguments...)) {
    using Wrapper = Counted<Way, Entry, Result, Arguments...>;
    Wrapper::next = entry;
    entry = Wrapper::call;
}

template <Route Way>
void countEntries(gl_hooks_t& table) {
#define GL_ENTRY(result, name, parameters, arguments) \
    countEntry<Way, android::kEntry_##name>(table.gl.name);
#include "platform/gl_entries.in"
}

template <Route Way>
void countEntries(platform_impl_t& table) {
#define EGL_ENTRY(result, name, parameters, arguments) \
    countEntry<Way, android::kGLEntryCount + android::kEntry_##name>(table.name);
#include "platform/egl_entries.in"
}

template <class Table>
void countOn(Route route, Table& table) {
    if (counts == nullptr) return;
    if (route == Route::Served) countEntries<Route::Served>(table);
    if (route == Route::Forwarded) countEntries<Route::Forwarded>(table);
    if (route == Route::Direct) countEntries<Route::Direct>(table);
}

}  // namespace

void startCounting(const std::string& file) {
    if (file.empty()) return;
    counts = &CallCounts::open(file);
    ++counts->processes;
}

void countCalls(Route route, gl_hooks_t& table) { countOn(route, table); }

void countCalls(Route route, platform_impl_t& table) { countOn(route, table); }

const platform_impl_t* countedServing(const platform_impl_t* table) {
    if (counts == nullptr) return table;
    auto* copy = new platform_impl_t(*table);
    countCalls(Route::Served, *copy);
    return copy;
}

void countServedCalls() {
    if (counts == nullptr) return;
    // The plug-in has one table for all threads, for as long as the process lives.
    static const auto* counting = [] {
        auto* copy = new gl_hooks_t(*static_cast<const gl_hooks_t*>(
            android::threadPointerArray()[android::TLS_SLOT_OPENGL_API]));
        countCalls(Route::Served, *copy);
        return copy;
    }();
    android::writeGLSlot(counting);
}

}  // namespace rig

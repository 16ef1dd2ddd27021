// The dispatch tables, and every entry's way through them to the driver.
#include <gtest/gtest.h>

#include <functional>
#include <tuple>

#include "hook/ContextManager.h"
#include "hook/GPUVeskoMode.h"
#include "hook/HookManager.h"
#include "interception/DefaultImplV2.h"
#include "interception/egl_hooks.h"
#include "interception/gl_trampolines.h"
#include "platform/loader/gl_slot.h"
#include "tests/support/host.h"
#include "tests/support/recording_driver.h"

// In here for the names of the GL types.
namespace android {
namespace {

// Where it stands: a function that calls no other need not align its own stack.
[[gnu::always_inline]] inline bool stackIsAligned() {
#if defined(__arm__) || defined(__aarch64__)
    uintptr_t stack;
    __asm__ volatile("mov %0, sp" : "=r"(stack));
    return stack % (2 * sizeof(void*)) == 0;
#else
    return true;  // a compiler's work
#endif
}

struct OverridingImpl : Impl {
    using Impl::Impl;
#define GL_ENTRY(result, name, parameters, arguments)                          \
    result name parameters override {                                          \
        ++served;                                                              \
        if (throws) throw stackIsAligned() ? int(kEntry_##name) : kMisaligned; \
        return driverTable->gl.name arguments;                                 \
    }
#include "platform/gl_entries.in"
    static constexpr int kMisaligned = -1;
    int served = 0;
    bool throws = false;
};

}  // namespace
}  // namespace android

using namespace android;
using test::Argument;
using test::Call;
using test::RecordingDriver;

namespace {

constexpr uint64_t kResult = 0xfedcba9876543210;

// A value of the type that no other argument position has, with its upper bits
// in use. Pointers point to memory that is there.
template <typename T>
T pattern(int position) {
    static char memory[2048] = {};
    if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<T>(&memory[64 * position]);
    } else if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(1.0 / 3 + position) * (sizeof(T) == 8 ? T(1e200) : T(1e20));
    } else {
        return static_cast<T>(0xa1b2c3d4e5f60780 + static_cast<unsigned>(position) * 0x0101);
    }
}

template <typename T>
uint64_t bitsOf(T value) {
    return Argument(value).bits;
}

// Calls `function` with a pattern of arguments; it must make the one driver call
// `entry` with the same, and return that entry's result. Templates of the
// signature only: there are far fewer signatures than entries.
template <typename R, typename... A, size_t... I>
void checkForwarded(const char* name, int entry, const std::function<R(A...)>& function,
                    std::index_sequence<I...>) {
    SCOPED_TRACE(name);
    const std::tuple<A...> arguments{pattern<A>(I)...};
    if constexpr (std::is_void_v<R>) {
        function(std::get<I>(arguments)...);
    } else {
        R result = function(std::get<I>(arguments)...);
        // Bit for bit, whatever the type. NOLINTNEXTLINE(bugprone-*)
        EXPECT_EQ(std::memcmp(&result, &kResult, sizeof(result)), 0);
    }
    const std::vector<Call> calls = RecordingDriver::current->take();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].entry, entry) << calls[0].text;
    const std::vector<uint64_t> expected{bitsOf(std::get<I>(arguments))...};
    ASSERT_EQ(calls[0].arguments.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(calls[0].arguments[i].bits, expected[i]) << "argument " << i;
    }
}
template <typename R, typename... A>
void expectForwarded(const char* name, int entry, R (*function)(A...)) {
    checkForwarded(name, entry, std::function<R(A...)>(function), std::index_sequence_for<A...>());
}
template <typename R, typename... A>
void expectForwarded(const char* name, int entry, Impl& impl, R (Impl::*operation)(A...)) {
    checkForwarded(name, entry, std::function<R(A...)>([&](A... arguments) {
                       return (impl.*operation)(arguments...);
                   }),
                   std::index_sequence_for<A...>());
}

// Calls `function`; it must return zero without a driver call.
template <typename R, typename... A>
void checkNothing(const char* name, const std::function<R(A...)>& function) {
    SCOPED_TRACE(name);
    if constexpr (std::is_void_v<R>) {
        function(A()...);
    } else {
        EXPECT_TRUE(function(A()...) == R());
    }
    EXPECT_EQ(RecordingDriver::current->takeAllCalls(), "");
}
template <typename R, typename... A>
void expectNothing(const char* name, R (*function)(A...)) {
    checkNothing(name, std::function<R(A...)>(function));
}
template <typename R, typename... A>
void expectNothing(const char* name, Impl& impl, R (Impl::*operation)(A...)) {
    checkNothing(name, std::function<R(A...)>(
                           [&](A... arguments) { return (impl.*operation)(arguments...); }));
}

template <typename R, typename... A>
int thrownBy(R (*function)(A...)) {
    try {
        function(A()...);
    } catch (int thrown) {
        return thrown;
    }
    return -2;
}

// The number of the virtual table's word that a pointer to member refers to.
template <typename Member>
ptrdiff_t slotOf(Member member) {
    ptrdiff_t words[2];
    static_assert(sizeof(words) == sizeof(member));
    std::memcpy(words, &member, sizeof(words));
    // The mark of a virtual function is the lowest bit: of the second word on
    // ARM, where the first bit of an address may say Thumb, else of the first.
#if defined(__arm__) || defined(__aarch64__)
    EXPECT_EQ(words[1], 1);
#else
    --words[0];
#endif
    return words[0] / static_cast<ptrdiff_t>(sizeof(void*));
}

template <typename T>
void** words(T& table) {
    return reinterpret_cast<void**>(&table);
}

class Tables : public testing::Test {
protected:
    Tables() {
        driver.onlyRecord(kResult);
        HookManager::setEGLImpl(&driver.connection);
        ContextManager::bindAHookContext();
        HookManager::setGLHooksThreadSpecific(&driver.hooks, 1);
        host::takeLog();
    }

    RecordingDriver driver;
};

}  // namespace

TEST_F(Tables, GLTablesHoldTheTrampolinesAndNothingElse) {
    // The process's own, and one in memory that held something else.
    alignas(HookCore) static char used[sizeof(HookCore)];
    std::memset(used, 0x5a, sizeof(used));
    HookCore* const cores[] = {&HookManager::hookCore, new (used) HookCore};
    void* const trampolines[] = {
#define GL_ENTRY(result, name, parameters, arguments) reinterpret_cast<void*>(name##_hook),
#include "platform/gl_entries.in"
    };
    for (HookCore* core : cores) {
        for (int i = 0; i < kGLEntryCount + kGLExtensionEntryCount; ++i) {
            void* const expected = i < kGLEntryCount ? trampolines[i] : nullptr;
            EXPECT_EQ(words(core->glTables[1])[i], expected) << i;
            EXPECT_EQ(words(core->glTables[0])[i], nullptr) << i;
        }
    }
    const platform_impl_t nothing = {};
    EXPECT_EQ(std::memcmp(&cores[1]->platformTable, &nothing, sizeof(nothing)), 0);
}

TEST_F(Tables, PlatformTableHoldsTheHooksAndSixOfTheLoaders) {
    void* const hooks[] = {
#define EGL_ENTRY(result, name, parameters, arguments) reinterpret_cast<void*>(name##_hook),
#include "platform/egl_entries.in"
    };
    platform_impl_t given = driver.connection.platform;
    platform_impl_t* const table = HookManager::getEGLPlatformHooks(&given);
    EXPECT_EQ(table, &HookManager::hookCore.platformTable);
    for (int i = 0; i < kPlatformEntryCount; ++i) {
        EXPECT_EQ(words(*table)[i], i < kEGLEntryCount ? hooks[i] : words(given)[i]) << i;
    }
    EXPECT_EQ(std::memcmp(&given, &driver.connection.platform, sizeof(given)), 0);

    given.glGetString = nullptr;
    EXPECT_EQ(HookManager::getEGLPlatformHooks(&given)->glGetString, nullptr) << "not copied again";
}

// And binds nothing: the process has another name by then.
TEST_F(Tables, EveryTrampolineReachesTheDriversEntryOfItsName) {
    gl_hooks_t::gl_t& table = HookManager::hookCore.glTables[1].gl;
    host::setProcessName("com.tencent.tmgp.pubgmhd");
#define GL_ENTRY(result, name, parameters, arguments)  \
    expectForwarded(#name, kEntry_##name, table.name); \
    EXPECT_EQ(ContextManager::getCurrentContext(), &ContextManager::nullContext) << #name;
#include "platform/gl_entries.in"
    host::setProcessName("unit_tests");
}

// The pass-through is served in a way of its own; this goes the others' way.
TEST_F(Tables, EveryTrampolineReachesTheOperationOfAnyOtherImpl) {
    OverridingImpl overriding(&driver.hooks);
    DefaultImplV2 inheriting(&driver.hooks);
    gl_hooks_t::gl_t& table = HookManager::hookCore.glTables[1].gl;
    for (Impl* impl : {static_cast<Impl*>(&overriding), static_cast<Impl*>(&inheriting)}) {
        ContextManager::nullContext.setImpl(impl);
#define GL_ENTRY(result, name, parameters, arguments) \
    expectForwarded(#name, kEntry_##name, table.name);
#include "platform/gl_entries.in"
    }
    EXPECT_EQ(overriding.served, kGLEntryCount);
    ContextManager::nullContext.setImpl(ImplFactory::getImpl(ImplFactory::NO_GAME));
}

// What trampolines owe their callers and their callees, whoever wrote them.
TEST_F(Tables, EveryTrampolineKeepsToTheCallingConvention) {
    gl_hooks_t::gl_t& table = HookManager::hookCore.glTables[1].gl;
    OverridingImpl overriding(&driver.hooks);
    ContextManager::nullContext.setImpl(&overriding);
    overriding.throws = true;
#define GL_ENTRY(result, name, parameters, arguments) \
    EXPECT_EQ(thrownBy(table.name), kEntry_##name) << #name;
#include "platform/gl_entries.in"
    ContextManager::nullContext.setImpl(ImplFactory::getImpl(ImplFactory::NO_GAME));
}

TEST_F(Tables, EveryHookReachesTheDriversEntryOfItsName) {
    const auto served = [](int entry) {
        return kGLEntryCount +
               (entry == kEntry_eglClientWaitSync ? int(kEntry_eglClientWaitSyncKHR) : entry);
    };
    platform_impl_t& hooks = *HookManager::getEGLPlatformHooks(&driver.connection.platform);
    Impl base;
#define EGL_ENTRY(result, name, parameters, arguments)         \
    pthread_setspecific(ContextManager::sKey, nullptr);        \
    expectForwarded(#name, served(kEntry_##name), hooks.name); \
    EXPECT_NE(ContextManager::getCurrentContext(), nullptr);   \
    expectForwarded(#name, served(kEntry_##name), base, &Impl::name);
#include "platform/egl_entries.in"
}

TEST_F(Tables, ClientWaitSyncHookUsesTheKHROperation) {
    struct Probe : Impl {
        int eglClientWaitSync(void*, void*, int, unsigned long long) override { return 1; }
        int eglClientWaitSyncKHR(void*, void*, int, unsigned long long timeout) override {
            return timeout == 0x123456789a ? 2 : 3;
        }
    } probe;
    ContextManager::nullContext.setImpl(&probe);
    EXPECT_EQ(eglClientWaitSync_hook(nullptr, nullptr, 0, 0x123456789a), 2);
    EXPECT_EQ(eglClientWaitSyncKHR_hook(nullptr, nullptr, 0, 0x123456789a), 2);
    ContextManager::nullContext.setImpl(ImplFactory::getImpl(ImplFactory::NO_GAME));
}

TEST_F(Tables, WithoutAnImplCallsReturnZero) {
    ContextManager::nullContext.setImpl(nullptr);
#define GL_ENTRY(result, name, parameters, arguments) expectNothing(#name, name##_hook);
#include "platform/gl_entries.in"
#define EGL_ENTRY(result, name, parameters, arguments) expectNothing(#name, name##_hook);
#include "platform/egl_entries.in"
    ContextManager::nullContext.setImpl(ImplFactory::getImpl(ImplFactory::NO_GAME));
}

TEST_F(Tables, TheBaseImplAnswersGLCallsWithZero) {
    Impl base(&driver.hooks);
    EXPECT_EQ(base.getGLDriverImpl(), &driver.hooks);
#define GL_ENTRY(result, name, parameters, arguments) expectNothing(#name, base, &Impl::name);
#include "platform/gl_entries.in"
    int width = 3;
    int height = 4;
    base.setTargetTexResolution(width, height);
    base.reset();
    EXPECT_EQ(std::make_pair(width, height), std::make_pair(3, 4));
    EXPECT_EQ(driver.takeAllCalls(), "");
}

TEST_F(Tables, ImplOperationsStandInTheTablesOrder) {
    constexpr int kDestructors = 2;
    const ptrdiff_t slots[] = {
        slotOf(&Impl::setTargetTexResolution),
        slotOf(&Impl::reset),
#define GL_ENTRY(result, name, parameters, arguments) slotOf(&Impl::name),
#include "platform/gl_entries.in"
#define EGL_ENTRY(result, name, parameters, arguments) slotOf(&Impl::name),
#include "platform/egl_entries.in"
    };
    ASSERT_EQ(kDestructors + std::size(slots), size_t{kImplOperationCount});
    for (size_t i = 0; i < std::size(slots); ++i) EXPECT_EQ(slots[i], kDestructors + i);

    // No pointer to member names a destructor: the first destroys, the second deletes too.
    static int destroyed;
    static int deleted;
    struct Probe : Impl {
        ~Probe() override { ++destroyed; }
        static void operator delete(void*) { ++deleted; }
    };
    alignas(Probe) char memory[sizeof(Probe)];
    for (int slot = 0; slot < kDestructors; ++slot) {
        Impl* const probe = new (memory) Probe;
        void** const table = *reinterpret_cast<void***>(probe);
        reinterpret_cast<void (*)(void*)>(table[slot])(probe);
        EXPECT_EQ(std::make_pair(destroyed, deleted), std::make_pair(slot + 1, slot)) << slot;
    }
}

TEST_F(Tables, TheThreadsSlotGetsTheTableOfTheAPIIndex) {
    DefaultImplV2 mine;
    HookContext context(true, &mine, ImplFactory::SGAME);
    pthread_setspecific(ContextManager::sKey, &context);
    void** const slots = threadPointerArray();
    slots[3] = slots[5] = &context;
    gl_hooks_t other = driver.hooks;

    HookManager::setGLHooksThreadSpecific(&other, 1);
    EXPECT_EQ(slots[4], &HookManager::hookCore.glTables[1]);
    EXPECT_EQ(mine.getGLDriverImpl(), &other);
    EXPECT_EQ(ImplFactory::getImpl(ImplFactory::NO_GAME)->getGLDriverImpl(), &other);
    EXPECT_EQ(host::takeLog(), "");

    HookManager::setGLHooksThreadSpecific(&driver.hooks, 0);
    EXPECT_EQ(slots[4], &HookManager::hookCore.glTables[0]);
    EXPECT_EQ(mine.getGLDriverImpl(), &driver.hooks);
    EXPECT_EQ(ContextManager::getNullContext()->getImpl()->getGLDriverImpl(), &driver.hooks);
    EXPECT_EQ(host::takeLog(), "I EGL_HOOK GLESv1 not supported.\n");

    android::setGLHooksThreadSpecific(&other);
    EXPECT_EQ(slots[4], &other);
    android::setGlThreadSpecific(&driver.hooks);
    EXPECT_EQ(slots[4], &driver.hooks);
    EXPECT_EQ(mine.getGLDriverImpl(), &driver.hooks);
    EXPECT_EQ(slots[3], slots[5]);
    host::takeLog();
}

TEST_F(Tables, TheLoaderCallsTheEntryObjectByPosition) {
    QoGPUVeskoModeImpl* const entry = createImplInstance();
    destroyImplInstance(entry);
    ASSERT_EQ(createImplInstance(), entry);
    void** const slots = *reinterpret_cast<void***>(entry);
    EXPECT_EQ(slots[-1], nullptr) << "type information";

    egl_connection_t connection = driver.connection;
    connection.platform.eglSwapBuffers = nullptr;
    reinterpret_cast<void (*)(void*, egl_connection_t*)>(slots[3])(entry, &connection);
    EXPECT_EQ(HookManager::gEGLImpl, &connection);
    EXPECT_EQ(std::memcmp(HookManager::getDefaultEGLPlatformImpl(), &connection.platform,
                          sizeof(platform_impl_t)),
              0);
    EXPECT_EQ(host::takeLog(),
              "D EGL_HOOK QoGPUVeskoModeImpl init\n"
              "D EGL_MONITOR end MonitorThread\n"
              "I EGL_HOOK FBOBase.~FboBase: ~FboBase\n"
              "D EGL_HOOK FBOBase.FboBase: Lumivane version 0.65\n"
              "D EGL_MONITOR end MonitorThread\n");

    platform_impl_t* const table = reinterpret_cast<platform_impl_t* (*)(void*, platform_impl_t*)>(
        slots[2])(entry, &connection.platform);
    EXPECT_EQ(table, &HookManager::hookCore.platformTable);
    reinterpret_cast<void (*)(void*, const gl_hooks_t*, int)>(slots[4])(entry, &driver.hooks, 1);
    EXPECT_EQ(threadPointerArray()[4], &HookManager::hookCore.glTables[1]);
    EXPECT_FALSE(reinterpret_cast<bool (*)(void*)>(slots[5])(entry));
}

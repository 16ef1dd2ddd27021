// Every trampoline word for word: what arrives in registers and on the stack, what is
// left after the call, and where an exception that passes it is caught.
#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>
#include <vector>

#include "hook/ContextManager.h"
#include "hook/HookManager.h"
#include "interception/DefaultImplV2.h"
#include "interception/call_record.h"
#include "tests/support/recording_driver.h"
#include "tests/unit/call_with_words.h"

CallWords sentWords;
CallWords arrivedWords;
CallWords leftWords;
uint32_t arrivedEntry;
uint32_t resultWords[2] = {0x12345678, 0x9abcdef0};
uint32_t callersStack;

using namespace android;

namespace {

// Of a type's words the bits that are its own.
template <typename T>
void appendMasks(std::vector<uint32_t>& masks) {
    if constexpr (!std::is_void_v<T>) {
        masks.push_back(sizeof(T) == 1 ? 0xff : sizeof(T) == 2 ? 0xffff : UINT32_MAX);
        if (sizeof(T) == 8) masks.push_back(UINT32_MAX);
    }
}

struct Entry {
    template <typename R, typename... A>
    Entry(const char* itsName, bool with64Bits, R (*)(A...))
        : name(itsName), has64Bits(with64Bits) {
        (appendMasks<A>(arguments), ...);
        appendMasks<R>(result);
    }

    const char* name;
    bool has64Bits;
    std::vector<uint32_t> arguments;
    std::vector<uint32_t> result;
};

const std::vector<Entry>& entries() {
    static const gl_hooks_t::gl_t types = {};
    static const std::vector<Entry> list = {
#define GL_ENTRY(result, name, parameters, arguments) {#name, false, types.name},
#define GL_ENTRY_64(result, name, parameters, arguments) {#name, true, types.name},
#include "platform/gl_entries.in"
    };
    return list;
}

// By its layout an Impl: a call of any of its operations arrives.
struct ArrivalImpl {
    void** table = operations;
    const gl_hooks_t* driverTable = nullptr;
    void* operations[kImplOperationCount] = {};
};

class TrampolineWords : public testing::Test {
protected:
    TrampolineWords() {
        for (int i = 0; i < kGLEntryCount; ++i) {
            void* const arrival = const_cast<char*>(arrivals + 8 * i);
            std::memcpy(reinterpret_cast<void**>(&hooks) + i, &arrival, sizeof(arrival));
            overriding.operations[kImplFirstEntry + i] = arrival;
        }
        HookManager::setEGLImpl(&driver.connection);
        ContextManager::bindAHookContext();
        HookManager::setGLHooksThreadSpecific(&hooks, 1);
    }
    ~TrampolineWords() override { serve(ImplFactory::getImpl(ImplFactory::NO_GAME)); }

    static void serve(Impl* impl) { ContextManager::nullContext.setImpl(impl); }

    static void* trampoline(int entry) {
        return reinterpret_cast<void**>(&HookManager::hookCore.glTables[1])[entry];
    }

    // Calls the trampoline, after which all must be as a caller may expect it.
    static void call(int entry) {
        auto* const words = reinterpret_cast<uint32_t*>(&sentWords);
        for (uint32_t i = 0; i < sizeof(sentWords) / 4; ++i)
            words[i] = 0xa5000000 + static_cast<uint32_t>(entry) * 0x1001 + i * 0x010203;
        arrivedEntry = kGLEntryCount;
        callWithWords(trampoline(entry));
        EXPECT_EQ(std::memcmp(leftWords.kept, sentWords.kept, sizeof(sentWords.kept)), 0);
        EXPECT_EQ(leftWords.stack, sentWords.stack);
    }

    // The entry's arguments have moved by `by` words, and its result has come back.
    static void expectPassedOn(const Entry& entry, int by) {
        EXPECT_EQ(arrivedWords.stack % 8, 0u);
        for (size_t i = 0; i < entry.arguments.size(); ++i) {
            const uint32_t sent = sentWords.arguments[i];
            const uint32_t arrived = arrivedWords.arguments[i + static_cast<size_t>(by)];
            EXPECT_EQ((arrived ^ sent) & entry.arguments[i], 0u) << "word " << i;
        }
        expectResult(entry, resultWords);
    }
    static void expectResult(const Entry& entry, const uint32_t* expected) {
        for (size_t i = 0; i < entry.result.size(); ++i)
            EXPECT_EQ((leftWords.arguments[i] ^ expected[i]) & entry.result[i], 0u);
    }

    test::RecordingDriver driver;
    gl_hooks_t hooks = {};
    ArrivalImpl overriding;
};

}  // namespace

// Such a call is a jump: but for registers that hold no argument, all is as it was sent.
TEST_F(TrampolineWords, ThePassThroughLeavesEveryWordWhereItWas) {
    for (int i = 0; i < kGLEntryCount; ++i) {
        const Entry& entry = entries()[static_cast<size_t>(i)];
        SCOPED_TRACE(entry.name);
        call(i);
        EXPECT_EQ(arrivedEntry, static_cast<uint32_t>(i));
        for (size_t word = entry.has64Bits ? 4 : entry.arguments.size(); word < 4; ++word)
            arrivedWords.arguments[word] = sentWords.arguments[word];
        EXPECT_EQ(std::memcmp(&arrivedWords, &sentWords, sizeof(sentWords)), 0);
        EXPECT_EQ(std::memcmp(leftWords.arguments, resultWords, sizeof(resultWords)), 0);
    }
}

TEST_F(TrampolineWords, AnImplIsCalledWithTheSameWords) {
    DefaultImplV2 inheriting(&hooks);
    auto* const impl = reinterpret_cast<Impl*>(&overriding);
    const uint32_t nothing[2] = {};
    for (int i = 0; i < kGLEntryCount; ++i) {
        const Entry& entry = entries()[static_cast<size_t>(i)];
        SCOPED_TRACE(entry.name);
        serve(&inheriting);
        call(i);
        EXPECT_EQ(arrivedEntry, static_cast<uint32_t>(i));
        expectPassedOn(entry, 0);

        serve(impl);
        call(i);
        EXPECT_EQ(arrivedEntry, static_cast<uint32_t>(i));
        EXPECT_EQ(arrivedWords.arguments[0], reinterpret_cast<uintptr_t>(impl));
        // Where 64-bit arguments lie depends on all before them; Tables has those.
        if (!entry.has64Bits) expectPassedOn(entry, 1);

        serve(nullptr);
        call(i);
        EXPECT_EQ(arrivedEntry, static_cast<uint32_t>(kGLEntryCount));
        expectResult(entry, nothing);
    }
}

// From the one call that a trampoline makes itself.
TEST_F(TrampolineWords, AnExceptionFindsItsWayThroughEveryTrampoline) {
    constexpr int kThrown = 5;
    // The pass-through lies where the record begins.
    auto* const record = reinterpret_cast<CallRecord*>(ImplFactory::getImpl(ImplFactory::NO_GAME));
    auto* const lookup = record->lookup;
    int caught = 0;
    record->lookup = [](pthread_key_t) -> void* { throw kThrown; };
    for (int i = 0; i < kGLEntryCount; ++i) {
        try {
            reinterpret_cast<void (*)()>(trampoline(i))();
        } catch (int thrown) {
            caught += thrown == kThrown;
        }
    }
    record->lookup = lookup;
    EXPECT_EQ(caught, kGLEntryCount);
}

// What a trampoline of 64-bit ARM does with every register and word that it is given,
// entry by entry: the caller, the lookup, the driver and another Impl are all in
// assembly here, so nothing that a compiler would tolerate is tolerated.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <link.h>
#include <sys/mman.h>
#include <unwind.h>

#include <cstring>

#include "hook/ContextManager.h"
#include "hook/HookManager.h"
#include "interception/Impl.h"

using namespace android;

namespace {

constexpr int kRegisters = 8;
constexpr int kStack = 10;  // words of arguments; the entry with most has seven
constexpr int kKept = 20;   // x19 to x29, d8 to d15 and the stack pointer

struct Words {
    uint64_t x[kRegisters];
    uint64_t d[kRegisters];
    uint64_t stack[kStack];
    uint64_t kept[kKept];
    uint64_t entry;    // which entry arrived
    uint64_t address;  // the return address with which it did
};
static_assert(offsetof(Words, kept) == 208 && offsetof(Words, entry) == 368);

}  // namespace

extern "C" {

// Calls a function with the words of x, d and stack; `kept` holds what came back.
void words_call(void* function, Words* words);
extern const char words_returned[];
// One for each word of a virtual table: notes what arrives in words_arrived, and
// answers with the results below.
extern const char words_entries[];
[[gnu::visibility("hidden")]] Words words_arrived;
// The return address that the caller of the last lookup had put onto the stack.
[[gnu::visibility("hidden")]] uint64_t words_saved;

void* words_lookup(pthread_key_t key);
}

constexpr uint64_t kResult = 0xfedcba9876543210;
constexpr int kEntrySize = 12;

// The order in memory is that of struct Words.
__asm__(R"(
    .pushsection .text.words, "ax"
    .macro kept operation
    \operation x19, x20, [x9, #208]
    \operation x21, x22, [x9, #224]
    \operation x23, x24, [x9, #240]
    \operation x25, x26, [x9, #256]
    \operation x27, x28, [x9, #272]
    \operation d8, d9, [x9, #296]
    \operation d10, d11, [x9, #312]
    \operation d12, d13, [x9, #328]
    \operation d14, d15, [x9, #344]
    .endm
    .macro arguments operation
    \operation x0, x1, [x9]
    \operation x2, x3, [x9, #16]
    \operation x4, x5, [x9, #32]
    \operation x6, x7, [x9, #48]
    \operation d0, d1, [x9, #64]
    \operation d2, d3, [x9, #80]
    \operation d4, d5, [x9, #96]
    \operation d6, d7, [x9, #112]
    .endm

    .globl words_call, words_returned
words_call:
    paciasp
    stp x29, x30, [sp, #-176]!
    mov x29, sp
    stp x19, x20, [sp, #16]
    stp x21, x22, [sp, #32]
    stp x23, x24, [sp, #48]
    stp x25, x26, [sp, #64]
    stp x27, x28, [sp, #80]
    stp d8, d9, [sp, #96]
    stp d10, d11, [sp, #112]
    stp d12, d13, [sp, #128]
    stp d14, d15, [sp, #144]
    str x1, [sp, #160]
    .cfi_startproc
    .cfi_def_cfa x29, 176
    .cfi_offset x30, -168
    .cfi_offset x29, -176
    .cfi_negate_ra_state
    mov x16, x0
    mov x9, x1
    sub sp, sp, #80
    .irp at, 0, 16, 32, 48, 64
    ldp x10, x11, [x9, #128 + \at]
    stp x10, x11, [sp, #\at]
    .endr
    kept ldp
    arguments ldp
    mov x9, x16
    blr x9
words_returned:
    .cfi_endproc
    ldr x9, [x29, #160]
    kept stp
    add x10, sp, #80
    sub x10, x10, x29
    str x10, [x9, #360]
    str x29, [x9, #288]
    .irp at, 0, 16, 32, 48, 64
    ldp x10, x11, [sp, #\at]
    stp x10, x11, [x9, #128 + \at]
    .endr
    stp x0, x1, [x9]
    str d0, [x9, #64]
    mov sp, x29
    ldp x19, x20, [sp, #16]
    ldp x21, x22, [sp, #32]
    ldp x23, x24, [sp, #48]
    ldp x25, x26, [sp, #64]
    ldp x27, x28, [sp, #80]
    ldp d8, d9, [sp, #96]
    ldp d10, d11, [sp, #112]
    ldp d12, d13, [sp, #128]
    ldp d14, d15, [sp, #144]
    ldp x29, x30, [sp], #176
    autiasp
    ret

arrived:
    adrp x9, words_arrived
    add x9, x9, :lo12:words_arrived
    arguments stp
    .irp at, 0, 16, 32, 48, 64
    ldp x10, x11, [sp, #\at]
    stp x10, x11, [x9, #128 + \at]
    .endr
    kept stp
    str x29, [x9, #288]
    stp x17, x30, [x9, #368]
    ldr x0, =0xfedcba9876543210
    fmov d0, x0
    ret
    .balign 4
    .globl words_entries
words_entries:
    .set entry, 0
    .rept 1104
    bti c
    mov x17, #entry
    b arrived
    .set entry, entry + 1
    .endr

    .globl pthread_getspecific
    .type pthread_getspecific, %function
pthread_getspecific:
    .cfi_startproc
    paciasp
    .cfi_negate_ra_state
    ldr x9, [sp, #8]
    adrp x10, words_saved
    str x9, [x10, #:lo12:words_saved]
    stp x29, x30, [sp, #-16]!
    .cfi_def_cfa_offset 16
    .cfi_offset x30, -8
    .cfi_offset x29, -16
    bl words_lookup
    ldp x29, x30, [sp], #16
    autiasp
    .irp number, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17
    mov x\number, #-1
    .endr
    .irp number, 0, 1, 2, 3, 4, 5, 6, 7, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31
    movi v\number\().2d, #-1
    .endr
    ret
    .cfi_endproc
    .popsection
)");

namespace {

bool walking = false;
bool metTheCaller = false;

_Unwind_Reason_Code meet(_Unwind_Context* context, void*) {
    metTheCaller |= _Unwind_GetIP(context) == reinterpret_cast<uintptr_t>(words_returned);
    return metTheCaller ? _URC_END_OF_STACK : _URC_NO_REASON;
}

int core = 0;     // arguments in x registers and on the stack
int vectors = 0;  // floating-point arguments

template <typename R, typename... A>
void countArguments(R (*)(A...)) {
    vectors = (0 + ... + int(std::is_floating_point_v<A>));
    core = static_cast<int>(sizeof...(A)) - vectors;
}

Words freshWords() {
    Words words = {};
    auto* const all = reinterpret_cast<uint64_t*>(&words);
    for (size_t i = 0; i < offsetof(Words, entry) / 8; ++i) all[i] = 0xa1b2c3d4e5f60000 + i;
    return words;
}

uint64_t address(const char* symbol) { return reinterpret_cast<uintptr_t>(symbol); }

constexpr int kLandingPads = 0x10;  // PROT_BTI

// Gives the library's code the protection on top of being readable and executable.
void protectCode(int protection) {
    dl_iterate_phdr(
        [](dl_phdr_info* info, size_t, void* data) {
            const auto inside = reinterpret_cast<uintptr_t>(HookManager::setEGLImpl);
            for (int i = 0; i < info->dlpi_phnum; ++i) {
                const ElfW(Phdr)& segment = info->dlpi_phdr[i];
                const uintptr_t begin = info->dlpi_addr + segment.p_vaddr;
                if (segment.p_type != PT_LOAD || inside - begin >= segment.p_memsz) continue;
                const uintptr_t page = begin & ~uintptr_t{4095};
                const int all = PROT_READ | PROT_EXEC | *static_cast<int*>(data);
                if (mprotect(reinterpret_cast<void*>(page), begin + segment.p_memsz - page, all)) {
                    ADD_FAILURE() << strerror(errno);
                }
            }
            return 0;
        },
        &protection);
}

class Trampolines : public testing::Test {
protected:
    Trampolines() {
        for (size_t i = 0; i < std::size(table); ++i) {
            table[i] = const_cast<char*>(words_entries) + i * kEntrySize;
        }
        std::memcpy(&driver, table + kImplFirstEntry, sizeof(driver.gl));
        ContextManager::bindAHookContext();
        HookManager::setGLHooksThreadSpecific(&driver, 1);
        protectCode(kLandingPads);
    }
    ~Trampolines() override {
        protectCode(0);
        ContextManager::nullContext.setImpl(ImplFactory::getImpl(ImplFactory::NO_GAME));
    }

    // Calls the trampoline with an Impl's `self` (0: the pass-through), which arrives as
    // a first argument.
    void check(const char* name, int entry, uint64_t self) {
        SCOPED_TRACE(name);
        Words given = freshWords();
        Words words = given;
        words_arrived = {};
        walking = true;
        metTheCaller = false;
        void* const function = reinterpret_cast<void**>(&HookManager::hookCore.glTables[1])[entry];
        words_call(function, &words);
        walking = false;
        EXPECT_TRUE(metTheCaller) << "the stack cannot be walked from the lookup";
        constexpr uint64_t kAddress = (uint64_t{1} << 48) - 1;
        EXPECT_EQ(words_saved & kAddress, address(words_returned));
        EXPECT_NE(words_saved, address(words_returned)) << "the return address is not signed";
        EXPECT_EQ(words.x[0], kResult);
        EXPECT_EQ(words.d[0], kResult);
        checkArrived(given, entry, self);
        for (int i = 0; i < kKept - 2; ++i) {
            if (i == 10) continue;  // x29, which the caller uses
            EXPECT_EQ(words.kept[i], given.kept[i]) << "kept register " << i;
        }
        EXPECT_EQ(words.kept[kKept - 1], 0u) << "the stack pointer";
        EXPECT_EQ(std::memcmp(words.stack, given.stack, sizeof(given.stack)), 0);
    }

    static void checkArrived(const Words& given, int entry, uint64_t self) {
        const Words& seen = words_arrived;
        EXPECT_EQ(seen.entry, static_cast<uint64_t>(entry + kImplFirstEntry));
        std::vector<uint64_t> expected;
        if (self != 0) expected.push_back(self);
        for (int i = 0; i < core; ++i) {
            expected.push_back(i < kRegisters ? given.x[i] : given.stack[i - kRegisters]);
        }
        for (size_t i = 0; i < expected.size(); ++i) {
            EXPECT_EQ(i < kRegisters ? seen.x[i] : seen.stack[i - kRegisters], expected[i])
                << "argument " << i;
        }
        for (int i = 0; i < vectors && i < kRegisters; ++i) EXPECT_EQ(seen.d[i], given.d[i]) << i;
        if (vectors > kRegisters) {
            EXPECT_EQ(seen.stack[0], given.stack[0]);
        }
        const bool jumped = self == 0 || core < kRegisters;
        EXPECT_EQ(seen.address == address(words_returned), jumped);
        for (int i = 0; i < kKept - 2; ++i) {
            if (i != 10 && (jumped || i > 0)) {
                EXPECT_EQ(seen.kept[i], given.kept[i]) << i;
            }
        }
    }

    static inline void* table[kImplOperationCount];
    static inline gl_hooks_t driver;
};

}  // namespace

void* words_lookup(pthread_key_t key) {
    static const auto real =
        reinterpret_cast<void* (*)(pthread_key_t)>(dlsym(RTLD_NEXT, "pthread_getspecific"));
    if (walking) _Unwind_Backtrace(meet, nullptr);
    return real(key);
}

TEST_F(Trampolines, LeaveEveryWordToTheDriver) {
#define GL_ENTRY(result, name, parameters, arguments) \
    countArguments(driver.gl.name);                   \
    check(#name, kEntry_##name, 0);
#include "platform/gl_entries.in"
}

TEST_F(Trampolines, PutAnotherImplBeforeEveryWord) {
    void* object[2] = {table, &driver};
    ContextManager::nullContext.setImpl(reinterpret_cast<Impl*>(object));
#define GL_ENTRY(result, name, parameters, arguments) \
    countArguments(driver.gl.name);                   \
    check(#name, kEntry_##name, reinterpret_cast<uintptr_t>(object));
#include "platform/gl_entries.in"
}

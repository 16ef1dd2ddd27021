#include "rig/clock/program_code.h"

#include <link.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace rig {

namespace {

struct Range {
    uintptr_t begin;
    uintptr_t end;
};

bool belongsToRig(const char* path) {
    const char* name = strrchr(path, '/');
    name = name != nullptr ? name + 1 : path;
    for (const char* own : {"libveskoclock.", "libveskorig.", "libEGL.", "libGLESv2.",
                            "libGLESv1_CM.", "libstdc++."}) {
        if (strncmp(name, own, strlen(own)) == 0) return true;
    }
    return false;
}

int addRanges(dl_phdr_info* object, size_t, void* into) {
    if (belongsToRig(object->dlpi_name)) return 0;
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        const auto& header = object->dlpi_phdr[i];
        if (header.p_type != PT_LOAD || (header.p_flags & PF_X) == 0) continue;
        const uintptr_t begin = object->dlpi_addr + header.p_vaddr;
        static_cast<std::vector<Range>*>(into)->push_back({begin, begin + header.p_memsz});
    }
    return 0;
}

// The code that is there before the program's first instruction. Filled ahead of
// other libraries' constructors; never destroyed.
const std::vector<Range>& programCode() {
    static const auto* ranges = [] {
        auto* all = new std::vector<Range>;
        dl_iterate_phdr(addRanges, all);
        return all;
    }();
    return *ranges;
}

__attribute__((constructor)) void noteProgram() { programCode(); }

}  // namespace

bool isProgram(const void* caller) {
    const auto address = reinterpret_cast<uintptr_t>(caller);
    for (const Range& range : programCode()) {
        if (address >= range.begin && address < range.end) return true;
    }
    return false;
}

}  // namespace rig

#include "rig/device/parameter_node.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <stdexcept>

namespace rig {

namespace {

constexpr size_t kTextMax = 64;  // the kernel's limit for a domain name
constexpr size_t kNameMax = 40;
constexpr int kFactorMax = 400;

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error(what + ": " + strerror(errno));
}

std::string entryText(const Parameter& parameter) {
    return parameter.name + ":" + std::to_string(parameter.value) + "#";
}

class FileLock {
public:
    explicit FileLock(int openedFile) : descriptor(openedFile) {
        while (flock(descriptor, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    FileLock(const FileLock&) = delete;
    ~FileLock() { flock(descriptor, LOCK_UN); }

private:
    int descriptor;
};

}  // namespace

bool isKnownParameter(const std::string& name) {
    static const char* const known[] = {
#define GAME_PARAMETER(member, key) key,
#include "monitor/game_parameters.in"
    };
    return std::find(std::begin(known), std::end(known), name) != std::end(known);
}

Parameter parseAssignment(const std::string& text) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos) throw std::invalid_argument("'" + text + "' has no '='");
    Parameter result;
    result.name = text.substr(0, equals);
    if (result.name.empty()) throw std::invalid_argument("'" + text + "' has no name");
    if (result.name.size() > kNameMax) {
        throw std::invalid_argument("the name in '" + text + "' is longer than 40 characters");
    }
    const auto cannotStand = [](unsigned char c) { return c <= ' ' || c == ':' || c == '#'; };
    if (std::any_of(result.name.begin(), result.name.end(), cannotStand)) {
        throw std::invalid_argument("the name in '" + text +
                                    "' holds a ':', '#', blank or control character");
    }
    const char* begin = text.data() + equals + 1;
    const char* end = text.data() + text.size();
    if (*begin == '+' && begin[1] != '-') ++begin;
    const auto [stop, error] = std::from_chars(begin, end, result.value);
    if (error == std::errc::result_out_of_range) {
        throw std::invalid_argument("the value in '" + text + "' does not fit 32 bits");
    }
    if (error != std::errc() || stop != end) {
        throw std::invalid_argument("the value in '" + text + "' is not a whole number");
    }
    const bool isFactor = result.name == "FB0Factor" || result.name == "gameInternalFBOFactor";
    if (isFactor && (result.value < 1 || result.value > kFactorMax)) {
        throw std::invalid_argument("the factor in '" + text +
                                    "' is not a percentage from 1 to 400");
    }
    return result;
}

std::vector<std::vector<Parameter>> splitIntoTexts(const std::vector<Parameter>& parameters) {
    std::vector<std::vector<Parameter>> texts;
    size_t room = 0;
    for (const Parameter& parameter : parameters) {
        const size_t size = entryText(parameter).size();
        if (size > room) {
            texts.emplace_back();
            room = kTextMax;
        }
        texts.back().push_back(parameter);
        room -= size;
    }
    return texts;
}

struct ParameterNode::Shared {
    std::atomic<uint32_t> generation;
    std::atomic<bool> loaderIsThere;
    uint32_t count;
    struct {
        char name[kNameMax + 1];
        int32_t value;
    } entries[ParameterNode::kParametersMax];
};

ParameterNode ParameterNode::create(const std::string& file,
                                    const std::vector<Parameter>& parameters) {
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (descriptor < 0) fail("cannot create " + file);
    if (ftruncate(descriptor, sizeof(Shared)) != 0) fail("cannot size " + file);
    close(descriptor);
    ParameterNode node = open(file);
    for (const Parameter& parameter : parameters) node.set(parameter.name, parameter.value);
    return node;
}

ParameterNode ParameterNode::open(const std::string& file) {
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CLOEXEC);
    if (descriptor < 0) fail("cannot open " + file);
    void* memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (memory == MAP_FAILED) fail("cannot map " + file);
    return ParameterNode(descriptor, static_cast<Shared*>(memory));
}

ParameterNode::ParameterNode(ParameterNode&& other) noexcept
    : descriptor(other.descriptor), shared(other.shared) {
    other.descriptor = -1;
    other.shared = nullptr;
}

ParameterNode::~ParameterNode() {
    if (shared == nullptr) return;
    munmap(shared, sizeof(Shared));
    close(descriptor);
}

void ParameterNode::announceLoader() { shared->loaderIsThere = true; }

bool ParameterNode::loaderIsThere() const { return shared->loaderIsThere; }

uint32_t ParameterNode::generation() const { return shared->generation.load(); }

void ParameterNode::set(const std::string& name, int value) {
    FileLock lock(descriptor);
    uint32_t index = 0;
    while (index < shared->count && name != shared->entries[index].name) ++index;
    if (index == kParametersMax) throw std::runtime_error("too many parameters for " + name);
    auto& entry = shared->entries[index];
    if (index == shared->count) {
        strncpy(entry.name, name.c_str(), kNameMax);
        ++shared->count;
    }
    entry.value = value;
    ++shared->generation;
}

std::vector<Parameter> ParameterNode::readLocked() const {
    std::vector<Parameter> result;
    for (uint32_t i = 0; i < shared->count; ++i) {
        result.push_back({shared->entries[i].name, shared->entries[i].value});
    }
    return result;
}

std::vector<Parameter> ParameterNode::parameters() const {
    FileLock lock(descriptor);
    return readLocked();
}

std::vector<Parameter> ParameterNode::writeText(size_t index, bool* written) {
    FileLock lock(descriptor);
    const auto texts = splitIntoTexts(readLocked());
    if (index >= texts.size()) return {};
    std::string text;
    for (const Parameter& parameter : texts[index]) text += entryText(parameter);
    const bool done = setdomainname(text.data(), text.size()) == 0;
    if (written != nullptr) *written = done;
    return texts[index];
}

void ParameterNode::writeAll() {
    bool written = true;
    for (size_t i = 0; !writeText(i, &written).empty(); ++i) {
        if (!written) fail("cannot write the parameter node");
    }
}

}  // namespace rig

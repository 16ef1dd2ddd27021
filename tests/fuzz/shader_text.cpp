// Any shader text, whole or in pieces, with and without lengths. The first byte
// says how the rest is handed over.
#include <cstring>
#include <vector>

#include "GameImpl/sgame/SGAMEImpl.h"
#include "tests/fuzz/require.h"
#include "tests/support/host.h"
#include "tests/support/recording_driver.h"

using namespace android;

namespace {

// What a driver does with the strings: reads all of them.
std::string received(int count, const char* const* strings, const int* lengths) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        const bool measured = lengths != nullptr && lengths[i] >= 0;
        text.append(strings[i], measured ? static_cast<size_t>(lengths[i]) : strlen(strings[i]));
        text += '\n';
    }
    return text;
}

struct Surroundings {
    Surroundings() {
        host::keepLog(false);
        driver.recording = false;
        driver.on(&test::GL::glShaderSource,
                  [this](GLuint, GLsizei count, const GLchar* const* strings,
                         const GLint* lengths) { got = received(count, strings, lengths); });
    }

    test::RecordingDriver driver;
    SGAMEImpl game{&driver.hooks};
    std::string got;
};

// The pieces of the input, each in a buffer of exactly its size.
std::vector<std::vector<char>> piecesOf(const uint8_t* data, size_t size, bool terminated) {
    std::vector<std::vector<char>> pieces(1);
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == 0xff) {
            pieces.emplace_back();
        } else if (!terminated || data[i] != 0) {
            pieces.back().push_back(static_cast<char>(data[i]));
        }
    }
    for (auto& piece : pieces) {
        if (terminated) piece.push_back('\0');
        piece.shrink_to_fit();
    }
    return pieces;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static auto* const it = new Surroundings;
    if (size == 0) return 0;
    const bool measured = data[0] % 2 == 0;
    const bool negative = measured && data[0] % 4 == 0;
    const auto pieces = piecesOf(data + 1, size - 1, !measured || negative);
    std::vector<const char*> strings;
    std::vector<int> lengths;
    for (const auto& piece : pieces) {
        strings.push_back(piece.data());
        lengths.push_back(negative ? -1 : static_cast<int>(piece.size()));
    }
    const int count = static_cast<int>(strings.size());
    const int* const given = measured ? lengths.data() : nullptr;
    if (pieces[0].empty()) return 0;  // with no memory to point at

    it->game.shaderRewriteEnabled = false;
    it->game.glShaderSource(1, count, strings.data(), given);
    const std::string plain = it->got;
    REQUIRE(plain == received(count, strings.data(), given));
    it->game.shaderRewriteEnabled = true;
    it->game.glShaderSource(1, count, strings.data(), given);
    const bool has = plain.substr(0, pieces[0].size()).find("precision highp") != plain.npos;
    REQUIRE(has || it->got == plain);
    REQUIRE(!has || it->got.find("precision mediump") != it->got.npos);
    return 0;
}

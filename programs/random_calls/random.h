// Random numbers that are equal on every run, for equal seeds.
#pragma once

#include <cstdint>

namespace fuzz {

class Random {
public:
    explicit Random(uint64_t seed) : state(mixed(seed)) {}

    uint64_t bits() { return mixed(state += 0x9e3779b97f4a7c15u); }
    int below(int limit) { return static_cast<int>(bits() % static_cast<uint64_t>(limit)); }
    int from(int low, int high) { return low + below(high - low + 1); }
    // From 0 to 1 in steps that every float holds exactly.
    float real() { return static_cast<float>(below(1025)) / 1024.0f; }
    bool once(int in) { return below(in) == 0; }

private:
    static uint64_t mixed(uint64_t z) {
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
        return z ^ (z >> 31);
    }

    uint64_t state;
};

class Digest {
public:
    void add(const void* data, unsigned long size) {
        const auto* bytes = static_cast<const unsigned char*>(data);
        for (unsigned long i = 0; i < size; ++i) hash = (hash ^ bytes[i]) * 0x100000001b3u;
    }
    void add(int number) { add(&number, sizeof number); }
    uint64_t value() const { return hash; }

private:
    uint64_t hash = 0xcbf29ce484222325u;
};

}  // namespace fuzz

// What the seeded checksum tests share: a pseudo-random source that is the
// same on every platform, and a hash of the bytes an image's pixels cover.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

#include "core/pixel_format.hpp"
#include "fbcompose/image.h"

namespace test {

// FNV-1a over bytes, 64-bit.
struct Hash {
    uint64_t value = 0xCBF29CE484222325u;
    void add(const void *data, size_t bytes) {
        for (size_t i = 0; i < bytes; ++i) {
            value ^= static_cast<const uint8_t *>(data)[i];
            value *= 0x100000001B3u;
        }
    }
    void add(const xc_image *image) {
        for (int32_t y = 0; y < image->height; ++y)
            add(image->data + y * image->rowstride,
                size_t(image->width * fbc::pixel_format::bytes_per_pixel(image->format)));
    }
};

// The standard engine is the same sequence on every platform; distributions
// are not, and neither is the order in which a call's arguments are
// evaluated: one draw per call's argument list, or braces.
struct Rng {
    std::mt19937 engine;
    explicit Rng(uint32_t seed = 20240611) : engine(seed) {}
    int32_t below(int32_t n) { return int32_t(engine() % uint32_t(n)); }
    int32_t between(int32_t lo, int32_t hi) { return lo + below(hi - lo + 1); }
    uint32_t word() { return engine(); }
    // Translucent half the time, else opaque, nearly opaque or transparent.
    uint32_t color() {
        static constexpr uint32_t kAlphas[] = {255, 254, 0, 128};
        const uint32_t a = below(2) ? kAlphas[below(4)] : uint32_t(below(256));
        return a << 24 | (word() & 0xFFFFFF);
    }
};

}  // namespace test

// What the pixel tests share: random pixels whose alpha often sits where the
// arithmetic branches, and a comparison that names the first differing pixel.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

namespace pixel_test {

class RandomPixels {
public:
    explicit RandomPixels(uint32_t seed) : rng_(seed) {}

    uint32_t byte() { return rng_() & 255; }

    // 0, 1, 128, 254 and 255 half of the time.
    uint32_t alpha() {
        static constexpr uint32_t kEdges[] = {0, 1, 128, 254, 255};
        const uint32_t pick = rng_() % 10;
        return pick < 5 ? kEdges[pick] : byte();
    }

    uint32_t word(bool premultiplied) {
        const uint32_t a = alpha();
        uint32_t out = a << 24;
        for (int shift = 0; shift < 24; shift += 8) {
            const uint32_t c = byte();
            out |= (premultiplied ? c * a / 256 : c) << shift;
        }
        return out;
    }

    std::vector<uint32_t> words(size_t n, bool premultiplied) {
        std::vector<uint32_t> out(n);
        for (auto &w : out) w = word(premultiplied);
        return out;
    }

    // Coverage: none and full a third of the time each.
    std::vector<uint8_t> coverage(size_t n) {
        std::vector<uint8_t> out(n);
        for (auto &c : out) {
            const uint32_t pick = rng_() % 3;
            c = static_cast<uint8_t>(pick == 0 ? 0 : pick == 1 ? 255 : byte());
        }
        return out;
    }

    std::vector<uint16_t> halfwords(size_t n) {
        std::vector<uint16_t> out(n);
        for (auto &h : out) h = static_cast<uint16_t>(rng_());
        return out;
    }

private:
    std::mt19937 rng_;
};

// Runs end in guard pixels and sit after lead pixels: all must stay as they were.
inline constexpr size_t kGuard = 8;

template <class T>
testing::AssertionResult same_pixels(const std::vector<T> &want, const std::vector<T> &got) {
    if (want.size() != got.size()) return testing::AssertionFailure() << "sizes differ";
    for (size_t i = 0; i < want.size(); ++i) {
        if (want[i] != got[i]) {
            return testing::AssertionFailure() << std::hex << "pixel " << std::dec << i
                                               << std::hex << ": want 0x" << uint32_t(want[i])
                                               << ", got 0x" << uint32_t(got[i]);
        }
    }
    return testing::AssertionSuccess();
}

}  // namespace pixel_test

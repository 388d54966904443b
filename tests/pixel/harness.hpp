// What the pixel tests share: random pixels whose alpha often sits where the
// arithmetic branches, and a comparison that names the first differing pixel.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

namespace pixel_test {

// Alpha is 0, 1, 128, 254 or 255 half of the time; channels may be premultiplied by it.
inline uint32_t random_word(std::mt19937 &rng, bool premultiplied = false) {
    static constexpr uint32_t kEdges[] = {0, 1, 128, 254, 255};
    const uint32_t pick = rng() % 10, a = pick < 5 ? kEdges[pick] : rng() & 255;
    uint32_t out = a << 24;
    for (int shift = 0; shift < 24; shift += 8)
        out |= (rng() & 255) * (premultiplied ? a : 256) / 256 << shift;
    return out;
}

// 16- or 32-bit pixels, or with `shift` 24 coverage bytes where none and full are common.
template <class T = uint32_t>
std::vector<T> random_words(std::mt19937 &rng, size_t n, bool premultiplied = false, int shift = 0) {
    std::vector<T> out(n);
    for (auto &w : out) w = static_cast<T>(random_word(rng, premultiplied) >> shift);
    return out;
}

// Runs end in guard pixels and sit after lead pixels: all must stay as they were.
inline constexpr size_t kGuard = 8;

template <class T>
testing::AssertionResult same_pixels(const std::vector<T> &want, const std::vector<T> &got) {
    if (want.size() != got.size()) return testing::AssertionFailure() << "sizes differ";
    for (size_t i = 0; i < want.size(); ++i) {
        if (want[i] == got[i]) continue;
        return testing::AssertionFailure() << "pixel " << i << std::hex << ": want 0x"
                                           << uint32_t(want[i]) << ", got 0x" << uint32_t(got[i]);
    }
    return testing::AssertionSuccess();
}

}  // namespace pixel_test

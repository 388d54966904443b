// What the plain C++ kernels of the device share: runs cut into aligned
// groups of four pixels, word loads of packed bytes and halfwords, and the
// test that lets two channels share one 32-bit multiply.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "pixel/channel.hpp"

// Packed coverage bytes and RGB565 pairs are read in memory order.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the packed loads assume little-endian");

namespace fbc::px::swar {

struct Groups {
    int32_t head, groups, tail;
};

// Groups start where `run` is aligned to four of its elements: four words
// then share one 16-byte half of a cache line, and four coverage bytes or
// two RGB565 pairs come in one word load.
template <class T>
inline Groups aligned_groups(const T *run, int32_t count) {
    if (count <= 0) return {0, 0, 0};
    const auto misaligned = uint32_t(reinterpret_cast<uintptr_t>(run) / sizeof(T)) & 3u;
    const int32_t head = std::min(count, int32_t((4 - misaligned) & 3u));
    return {head, (count - head) >> 2, (count - head) & 3};
}

// The word at `p`, which the caller knows to be 4-byte aligned.
template <class T>
inline uint32_t load_word(const T *p) {
    uint32_t w;
    std::memcpy(&w, __builtin_assume_aligned(p, 4), sizeof w);
    return w;
}

template <class T>
inline void store_word(T *p, uint32_t w) {
    std::memcpy(__builtin_assume_aligned(p, 4), &w, sizeof w);
}

inline constexpr uint32_t kLanes = 0x00FF00FFu;

// kLanes in a register. Knowing the value, GCC turns "(x & kLanes) << 8"
// into "(x << 8) & 0xFF00FF00" and loads that second constant from memory
// for every pixel on ARM, which has no immediate for either.
inline uint32_t lanes_mask() {
    uint32_t m = kLanes;
    asm("" : "+r"(m));
    return m;
}

// ((d x inv) >> 8) + s for all four bytes, truncated, as add_faded, with
// the lane mask `m` held in a register.
inline uint32_t add_faded(uint32_t s, uint32_t d, uint32_t inv, uint32_t m) {
    const uint32_t br = ((((d & m) * inv) >> 8) & m) + (s & m);
    const uint32_t ga = ((((d >> 8) & m) * inv) >> 8 & m) + ((s >> 8) & m);
    return (br & m) | (ga & m) << 8;
}

// Blue, green and red each at most alpha. Then a blend's two-lane sums
// c x k + d x (255 - a), where a is about alpha x k / 256, stay below 2^16
// and no lane carries into the next: the lanes give the reference's bytes.
inline bool premultiplied(uint32_t w) {
    const uint32_t a = alpha_of(w);
    return channel(w, 0) <= a && channel(w, 8) <= a && channel(w, 16) <= a;
}

// Enough where red is the upper lane of its pair and the alpha lane is
// rebuilt: blue and green, the lanes that could carry into another, at
// most alpha.
inline bool low_lanes_fit(uint32_t w) {
    const uint32_t a = alpha_of(w);
    return channel(w, 0) <= a && channel(w, 8) <= a;
}

// Source over, one pixel: a = 0 leaves the destination unread; a = 255
// stores the source word.
template <bool KeepAlpha>
inline void over_changed(uint32_t s, uint32_t *d, uint32_t m) {
    const uint32_t a = alpha_of(s);
    if (a == 0) return;
    if (a == 255) {
        *d = s;
        return;
    }
    if constexpr (KeepAlpha) {
        // Blue and red as in add_faded; green alone, beside the kept alpha.
        const uint32_t inv = 255 - a, dst = *d;
        const uint32_t br = (((((dst & m) * inv) >> 8) & m) + (s & m)) & m;
        const uint32_t g = ((((dst >> 8) & m) * inv) >> 8) + ((s >> 8) & m);
        // (g << 24) >> 16 rather than (g & 0xFF) << 8, which GCC turns into a
        // mask that ARM loads from memory.
        *d = br | (g << 24) >> 16 | (dst & kAlphaMask);
    } else {
        *d = add_faded(s, *d, 255 - a, m);
    }
}

}  // namespace fbc::px::swar

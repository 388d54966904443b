// Format copies in plain C++, four pixels a step: 32-bit words with alpha
// forced, and RGB565 two pixels to a 32-bit load or store, where the
// reference moves one halfword at a time.
#include "pixel/swar.hpp"
#include "pixel/variants.hpp"

namespace fbc::px::swar {
namespace {

// RGB565 of `w` in the low half; the high half holds a copy of red's bits,
// which the caller cuts or shifts out. Four operations on ARM.
inline uint32_t loose_565(uint32_t w) {
    uint32_t v = (w >> 3) & 0x001F001Fu;  // blue to bits 0-4, red to 16-20
    v |= v >> 5;                          // red to bits 11-15
    return v | (w & 0xFC00u) >> 5;        // green to bits 5-10
}

// Two source words as one word of two RGB565 pixels, the first in the low half.
inline uint32_t pack_565_pair(uint32_t first, uint32_t second) {
    return (loose_565(first) & ~0x001F0000u) | loose_565(second) << 16;
}

// The RGB565 pixel in the low (high) half of `v` as a colour word with alpha 0.
inline uint32_t unpack_low(uint32_t v) {
    return (v & 0xF800u) << 8 | (v & 0x07E0u) << 5 | (v & 0x001Fu) << 3;
}
inline uint32_t unpack_high(uint32_t v) {
    return (v & 0xF8000000u) >> 8 | (v & 0x07E00000u) >> 11 | (v & 0x001F0000u) >> 13;
}

}  // namespace

void copy_pixels_rgb_to_rgba(const void *src, void *dst, int32_t count, uint32_t) {
    const auto *s = static_cast<const uint32_t *>(src);
    auto *d = static_cast<uint32_t *>(dst);
    const Groups g = aligned_groups(d, count);
    for (int32_t i = 0; i < g.head; ++i) *d++ = *s++ | kAlphaMask;
    for (int32_t n = g.groups; n > 0; --n, s += 4, d += 4) {
        const uint32_t s0 = s[0], s1 = s[1], s2 = s[2], s3 = s[3];
        d[0] = s0 | kAlphaMask, d[1] = s1 | kAlphaMask, d[2] = s2 | kAlphaMask, d[3] = s3 | kAlphaMask;
    }
    for (int32_t i = 0; i < g.tail; ++i) *d++ = *s++ | kAlphaMask;
}

void copy_pixels_rgba_to_16(const void *src, void *dst, int32_t count, uint32_t) {
    const auto *s = static_cast<const uint32_t *>(src);
    auto *d = static_cast<uint16_t *>(dst);
    const Groups g = aligned_groups(d, count);
    for (int32_t i = 0; i < g.head; ++i) *d++ = pack_565(*s++);
    for (int32_t n = g.groups; n > 0; --n, s += 4, d += 4) {
        const uint32_t s0 = s[0], s1 = s[1], s2 = s[2], s3 = s[3];
        store_word(d, pack_565_pair(s0, s1));
        store_word(d + 2, pack_565_pair(s2, s3));
    }
    for (int32_t i = 0; i < g.tail; ++i) *d++ = pack_565(*s++);
}

void copy_pixels_16_to_rgb(const void *src, void *dst, int32_t count, uint32_t) {
    const auto *s = static_cast<const uint16_t *>(src);
    auto *d = static_cast<uint32_t *>(dst);
    const Groups g = aligned_groups(s, count);
    for (int32_t i = 0; i < g.head; ++i) *d++ = unpack_565(*s++);
    for (int32_t n = g.groups; n > 0; --n, s += 4, d += 4) {
        const uint32_t v0 = load_word(s), v1 = load_word(s + 2);
        d[0] = unpack_low(v0), d[1] = unpack_high(v0), d[2] = unpack_low(v1), d[3] = unpack_high(v1);
    }
    for (int32_t i = 0; i < g.tail; ++i) *d++ = unpack_565(*s++);
}

}  // namespace fbc::px::swar

// Format copies in plain C++, four pixels a step: 32-bit words with alpha
// forced, and RGB565 two pixels to a 32-bit load or store, where the
// reference moves one halfword at a time. The plain RGB565 copy moves eight
// words a step.
#include <cstring>

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

// `blocks` times eight words from s to d; both move on. ARM moves them with
// one LDM and one STM, four instructions for sixteen RGB565 pixels: the C
// library's copy, set up anew for every row, costs a tenth more.
inline void copy_blocks(const uint32_t *&s, uint32_t *&d, int32_t blocks) {
#if defined(__arm__)
    if (blocks <= 0) return;
    // LDM and STM take registers in ascending order: the eight are pinned.
    register uint32_t w0 asm("r3"), w1 asm("r4"), w2 asm("r5"), w3 asm("r6"), w4 asm("r7"),
        w5 asm("r8"), w6 asm("r9"), w7 asm("r10");
    asm volatile(
        "1:\n\t"
        "ldmia %8!, {%0, %1, %2, %3, %4, %5, %6, %7}\n\t"
        "subs %10, %10, #1\n\t"
        "stmia %9!, {%0, %1, %2, %3, %4, %5, %6, %7}\n\t"
        "bne 1b"
        : "=&r"(w0), "=&r"(w1), "=&r"(w2), "=&r"(w3), "=&r"(w4), "=&r"(w5), "=&r"(w6), "=&r"(w7),
          "+r"(s), "+r"(d), "+r"(blocks)
        :
        : "cc", "memory");
#else
    for (; blocks > 0; --blocks, s += 8, d += 8) std::memcpy(d, s, 8 * sizeof(uint32_t));
#endif
}

}  // namespace

void copy_pixels_16_to_16(const void *src, void *dst, int32_t count, uint32_t) {
    const auto *s = static_cast<const uint16_t *>(src);
    auto *d = static_cast<uint16_t *>(dst);
    if (count <= 0) return;
    // Words need both runs at the same offset from a word boundary.
    if ((reinterpret_cast<uintptr_t>(s) ^ reinterpret_cast<uintptr_t>(d)) & 2) {
        std::memcpy(d, s, size_t(count) * sizeof *d);
        return;
    }
    if (reinterpret_cast<uintptr_t>(d) & 2) *d++ = *s++, --count;
    auto *sw = static_cast<const uint32_t *>(__builtin_assume_aligned(s, 4));
    auto *dw = static_cast<uint32_t *>(__builtin_assume_aligned(d, 4));
    const int32_t words = count >> 1;
    copy_blocks(sw, dw, words >> 3);
    for (int32_t i = 0; i < (words & 7); ++i) *dw++ = *sw++;
    if (count & 1) d[count - 1] = s[count - 1];
}

void copy_pixels_rgb_to_rgba(const void *src, void *dst, int32_t count, uint32_t) {
    const auto *s = static_cast<const uint32_t *>(src);
    auto *d = static_cast<uint32_t *>(dst);
    const Groups g = aligned_groups(d, count);
    for (int32_t i = 0; i < g.head; ++i) *d++ = *s++ | kAlphaMask;
    for (int32_t n = g.groups; n > 0; --n, s += 4, d += 4) {
        const uint32_t s0 = s[0], s1 = s[1], s2 = s[2], s3 = s[3];
        d[0] = s0 | kAlphaMask, d[1] = s1 | kAlphaMask, d[2] = s2 | kAlphaMask,
        d[3] = s3 | kAlphaMask;
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
        d[0] = unpack_low(v0), d[1] = unpack_high(v0), d[2] = unpack_low(v1),
        d[3] = unpack_high(v1);
    }
    for (int32_t i = 0; i < g.tail; ++i) *d++ = unpack_565(*s++);
}

}  // namespace fbc::px::swar

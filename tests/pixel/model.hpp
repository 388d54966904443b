// A per-pixel model of the span primitives and the display converters,
// written from their equations and kept deliberately plain: the reference
// that every implementation of them, scalar or vector, must equal bit for bit.
#pragma once

#include <array>
#include <cstdint>

namespace model {

// Channels by index: 0 blue, 1 green, 2 red, 3 alpha.
using Px = std::array<uint32_t, 4>;

inline Px unpack(uint32_t w) { return {w & 255, (w >> 8) & 255, (w >> 16) & 255, w >> 24}; }

// Each channel is stored into its byte by truncation.
inline uint32_t pack(const Px &p) {
    return (p[0] & 255) | (p[1] & 255) << 8 | (p[2] & 255) << 16 | (p[3] & 255) << 24;
}

// What a primitive does to the alpha byte of its destination.
enum class DstAlpha { kKept, kBlended };

// Every channel, alpha too when blended: d x (255 - a) / 256 + s, for colour alpha a.
inline uint32_t fill_blend(uint32_t color, uint32_t dst, DstAlpha mode) {
    Px s = unpack(color), d = unpack(dst);
    int channels = mode == DstAlpha::kBlended ? 4 : 3;
    for (int c = 0; c < channels; ++c) d[c] = d[c] * (255 - s[3]) / 256 + s[c];
    return pack(d);
}

// Source over: the same blend, but alpha 0 keeps the destination and 255 stores the source.
inline uint32_t over(uint32_t src, uint32_t dst, DstAlpha mode) {
    uint32_t a = src >> 24;
    return a == 0 ? dst : a == 255 ? src : fill_blend(src, dst, mode);
}

inline uint32_t coverage(uint32_t cov, uint32_t color, uint32_t dst, DstAlpha mode) {
    Px s = unpack(color), d = unpack(dst);
    uint32_t scale = s[3] >= 128 ? s[3] + 1 : s[3];  // 255 becomes 256
    uint32_t a = cov * scale / 256;
    if (a == 0) return dst;
    if (a == 255) return color;
    for (int c = 0; c < 3; ++c) d[c] = (s[c] * cov + d[c] * (255 - a)) / 256;
    if (mode == DstAlpha::kBlended) d[3] = d[3] * (255 - a) / 256 + a;
    return pack(d);
}

inline uint32_t modulate(uint32_t src, uint32_t color, uint32_t dst, bool src_alpha,
                         DstAlpha mode) {
    Px s = unpack(src), k = unpack(color), d = unpack(dst);
    uint32_t a = src_alpha ? s[3] * k[3] / 256 : k[3];
    bool white = k[0] == 255 && k[1] == 255 && k[2] == 255;
    for (int c = 0; c < 3; ++c) {
        d[c] = white ? (s[c] * k[3] + d[c] * (255 - a)) / 256
                     : (d[c] * (255 - a) + s[c] * k[c] * k[3] / 256) / 256;
    }
    if (mode == DstAlpha::kBlended) d[3] = d[3] * (255 - a) / 256 + a;
    return pack(d);
}

// RGB565 keeps the top 5, 6 and 5 bits of red, green and blue.
inline uint32_t to_565(uint32_t w) {
    return ((w >> 19) & 31) << 11 | ((w >> 10) & 63) << 5 | ((w >> 3) & 31);
}

inline uint32_t from_565(uint32_t v) {
    return ((v >> 11) & 31) * 8 << 16 | ((v >> 5) & 63) * 4 << 8 | (v & 31) * 8;
}

// RGB565 widened to RGB666: red and blue doubled, green as it is.
inline uint32_t from_565_to_666(uint32_t v) {
    return ((v >> 11) & 31) * 2 << 12 | ((v >> 5) & 63) << 6 | (v & 31) * 2;
}

// Display conversion.

constexpr int kBayer[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};

inline int threshold(int64_t ox, int64_t oy, int64_t dither_x, int64_t dither_y) {
    return kBayer[(ox + dither_x) & 3][(oy + dither_y) & 3];
}

// A channel reduced to `bits` (5 or 6), rounded up whenever the dropped
// bits reach the threshold, never past the field's maximum.
inline uint32_t reduce(uint32_t c, int bits, int t) {
    uint32_t v = c >> (8 - bits), dropped = c & ((1u << (8 - bits)) - 1);
    uint32_t limit = bits == 5 ? uint32_t(t) / 2 : uint32_t(t) / 4;
    return dropped >= limit && v + 1 < (1u << bits) ? v + 1 : v;
}

// The output word of one pixel at depth 16, 18 or 32.
inline uint32_t panel_pixel(uint32_t word, int depth, int t) {
    Px p = unpack(word);
    if (depth == 16) return reduce(p[2], 5, t) << 11 | reduce(p[1], 6, t) << 5 | reduce(p[0], 5, t);
    if (depth == 18) return reduce(p[2], 6, t) << 12 | reduce(p[1], 6, t) << 6 | reduce(p[0], 6, t);
    return word;
}

struct Point {
    int x, y;
};

// The source pixel that output pixel (i, j) shows, for a width x height source.
inline Point source_of(int i, int j, int width, int height, int rotation) {
    if (rotation == 90) return {j, height - 1 - i};
    if (rotation == 270) return {width - 1 - j, i};
    return {i, j};
}

}  // namespace model

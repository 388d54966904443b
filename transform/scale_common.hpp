// What the scanline drawers share: the 16.16 interpolation of colour words
// and 32-bit source addressing.
#pragma once

#include <cstdint>

#include "fbcompose/image.h"

namespace fbc {

inline constexpr uint32_t kNoModulation = 0xFFFFFFFFu;

// Signed 16.16 fixed point: positions and steps carry the integer part
// above kFixedShift and a fraction of kFixedOne below it.
inline constexpr int kFixedShift = 16;
inline constexpr uint32_t kFixedOne = 1u << kFixedShift;
inline constexpr uint32_t kFractionMask = kFixedOne - 1;

// One byte between two pixels: (next x f + cur x (65536 - f)) >> 16.
inline uint32_t lerp_byte(uint32_t cur, uint32_t next, uint32_t f, int shift) {
    const uint32_t c = (cur >> shift) & 0xFF;
    const uint32_t n = (next >> shift) & 0xFF;
    return ((n * f + c * (kFixedOne - f)) >> kFixedShift) << shift;
}

// Bytes 0 to 2 interpolated; byte 3 too when `alpha`, else it is taken from
// `keep`.
inline uint32_t lerp_word(uint32_t cur, uint32_t next, uint32_t f, bool alpha, uint32_t keep) {
    const uint32_t a = alpha ? lerp_byte(cur, next, f, 24) : keep & 0xFF000000u;
    return a | lerp_byte(cur, next, f, 16) | lerp_byte(cur, next, f, 8) |
           lerp_byte(cur, next, f, 0);
}

// 16.16 step between first and last: ((from - 1) << 16) / (to - 1), 0 when
// the target has fewer than two pixels.
inline int64_t end_to_end_step(int32_t from, int32_t to) {
    return to >= 2 ? (int64_t{from - 1} << kFixedShift) / (to - 1) : 0;
}

// Pixel (x, y) of a source taken as 32-bit words with `width` words per row.
inline const uint32_t *word_at(const xc_image *image, int32_t x, int32_t y) {
    return reinterpret_cast<const uint32_t *>(image->data) +
           (static_cast<intptr_t>(y) * image->width + x);
}

// Sizes of areas whose corners the drawer guard or the blit has checked.
inline int32_t width_of(const xg_area &a) { return a.x2 - a.x1; }
inline int32_t height_of(const xg_area &a) { return a.y2 - a.y1; }

// Sizes of any caller's area, in 64 bits.
inline int64_t wide_width(const xg_area &a) { return int64_t{a.x2} - a.x1; }
inline int64_t wide_height(const xg_area &a) { return int64_t{a.y2} - a.y1; }

}  // namespace fbc

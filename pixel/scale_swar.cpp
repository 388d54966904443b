// The scalers' row passes for a CPU without a vector unit. Each byte is
// (next x f + cur x (65536 - f)) >> 16, which the reference's difference
// form equals exactly; each term, and their sum, stays below 2^24. Bytes 0
// and 2 (and 1 and 3) of a word are spread 24 bits apart, so one 32 x 32 ->
// 64-bit multiply-accumulate pair blends two channels without their sums
// meeting: four multiplies a word, against four per byte pair in the
// reference.
#include "pixel/scale_rows.hpp"

namespace fbc::px::swar {
namespace {

// Bytes 0 and 2 of w at bits 0 and 24; bytes 1 and 3 the same.
inline uint32_t even_bytes(uint32_t w) { return (w & 0xFFu) | ((w << 8) & 0xFF000000u); }
inline uint32_t odd_bytes(uint32_t w) { return ((w >> 8) & 0xFFu) | (w & 0xFF000000u); }

// Two channels' weighted sums, 24 bits apart.
inline uint64_t blend_lanes(uint32_t cur, uint32_t next, uint32_t f, uint32_t g) {
    return uint64_t{next} * f + uint64_t{cur} * g;
}

// The word between cur and next at f; g is 65536 - f.
inline uint32_t lerp_word(uint32_t cur, uint32_t next, uint32_t f, uint32_t g) {
    const uint64_t even = blend_lanes(even_bytes(cur), even_bytes(next), f, g);
    const uint64_t odd = blend_lanes(odd_bytes(cur), odd_bytes(next), f, g);
    const auto even_lo = uint32_t(even), even_hi = uint32_t(even >> 32);
    const auto odd_lo = uint32_t(odd), odd_hi = uint32_t(odd >> 32);
    return ((even_lo >> 16) & 0xFFu) | ((odd_lo >> 8) & 0xFF00u) | ((even_hi << 8) & 0xFF0000u) |
           ((odd_hi << 16) & 0xFF000000u);
}

}  // namespace

void lerp_rows(const uint32_t *top, const uint32_t *bottom, uint32_t *out, int32_t n, uint32_t f) {
    const uint32_t g = 65536 - f;
    for (int32_t i = 0; i < n; ++i) out[i] = lerp_word(top[i], bottom[i], f, g);
}

void lerp_words(const uint32_t *row, const WordTap *taps, uint32_t *out, int32_t n) {
    for (int32_t i = 0; i < n; ++i) {
        const WordTap &t = taps[i];
        out[i] = lerp_word(row[t.at], row[t.next], t.f, 65536 - t.f);
    }
}

}  // namespace fbc::px::swar

// The scalers' row passes on x86, built by scale_sse2.cpp and
// scale_avx2.cpp into the namespace of their instruction set (see
// lanes_x86.hpp: these files use no inline function of the rest of the
// library or of the standard library). Channels are taken in 16-bit lanes:
// cur + ((d x f) >> 16), d = next - cur, is mulhi16(d, f) + cur for f
// below 32768; above, f read as a signed lane is f - 65536, whose product
// is d smaller, so d is added back where the lane is negative.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "pixel/lanes_x86.hpp"
#include "pixel/scale_rows.hpp"

namespace fbc::px::FBC_X86_ISA {
namespace {

// Eight channels at weights `f` (16-bit lanes, as signed).
__m128i lerp8(__m128i cur, __m128i next, __m128i f) {
    const __m128i d = _mm_sub_epi16(next, cur);
    const __m128i back = _mm_and_si128(d, _mm_srai_epi16(f, 15));
    return _mm_add_epi16(cur, _mm_add_epi16(_mm_mulhi_epi16(d, f), back));
}

__m128i word_at(const uint32_t *row, int32_t i) { return _mm_cvtsi32_si128(int(row[i])); }

}  // namespace

void lerp_rows(const uint32_t *top, const uint32_t *bottom, uint32_t *out, int32_t n, uint32_t f) {
    const __m128i z = _mm_setzero_si128(), w = _mm_set1_epi16(short(f));
    int32_t i = 0;
    for (; i + 4 <= n; i += 4) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(top + i));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bottom + i));
        const __m128i lo = lerp8(_mm_unpacklo_epi8(a, z), _mm_unpacklo_epi8(b, z), w);
        const __m128i hi = lerp8(_mm_unpackhi_epi8(a, z), _mm_unpackhi_epi8(b, z), w);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(out + i), _mm_packus_epi16(lo, hi));
    }
    if (i < n) px::lerp_rows(top + i, bottom + i, out + i, n - i, f);
}

void lerp_words(const uint32_t *row, const WordTap *taps, uint32_t *out, int32_t n) {
    const __m128i z = _mm_setzero_si128();
    int32_t i = 0;
    for (; i + 4 <= n; i += 4) {
        const WordTap *t = taps + i;
        // Pixels 0 and 1 in the low register, 2 and 3 in the high one.
        const __m128i a =
            _mm_unpacklo_epi64(_mm_unpacklo_epi32(word_at(row, t[0].at), word_at(row, t[1].at)),
                               _mm_unpacklo_epi32(word_at(row, t[2].at), word_at(row, t[3].at)));
        const __m128i b = _mm_unpacklo_epi64(
            _mm_unpacklo_epi32(word_at(row, t[0].next), word_at(row, t[1].next)),
            _mm_unpacklo_epi32(word_at(row, t[2].next), word_at(row, t[3].next)));
        const __m128i f =
            _mm_setr_epi16(short(t[0].f), short(t[0].f), short(t[0].f), short(t[0].f),
                           short(t[1].f), short(t[1].f), short(t[1].f), short(t[1].f));
        const __m128i g =
            _mm_setr_epi16(short(t[2].f), short(t[2].f), short(t[2].f), short(t[2].f),
                           short(t[3].f), short(t[3].f), short(t[3].f), short(t[3].f));
        const __m128i lo = lerp8(_mm_unpacklo_epi8(a, z), _mm_unpacklo_epi8(b, z), f);
        const __m128i hi = lerp8(_mm_unpackhi_epi8(a, z), _mm_unpackhi_epi8(b, z), g);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(out + i), _mm_packus_epi16(lo, hi));
    }
    if (i < n) px::lerp_words(row, taps + i, out + i, n - i);
}

}  // namespace fbc::px::FBC_X86_ISA

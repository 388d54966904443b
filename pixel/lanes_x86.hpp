// The x86 vector register as the kernels of spans_x86.hpp and
// convert_x86.hpp see it: kWidth 32-bit pixels, and the operations they use.
// The kernels are written once and built twice: into namespace sse2 with
// four pixels per register (every x86-64 CPU has SSE2), and, in the files
// compiled with -mavx2, into namespace avx2 with eight. Everything here
// lives in that namespace, so no function built for AVX2 can be merged with
// one the baseline calls; for the same reason these files use no inline
// function of the rest of the library or of the standard library.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#if defined(__AVX2__)
#define FBC_X86_ISA avx2
#elif defined(__SSE2__)
#define FBC_X86_ISA sse2
#else
#error "the x86 kernels need SSE2 at least"
#endif

namespace fbc::px::FBC_X86_ISA {

// Bitwise &, |, ^ and ~ work on registers as on integers. In "16-bit
// lanes" each channel of a pixel is widened to 16 bits: half a register's
// pixels, channels in the order blue, green, red, alpha.
#if defined(__AVX2__)

using Reg = __m256i;
inline constexpr int kWidth = 8;

inline Reg load(const void *p) { return _mm256_loadu_si256(static_cast<const Reg *>(p)); }
inline void store(void *p, Reg v) { _mm256_storeu_si256(static_cast<Reg *>(p), v); }
inline Reg splat(uint32_t v) { return _mm256_set1_epi32(int(v)); }
inline Reg splat16(uint16_t v) { return _mm256_set1_epi16(short(v)); }
inline Reg splat64(uint64_t v) { return _mm256_set1_epi64x(int64_t(v)); }
inline Reg zero() { return _mm256_setzero_si256(); }

inline Reg add8(Reg a, Reg b) { return _mm256_add_epi8(a, b); }
inline Reg adds8(Reg a, Reg b) { return _mm256_adds_epu8(a, b); }
inline Reg min8(Reg a, Reg b) { return _mm256_min_epu8(a, b); }
inline Reg max8(Reg a, Reg b) { return _mm256_max_epu8(a, b); }
inline Reg eq8(Reg a, Reg b) { return _mm256_cmpeq_epi8(a, b); }
inline Reg add16(Reg a, Reg b) { return _mm256_add_epi16(a, b); }
inline Reg add32(Reg a, Reg b) { return _mm256_add_epi32(a, b); }
inline Reg sub16(Reg a, Reg b) { return _mm256_sub_epi16(a, b); }
inline Reg mullo16(Reg a, Reg b) { return _mm256_mullo_epi16(a, b); }
inline Reg mulhi16(Reg a, Reg b) { return _mm256_mulhi_epu16(a, b); }
inline Reg avg16(Reg a, Reg b) { return _mm256_avg_epu16(a, b); }
inline Reg eq16(Reg a, Reg b) { return _mm256_cmpeq_epi16(a, b); }
inline Reg eq32(Reg a, Reg b) { return _mm256_cmpeq_epi32(a, b); }
template <int N>
Reg shr16(Reg a) {
    return _mm256_srli_epi16(a, N);
}
template <int N>
Reg shl16(Reg a) {
    return _mm256_slli_epi16(a, N);
}
template <int N>
Reg shr32(Reg a) {
    return _mm256_srli_epi32(a, N);
}
template <int N>
Reg shl32(Reg a) {
    return _mm256_slli_epi32(a, N);
}
template <int N>
Reg sar32(Reg a) {
    return _mm256_srai_epi32(a, N);
}

// Interleaving and packing work within each 128-bit half; a pack undoes
// the matching pair of unpacks.
inline Reg lo8(Reg a, Reg b) { return _mm256_unpacklo_epi8(a, b); }
inline Reg hi8(Reg a, Reg b) { return _mm256_unpackhi_epi8(a, b); }
inline Reg lo32(Reg a, Reg b) { return _mm256_unpacklo_epi32(a, b); }
inline Reg hi32(Reg a, Reg b) { return _mm256_unpackhi_epi32(a, b); }
inline Reg packus16(Reg lo, Reg hi) { return _mm256_packus_epi16(lo, hi); }
inline Reg packs16(Reg lo, Reg hi) { return _mm256_packs_epi16(lo, hi); }

// 16-bit lanes: every lane of a pixel takes that pixel's alpha lane.
inline Reg alpha16(Reg a) { return _mm256_shufflehi_epi16(_mm256_shufflelo_epi16(a, 0xFF), 0xFF); }

// Every byte of a pixel set to its alpha byte.
inline Reg alpha_bytes(Reg px) {
    const Reg by_pixel =
        _mm256_setr_epi8(3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15,  //
                         3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15);
    return _mm256_shuffle_epi8(px, by_pixel);
}

// mask ? a : b, byte by byte; mask bytes are 0 or 0xFF.
inline Reg select(Reg mask, Reg a, Reg b) { return _mm256_blendv_epi8(b, a, mask); }

// One bit per byte, from the top bit of each.
inline uint32_t bits8(Reg a) { return uint32_t(_mm256_movemask_epi8(a)); }
inline constexpr uint32_t kEveryByte = 0xFFFFFFFFu;

// A register whose pixel k has all four bytes equal to bytes[k].
inline Reg spread_bytes(const uint8_t *bytes) {
    const Reg b =
        _mm256_broadcastq_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(bytes)));
    const Reg by_pixel = _mm256_setr_epi8(0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3,  //
                                          4, 4, 4, 4, 5, 5, 5, 5, 6, 6, 6, 6, 7, 7, 7, 7);
    return _mm256_shuffle_epi8(b, by_pixel);
}

// kWidth coverage bytes as one integer, to test a group at once.
using Bytes = uint64_t;

inline Reg madd16(Reg a, Reg b) { return _mm256_madd_epi16(a, b); }
inline void store_aligned(void *p, Reg v) { _mm256_store_si256(static_cast<Reg *>(p), v); }

// 16-bit values from lanes holding them shifted left by 5 (shifted565
// below): a's pixels, then b's.
inline Reg narrow_565(Reg a, Reg b) {
    return _mm256_permute4x64_epi64(_mm256_packus_epi32(shr32<5>(a), shr32<5>(b)), 0xD8);
}

// The first kWidth 16-bit values of a register.
inline void store_half(void *p, Reg v) {
    _mm_storeu_si128(static_cast<__m128i *>(p), _mm256_castsi256_si128(v));
}

// 16-bit values a[k] and b[k] paired into 32-bit lanes (a low, b high):
// the first kWidth pairs into `first`, the rest into `second`.
inline void interleave16(Reg a, Reg b, Reg &first, Reg &second) {
    const Reg lo = _mm256_unpacklo_epi16(a, b), hi = _mm256_unpackhi_epi16(a, b);
    first = _mm256_permute2x128_si256(lo, hi, 0x20);
    second = _mm256_permute2x128_si256(lo, hi, 0x31);
}

// rows[k] lane m becomes rows[m] lane k.
inline void transpose(Reg (&r)[kWidth]) {
    const Reg a0 = _mm256_unpacklo_epi32(r[0], r[1]), a1 = _mm256_unpackhi_epi32(r[0], r[1]);
    const Reg a2 = _mm256_unpacklo_epi32(r[2], r[3]), a3 = _mm256_unpackhi_epi32(r[2], r[3]);
    const Reg a4 = _mm256_unpacklo_epi32(r[4], r[5]), a5 = _mm256_unpackhi_epi32(r[4], r[5]);
    const Reg a6 = _mm256_unpacklo_epi32(r[6], r[7]), a7 = _mm256_unpackhi_epi32(r[6], r[7]);
    const Reg b0 = _mm256_unpacklo_epi64(a0, a2), b1 = _mm256_unpackhi_epi64(a0, a2);
    const Reg b2 = _mm256_unpacklo_epi64(a1, a3), b3 = _mm256_unpackhi_epi64(a1, a3);
    const Reg b4 = _mm256_unpacklo_epi64(a4, a6), b5 = _mm256_unpackhi_epi64(a4, a6);
    const Reg b6 = _mm256_unpacklo_epi64(a5, a7), b7 = _mm256_unpackhi_epi64(a5, a7);
    r[0] = _mm256_permute2x128_si256(b0, b4, 0x20), r[4] = _mm256_permute2x128_si256(b0, b4, 0x31);
    r[1] = _mm256_permute2x128_si256(b1, b5, 0x20), r[5] = _mm256_permute2x128_si256(b1, b5, 0x31);
    r[2] = _mm256_permute2x128_si256(b2, b6, 0x20), r[6] = _mm256_permute2x128_si256(b2, b6, 0x31);
    r[3] = _mm256_permute2x128_si256(b3, b7, 0x20), r[7] = _mm256_permute2x128_si256(b3, b7, 0x31);
}

#else  // SSE2

using Reg = __m128i;
inline constexpr int kWidth = 4;

inline Reg load(const void *p) { return _mm_loadu_si128(static_cast<const Reg *>(p)); }
inline void store(void *p, Reg v) { _mm_storeu_si128(static_cast<Reg *>(p), v); }
inline Reg splat(uint32_t v) { return _mm_set1_epi32(int(v)); }
inline Reg splat16(uint16_t v) { return _mm_set1_epi16(short(v)); }
inline Reg splat64(uint64_t v) { return _mm_set1_epi64x(int64_t(v)); }
inline Reg zero() { return _mm_setzero_si128(); }

inline Reg add8(Reg a, Reg b) { return _mm_add_epi8(a, b); }
inline Reg adds8(Reg a, Reg b) { return _mm_adds_epu8(a, b); }
inline Reg min8(Reg a, Reg b) { return _mm_min_epu8(a, b); }
inline Reg max8(Reg a, Reg b) { return _mm_max_epu8(a, b); }
inline Reg eq8(Reg a, Reg b) { return _mm_cmpeq_epi8(a, b); }
inline Reg add16(Reg a, Reg b) { return _mm_add_epi16(a, b); }
inline Reg add32(Reg a, Reg b) { return _mm_add_epi32(a, b); }
inline Reg sub16(Reg a, Reg b) { return _mm_sub_epi16(a, b); }
inline Reg mullo16(Reg a, Reg b) { return _mm_mullo_epi16(a, b); }
inline Reg mulhi16(Reg a, Reg b) { return _mm_mulhi_epu16(a, b); }
inline Reg avg16(Reg a, Reg b) { return _mm_avg_epu16(a, b); }
inline Reg eq16(Reg a, Reg b) { return _mm_cmpeq_epi16(a, b); }
inline Reg eq32(Reg a, Reg b) { return _mm_cmpeq_epi32(a, b); }
template <int N>
Reg shr16(Reg a) {
    return _mm_srli_epi16(a, N);
}
template <int N>
Reg shl16(Reg a) {
    return _mm_slli_epi16(a, N);
}
template <int N>
Reg shr32(Reg a) {
    return _mm_srli_epi32(a, N);
}
template <int N>
Reg shl32(Reg a) {
    return _mm_slli_epi32(a, N);
}
template <int N>
Reg sar32(Reg a) {
    return _mm_srai_epi32(a, N);
}

inline Reg lo8(Reg a, Reg b) { return _mm_unpacklo_epi8(a, b); }
inline Reg hi8(Reg a, Reg b) { return _mm_unpackhi_epi8(a, b); }
inline Reg lo32(Reg a, Reg b) { return _mm_unpacklo_epi32(a, b); }
inline Reg hi32(Reg a, Reg b) { return _mm_unpackhi_epi32(a, b); }
inline Reg packus16(Reg lo, Reg hi) { return _mm_packus_epi16(lo, hi); }
inline Reg packs16(Reg lo, Reg hi) { return _mm_packs_epi16(lo, hi); }

inline Reg alpha16(Reg a) { return _mm_shufflehi_epi16(_mm_shufflelo_epi16(a, 0xFF), 0xFF); }

inline Reg alpha_bytes(Reg px) {
    const Reg a = shr32<24>(px), two = a | shl32<8>(a);
    return two | shl32<16>(two);
}

inline Reg select(Reg mask, Reg a, Reg b) { return (mask & a) | _mm_andnot_si128(mask, b); }

inline uint32_t bits8(Reg a) { return uint32_t(_mm_movemask_epi8(a)); }
inline constexpr uint32_t kEveryByte = 0xFFFFu;

inline Reg spread_bytes(const uint8_t *bytes) {
    uint32_t four;
    __builtin_memcpy(&four, bytes, sizeof four);
    const Reg b = _mm_cvtsi32_si128(int(four));
    const Reg pairs = _mm_unpacklo_epi8(b, b);
    return _mm_unpacklo_epi16(pairs, pairs);
}

using Bytes = uint32_t;

inline Reg madd16(Reg a, Reg b) { return _mm_madd_epi16(a, b); }
inline void store_aligned(void *p, Reg v) { _mm_store_si128(static_cast<Reg *>(p), v); }

// SSE2 packs 32-bit lanes only with signed saturation: the values move to
// the top half and back with their sign.
inline Reg narrow_565(Reg a, Reg b) {
    return _mm_packs_epi32(sar32<16>(shl32<11>(a)), sar32<16>(shl32<11>(b)));
}

inline void store_half(void *p, Reg v) { _mm_storel_epi64(static_cast<Reg *>(p), v); }

inline void interleave16(Reg a, Reg b, Reg &first, Reg &second) {
    first = _mm_unpacklo_epi16(a, b);
    second = _mm_unpackhi_epi16(a, b);
}

inline void transpose(Reg (&r)[kWidth]) {
    const Reg a0 = _mm_unpacklo_epi32(r[0], r[1]), a1 = _mm_unpackhi_epi32(r[0], r[1]);
    const Reg a2 = _mm_unpacklo_epi32(r[2], r[3]), a3 = _mm_unpackhi_epi32(r[2], r[3]);
    r[0] = _mm_unpacklo_epi64(a0, a2), r[1] = _mm_unpackhi_epi64(a0, a2);
    r[2] = _mm_unpacklo_epi64(a1, a3), r[3] = _mm_unpackhi_epi64(a1, a3);
}

#endif

inline Bytes load_bytes(const uint8_t *p) {
    Bytes v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
}

// Pixels of a register's low (lo) or high (hi) half in 16-bit lanes, or
// each channel c as c << 8, ready for mulhi16 to give (c x m) >> 8.
inline Reg lo16(Reg px) { return lo8(px, zero()); }
inline Reg hi16(Reg px) { return hi8(px, zero()); }
inline Reg lo16_high(Reg px) { return lo8(zero(), px); }
inline Reg hi16_high(Reg px) { return hi8(zero(), px); }

// 16-bit lanes of the low or high half with each pixel's four lanes set to
// that pixel's 32-bit lane of v (a value below 2^16).
inline Reg lo16_spread(Reg v) {
    const Reg pair = v | shl32<16>(v);
    return lo32(pair, pair);
}
inline Reg hi16_spread(Reg v) {
    const Reg pair = v | shl32<16>(v);
    return hi32(pair, pair);
}

// One value per channel in 16-bit lanes: blue, green, red, alpha.
inline Reg lanes16(uint32_t b, uint32_t g, uint32_t r, uint32_t a) {
    return splat64(uint64_t(b) | uint64_t(g) << 16 | uint64_t(r) << 32 | uint64_t(a) << 48);
}

// (x + y) >> 8 for 16-bit x and y whose sum may need 17 bits: the average
// rounded down, shifted by 7.
inline Reg sum_shr8(Reg x, Reg y) { return shr16<7>(sub16(avg16(x, y), (x ^ y) & splat16(1))); }

// Two halves of 16-bit lanes back into one register of pixels, each value
// truncated to its low byte.
inline Reg truncate_pack(Reg lo, Reg hi) {
    const Reg low_byte = splat16(0x00FF);
    return packus16(lo & low_byte, hi & low_byte);
}

// RGB565 from the top bits of each byte, shifted left by 5: red and blue
// move in one multiply-add, green is in place already.
inline Reg shifted565(Reg x) {
    return madd16(x & splat(0x00F800F8), splat(0x20000004)) | (x & splat(0x0000FC00));
}

// The RGB565 words of a's pixels, then b's.
inline Reg pack_565(Reg a, Reg b) { return narrow_565(shifted565(a), shifted565(b)); }

// The number of pixels of `count` that fill whole registers.
inline int32_t whole(int32_t count) { return count > 0 ? count & -kWidth : 0; }

}  // namespace fbc::px::FBC_X86_ISA

// The span primitives on x86 vector registers, written once over
// lanes_x86.hpp and built by spans_sse2.cpp and spans_avx2.cpp. A kernel
// runs the count's whole registers and hands the last few pixels to the
// reference by its exported name.
//
// A group the equation leaves alone (source alpha 0, coverage 0) is skipped
// without touching the destination: the empty parts of icons and glyph masks.
// Any other group takes the vector path, and selects per pixel where the
// equation keeps or stores a pixel whole. A second branch, storing groups
// that are all opaque or fully covered, was measured: at the edges of icon
// and glyph runs it mispredicts so often that it costs more than it saves
// (and the blend of an opaque pixel gives the source word by itself). The
// fills and the modulated blends change a pixel even at alpha 0, so they
// skip nothing.
//
// Products are taken in 16-bit lanes: (c x m) >> 8 as mulhi16(c << 8, m),
// and sums that may need 17 bits through sum_shr8.
#pragma once

#include <type_traits>

#include "fbcompose/pixel.h"
#include "pixel/lanes_x86.hpp"
#include "pixel/variants.hpp"

namespace fbc::px::FBC_X86_ISA {
namespace {

constexpr uint32_t kAlpha = 0xFF000000u, kRgb = 0x00FFFFFFu;

// 16-bit lanes: the colour lanes.
inline Reg rgb_lanes() { return lanes16(0xFFFF, 0xFFFF, 0xFFFF, 0); }

// ((d x inv) >> 8) per byte, inv in 16-bit lanes for each half.
inline Reg fade(Reg d, Reg inv_lo, Reg inv_hi) {
    return packus16(mulhi16(lo16_high(d), inv_lo), mulhi16(hi16_high(d), inv_hi));
}

// 255 - a, for a below 256.
inline Reg inverse(Reg a) { return a ^ splat16(0xFF); }

// The kernels compute every byte as for an rgba destination; rgb runs then
// take back their alpha byte. (A weight of 256 in the alpha lane would keep
// it too, but lengthens the chain from alpha to product.)
template <bool KeepAlpha>
inline Reg alpha_kept(Reg d, Reg out) {
    return KeepAlpha ? select(splat(kAlpha), d, out) : out;
}

// ((x + d x inv) >> 8) + add, one half in 16-bit lanes: x is the source's
// part (alpha lane 0), add holds what the alpha lane gains. `Wide`: the sum
// may need 17 bits.
template <bool Wide>
inline Reg mix(Reg x, Reg d16, Reg inv, Reg add) {
    const Reg y = mullo16(d16, inv);
    return add16(Wide ? sum_shr8(x, y) : shr16<8>(add16(x, y)), add);
}

// No colour byte above its pixel's alpha, in every pixel of the group: then
// the sums of the coverage and modulated blends stay below 2^16 and every
// result within its byte.
inline bool premultiplied(Reg px) {
    const Reg a = alpha_bytes(px);
    return bits8(eq8(max8(px, a), a)) == kEveryByte;
}

// Two halves of results back into pixels: packed as they are where they fit
// their bytes, else truncated.
template <bool Wide>
inline Reg pack(Reg lo, Reg hi) {
    return Wide ? truncate_pack(lo, hi) : packus16(lo, hi);
}

// Fill: every byte d = ((d x inv) >> 8) + c; with a weight of 256 and the
// colour's alpha byte dropped, the alpha byte of rgb runs stays.
template <bool KeepAlpha>
void blend_color(uint32_t color, void *dst, int32_t count) {
    auto *d = static_cast<uint32_t *>(dst);
    const uint32_t inv = 255 - (color >> 24);
    const Reg inv16 = lanes16(inv, inv, inv, KeepAlpha ? 256 : inv);
    const Reg c = splat(KeepAlpha ? color & kRgb : color);
    const int32_t n = whole(count);
    for (int32_t i = 0; i < n; i += kWidth) store(d + i, add8(fade(load(d + i), inv16, inv16), c));
    if (n < count)
        (KeepAlpha ? xc_blend_color_rgba_to_rgb : xc_blend_color_rgba_to_rgba)(color, d + n,
                                                                               count - n);
}

// Aligned stores, four to a turn: a store across two cache lines costs two.
void store_color(uint32_t color, uint32_t *d, int32_t count) {
    int32_t i = 0;
    for (; i < count && reinterpret_cast<uintptr_t>(d + i) % sizeof(Reg) != 0; ++i) d[i] = color;
    const Reg c = splat(color);
    for (; count - i >= 4 * kWidth; i += 4 * kWidth) {
        store_aligned(d + i, c), store_aligned(d + i + kWidth, c);
        store_aligned(d + i + 2 * kWidth, c), store_aligned(d + i + 3 * kWidth, c);
    }
    for (; count - i >= kWidth; i += kWidth) store_aligned(d + i, c);
    for (; i < count; ++i) d[i] = color;
}

// Source over for a group with pixels to blend: those of alpha 0
// (`transparent`) keep the destination; with a = 255 (`opaque`) the blend
// gives the source word, whose alpha byte rgb runs take too.
template <bool KeepAlpha>
inline Reg over(Reg s, Reg d, Reg transparent, Reg opaque) {
    const Reg out = add8(fade(d, inverse(alpha16(lo16(s))), inverse(alpha16(hi16(s)))), s);
    return select(KeepAlpha ? transparent | (splat(kAlpha) & ~opaque) : transparent, d, out);
}

template <bool KeepAlpha>
void blend_pixels(const void *src, void *dst, int32_t count) {
    const auto *s = static_cast<const uint32_t *>(src);
    auto *d = static_cast<uint32_t *>(dst);
    const Reg alpha = splat(kAlpha);
    const int32_t n = whole(count);
    for (int32_t i = 0; i < n; i += kWidth) {
        const Reg x = load(s + i), a = x & alpha;
        const Reg transparent = eq32(a, zero()), opaque = eq32(a, alpha);
        if (bits8(transparent) == kEveryByte) continue;
        store(d + i, over<KeepAlpha>(x, load(d + i), transparent, opaque));
    }
    if (n < count)
        (KeepAlpha ? xc_blend_pixels_rgba_to_rgb : xc_blend_pixels_rgba_to_rgba)(s + n, d + n,
                                                                                 count - n, 0);
}

// Modulated blend: a = (s.alpha x ca) >> 8 (ca for rgb sources); the
// source's part is s.c x ca for white and (s.c x colour.c x ca) >> 8
// otherwise.

// rgb sources: a = ca for every pixel, and the sum with d.c x inv stays
// below 255 x 255.
template <bool KeepAlpha, bool White>
void modulate_opaque_run(const uint32_t *s, uint32_t *d, int32_t n, uint32_t color) {
    const uint32_t ca = color >> 24;
    const auto tint = [&](unsigned shift) { return White ? ca : ((color >> shift) & 0xFF) * ca; };
    const Reg weight = lanes16(tint(0), tint(8), tint(16), 0);
    const Reg inv = lanes16(255 - ca, 255 - ca, 255 - ca, KeepAlpha ? 256 : 255 - ca);
    const Reg add = lanes16(0, 0, 0, KeepAlpha ? 0 : ca);
    const auto half = [&](Reg s16, Reg s16_high, Reg d16) {
        return mix<false>(White ? mullo16(s16, weight) : mulhi16(s16_high, weight), d16, inv, add);
    };
    for (int32_t i = 0; i < n; i += kWidth) {
        const Reg x = load(s + i), y = load(d + i);
        store(d + i,
              packus16(half(lo16(x), lo16_high(x), lo16(y)), half(hi16(x), hi16_high(x), hi16(y))));
    }
}

// Sources with alpha, two channels to each pixel's 32-bit lane and no
// unpacking: blue and red in its low bytes of two 16-bit lanes ("even"),
// green and alpha in the high bytes ("odd"). `Wide`: a source that is not
// premultiplied can make the sums need 17 bits.
template <bool KeepAlpha, bool White, bool Wide>
inline Reg modulate_pixels(Reg x, Reg y, Reg ca16, Reg weight_even, Reg weight_odd) {
    const Reg low = splat16(0x00FF);
    // a in the low 16 bits of each pixel, inv = 255 - a in both of its lanes.
    const Reg a = shr32<8>(mullo16(shr32<24>(x), ca16));
    const Reg inv = (a | shl32<16>(a)) ^ splat(0x00FF00FF);
    Reg even = White ? mullo16(x & low, ca16) : mulhi16(shl16<8>(x), weight_even);
    Reg odd = White ? mullo16(shr16<8>(x), ca16) : mulhi16(x & ~low, weight_odd);
    // rgba runs: the alpha lane is the destination's part plus a, added below;
    // rgb runs take the destination's alpha byte back, whatever the lane holds.
    if (!KeepAlpha) odd = odd & splat(0x0000FFFF);
    const Reg y_even = mullo16(y & low, inv), y_odd = mullo16(shr16<8>(y), inv);
    const Reg out = Wide ? (sum_shr8(even, y_even) & low) | shl16<8>(sum_shr8(odd, y_odd))
                         : shr16<8>(add16(even, y_even)) | (add16(odd, y_odd) & ~low);
    return KeepAlpha ? select(splat(kAlpha), y, out) : add32(out, shl32<24>(a));
}

template <bool KeepAlpha, bool White>
void modulate_alpha_run(const uint32_t *s, uint32_t *d, int32_t n, uint32_t color) {
    const uint32_t ca = color >> 24;
    const auto tint = [&](unsigned shift) { return ((color >> shift) & 0xFF) * ca; };
    const Reg ca16 = splat16(uint16_t(ca));
    const Reg weight_even = splat(tint(16) << 16 | tint(0)), weight_odd = splat(ca << 16 | tint(8));
    for (int32_t i = 0; i < n; i += kWidth) {
        const Reg x = load(s + i), y = load(d + i);
        store(d + i,
              premultiplied(x)
                  ? modulate_pixels<KeepAlpha, White, false>(x, y, ca16, weight_even, weight_odd)
                  : modulate_pixels<KeepAlpha, White, true>(x, y, ca16, weight_even, weight_odd));
    }
}

template <bool SrcAlpha, bool KeepAlpha, bool White>
void modulate_run(const uint32_t *s, uint32_t *d, int32_t n, uint32_t color) {
    if (SrcAlpha) modulate_alpha_run<KeepAlpha, White>(s, d, n, color);
    else modulate_opaque_run<KeepAlpha, White>(s, d, n, color);
}

template <bool SrcAlpha, bool KeepAlpha>
void modulate(const void *src, void *dst, int32_t count, uint32_t color) {
    const auto *s = static_cast<const uint32_t *>(src);
    auto *d = static_cast<uint32_t *>(dst);
    const int32_t n = whole(count);
    if ((color & kRgb) == kRgb) modulate_run<SrcAlpha, KeepAlpha, true>(s, d, n, color);
    else modulate_run<SrcAlpha, KeepAlpha, false>(s, d, n, color);
    if (n >= count) return;
    constexpr xc_draw_func kReference[2][2] = {
        {xc_blend_pixels_mul_color_rgb_to_rgba, xc_blend_pixels_mul_color_rgb_to_rgb},
        {xc_blend_pixels_mul_color_rgba_to_rgba, xc_blend_pixels_mul_color_rgba_to_rgb}};
    kReference[SrcAlpha][KeepAlpha](s + n, d + n, count - n, color);
}

template <bool Premultiplied>
inline Reg cover_color_half(Reg cov16, Reg cov16_high, Reg d16, Reg scale, Reg color16) {
    const Reg a = mulhi16(cov16_high, scale);
    return mix<!Premultiplied>(mullo16(cov16, color16), d16, inverse(a), a & ~rgb_lanes());
}

template <bool KeepAlpha, bool Premultiplied>
void cover_color_run(const uint8_t *cov, uint32_t *d, int32_t n, uint32_t color) {
    const uint32_t ca = color >> 24, scale = ca + (ca >> 7);
    // a = (cov x scale) >> 8 is 0 exactly when cov <= 255 / scale, and 255
    // only for coverage 255 of an opaque colour (scale 256).
    const Reg untouched_up_to = splat(0x01010101u * (255 / scale));
    const Reg full = scale == 256 ? splat(~0u) : zero();
    const Reg scale16 = splat16(uint16_t(scale));
    const Reg color16 = lanes16(color & 0xFF, (color >> 8) & 0xFF, (color >> 16) & 0xFF, 0);
    const Reg c = splat(color);
    for (int32_t i = 0; i < n; i += kWidth) {
        if (load_bytes(cov + i) == 0) continue;
        const Reg k = spread_bytes(cov + i), y = load(d + i);
        const Reg untouched = eq8(min8(k, untouched_up_to), k);
        const Reg lo =
            cover_color_half<Premultiplied>(lo16(k), lo16_high(k), lo16(y), scale16, color16);
        const Reg hi =
            cover_color_half<Premultiplied>(hi16(k), hi16_high(k), hi16(y), scale16, color16);
        const Reg mixed = alpha_kept<KeepAlpha>(y, pack<!Premultiplied>(lo, hi));
        store(d + i, select(untouched, y, select(eq8(k, splat(~0u)) & full, c, mixed)));
    }
}

template <bool KeepAlpha>
void cover_color(const uint8_t *cov, void *dst, int32_t count, uint32_t color) {
    auto *d = static_cast<uint32_t *>(dst);
    const uint32_t ca = color >> 24;
    if (ca == 0) return;
    const int32_t n = whole(count);
    const bool premultiplied =
        (color & 0xFF) <= ca && ((color >> 8) & 0xFF) <= ca && ((color >> 16) & 0xFF) <= ca;
    if (premultiplied) cover_color_run<KeepAlpha, true>(cov, d, n, color);
    else cover_color_run<KeepAlpha, false>(cov, d, n, color);
    if (n < count)
        (KeepAlpha ? xc_blend_alpha_color_rgba_to_rgb : xc_blend_alpha_color_rgba_to_rgba)(
            cov + n, d + n, count - n, color);
}

// Coverage with a texture, one half; `a` holds each pixel's alpha in all its lanes.
template <bool Wide>
inline Reg cover_texture_half(Reg cov16, Reg t16, Reg d16, Reg a) {
    return mix<Wide>(mullo16(cov16, t16) & rgb_lanes(), d16, inverse(a), a & ~rgb_lanes());
}

template <bool KeepAlpha>
void cover_texture(const uint8_t *cov, void *dst, int32_t count, const uint32_t *tex) {
    auto *d = static_cast<uint32_t *>(dst);
    const int32_t n = whole(count);
    for (int32_t i = 0; i < n; i += kWidth) {
        if (load_bytes(cov + i) == 0) continue;
        const Reg k = spread_bytes(cov + i), t = load(tex + i);
        // a = (cov x (ta + (ta >> 7))) >> 8, one per 32-bit lane
        const Reg a = shr32<8>(madd16(k & splat(0xFF), add32(shr32<24>(t), shr32<31>(t))));
        const Reg untouched = eq32(a, zero()), full = eq32(a, splat(255));
        const Reg y = load(d + i);
        const Reg a_lo = lo16_spread(a), a_hi = hi16_spread(a);
        const Reg mixed =
            premultiplied(t)
                ? pack<false>(cover_texture_half<false>(lo16(k), lo16(t), lo16(y), a_lo),
                              cover_texture_half<false>(hi16(k), hi16(t), hi16(y), a_hi))
                : pack<true>(cover_texture_half<true>(lo16(k), lo16(t), lo16(y), a_lo),
                             cover_texture_half<true>(hi16(k), hi16(t), hi16(y), a_hi));
        store(d + i, select(untouched, y, select(full, t, alpha_kept<KeepAlpha>(y, mixed))));
    }
    if (n < count)
        (KeepAlpha ? xc_blend_alpha_texture_rgba_to_rgb : xc_blend_alpha_texture_rgba_to_rgba)(
            cov + n, d + n, count - n, tex + n);
}

// A plain copy stored as the fills store: aligned, four registers a turn.
// The C library's copy does the same, but its set-up, paid anew for every
// row of a blit, makes it a few percent slower on 800-pixel rows.
template <class T>
void copy_run(const T *s, T *d, int32_t count) {
    int32_t i = 0;
    for (; i < count && reinterpret_cast<uintptr_t>(d + i) % sizeof(Reg) != 0; ++i) d[i] = s[i];
    constexpr int32_t kStep = sizeof(Reg) / sizeof(T);
    for (; count - i >= 4 * kStep; i += 4 * kStep) {
        const Reg a = load(s + i), b = load(s + i + kStep);
        const Reg c = load(s + i + 2 * kStep), e = load(s + i + 3 * kStep);
        store_aligned(d + i, a), store_aligned(d + i + kStep, b);
        store_aligned(d + i + 2 * kStep, c), store_aligned(d + i + 3 * kStep, e);
    }
    for (; count - i >= kStep; i += kStep) store_aligned(d + i, load(s + i));
    for (; i < count; ++i) d[i] = s[i];
}

// Opaque copies that change the pixels on the way.
void copy_rgb_to_rgba(const uint32_t *s, uint32_t *d, int32_t count) {
    const Reg alpha = splat(kAlpha);
    const int32_t n = whole(count);
    for (int32_t i = 0; i < n; i += kWidth) store(d + i, load(s + i) | alpha);
    if (n < count) xc_copy_pixels_rgb_to_rgba(s + n, d + n, count - n, 0);
}

void copy_rgba_to_16(const uint32_t *s, uint16_t *d, int32_t count) {
    const int32_t n = count > 0 ? count & -(2 * kWidth) : 0;
    for (int32_t i = 0; i < n; i += 2 * kWidth)
        store(d + i, pack_565(load(s + i), load(s + i + kWidth)));
    if (n < count) xc_copy_pixels_rgba_to_16(s + n, d + n, count - n, 0);
}

// Each word's green and blue in place in 16 bits, its red as the high 16
// bits of the pixel: then one interleave makes the pixels.
void copy_16_to_rgb(const uint16_t *s, uint32_t *d, int32_t count) {
    const int32_t n = count > 0 ? count & -(2 * kWidth) : 0;
    for (int32_t i = 0; i < n; i += 2 * kWidth) {
        const Reg v = load(s + i);
        const Reg low = shl16<5>(v & splat16(0x07E0)) | shl16<3>(v & splat16(0x001F));
        Reg first, second;
        interleave16(low, shr16<8>(v) & splat16(0x00F8), first, second);
        store(d + i, first), store(d + i + kWidth, second);
    }
    if (n < count) xc_copy_pixels_16_to_rgb(s + n, d + n, count - n, 0);
}

}  // namespace

void blend_color_rgba_to_rgb(uint32_t color, void *dst, int32_t count) {
    blend_color<true>(color, dst, count);
}
void blend_color_rgba_to_rgba(uint32_t color, void *dst, int32_t count) {
    blend_color<false>(color, dst, count);
}
void copy_color_rgba_to_rgba(uint32_t color, void *dst, int32_t count) {
    store_color(color, static_cast<uint32_t *>(dst), count);
}
void copy_color_rgb_to_rgba(uint32_t color, void *dst, int32_t count) {
    store_color(color | kAlpha, static_cast<uint32_t *>(dst), count);
}

void blend_pixels_rgba_to_rgb(const void *src, void *dst, int32_t count, uint32_t) {
    blend_pixels<true>(src, dst, count);
}
void blend_pixels_rgba_to_rgba(const void *src, void *dst, int32_t count, uint32_t) {
    blend_pixels<false>(src, dst, count);
}
void copy_pixels_rgb_to_rgba(const void *src, void *dst, int32_t count, uint32_t) {
    copy_rgb_to_rgba(static_cast<const uint32_t *>(src), static_cast<uint32_t *>(dst), count);
}
void copy_pixels_16_to_16(const void *src, void *dst, int32_t count, uint32_t) {
    copy_run(static_cast<const uint16_t *>(src), static_cast<uint16_t *>(dst), count);
}
void copy_pixels_rgba_to_16(const void *src, void *dst, int32_t count, uint32_t) {
    copy_rgba_to_16(static_cast<const uint32_t *>(src), static_cast<uint16_t *>(dst), count);
}
void copy_pixels_16_to_rgb(const void *src, void *dst, int32_t count, uint32_t) {
    copy_16_to_rgb(static_cast<const uint16_t *>(src), static_cast<uint32_t *>(dst), count);
}

void blend_pixels_mul_color_rgba_to_rgb(const void *src, void *dst, int32_t count, uint32_t color) {
    modulate<true, true>(src, dst, count, color);
}
void blend_pixels_mul_color_rgba_to_rgba(const void *src, void *dst, int32_t count,
                                         uint32_t color) {
    modulate<true, false>(src, dst, count, color);
}
void blend_pixels_mul_color_rgb_to_rgb(const void *src, void *dst, int32_t count, uint32_t color) {
    modulate<false, true>(src, dst, count, color);
}
void blend_pixels_mul_color_rgb_to_rgba(const void *src, void *dst, int32_t count, uint32_t color) {
    modulate<false, false>(src, dst, count, color);
}

void blend_alpha_color_rgba_to_rgb(const uint8_t *cov, void *dst, int32_t count, uint32_t color) {
    cover_color<true>(cov, dst, count, color);
}
void blend_alpha_color_rgba_to_rgba(const uint8_t *cov, void *dst, int32_t count, uint32_t color) {
    cover_color<false>(cov, dst, count, color);
}
void blend_alpha_texture_rgba_to_rgb(const uint8_t *cov, void *dst, int32_t count,
                                     const uint32_t *tex) {
    cover_texture<true>(cov, dst, count, tex);
}
void blend_alpha_texture_rgba_to_rgba(const uint8_t *cov, void *dst, int32_t count,
                                      const uint32_t *tex) {
    cover_texture<false>(cov, dst, count, tex);
}

}  // namespace fbc::px::FBC_X86_ISA

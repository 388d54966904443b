// Coverage primitives in plain C++: four coverage bytes come in one word
// load, aligned; a word of zeros skips four pixels without touching the
// destination, and full coverage of an opaque colour stores it four times.
// Blending takes two channels per multiply-accumulate:
//   lanes(d) x inv + lanes(colour) x cov, >> 8,
// exact while the colour is premultiplied (no lane sum reaches 2^16); the
// alpha lane is (d.alpha x inv) + a x 256, which is the reference's
// ((d.alpha x inv) >> 8) + a after the shift. A colour that is not
// premultiplied goes to the reference, as does such a texture pixel.
#include "pixel/swar.hpp"
#include "pixel/variants.hpp"

namespace fbc::px::swar {
namespace {

// The colour's weight: ca + (ca >> 7), so that 255 becomes 256.
constexpr uint32_t coverage_scale(uint32_t color) {
    const uint32_t ca = alpha_of(color);
    return ca + (ca >> 7);
}

// (colour.c x cov + d.c x inv) >> 8 for blue, green and red; the alpha byte
// kept in rgb runs, ((d.alpha x inv) >> 8) + a in rgba runs.
template <bool KeepAlpha>
inline uint32_t covered(uint32_t d, uint32_t color, uint32_t cov, uint32_t a) {
    const uint32_t m = lanes_mask(), inv = 255 - a;
    const uint32_t br = (((d & m) * inv + (color & m) * cov) >> 8) & m;
    const uint32_t green = ((color >> 8) & 0xFFu) * cov;
    if constexpr (KeepAlpha)
        return br | ((((d >> 8) & 0xFFu) * inv + green) & 0xFF00u) | (d & kAlphaMask);
    else return br | ((((d >> 8) & m) * inv + green + (a << 24)) & ~m);
}

// One pixel of a colour known to be premultiplied: a = 0 leaves the
// destination unread; a = 255 (an opaque colour at full coverage) stores it.
template <bool KeepAlpha, bool Opaque>
inline void cover_pixel(uint32_t *d, uint32_t cov, uint32_t scale, uint32_t color) {
    const uint32_t a = Opaque ? cov : (cov * scale) >> 8;
    if (a == 0) return;
    if (Opaque && a == 255) {
        *d = color;
        return;
    }
    *d = covered<KeepAlpha>(*d, color, cov, a);
}

template <bool KeepAlpha, bool Opaque>
void cover_color(const uint8_t *cov, uint32_t *d, int32_t count, uint32_t color) {
    const uint32_t scale = coverage_scale(color);
    const Groups g = aligned_groups(cov, count);
    for (int32_t i = 0; i < g.head; ++i) cover_pixel<KeepAlpha, Opaque>(d++, *cov++, scale, color);
    for (int32_t n = g.groups; n > 0; --n, cov += 4, d += 4) {
        const uint32_t w = load_word(cov);
        if (w == 0) continue;
        if (Opaque && w == ~0u) {
            d[0] = color, d[1] = color, d[2] = color, d[3] = color;
            continue;
        }
        cover_pixel<KeepAlpha, Opaque>(d, w & 0xFFu, scale, color);
        cover_pixel<KeepAlpha, Opaque>(d + 1, (w >> 8) & 0xFFu, scale, color);
        cover_pixel<KeepAlpha, Opaque>(d + 2, (w >> 16) & 0xFFu, scale, color);
        cover_pixel<KeepAlpha, Opaque>(d + 3, w >> 24, scale, color);
    }
    for (int32_t i = 0; i < g.tail; ++i) cover_pixel<KeepAlpha, Opaque>(d++, *cov++, scale, color);
}

template <bool KeepAlpha>
void cover_color(const uint8_t *cov, void *dst, int32_t count, uint32_t color) {
    auto *d = static_cast<uint32_t *>(dst);
    if (alpha_of(color) == 255) return cover_color<KeepAlpha, true>(cov, d, count, color);
    if (alpha_of(color) == 0) return;  // a is 0 at every coverage
    cover_color<KeepAlpha, false>(cov, d, count, color);
}

// One texel: its own scale; a texel that is not premultiplied goes to the reference.
template <bool KeepAlpha>
inline void cover_texel(const uint8_t *cov, uint32_t *d, const uint32_t *tex) {
    const uint32_t t = *tex, a = (*cov * coverage_scale(t)) >> 8;
    if (a == 0) return;
    if (a == 255) *d = t;
    else if (low_lanes_fit(t)) *d = covered<KeepAlpha>(*d, t, *cov, a);
    else if (KeepAlpha) xc_blend_alpha_texture_rgba_to_rgb(cov, d, 1, tex);
    else xc_blend_alpha_texture_rgba_to_rgba(cov, d, 1, tex);
}

template <bool KeepAlpha>
void cover_texture(const uint8_t *cov, void *dst, int32_t count, const uint32_t *t) {
    auto *d = static_cast<uint32_t *>(dst);
    const Groups g = aligned_groups(cov, count);
    for (int32_t i = 0; i < g.head; ++i) cover_texel<KeepAlpha>(cov++, d++, t++);
    for (int32_t n = g.groups; n > 0; --n, cov += 4, d += 4, t += 4) {
        if (load_word(cov) == 0) continue;
        for (int k = 0; k < 4; ++k) cover_texel<KeepAlpha>(cov + k, d + k, t + k);
    }
    for (int32_t i = 0; i < g.tail; ++i) cover_texel<KeepAlpha>(cov++, d++, t++);
}

}  // namespace

void blend_alpha_color_rgba_to_rgb(const uint8_t *cov, void *dst, int32_t count, uint32_t color) {
    if (!premultiplied(color)) return xc_blend_alpha_color_rgba_to_rgb(cov, dst, count, color);
    cover_color<true>(cov, dst, count, color);
}

void blend_alpha_color_rgba_to_rgba(const uint8_t *cov, void *dst, int32_t count, uint32_t color) {
    if (!premultiplied(color)) return xc_blend_alpha_color_rgba_to_rgba(cov, dst, count, color);
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

}  // namespace fbc::px::swar

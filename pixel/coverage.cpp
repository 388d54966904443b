// Coverage primitives: a colour or a texture laid through 8-bit coverage.
#include "fbcompose/pixel.h"
#include "pixel/channel.hpp"

namespace fbc::px {
namespace {

// ca + (ca >> 7) maps 255 to 256, so full coverage of an opaque colour gives exactly 255.
constexpr uint32_t coverage_scale(uint32_t color) {
    const uint32_t ca = alpha_of(color);
    return ca + (ca >> 7);
}

// The colour's channels already carry its alpha, so they are weighted by
// coverage alone; the destination by inv, which comes from coverage x alpha.
// a = 0 and a = 255 are selects, not jumps: glyph edges mix them pixel by pixel.
template <bool KeepAlpha>
inline uint32_t cover(uint32_t d, uint32_t cov, uint32_t scale, uint32_t color) {
    const uint32_t a = (cov * scale) >> 8;
    const uint32_t inv = 255 - a;
    const uint32_t mixed = map_rgb(alpha_bits<KeepAlpha>(d, inv, a), [&](unsigned shift) {
        return (channel(color, shift) * cov + channel(d, shift) * inv) >> 8;
    });
    return a == 0 ? d : a == 255 ? color : mixed;
}

template <bool KeepAlpha>
void cover_color(const uint8_t *cov, uint32_t *dst, int32_t count, uint32_t color) {
    const uint32_t scale = coverage_scale(color);
    if (scale == 0) return;
    for (int32_t i = 0; i < count; ++i) dst[i] = cover<KeepAlpha>(dst[i], cov[i], scale, color);
}

template <bool KeepAlpha>
void cover_texture(const uint8_t *cov, uint32_t *dst, int32_t count, const uint32_t *tex) {
    for (int32_t i = 0; i < count; ++i)
        dst[i] = cover<KeepAlpha>(dst[i], cov[i], coverage_scale(tex[i]), tex[i]);
}

}  // namespace
}  // namespace fbc::px

extern "C" {

// a = (cov x (ca + (ca >> 7))) >> 8; 0: kept; 255: d = colour; else d.c = (colour.c x cov + d.c x
// (255 - a)) >> 8, d.alpha kept
void xc_blend_alpha_color_rgba_to_rgb(const uint8_t *cov, void *dst, int32_t count,
                                      uint32_t color) {
    fbc::px::cover_color<true>(cov, static_cast<uint32_t *>(dst), count, color);
}

// as the rgb member, and d.alpha = ((d.alpha x (255 - a)) >> 8) + a
void xc_blend_alpha_color_rgba_to_rgba(const uint8_t *cov, void *dst, int32_t count,
                                       uint32_t color) {
    fbc::px::cover_color<false>(cov, static_cast<uint32_t *>(dst), count, color);
}

// a = (cov x (ta + (ta >> 7))) >> 8; 0: kept; 255: d = t; else d.c = (t.c x cov + d.c x (255 - a))
// >> 8, d.alpha kept
void xc_blend_alpha_texture_rgba_to_rgb(const uint8_t *cov, void *dst, int32_t count,
                                        const uint32_t *tex) {
    fbc::px::cover_texture<true>(cov, static_cast<uint32_t *>(dst), count, tex);
}

// as the rgb member, and d.alpha = ((d.alpha x (255 - a)) >> 8) + a
void xc_blend_alpha_texture_rgba_to_rgba(const uint8_t *cov, void *dst, int32_t count,
                                         const uint32_t *tex) {
    fbc::px::cover_texture<false>(cov, static_cast<uint32_t *>(dst), count, tex);
}

}  // extern "C"

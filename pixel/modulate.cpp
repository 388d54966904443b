// Mul-draw primitives: a source run modulated by a colour, then blended.
// Every pixel is computed: a modulated alpha of 0 or 255 is no reason to skip.
#include "fbcompose/pixel.h"
#include "pixel/channel.hpp"

namespace fbc::px {
namespace {

// a = (s.alpha x ca) >> 8 for rgba sources, ca for rgb ones; `mix` gives a
// channel from (s.c, d.c, inv, shift).
template <bool SrcAlpha, bool KeepAlpha, class Mix>
void modulate_run(const uint32_t *src, uint32_t *dst, int32_t count, uint32_t ca, Mix mix) {
    for (int32_t i = 0; i < count; ++i) {
        const uint32_t s = src[i];
        const uint32_t d = dst[i];
        const uint32_t a = SrcAlpha ? (alpha_of(s) * ca) >> 8 : ca;
        const uint32_t inv = 255 - a;
        dst[i] = map_rgb(alpha_bits<KeepAlpha>(d, inv, a), [&](unsigned shift) {
            return mix(channel(s, shift), channel(d, shift), inv, shift);
        });
    }
}

template <bool SrcAlpha, bool KeepAlpha>
void modulate(const uint32_t *src, uint32_t *dst, int32_t count, uint32_t color) {
    const uint32_t ca = alpha_of(color);
    // White leaves the channels alone: the source is only scaled by ca.
    if ((color & kColourMask) == kColourMask) {
        modulate_run<SrcAlpha, KeepAlpha>(src, dst, count, ca,
                                          [ca](uint32_t s, uint32_t d, uint32_t inv, unsigned) {
                                              return (s * ca + d * inv) >> 8;
                                          });
        return;
    }
    modulate_run<SrcAlpha, KeepAlpha>(
        src, dst, count, ca, [ca, color](uint32_t s, uint32_t d, uint32_t inv, unsigned shift) {
            return (d * inv + ((s * channel(color, shift) * ca) >> 8)) >> 8;
        });
}

}  // namespace
}  // namespace fbc::px

extern "C" {

// a = (s.alpha x ca) >> 8, inv = 255 - a; d.c = white ? (s.c x ca + d.c x inv) >> 8 : (d.c x inv +
// ((s.c x colour.c x ca) >> 8)) >> 8; d.alpha kept
void xc_blend_pixels_mul_color_rgba_to_rgb(const void *src, void *dst, int32_t count,
                                           uint32_t color) {
    fbc::px::modulate<true, true>(static_cast<const uint32_t *>(src), static_cast<uint32_t *>(dst),
                                  count, color);
}

// a = (s.alpha x ca) >> 8, inv = 255 - a; d.c = white ? (s.c x ca + d.c x inv) >> 8 : (d.c x inv +
// ((s.c x colour.c x ca) >> 8)) >> 8; d.alpha = ((d.alpha x inv) >> 8) + a
void xc_blend_pixels_mul_color_rgba_to_rgba(const void *src, void *dst, int32_t count,
                                            uint32_t color) {
    fbc::px::modulate<true, false>(static_cast<const uint32_t *>(src), static_cast<uint32_t *>(dst),
                                   count, color);
}

// inv = 255 - ca; d.c = white ? (s.c x ca + d.c x inv) >> 8 : (d.c x inv + ((s.c x colour.c x ca)
// >> 8)) >> 8; d.alpha kept
void xc_blend_pixels_mul_color_rgb_to_rgb(const void *src, void *dst, int32_t count,
                                          uint32_t color) {
    fbc::px::modulate<false, true>(static_cast<const uint32_t *>(src), static_cast<uint32_t *>(dst),
                                   count, color);
}

// inv = 255 - ca; d.c = white ? (s.c x ca + d.c x inv) >> 8 : (d.c x inv + ((s.c x colour.c x ca)
// >> 8)) >> 8; d.alpha = ((d.alpha x inv) >> 8) + ca
void xc_blend_pixels_mul_color_rgb_to_rgba(const void *src, void *dst, int32_t count,
                                           uint32_t color) {
    fbc::px::modulate<false, false>(static_cast<const uint32_t *>(src),
                                    static_cast<uint32_t *>(dst), count, color);
}

}  // extern "C"

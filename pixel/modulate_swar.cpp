// Modulated blends in plain C++, two channels per multiply-accumulate:
//   lanes(d) x inv + s-term, >> 8,
// where the s-term is lanes(s) x ca for a white colour and, per channel,
// (s.c x colour.c x ca) >> 8 otherwise. The alpha lane is rebuilt as
// (d.alpha x inv) + a x 256, which is ((d.alpha x inv) >> 8) + a after the
// shift. No lane sum reaches 2^16 for rgb sources (a = ca), nor for rgba
// pixels whose blue and green are at most their alpha; other rgba pixels
// go to the reference one by one. Every pixel is computed: even at a = 0
// the shift changes the destination.
#include "pixel/swar.hpp"
#include "pixel/variants.hpp"

namespace fbc::px::swar {
namespace {

// The colour's alpha and, for a tint, each channel's colour.c x ca.
struct Tint {
    explicit Tint(uint32_t color)
        : ca(alpha_of(color)),
          blue(channel(color, 0) * ca),
          green(channel(color, 8) * ca),
          red(channel(color, 16) * ca) {}
    uint32_t ca, blue, green, red;
};

template <bool KeepAlpha, bool White>
inline uint32_t modulated(uint32_t s, uint32_t d, uint32_t a, const Tint &k) {
    const uint32_t m = lanes_mask(), inv = 255 - a;
    uint32_t br = (d & m) * inv, green;
    if constexpr (White) {
        br += (s & m) * k.ca;
        green = ((s >> 8) & 0xFFu) * k.ca;
    } else {
        br += (channel(s, 0) * k.blue) >> 8;
        br += ((channel(s, 16) * k.red) >> 8) << 16;
        green = (channel(s, 8) * k.green) >> 8;
    }
    br = (br >> 8) & m;
    if constexpr (KeepAlpha)
        return br | ((((d >> 8) & 0xFFu) * inv + green) & 0xFF00u) | (d & kAlphaMask);
    else return br | ((((d >> 8) & m) * inv + green + (a << 24)) & ~m);
}

// The reference takes the pixels the lanes cannot; the call stays outside
// the inner loop, whose registers it would otherwise clobber.
template <bool SrcAlpha, bool KeepAlpha, bool White>
void modulate_run(const uint32_t *s, uint32_t *d, int32_t count, uint32_t color) {
    const Tint k(color);
    for (int32_t i = 0; i < count; ++i) {
        for (; i < count; ++i) {
            const uint32_t a = SrcAlpha ? (alpha_of(s[i]) * k.ca) >> 8 : k.ca;
            if (SrcAlpha && !low_lanes_fit(s[i])) break;
            d[i] = modulated<KeepAlpha, White>(s[i], d[i], a, k);
        }
        if (i == count) break;
        if (KeepAlpha) xc_blend_pixels_mul_color_rgba_to_rgb(s + i, d + i, 1, color);
        else xc_blend_pixels_mul_color_rgba_to_rgba(s + i, d + i, 1, color);
    }
}

template <bool SrcAlpha, bool KeepAlpha>
void modulate(const void *src, void *dst, int32_t count, uint32_t color) {
    const auto *s = static_cast<const uint32_t *>(src);
    auto *d = static_cast<uint32_t *>(dst);
    if ((color & kColourMask) == kColourMask)
        modulate_run<SrcAlpha, KeepAlpha, true>(s, d, count, color);
    else modulate_run<SrcAlpha, KeepAlpha, false>(s, d, count, color);
}

}  // namespace

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

}  // namespace fbc::px::swar

// Translucent fills in plain C++. A premultiplied colour keeps every byte
// sum ((d x inv) >> 8) + c below 256, so the reference's per-lane masks
// after the sums have nothing to cut: the faded lanes are added to the
// colour word whole. Any other colour goes to the reference.
#include "pixel/swar.hpp"
#include "pixel/variants.hpp"

namespace fbc::px::swar {
namespace {

// ((d x inv) >> 8) + colour for every byte; rgb runs keep their alpha and
// are given the colour without its alpha byte.
template <bool KeepAlpha>
inline uint32_t faded_plus(uint32_t d, uint32_t inv, uint32_t color, uint32_t m) {
    const uint32_t br = (((d & m) * inv) >> 8) & m;
    if constexpr (KeepAlpha) {
        const uint32_t g = (((d >> 8) & 0xFFu) * inv) & 0xFF00u;
        return br + g + color + (d & kAlphaMask);
    } else {
        return br + ((((d >> 8) & m) * inv) & ~m) + color;
    }
}

template <bool KeepAlpha>
bool blend_color(uint32_t color, uint32_t *d, int32_t count) {
    if (!premultiplied(color)) return false;
    const uint32_t inv = 255 - alpha_of(color);
    const uint32_t add = KeepAlpha ? color & kColourMask : color, m = lanes_mask();
    const Groups g = aligned_groups(d, count);
    for (int32_t i = 0; i < g.head; ++i, ++d) *d = faded_plus<KeepAlpha>(*d, inv, add, m);
    for (int32_t n = g.groups; n > 0; --n, d += 4) {
        const uint32_t d0 = d[0], d1 = d[1], d2 = d[2], d3 = d[3];
        d[0] = faded_plus<KeepAlpha>(d0, inv, add, m);
        d[1] = faded_plus<KeepAlpha>(d1, inv, add, m);
        d[2] = faded_plus<KeepAlpha>(d2, inv, add, m);
        d[3] = faded_plus<KeepAlpha>(d3, inv, add, m);
    }
    for (int32_t i = 0; i < g.tail; ++i, ++d) *d = faded_plus<KeepAlpha>(*d, inv, add, m);
    return true;
}

}  // namespace

void blend_color_rgba_to_rgb(uint32_t color, void *dst, int32_t count) {
    if (!blend_color<true>(color, static_cast<uint32_t *>(dst), count))
        xc_blend_color_rgba_to_rgb(color, dst, count);
}

void blend_color_rgba_to_rgba(uint32_t color, void *dst, int32_t count) {
    if (!blend_color<false>(color, static_cast<uint32_t *>(dst), count))
        xc_blend_color_rgba_to_rgba(color, dst, count);
}

}  // namespace fbc::px::swar

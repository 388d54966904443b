// Source over in plain C++, in aligned groups of four source pixels: one OR
// of the four words finds a group with nothing to draw, one AND a group that
// is stored as it is, and mixed groups go pixel by pixel, writing only the
// pixels that change. Blending keeps the reference's two channels per
// 32-bit multiply (add_faded). The reference reads and writes every
// destination pixel; here the transparent runs of artwork and glyphs cost
// one load per source pixel and nothing else.
#include "pixel/swar.hpp"
#include "pixel/variants.hpp"

namespace fbc::px::swar {
namespace {

template <bool KeepAlpha>
void over_run(const uint32_t *s, uint32_t *d, int32_t count) {
    const Groups g = aligned_groups(s, count);
    const uint32_t m = lanes_mask();
    for (int32_t i = 0; i < g.head; ++i) over_changed<KeepAlpha>(*s++, d++, m);
    for (int32_t n = g.groups; n > 0; --n, s += 4, d += 4) {
        const uint32_t s0 = s[0], s1 = s[1], s2 = s[2], s3 = s[3];
        if (((s0 | s1 | s2 | s3) & kAlphaMask) == 0) continue;
        if ((s0 & s1 & s2 & s3) >= kAlphaMask) {
            d[0] = s0, d[1] = s1, d[2] = s2, d[3] = s3;
            continue;
        }
        over_changed<KeepAlpha>(s0, d, m);
        over_changed<KeepAlpha>(s1, d + 1, m);
        over_changed<KeepAlpha>(s2, d + 2, m);
        over_changed<KeepAlpha>(s3, d + 3, m);
    }
    for (int32_t i = 0; i < g.tail; ++i) over_changed<KeepAlpha>(*s++, d++, m);
}

}  // namespace

void blend_pixels_rgba_to_rgb(const void *src, void *dst, int32_t count, uint32_t) {
    over_run<true>(static_cast<const uint32_t *>(src), static_cast<uint32_t *>(dst), count);
}

void blend_pixels_rgba_to_rgba(const void *src, void *dst, int32_t count, uint32_t) {
    over_run<false>(static_cast<const uint32_t *>(src), static_cast<uint32_t *>(dst), count);
}

}  // namespace fbc::px::swar

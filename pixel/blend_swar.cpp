// Source over onto rgba runs in plain C++, four pixels at a time: one OR of
// the four source words finds a group with nothing to draw, one AND a group
// that is stored as it is, and mixed groups go pixel by pixel, writing only
// the pixels that change. Blending keeps the reference's two channels per
// 32-bit multiply (add_faded). The reference reads and writes every
// destination pixel; here the transparent runs of artwork and glyphs cost
// one load per source pixel and nothing else.
#include "pixel/channel.hpp"
#include "pixel/variants.hpp"

namespace fbc::px::swar {
namespace {

inline void over_changed(uint32_t s, uint32_t &d) {
    if (alpha_of(s) != 0) d = over<false>(s, d);
}

}  // namespace

void blend_pixels_rgba_to_rgba(const void *src, void *dst, int32_t count, uint32_t) {
    const auto *s = static_cast<const uint32_t *>(src);
    auto *d = static_cast<uint32_t *>(dst);
    int32_t i = 0;
    for (; count - i >= 4; i += 4) {
        const uint32_t s0 = s[i], s1 = s[i + 1], s2 = s[i + 2], s3 = s[i + 3];
        if (((s0 | s1 | s2 | s3) & kAlphaMask) == 0) continue;
        if ((s0 & s1 & s2 & s3) >= kAlphaMask) {
            d[i] = s0, d[i + 1] = s1, d[i + 2] = s2, d[i + 3] = s3;
            continue;
        }
        over_changed(s0, d[i]);
        over_changed(s1, d[i + 1]);
        over_changed(s2, d[i + 2]);
        over_changed(s3, d[i + 3]);
    }
    for (; i < count; ++i) over_changed(s[i], d[i]);
}

}  // namespace fbc::px::swar

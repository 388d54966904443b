// Fill primitives: one colour over a run of 32-bit pixels.
#include <algorithm>

#include "fbcompose/pixel.h"
#include "pixel/channel.hpp"

namespace fbc::px {
namespace {

// No a = 0 or a = 255 shortcut: with a = 255, inv is 0 and the colour lands as it is.
template <bool KeepAlpha>
void blend_color(uint32_t color, uint32_t *dst, int32_t count) {
    const uint32_t inv = 255 - alpha_of(color);
    for (int32_t i = 0; i < count; ++i)
        dst[i] = KeepAlpha ? add_faded_rgb(color, dst[i], inv) : add_faded(color, dst[i], inv);
}

void store_color(uint32_t color, uint32_t *dst, int32_t count) {
    if (count > 0) std::fill_n(dst, count, color);
}

}  // namespace
}  // namespace fbc::px

using fbc::px::kAlphaMask;

extern "C" {

// d.c = ((d.c x (255 - ca)) >> 8) + colour.c for blue, green, red; d.alpha kept
void xc_blend_color_rgba_to_rgb(uint32_t color, void *dst, int32_t count) {
    fbc::px::blend_color<true>(color, static_cast<uint32_t *>(dst), count);
}

// every byte: d = ((d x (255 - ca)) >> 8) + colour byte
void xc_blend_color_rgba_to_rgba(uint32_t color, void *dst, int32_t count) {
    fbc::px::blend_color<false>(color, static_cast<uint32_t *>(dst), count);
}

// d = colour
void xc_copy_color_rgba_to_rgba(uint32_t color, void *dst, int32_t count) {
    fbc::px::store_color(color, static_cast<uint32_t *>(dst), count);
}

// d = colour | 0xFF000000
void xc_copy_color_rgb_to_rgba(uint32_t color, void *dst, int32_t count) {
    fbc::px::store_color(color | kAlphaMask, static_cast<uint32_t *>(dst), count);
}

}  // extern "C"

// What the display converters share: the dither matrix and the walk of
// each rotation over the source.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pixel/bayer.hpp"

namespace fbc::px {

// Output pixel (i, j) reads origin[i x along + j x across]; the output is
// out_width x out_height.
struct Walk {
    const uint32_t *origin;
    ptrdiff_t along, across;
    int32_t out_width, out_height;
};

// Only for width and height of at least 1.
inline Walk walk(const void *src, int32_t src_skip, int32_t width, int32_t height, int rotation) {
    const auto *s = static_cast<const uint32_t *>(src);
    const ptrdiff_t stride = ptrdiff_t{width} + src_skip;
    switch (rotation) {
        // out(i, j) = src(j, height - 1 - i)
        case 90: return {s + (height - 1) * stride, -stride, 1, height, width};
        // out(i, j) = src(width - 1 - j, i)
        case 270: return {s + (width - 1), stride, -1, height, width};
        default: return {s, 1, stride, width, height};
    }
}

}  // namespace fbc::px

// Memory-safety guards for code that addresses an image's pixels by its
// width: a row of `width` pixels of the given size must fit the block.
#pragma once

#include <cstdint>

#include "fbcompose/image.h"

namespace fbc {

// True when the image has pixels and each of its rows holds `width` pixels
// of `bytes_per_pixel` bytes (a 16-bit or three-byte image does not hold
// 32-bit words).
inline bool rows_hold(const xc_image *image, int32_t bytes_per_pixel) {
    return image && image->data && image->width >= 0 && image->height >= 0 &&
           static_cast<int64_t>(image->rowstride) >=
               static_cast<int64_t>(image->width) * bytes_per_pixel;
}

// Bytes per pixel as xc_image_pointer steps them.
inline int32_t pointer_step(const xc_image *image) {
    return image->depth == 16 ? 2 : 4;
}

}  // namespace fbc

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

// True when the pixel block starts on a multiple of `bytes_per_pixel`: the
// device cannot load an unaligned word, and C++ may not either.
inline bool block_aligned(const xc_image *image, int32_t bytes_per_pixel) {
    return reinterpret_cast<uintptr_t>(image->data) % static_cast<uintptr_t>(bytes_per_pixel) == 0;
}

// rows_hold, and every pixel addressed through `rowstride` aligned: an odd
// row pitch would put every other row's pixels on odd addresses.
inline bool rows_addressable(const xc_image *image, int32_t bytes_per_pixel) {
    return rows_hold(image, bytes_per_pixel) && image->rowstride % bytes_per_pixel == 0 &&
           block_aligned(image, bytes_per_pixel);
}

// rows_hold for 32-bit words addressed with `width` words per row (not
// through rowstride), on an aligned block.
inline bool words_addressable(const xc_image *image) {
    return rows_hold(image, 4) && block_aligned(image, 4);
}

// Bytes per pixel as xc_image_pointer steps them.
inline int32_t pointer_step(const xc_image *image) { return image->depth == 16 ? 2 : 4; }

// Bytes of the pixel block: the constructors allocate (at least) rowstride
// x height.
inline int64_t block_bytes(const xc_image *image) {
    return image->data && image->rowstride > 0 && image->height > 0
               ? int64_t{image->rowstride} * image->height
               : 0;
}

}  // namespace fbc

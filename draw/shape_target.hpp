// What the shapes share: they address an image as rows of `width` 32-bit
// pixels, and never write outside those rows whatever the clip says.
#pragma once

#include <algorithm>
#include <cstdint>

#include "core/pixel_bounds.hpp"
#include "fbcompose/image.h"

namespace fbc {

// Pixel (x, y) of a shape's target: `width` pixels per row, 4 bytes each.
inline uint8_t *shape_pixel(const xc_image *image, int32_t x, int32_t y) {
    return image->data + (static_cast<intptr_t>(y) * image->width + x) * 4;
}

// The caller's clip should lie within the image; this keeps a clip that does
// not from reaching memory outside the pixels.
inline xg_area clip_to_image(const xc_image *image, const xg_area &clip) {
    return {std::max(clip.x1, 0), std::max(clip.y1, 0), std::min(clip.x2, image->width),
            std::min(clip.y2, image->height)};
}

inline bool inside(const xg_area &area, int64_t x, int64_t y) {
    return x >= area.x1 && x < area.x2 && y >= area.y1 && y < area.y2;
}

}  // namespace fbc

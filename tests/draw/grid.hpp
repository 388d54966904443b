// Small canvases and their pictures: '#' for a pixel that was written, '.'
// for one left at its initial zero.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fbcompose/image.h"

namespace test {

// A zeroed 32-bit image; with alpha (format 0) or a canvas (format 1).
inline xc_image *blank(int32_t w, int32_t h, bool alpha) {
    xc_image *image = alpha ? xc_image_new_from_data(w, h, nullptr, 32, 0, 0)
                            : xc_image_create(w, h);
    std::memset(image->data, 0, static_cast<size_t>(image->rowstride) * static_cast<size_t>(h));
    return image;
}

inline uint32_t pixel(const xc_image *image, int32_t x, int32_t y) {
    uint32_t v;
    std::memcpy(&v, image->data + y * image->rowstride + x * 4, 4);
    return v;
}

inline std::vector<std::string> picture(const xc_image *image) {
    std::vector<std::string> rows;
    for (int32_t y = 0; y < image->height; ++y) {
        std::string row;
        for (int32_t x = 0; x < image->width; ++x) row += pixel(image, x, y) ? '#' : '.';
        rows.push_back(row);
    }
    return rows;
}

}  // namespace test

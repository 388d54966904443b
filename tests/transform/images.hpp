// Canvases built from and read back into vectors of colour words.
#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
#include <vector>

#include "fbcompose/image.h"

namespace test {

using Words = std::vector<uint32_t>;

// An opaque canvas (format 1) holding `words` row by row.
inline xc_image *canvas(int32_t w, int32_t h, const Words &words) {
    xc_image *image = xc_image_create(w, h);
    std::memcpy(image->data, words.data(), words.size() * 4);
    return image;
}

inline xc_image *canvas(int32_t w, int32_t h, uint32_t fill) {
    return canvas(w, h, Words(static_cast<size_t>(w * h), fill));
}

// A canvas whose pixel (x, y) is f(x, y).
inline xc_image *painted(int32_t w, int32_t h, const std::function<uint32_t(int, int)> &f) {
    Words words;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) words.push_back(f(x, y));
    return canvas(w, h, words);
}

inline uint32_t at(const xc_image *image, int32_t x, int32_t y) {
    uint32_t v;
    std::memcpy(&v, image->data + y * image->rowstride + x * 4, 4);
    return v;
}

inline Words row(const xc_image *image, int32_t y) {
    Words out;
    for (int32_t x = 0; x < image->width; ++x) out.push_back(at(image, x, y));
    return out;
}

inline Words column(const xc_image *image, int32_t x) {
    Words out;
    for (int32_t y = 0; y < image->height; ++y) out.push_back(at(image, x, y));
    return out;
}

inline Words all(const xc_image *image) {
    Words out;
    for (int32_t y = 0; y < image->height; ++y)
        for (uint32_t v : row(image, y)) out.push_back(v);
    return out;
}

// Grey level g as an opaque colour word.
constexpr uint32_t grey(uint32_t g) { return 0xFF000000u | g << 16 | g << 8 | g; }

}  // namespace test

namespace test {

// A zeroed image with alpha (format 0).
inline xc_image *blank_alpha(int32_t w, int32_t h) {
    xc_image *image = xc_image_new_from_data(w, h, nullptr, 32, 0, 0);
    std::memset(image->data, 0, static_cast<size_t>(w) * static_cast<size_t>(h) * 4);
    return image;
}

}  // namespace test

// Small images built from and read back as colour words or '#'/'.' pictures,
// shared by the draw and transform tests.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "fbcompose/image.h"

namespace test {

using Words = std::vector<uint32_t>;

struct Unref {
    void operator()(xc_image *image) const { xc_image_unref(image); }
};
// Owns one reference, so a failing assertion never leaks the image.
using Image = std::unique_ptr<xc_image, Unref>;

// An opaque canvas (format 1) holding `words` row by row.
inline Image canvas(int32_t w, int32_t h, const Words &words) {
    Image image{xc_image_create(w, h)};
    std::memcpy(image->data, words.data(), words.size() * 4);
    return image;
}

inline Image canvas(int32_t w, int32_t h, uint32_t fill) {
    return canvas(w, h, Words(static_cast<size_t>(w * h), fill));
}

// A zeroed image with alpha (format 0).
inline Image blank_alpha(int32_t w, int32_t h) {
    Image image{xc_image_new_from_data(w, h, nullptr, 32, 0, 0)};
    std::memset(image->data, 0, static_cast<size_t>(image->rowstride) * static_cast<size_t>(h));
    return image;
}

// A canvas whose pixel (x, y) is f(x, y).
inline Image painted(int32_t w, int32_t h, const std::function<uint32_t(int, int)> &f) {
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

inline Words all(const xc_image *image) {
    Words out;
    for (int32_t y = 0; y < image->height; ++y)
        for (uint32_t v : row(image, y)) out.push_back(v);
    return out;
}

// Rows separated by spaces: '#' for a pixel that was written, '.' for one
// left at zero.
inline std::string picture(const xc_image *image) {
    std::string out;
    for (int32_t y = 0; y < image->height; ++y) {
        if (y) out += ' ';
        for (int32_t x = 0; x < image->width; ++x) out += at(image, x, y) ? '#' : '.';
    }
    return out;
}

// An area's corners as one comparable value.
inline std::array<int32_t, 4> corners(const xg_area &a) { return {a.x1, a.y1, a.x2, a.y2}; }

// Grey level g as an opaque colour word.
constexpr uint32_t grey(uint32_t g) { return 0xFF000000u | g << 16 | g << 8 | g; }

}  // namespace test

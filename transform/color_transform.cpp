// Colour transform: an affine 16.16 fixed-point function of red, green and
// blue with per-channel bounds; alpha is copied.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "core/log.hpp"
#include "core/pixel_bounds.hpp"
#include "fbcompose/loader.h"
#include "fbcompose/transform.h"

namespace fbc {
namespace {

struct Matrix {
    int32_t m[4][4];
};

// float x 65536 truncated toward zero, held to the 32-bit range.
int32_t to_fixed(float v) {
    const double f = std::trunc(static_cast<double>(v) * 65536.0);
    if (!(f == f)) return 0;  // NaN
    return static_cast<int32_t>(std::clamp(f, double{INT32_MIN}, double{INT32_MAX}));
}

Matrix to_fixed(const float matrix[16]) {
    Matrix m;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) m.m[r][c] = to_fixed(matrix[r * 4 + c]);
    return m;
}

// Sums wrap in 32 bits rather than overflow; the shift is arithmetic.
int32_t weigh(uint32_t r, uint32_t g, uint32_t b, const Matrix &m, int c) {
    const uint32_t sum = r * uint32_t(m.m[0][c]) + g * uint32_t(m.m[1][c]) +
                         b * uint32_t(m.m[2][c]) + uint32_t(m.m[3][c]);
    return static_cast<int32_t>(sum) >> 16;
}

bool is_grey(const Matrix &m, const int32_t lower[3], const int32_t upper[3]) {
    for (int r = 0; r < 3; ++r)
        if (m.m[r][0] != m.m[r][1] || m.m[r][1] != m.m[r][2]) return false;
    for (int c = 0; c < 3; ++c)
        if (lower[c] != 0 || upper[c] != 255) return false;
    return true;
}

// One weighted sum per pixel; each channel adds its bias and clamps.
void transform_grey(const uint32_t *src, uint32_t *dst, size_t count, const Matrix &m) {
    for (size_t i = 0; i < count; ++i) {
        const uint32_t p = src[i];
        const uint32_t sum = ((p >> 16) & 0xFF) * uint32_t(m.m[0][0]) +
                             ((p >> 8) & 0xFF) * uint32_t(m.m[1][0]) +
                             (p & 0xFF) * uint32_t(m.m[2][0]);
        uint32_t out = p & 0xFF000000u;
        for (int c = 0; c < 3; ++c) {
            const int32_t v = static_cast<int32_t>(sum + uint32_t(m.m[3][c])) >> 16;
            out |= uint32_t(std::clamp(v, 0, 255)) << (16 - 8 * c);
        }
        dst[i] = out;
    }
}

// Upper bound first, then lower: a lower bound above the upper one wins.
void transform_general(const uint32_t *src, uint32_t *dst, size_t count, const Matrix &m,
                       const int32_t lower[3], const int32_t upper[3]) {
    for (size_t i = 0; i < count; ++i) {
        const uint32_t p = src[i];
        const uint32_t r = (p >> 16) & 0xFF, g = (p >> 8) & 0xFF, b = p & 0xFF;
        uint32_t out = p & 0xFF000000u;
        for (int c = 0; c < 3; ++c) {
            const int32_t v = std::max(std::min(weigh(r, g, b, m, c), upper[c]), lower[c]);
            out |= (uint32_t(v) & 0xFF) << (16 - 8 * c);
        }
        dst[i] = out;
    }
}

// A private copy with the image's format and rows of the format's own
// length, copied as one run: refused when that run is longer than the
// image's pixel block (rows shorter than the format's).
xc_image *copy_of(const xc_image *image) {
    xc_image *copy =
        xc_image_new_with_data(image->width, image->height, nullptr, image->format, 0, 0, 0);
    const int64_t bytes = block_bytes(copy);
    if (image->data && copy->data && bytes > 0) {
        if (bytes > block_bytes(image)) {
            log_out("xc_image_new_from_color_transformed_image: rows too short to copy\n");
            xc_image_unref(copy);
            return nullptr;
        }
        std::memcpy(copy->data, image->data, static_cast<size_t>(bytes));
    }
    return copy;
}

}  // namespace
}  // namespace fbc

extern "C" {

xc_image *xc_image_new_from_color_transformed_image(xc_image *image, const float matrix[16],
                                                    const int32_t lower[3],
                                                    const int32_t upper[3]) {
    xc_image_load_data(image);
    if (!matrix) return fbc::copy_of(image);
    // The pixels are read as one run of width x height 32-bit words.
    if (!fbc::words_addressable(image)) {
        fbc::log_out("xc_image_new_from_color_transformed_image: no 32-bit pixels to read\n");
        return nullptr;
    }
    xc_image *result = xc_image_create(image->width, image->height);
    if (!result || !result->data) {
        xc_image_unref(result);
        return nullptr;
    }
    const fbc::Matrix m = fbc::to_fixed(matrix);
    const size_t count = static_cast<size_t>(image->width) * static_cast<size_t>(image->height);
    const auto *src = reinterpret_cast<const uint32_t *>(image->data);
    auto *dst = reinterpret_cast<uint32_t *>(result->data);
    if (fbc::is_grey(m, lower, upper)) fbc::transform_grey(src, dst, count, m);
    else fbc::transform_general(src, dst, count, m, lower, upper);
    result->no_cache = 1;
    return result;
}

}  // extern "C"

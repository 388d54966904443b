// Display conversion: a rectangle of 32-bit colour words into the panel's
// RGB565, RGB666 or 32-bit pixels, ordered-dithered and optionally rotated.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "core/log.hpp"
#include "fbcompose/pixel.h"
#include "pixel/channel.hpp"
#include "pixel/convert.hpp"

namespace fbc::px {
namespace {

// Rounds up whenever the dropped bits reach the threshold, threshold 0
// included: the upward bias is the panel's tuned look; a full field stays full.
// Adding 8 - (t >> 1) before the shift carries exactly when c & 7 >= t >> 1.
constexpr uint32_t dither_5(uint32_t c, uint32_t t) {
    return std::min((c + 8 - (t >> 1)) >> 3, 31u);
}

// The same for a 6-bit field: carries exactly when c & 3 >= t >> 2.
constexpr uint32_t dither_6(uint32_t c, uint32_t t) {
    return std::min((c + 4 - (t >> 2)) >> 2, 63u);
}

struct To565 {
    using Out = uint16_t;
    static Out pixel(uint32_t w, uint32_t t) {
        return static_cast<Out>(dither_5(channel(w, 16), t) << 11 |
                                dither_6(channel(w, 8), t) << 5 | dither_5(channel(w, 0), t));
    }
};

struct To666 {
    using Out = uint32_t;
    static Out pixel(uint32_t w, uint32_t t) {
        return dither_6(channel(w, 16), t) << 12 | dither_6(channel(w, 8), t) << 6 |
               dither_6(channel(w, 0), t);
    }
};

struct Word {
    using Out = uint32_t;
    static Out pixel(uint32_t w, uint32_t) { return w; }
};

template <class Format, int Rotation>
void convert(const void *src, void *dst, int32_t src_skip, int32_t dst_skip, int32_t width,
             int32_t height, int32_t dither_x, int32_t dither_y) {
    if (width < 1 || height < 1) return;
    const Walk w = walk(src, src_skip, width, height, Rotation);
    auto *out = static_cast<typename Format::Out *>(dst);
    const ptrdiff_t out_stride = ptrdiff_t{w.out_width} + dst_skip;
    for (int32_t j = 0; j < w.out_height; ++j) {
        const uint32_t *in = w.origin + j * w.across;
        typename Format::Out *row = out + j * out_stride;
        // This row's thresholds, by (i + dither x) & 3; unsigned sums wrap harmlessly.
        const uint32_t column = (uint32_t(j) + uint32_t(dither_y)) & 3;
        uint32_t t[4];
        for (uint32_t k = 0; k < 4; ++k) t[k] = kBayer[(k + uint32_t(dither_x)) & 3][column];
        for (int32_t i = 0; i < w.out_width; ++i) row[i] = Format::pixel(in[i * w.along], t[i & 3]);
    }
}

// Row strides in pixels; copies width x pixel_bytes per row.
void copy_rows(const void *src, void *dst, ptrdiff_t src_stride, ptrdiff_t dst_stride,
               int32_t width, int32_t height, size_t pixel_bytes) {
    if (width < 1 || height < 1) return;
    const auto *s = static_cast<const unsigned char *>(src);
    auto *d = static_cast<unsigned char *>(dst);
    const size_t row = static_cast<size_t>(width) * pixel_bytes;
    for (int32_t y = 0; y < height; ++y)
        std::memcpy(d + y * dst_stride * ptrdiff_t(pixel_bytes),
                    s + y * src_stride * ptrdiff_t(pixel_bytes), row);
}

}  // namespace
}  // namespace fbc::px

using fbc::px::convert;
using fbc::px::To565;
using fbc::px::To666;
using fbc::px::Word;

extern "C" {

// out(i, j) = 565 of src(i, j), each field dithered with t = bayer[(i + dx) & 3][(j + dy) & 3]
void xc_convert_rgba_to_16(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                           int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert<To565, 0>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y);
}

// out(i, j) = 565 of src(j, height - 1 - i), dithered by output position
void xc_convert_rgba_to_16_90(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                              int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert<To565, 90>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y);
}

// out(i, j) = 565 of src(width - 1 - j, i), dithered by output position
void xc_convert_rgba_to_16_270(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                               int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert<To565, 270>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y);
}

// out(i, j) = 666 of src(i, j), each field dithered with t = bayer[(i + dx) & 3][(j + dy) & 3]
void xc_convert_rgba_to_18(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                           int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert<To666, 0>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y);
}

// out(i, j) = 666 of src(j, height - 1 - i), dithered by output position
void xc_convert_rgba_to_18_90(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                              int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert<To666, 90>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y);
}

// out(i, j) = 666 of src(width - 1 - j, i), dithered by output position
void xc_convert_rgba_to_18_270(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                               int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert<To666, 270>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y);
}

// out(i, j) = src(i, j), a row copy
void xc_convert_rgba_to_32(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                           int32_t width, int32_t height, int32_t, int32_t) {
    fbc::px::copy_rows(src, dst, ptrdiff_t{width} + src_skip, ptrdiff_t{width} + dst_skip, width,
                       height, 4);
}

// out(i, j) = src(j, height - 1 - i)
void xc_convert_rgba_to_32_90(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                              int32_t width, int32_t height, int32_t, int32_t) {
    convert<Word, 90>(src, dst, src_skip, dst_skip, width, height, 0, 0);
}

// out(i, j) = src(width - 1 - j, i)
void xc_convert_rgba_to_32_270(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                               int32_t width, int32_t height, int32_t, int32_t) {
    convert<Word, 270>(src, dst, src_skip, dst_skip, width, height, 0, 0);
}

// Row lengths, not skips: each row copies width x 2 bytes.
void xc_convert_16_to_16(const uint16_t *src, uint16_t *dst, int32_t src_row, int32_t dst_row,
                         int32_t width, int32_t height) {
    fbc::px::copy_rows(src, dst, src_row, dst_row, width, height, 2);
}

// out = (v & 0x7ff) x 2 | (v & 0xf800) x 4: red and blue gain a 0 low bit, green is exact
void xc_convert_16_to_18(const uint16_t *src, uint32_t *dst, int32_t src_row, int32_t dst_row,
                         int32_t width, int32_t height) {
    for (int32_t y = 0; y < height; ++y) {
        const uint16_t *s = src + ptrdiff_t{y} * src_row;
        uint32_t *d = dst + ptrdiff_t{y} * dst_row;
        for (int32_t x = 0; x < width; ++x) d[x] = (s[x] & 0x7FFu) * 2 | (s[x] & 0xF800u) * 4;
    }
}

}  // extern "C"

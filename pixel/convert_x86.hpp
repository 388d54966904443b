// The panel converters on x86 vector registers, written once over
// lanes_x86.hpp and built by convert_sse2.cpp and convert_avx2.cpp.
//
// The dither adds a byte to each channel before the field's shift: the
// reference's (c + 8 - (t >> 1)) >> 3 and (c + 4 - (t >> 2)) >> 2, whose
// clamp at the field's top a saturating byte add gives for free
// (255 >> 3 = 31, 255 >> 2 = 63). The rotated converters move square blocks
// of kWidth x kWidth pixels through a register transpose, a tile of blocks
// at a time so that the source lines a tile reads stay in the first-level
// cache until all their pixels are used. The rows and columns left over
// beside the whole blocks go to the reference by its exported name.
#pragma once

#include <cstddef>

#include "fbcompose/pixel.h"
#include "pixel/bayer.hpp"
#include "pixel/lanes_x86.hpp"
#include "pixel/variants.hpp"

namespace fbc::px::FBC_X86_ISA {
namespace {

// A panel pixel format: the bytes added for dither threshold t, the fields
// from the dithered word, and how kWidth of them are stored.
struct To565 {
    using Out = uint16_t;
    static constexpr bool kDithered = true;
    static uint32_t bias(uint32_t t) {
        const uint32_t b5 = 8 - (t >> 1), b6 = 4 - (t >> 2);
        return b5 << 16 | b6 << 8 | b5;
    }
    static Reg fields(Reg x) { return shifted565(x); }
    static void put(Out *p, Reg v) { store_half(p, narrow_565(v, v)); }
    static void put2(Out *p, Reg a, Reg b) { store(p, narrow_565(a, b)); }
};

struct To666 {
    using Out = uint32_t;
    static constexpr bool kDithered = true;
    static uint32_t bias(uint32_t t) { return (4 - (t >> 2)) * 0x010101u; }
    static Reg fields(Reg x) {
        return (shr32<6>(x) & splat(0x3F000)) | (shr32<4>(x) & splat(0xFC0)) |
               (shr32<2>(x) & splat(0x3F));
    }
    static void put(Out *p, Reg v) { store(p, v); }
    static void put2(Out *p, Reg a, Reg b) { store(p, a), store(p + kWidth, b); }
};

struct Word {
    using Out = uint32_t;
    static constexpr bool kDithered = false;
    static uint32_t bias(uint32_t) { return 0; }
    static Reg fields(Reg x) { return x; }
    static void put(Out *p, Reg v) { store(p, v); }
};

// The bytes to add in output row j, by (j + dither y) & 3: pixel k of a
// register at a multiple of 4 along the row takes matrix row (k + dither x) & 3.
template <class F>
struct Biases {
    Biases(int32_t dither_x, int32_t dither_y) : dy(uint32_t(dither_y)) {
        for (uint32_t column = 0; column < 4; ++column) {
            uint32_t lanes[kWidth];
            for (uint32_t k = 0; k < kWidth; ++k)
                lanes[k] = F::bias(kBayer[(k + uint32_t(dither_x)) & 3][column]);
            by_column[column] = load(lanes);
        }
    }
    Reg row(int32_t j) const { return by_column[(uint32_t(j) + dy) & 3]; }
    Reg by_column[4];
    uint32_t dy;
};

template <class F>
inline Reg dithered(Reg x, Reg bias) {
    return F::fields(F::kDithered ? adds8(x, bias) : x);
}

inline int32_t least(int32_t a, int32_t b) { return a < b ? a : b; }

// Rotation 0: whole pairs of registers along each row; the columns left
// over on the right go to the reference as one strip.
template <class F>
void convert_straight(const void *src, void *dst, int32_t src_skip, int32_t dst_skip, int32_t width,
                      int32_t height, int32_t dither_x, int32_t dither_y,
                      xc_convert_func reference) {
    if (width < 1 || height < 1) return;
    const auto *s = static_cast<const uint32_t *>(src);
    auto *d = static_cast<typename F::Out *>(dst);
    const ptrdiff_t stride = ptrdiff_t{width} + src_skip, out_stride = ptrdiff_t{width} + dst_skip;
    const int32_t whole = width & -(2 * kWidth);
    const Biases<F> bias(dither_x, dither_y);
    for (int32_t j = 0; j < height; ++j) {
        const uint32_t *in = s + j * stride;
        typename F::Out *out = d + j * out_stride;
        const Reg b = bias.row(j);
        for (int32_t i = 0; i < whole; i += 2 * kWidth)
            F::put2(out + i, dithered<F>(load(in + i), b), dithered<F>(load(in + i + kWidth), b));
    }
    if (whole < width)
        reference(s + whole, d + whole, src_skip + whole, dst_skip + whole, width - whole, height,
                  dither_x + whole, dither_y);
}

// Output columns (source rows) and rows (source columns) per tile: a tile
// reads kTileColumns source lines of 64 bytes and uses each whole.
constexpr int32_t kTileColumns = 64, kTileRows = 16;

// Rotation 90: out(i, j) = src(j, height - 1 - i); 270: out(i, j) = src(width - 1 - j, i).
template <class F, int Rotation>
void convert_turned(const void *src, void *dst, int32_t src_skip, int32_t dst_skip, int32_t width,
                    int32_t height, int32_t dither_x, int32_t dither_y, xc_convert_func reference) {
    if (width < 1 || height < 1) return;
    const auto *s = static_cast<const uint32_t *>(src);
    auto *d = static_cast<typename F::Out *>(dst);
    const ptrdiff_t stride = ptrdiff_t{width} + src_skip, out_stride = ptrdiff_t{height} + dst_skip;
    // The output is height x width; its whole blocks are blocks_w x blocks_h.
    const int32_t blocks_w = height & -kWidth, blocks_h = width & -kWidth;
    const Biases<F> bias(dither_x, dither_y);
    for (int32_t tile_j = 0; tile_j < blocks_h; tile_j += kTileRows) {
        for (int32_t tile_i = 0; tile_i < blocks_w; tile_i += kTileColumns) {
            const int32_t end_j = least(tile_j + kTileRows, blocks_h);
            const int32_t end_i = least(tile_i + kTileColumns, blocks_w);
            for (int32_t j = tile_j; j < end_j; j += kWidth) {
                for (int32_t i = tile_i; i < end_i; i += kWidth) {
                    // Rows of the block, each holding kWidth pixels of an output column.
                    Reg r[kWidth];
                    for (int k = 0; k < kWidth; ++k)
                        r[k] = load(Rotation == 90 ? s + (height - 1 - i - k) * stride + j
                                                   : s + (i + k) * stride + (width - j - kWidth));
                    transpose(r);
                    for (int m = 0; m < kWidth; ++m) {
                        const int32_t row = Rotation == 90 ? j + m : j + kWidth - 1 - m;
                        F::put(d + row * out_stride + i, dithered<F>(r[m], bias.row(row)));
                    }
                }
            }
        }
    }
    // Output columns from blocks_w on (source rows), every output row.
    if (blocks_w < height)
        reference(Rotation == 90 ? s : s + blocks_w * stride, d + blocks_w, src_skip,
                  dst_skip + blocks_w, width, height - blocks_w, dither_x + blocks_w, dither_y);
    // Output rows from blocks_h on (source columns), beside the blocks.
    if (blocks_h < width && blocks_w > 0)
        reference(Rotation == 90 ? s + (height - blocks_w) * stride + blocks_h : s,
                  d + blocks_h * out_stride, src_skip + blocks_h, dst_skip + height - blocks_w,
                  width - blocks_h, blocks_w, dither_x, dither_y + blocks_h);
}

}  // namespace

void convert_rgba_to_16(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                        int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert_straight<To565>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y,
                            xc_convert_rgba_to_16);
}
void convert_rgba_to_16_90(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                           int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert_turned<To565, 90>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y,
                              xc_convert_rgba_to_16_90);
}
void convert_rgba_to_16_270(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                            int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert_turned<To565, 270>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y,
                               xc_convert_rgba_to_16_270);
}
void convert_rgba_to_18(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                        int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert_straight<To666>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y,
                            xc_convert_rgba_to_18);
}
void convert_rgba_to_18_90(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                           int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert_turned<To666, 90>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y,
                              xc_convert_rgba_to_18_90);
}
void convert_rgba_to_18_270(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                            int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert_turned<To666, 270>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y,
                               xc_convert_rgba_to_18_270);
}
void convert_rgba_to_32_90(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                           int32_t width, int32_t height, int32_t, int32_t) {
    convert_turned<Word, 90>(src, dst, src_skip, dst_skip, width, height, 0, 0,
                             xc_convert_rgba_to_32_90);
}
void convert_rgba_to_32_270(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                            int32_t width, int32_t height, int32_t, int32_t) {
    convert_turned<Word, 270>(src, dst, src_skip, dst_skip, width, height, 0, 0,
                              xc_convert_rgba_to_32_270);
}

}  // namespace fbc::px::FBC_X86_ISA

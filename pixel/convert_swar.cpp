// Display converters in plain C++. A field is dithered with one add and one
// select: the channel is shifted to the top byte of a word and its bias,
// 8 - t/2 for a 5-bit field or 4 - t/4 for a 6-bit one, added in the top
// byte; a carry out means the field saturates, otherwise the field is the
// top of the sum. RGB565 pixels are stored two to a word. The rotated
// converters walk the output in tiles of eight rows, eight source columns
// that share one 32-byte cache line of the device, by 64 pixels, so the
// source lines a tile reads serve all eight columns before they are evicted.
#include "pixel/convert.hpp"
#include "pixel/swar.hpp"
#include "pixel/variants.hpp"

namespace fbc::px::swar {
namespace {

constexpr int32_t kTileRows = 8, kTileSpan = 64;

// One output position's biases, in the top byte.
struct Bias {
    uint32_t five, six;
};

// A channel in the top byte of `top` plus `bias`: all ones when the sum
// carries out, so that the field saturates, else the sum.
inline uint32_t biased(uint32_t top, uint32_t bias) {
    const uint32_t sum = top + bias;
    return sum < bias ? ~0u : sum;
}

struct To565 {
    using Out = uint16_t;
    static uint32_t pixel(uint32_t w, Bias b) {
        return (biased(w << 8, b.five) >> 27) << 11 | (biased(w << 16, b.six) >> 26) << 5 |
               biased(w << 24, b.five) >> 27;
    }
};

struct To666 {
    using Out = uint32_t;
    static uint32_t pixel(uint32_t w, Bias b) {
        return (biased(w << 8, b.six) >> 26) << 12 | (biased(w << 16, b.six) >> 26) << 6 |
               biased(w << 24, b.six) >> 26;
    }
};

struct Word {
    using Out = uint32_t;
    static uint32_t pixel(uint32_t w, Bias) { return w; }
};

// The biases of output row j at positions i = 0..3 of a segment that starts at output x `x`.
void row_biases(Bias (&out)[4], int32_t x, int32_t j, int32_t dither_x, int32_t dither_y) {
    const uint32_t column = (uint32_t(j) + uint32_t(dither_y)) & 3;
    for (uint32_t k = 0; k < 4; ++k) {
        const uint32_t t = kBayer[(k + uint32_t(x) + uint32_t(dither_x)) & 3][column];
        out[k] = {(8 - (t >> 1)) << 24, (4 - (t >> 2)) << 24};
    }
}

// n output pixels from `in`, `step` words apart; pixel i takes bias[i & 3].
template <class Format>
void convert_row(const uint32_t *in, ptrdiff_t step, typename Format::Out *out, int32_t n,
                 const Bias (&bias)[4]) {
    using Out = typename Format::Out;
    constexpr bool kPairs = sizeof(Out) == 2;
    int32_t i = 0;
    if (kPairs && n > 0 && (reinterpret_cast<uintptr_t>(out) & 2)) {
        *out++ = Out(Format::pixel(*in, bias[0]));
        in += step, i = 1;
    }
    const Bias b0 = bias[i & 3], b1 = bias[(i + 1) & 3], b2 = bias[(i + 2) & 3],
               b3 = bias[(i + 3) & 3];
    for (; n - i >= 4; i += 4, in += 4 * step, out += 4) {
        const uint32_t w0 = in[0], w1 = in[step], w2 = in[2 * step], w3 = in[3 * step];
        if constexpr (kPairs) {
            store_word(out, Format::pixel(w0, b0) | Format::pixel(w1, b1) << 16);
            store_word(out + 2, Format::pixel(w2, b2) | Format::pixel(w3, b3) << 16);
        } else {
            out[0] = Format::pixel(w0, b0), out[1] = Format::pixel(w1, b1);
            out[2] = Format::pixel(w2, b2), out[3] = Format::pixel(w3, b3);
        }
    }
    for (; i < n; ++i, in += step) *out++ = Out(Format::pixel(*in, bias[i & 3]));
}

template <class Format, int Rotation>
void convert(const void *src, void *dst, int32_t src_skip, int32_t dst_skip, int32_t width,
             int32_t height, int32_t dither_x, int32_t dither_y) {
    if (width < 1 || height < 1) return;
    const Walk w = walk(src, src_skip, width, height, Rotation);
    auto *out = static_cast<typename Format::Out *>(dst);
    const ptrdiff_t out_stride = ptrdiff_t{w.out_width} + dst_skip;
    // Rows read rows: one tile is the whole rectangle.
    const int32_t tile_rows = Rotation ? kTileRows : w.out_height;
    const int32_t tile_span = Rotation ? kTileSpan : w.out_width;
    Bias bias[4];
    for (int32_t j0 = 0; j0 < w.out_height; j0 += tile_rows) {
        const int32_t j1 = std::min(j0 + tile_rows, w.out_height);
        for (int32_t i0 = 0; i0 < w.out_width; i0 += tile_span) {
            const int32_t n = std::min(tile_span, w.out_width - i0);
            for (int32_t j = j0; j < j1; ++j) {
                row_biases(bias, i0, j, dither_x, dither_y);
                convert_row<Format>(w.origin + j * w.across + i0 * w.along, w.along,
                                    out + j * out_stride + i0, n, bias);
            }
        }
    }
}

}  // namespace

void convert_rgba_to_16(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                        int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert<To565, 0>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y);
}

void convert_rgba_to_16_90(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                           int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert<To565, 90>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y);
}

void convert_rgba_to_16_270(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                            int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert<To565, 270>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y);
}

void convert_rgba_to_18(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                        int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert<To666, 0>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y);
}

void convert_rgba_to_18_90(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                           int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert<To666, 90>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y);
}

void convert_rgba_to_18_270(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                            int32_t width, int32_t height, int32_t dither_x, int32_t dither_y) {
    convert<To666, 270>(src, dst, src_skip, dst_skip, width, height, dither_x, dither_y);
}

void convert_rgba_to_32_90(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                           int32_t width, int32_t height, int32_t, int32_t) {
    convert<Word, 90>(src, dst, src_skip, dst_skip, width, height, 0, 0);
}

void convert_rgba_to_32_270(const void *src, void *dst, int32_t src_skip, int32_t dst_skip,
                            int32_t width, int32_t height, int32_t, int32_t) {
    convert<Word, 270>(src, dst, src_skip, dst_skip, width, height, 0, 0);
}

}  // namespace fbc::px::swar

// Display converters in plain C++. A field is dithered with one add and one
// select: the channel is shifted to the top byte of a word and its bias,
// 8 - t/2 for a 5-bit field or 4 - t/4 for a 6-bit one, added in the top
// byte; a carry out means the field saturates, otherwise the field is the
// top of the sum. RGB565 pixels are stored two to a word. The rotated
// converters walk the output in tiles of eight rows, eight source columns
// that share one 32-byte cache line of the device, by 256 pixels (512 for
// plain words, whose cheap pixels would otherwise pay for a call per 256),
// so the source lines a tile reads serve all eight columns before they are
// evicted.
#include <type_traits>

#include "pixel/convert.hpp"
#include "pixel/swar.hpp"
#include "pixel/variants.hpp"

namespace fbc::px::swar {
namespace {

constexpr int32_t kTileRows = 8, kTileSpan = 256;

// One output position's biases, in the top byte.
struct Bias {
    uint32_t five, six;
};

// The channel at bit `Shift` of `w`, moved to the top byte, plus `bias`:
// all ones when the sum carries out, so that the field saturates, else the
// sum. ARM does it in two instructions (adds with a shifted operand, then
// mvncs), which GCC does not find by itself.
template <unsigned Shift>
inline uint32_t biased(uint32_t w, uint32_t bias) {
    uint32_t sum;
#if defined(__arm__)
    asm("adds %0, %1, %2, lsl %3\n\tmvncs %0, #0"
        : "=&r"(sum)
        : "r"(bias), "r"(w), "i"(24 - Shift)
        : "cc");
#else
    sum = (w << (24 - Shift)) + bias;
    if (sum < bias) sum = ~0u;
#endif
    return sum;
}

struct To565 {
    using Out = uint16_t;
    static uint32_t pixel(uint32_t w, Bias b) {
        const uint32_t rg = (biased<16>(w, b.five) >> 27) << 6 | biased<8>(w, b.six) >> 26;
        return rg << 5 | biased<0>(w, b.five) >> 27;
    }
};

struct To666 {
    using Out = uint32_t;
    static uint32_t pixel(uint32_t w, Bias b) {
        const uint32_t rg = (biased<16>(w, b.six) >> 26) << 6 | biased<8>(w, b.six) >> 26;
        return rg << 6 | biased<0>(w, b.six) >> 26;
    }
};

// Plain words, undithered: turned by turn_words below.
struct Word {
    using Out = uint32_t;
};

// The biases of output row j at positions i = 0..3 of a segment that starts at output x `x`.
void row_biases(Bias (&out)[4], int32_t x, int32_t j, int32_t dither_x, int32_t dither_y) {
    const uint32_t column = (uint32_t(j) + uint32_t(dither_y)) & 3;
    for (uint32_t k = 0; k < 4; ++k) {
        const uint32_t t = kBayer[(k + uint32_t(x) + uint32_t(dither_x)) & 3][column];
        out[k] = {(8 - (t >> 1)) << 24, (4 - (t >> 2)) << 24};
    }
}

// Pairs of 16-bit pixels, one word store each, from `in` on; pixel i takes
// bias[i & 3]. Two passes, over the pairs at positions 0, 1 and then 2, 3,
// so that each holds the biases of two positions in registers. Returns the
// number of pixels written. Kept out of line: inlined into the tile loops,
// GCC runs out of registers for the biases.
template <class Format>
[[gnu::noinline]] int32_t convert_pairs(const uint32_t *in, ptrdiff_t step, uint16_t *out,
                                        int32_t n, const Bias (&bias)[4]) {
    const int32_t pairs = n >> 1;
    for (int32_t pass = 0; pass < 2; ++pass) {
        const Bias b0 = bias[2 * pass], b1 = bias[2 * pass + 1];
        const uint32_t *p = in + 2 * pass * step;
        uint16_t *o = out + 2 * pass;
        for (int32_t k = pass; k < pairs; k += 2, o += 4) {
            const uint32_t w0 = *p, w1 = *(p + step);
            p += 4 * step;
            store_word(o, Format::pixel(w0, b0) | Format::pixel(w1, b1) << 16);
        }
    }
    return pairs * 2;
}

// Four 32-bit pixels a step; pixel i takes bias[i & 3]. Returns the number written.
template <class Format>
[[gnu::noinline]] int32_t convert_fours(const uint32_t *in, ptrdiff_t step, uint32_t *out,
                                        int32_t n, const Bias (&bias)[4]) {
    const Bias b0 = bias[0], b1 = bias[1], b2 = bias[2], b3 = bias[3];
    uint32_t *const end = out + (n & ~3);
    for (; out != end; out += 4) {
        const uint32_t w0 = *in;
        const uint32_t w1 = *(in += step);
        const uint32_t w2 = *(in += step);
        const uint32_t w3 = *(in += step);
        in += step;
        out[0] = Format::pixel(w0, b0), out[1] = Format::pixel(w1, b1);
        out[2] = Format::pixel(w2, b2), out[3] = Format::pixel(w3, b3);
    }
    return n & ~3;
}

// `quads` times, four words from p, `step` words apart, to o[0..3]; then o
// has moved on by four and p by four steps. ARM loads with the step added
// after each load and stores the four in one STM (seven instructions for
// four pixels); GCC finds neither for a loop like the portable one below.
inline void gather_quads(const uint32_t *&p, ptrdiff_t step, uint32_t *&o, int32_t quads) {
#if defined(__arm__)
    if (quads <= 0) return;
    // STM stores registers in ascending order: the four are pinned.
    register uint32_t w0 asm("r4"), w1 asm("r5"), w2 asm("r6"), w3 asm("r7");
    asm volatile(
        "1:\n\t"
        "ldr %0, [%4], %7\n\t"
        "ldr %1, [%4], %7\n\t"
        "ldr %2, [%4], %7\n\t"
        "ldr %3, [%4], %7\n\t"
        "subs %6, %6, #1\n\t"
        "stmia %5!, {%0, %1, %2, %3}\n\t"
        "bne 1b"
        : "=&r"(w0), "=&r"(w1), "=&r"(w2), "=&r"(w3), "+r"(p), "+r"(o), "+r"(quads)
        : "r"(step * ptrdiff_t{sizeof(uint32_t)})
        : "cc", "memory");
#else
    for (; quads > 0; --quads, o += 4) {
        const uint32_t w0 = *p;
        const uint32_t w1 = *(p += step);
        const uint32_t w2 = *(p += step);
        const uint32_t w3 = *(p += step);
        p += step;
        o[0] = w0, o[1] = w1, o[2] = w2, o[3] = w3;
    }
#endif
}

// Plain words: `rows` output rows of n pixels, row r from in + r x across.
// The rows of a tile share one call, so that the registers are saved once a
// tile, not once a row: a word costs only its load and its store.
[[gnu::noinline]] void turn_words(const uint32_t *in, ptrdiff_t step, ptrdiff_t across,
                                  uint32_t *out, ptrdiff_t out_stride, int32_t n, int32_t rows) {
    for (; rows > 0; --rows, in += across, out += out_stride) {
        const uint32_t *p = in;
        uint32_t *o = out;
        gather_quads(p, step, o, n >> 2);
        for (int32_t k = n & 3; k > 0; --k, p += step) *o++ = *p;
    }
}

// n output pixels from `in`, `step` words apart; pixel i takes bias[i & 3].
template <class Format>
void convert_row(const uint32_t *in, ptrdiff_t step, typename Format::Out *out, int32_t n,
                 Bias (&bias)[4]) {
    using Out = typename Format::Out;
    int32_t i = 0;
    if constexpr (sizeof(Out) == 2) {
        // Pairs start at a word boundary.
        if (n > 0 && (reinterpret_cast<uintptr_t>(out) & 2)) {
            *out = Out(Format::pixel(*in, bias[0]));
            const Bias first = bias[0];
            bias[0] = bias[1], bias[1] = bias[2], bias[2] = bias[3], bias[3] = first;
            i = 1;
        }
        const int32_t done = convert_pairs<Format>(in + i * step, step, out + i, n - i, bias);
        if (i + done < n) out[n - 1] = Out(Format::pixel(in[(n - 1) * step], bias[done & 3]));
    } else {
        i = convert_fours<Format>(in, step, out, n, bias);
        for (; i < n; ++i) out[i] = Format::pixel(in[i * step], bias[i & 3]);
    }
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
    const int32_t tile_span =
        !Rotation ? w.out_width : kTileSpan * (std::is_same_v<Format, Word> ? 2 : 1);
    Bias bias[4];
    for (int32_t j0 = 0; j0 < w.out_height; j0 += tile_rows) {
        const int32_t j1 = std::min(j0 + tile_rows, w.out_height);
        for (int32_t i0 = 0; i0 < w.out_width; i0 += tile_span) {
            const int32_t n = std::min(tile_span, w.out_width - i0);
            if constexpr (std::is_same_v<Format, Word>) {
                turn_words(w.origin + j0 * w.across + i0 * w.along, w.along, w.across,
                           out + j0 * out_stride + i0, out_stride, n, j1 - j0);
            } else {
                for (int32_t j = j0; j < j1; ++j) {
                    row_biases(bias, i0, j, dither_x, dither_y);
                    convert_row<Format>(w.origin + j * w.across + i0 * w.along, w.along,
                                        out + j * out_stride + i0, n, bias);
                }
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

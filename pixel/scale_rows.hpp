// The inner passes of the scalers: the nearest-pixel gather of one source
// row, and, on rows of colour words, the blend of two source rows, the
// blend of neighbouring words of one row, and the box average of blocks of
// words over one or more rows.
// Every byte between two is cur + (((next - cur) x f) >> 16), f in 16.16:
// the same number as (next x f + cur x (65536 - f)) >> 16, since cur x
// 65536 divides exactly, with one multiply on a difference that fits 16
// bits (the shift is arithmetic, rounding toward minus infinity).
#pragma once

#include <cstdint>

#include "pixel/box_average.hpp"
#include "pixel/kernel_table.hpp"

namespace fbc::px {

// The source columns of a nearest-pixel row, stepped without a division:
// pixel i reads column first + floor((rem + i x (whole x divisor +
// rem_step)) / divisor), so a walk adds `whole` and `rem_step` per pixel
// and carries one column each time the remainder reaches `divisor`.
// rem and rem_step stay below divisor, which is at least 1. `fraction` and
// `fraction_step` are rem and rem_step over divisor in units of 2^-32,
// rounded up: stepping them instead gives the same columns for rows of n
// pixels while n x divisor <= 2^32, since the sum of the roundings stays
// below the 1 / divisor that separates a quotient from the next column.
struct ColumnWalk {
    int32_t first;
    uint32_t rem;
    int32_t whole;
    uint32_t rem_step;
    uint32_t divisor;
    uint32_t fraction;
    uint32_t fraction_step;
};

// One pixel on in the remainder walk: column `at`, remainder `rem`.
inline void step(const ColumnWalk &walk, int32_t &at, uint32_t &rem) {
    at += walk.whole;
    rem += walk.rem_step;
    if (rem >= walk.divisor) {
        rem -= walk.divisor;
        ++at;
    }
}

// The walk of columns base + floor((x0 + i) x num / den), i = 0, 1, ...;
// den 0 reads column base throughout. x0, num >= 0 and den < 2^31.
inline ColumnWalk column_walk(int64_t x0, int64_t num, int64_t den, int32_t base) {
    if (den == 0) return {base, 0, 0, 0, 1, 0, 0};
    const int64_t start = x0 * num;
    const auto rem = static_cast<uint64_t>(start % den), step = static_cast<uint64_t>(num % den);
    const auto in_units = [den](uint64_t r) {
        return static_cast<uint32_t>(((r << 32) + static_cast<uint64_t>(den) - 1) /
                                     static_cast<uint64_t>(den));
    };
    return {static_cast<int32_t>(base + start / den),
            static_cast<uint32_t>(rem),
            static_cast<int32_t>(num / den),
            static_cast<uint32_t>(step),
            static_cast<uint32_t>(den),
            in_units(rem),
            in_units(step)};
}

// Where a destination pixel reads in a row: words `at` and `next` (the
// same word at the row's end), `next` weighted f of 65536.
struct WordTap {
    int32_t at;
    int32_t next;
    uint32_t f;
};

// Where a destination pixel of a box row reads: `count` words from
// `first` in each of the row's source rows; its channel totals are divided
// by `divide`, whose count is `count` x the rows.
struct BoxTap {
    int32_t first;
    int32_t count;
    Divider divide;
};

// out[i] = top[i] to bottom[i] at f, byte by byte, for n words; out may be
// neither input.
using LerpRowsFn = void (*)(const uint32_t *top, const uint32_t *bottom, uint32_t *out, int32_t n,
                            uint32_t f);
// out[i] = row[column i of walk], for n pixels of 32 or 16 bits.
using NearestWordsFn = void (*)(const uint32_t *row, const ColumnWalk &walk, uint32_t *out,
                                int32_t n);
using NearestHalfwordsFn = void (*)(const uint16_t *row, const ColumnWalk &walk, uint16_t *out,
                                    int32_t n);
// dst[i] = source over dst[i] for the pixels of the walk, keeping dst's
// alpha (rgb) or blending it (rgba).
using NearestOverFn = void (*)(const uint32_t *row, const ColumnWalk &walk, uint32_t *dst,
                               int32_t n);
// out[i] = row[taps[i].at] to row[taps[i].next] at taps[i].f, for n words.
using LerpWordsFn = void (*)(const uint32_t *row, const WordTap *taps, uint32_t *out, int32_t n);
// out[i] = the box average of taps[i] over `rows` rows from `top`, `stride`
// bytes apart, for n words. The totals must fit 32 bits (255 x count x
// rows); the caller averages rows first where they may not.
using BoxRowFn = void (*)(const uint32_t *top, intptr_t stride, int32_t rows, const BoxTap *taps,
                          uint32_t *out, int32_t n);

// The references.
void nearest_words(const uint32_t *row, const ColumnWalk &walk, uint32_t *out, int32_t n);
void nearest_halfwords(const uint16_t *row, const ColumnWalk &walk, uint16_t *out, int32_t n);
void nearest_over_rgb(const uint32_t *row, const ColumnWalk &walk, uint32_t *dst, int32_t n);
void nearest_over_rgba(const uint32_t *row, const ColumnWalk &walk, uint32_t *dst, int32_t n);
void lerp_rows(const uint32_t *top, const uint32_t *bottom, uint32_t *out, int32_t n, uint32_t f);
void lerp_words(const uint32_t *row, const WordTap *taps, uint32_t *out, int32_t n);
void box_row(const uint32_t *top, intptr_t stride, int32_t rows, const BoxTap *taps, uint32_t *out,
             int32_t n);

// Their rows: the reference and the variants that stand in for it.
extern const Kernel<NearestWordsFn> kNearestWords;
extern const Kernel<NearestHalfwordsFn> kNearestHalfwords;
extern const Kernel<NearestOverFn> kNearestOverRgb;
extern const Kernel<NearestOverFn> kNearestOverRgba;
extern const Kernel<LerpRowsFn> kLerpRows;
extern const Kernel<LerpWordsFn> kLerpWords;
extern const Kernel<BoxRowFn> kBoxRow;

}  // namespace fbc::px

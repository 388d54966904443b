// The inner passes of the smoothing scalers, on rows of colour words: the
// blend of two source rows, the blend of neighbouring words of one row, and
// the box average of blocks of words over one or more rows.
// Every byte between two is cur + (((next - cur) x f) >> 16), f in 16.16:
// the same number as (next x f + cur x (65536 - f)) >> 16, since cur x
// 65536 divides exactly, with one multiply on a difference that fits 16
// bits (the shift is arithmetic, rounding toward minus infinity).
#pragma once

#include <cstdint>

#include "pixel/box_average.hpp"
#include "pixel/kernel_table.hpp"

namespace fbc::px {

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
// out[i] = row[taps[i].at] to row[taps[i].next] at taps[i].f, for n words.
using LerpWordsFn = void (*)(const uint32_t *row, const WordTap *taps, uint32_t *out, int32_t n);
// out[i] = the box average of taps[i] over `rows` rows from `top`, `stride`
// bytes apart, for n words. The totals must fit 32 bits (255 x count x
// rows); the caller averages rows first where they may not.
using BoxRowFn = void (*)(const uint32_t *top, intptr_t stride, int32_t rows, const BoxTap *taps,
                          uint32_t *out, int32_t n);

// The references.
void lerp_rows(const uint32_t *top, const uint32_t *bottom, uint32_t *out, int32_t n, uint32_t f);
void lerp_words(const uint32_t *row, const WordTap *taps, uint32_t *out, int32_t n);
void box_row(const uint32_t *top, intptr_t stride, int32_t rows, const BoxTap *taps, uint32_t *out,
             int32_t n);

// Their rows: the reference and the variants that stand in for it.
extern const Kernel<LerpRowsFn> kLerpRows;
extern const Kernel<LerpWordsFn> kLerpWords;
extern const Kernel<BoxRowFn> kBoxRow;

}  // namespace fbc::px

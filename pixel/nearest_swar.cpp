// The nearest-pixel gather, and its blend over a row, without a vector
// unit. The column and its fraction (in 2^-32) form one 64-bit position,
// so a step is one add and one add-with-carry, and the column is the
// position's high word, read straight into the load's index: three
// instructions a pixel on ARM where the remainder walk's compare and
// correction take five, and no branch on the host. Rows too wide for the
// fraction to stay exact take the remainder walk. On ARM the words go out
// eight at a time through two multiple stores (GCC stores them one by
// one), three and a half instructions a pixel. The gather is picked
// everywhere; the blend on the device only.
#include "pixel/scale_rows.hpp"
#include "pixel/swar.hpp"

namespace fbc::px::swar {
namespace {

#if defined(__arm__)
// Four words from the row at column `hi`, stepping after each, then one
// store of the four.
#define FBC_NEAREST_STEP(k) \
    "ldr %" #k              \
    ", [%[row], %[hi], lsl #2]\n\tadds %[lo], %[lo], %[flo]\n\tadc %[hi], %[hi], %[whole]\n\t"
#define FBC_NEAREST_QUAD \
    FBC_NEAREST_STEP(0)  \
    FBC_NEAREST_STEP(1)  \
    FBC_NEAREST_STEP(2) FBC_NEAREST_STEP(3) "stmia %[out]!, {%0, %1, %2, %3}\n\t"

// Words of `blocks` times eight pixels; out and the position move on.
inline void nearest_blocks(const uint32_t *row, uint32_t &lo, uint32_t &hi, uint32_t flo,
                           uint32_t whole, uint32_t *&out, int32_t blocks) {
    if (blocks <= 0) return;
    // STM takes registers in ascending order: the four are pinned.
    register uint32_t w0 asm("r4"), w1 asm("r5"), w2 asm("r6"), w3 asm("r7");
    asm volatile("1:\n\t" FBC_NEAREST_QUAD FBC_NEAREST_QUAD
                 "subs %[blocks], %[blocks], #1\n\t"
                 "bne 1b"
                 : "=&r"(w0), "=&r"(w1), "=&r"(w2),
                   "=&r"(w3), [lo] "+r"(lo), [hi] "+r"(hi), [out] "+r"(out), [blocks] "+r"(blocks)
                 : [row] "r"(row), [flo] "r"(flo), [whole] "r"(whole)
                 : "cc", "memory");
}
#undef FBC_NEAREST_QUAD
#undef FBC_NEAREST_STEP
#endif

// The position of the walk's first pixel and its step, column over fraction.
uint64_t start_of(const ColumnWalk &walk) {
    return uint64_t{static_cast<uint32_t>(walk.first)} << 32 | walk.fraction;
}
uint64_t step_of(const ColumnWalk &walk) {
    return uint64_t{static_cast<uint32_t>(walk.whole)} << 32 | walk.fraction_step;
}

template <typename Pixel>
void nearest(const Pixel *row, const ColumnWalk &walk, Pixel *out, int32_t n) {
    uint64_t at = start_of(walk);
    const uint64_t step = step_of(walk);
    const auto next = [&] {
        const Pixel p = row[static_cast<uint32_t>(at >> 32)];
        at += step;
        return p;
    };
    if constexpr (sizeof(Pixel) == 4) {
#if defined(__arm__)
        auto lo = static_cast<uint32_t>(at), hi = static_cast<uint32_t>(at >> 32);
        nearest_blocks(row, lo, hi, walk.fraction_step, static_cast<uint32_t>(walk.whole), out,
                       n / 8);
        at = uint64_t{hi} << 32 | lo;
        n %= 8;
#endif
    }
    // Four loads before four stores, so that the stores may go as one.
    for (; n >= 4; n -= 4, out += 4) {
        const Pixel a = next(), b = next(), c = next(), d = next();
        out[0] = a;
        out[1] = b;
        out[2] = c;
        out[3] = d;
    }
    for (int32_t i = 0; i < n; ++i) out[i] = next();
}

// Four pixels at a time as the span variant takes them: one OR finds four
// with nothing to draw, one AND four stored as they are. Enlarging rows
// (no whole columns a step) get their own loop: the register the whole
// step would take keeps the walk's fraction off the stack.
template <bool KeepAlpha, bool Enlarging>
void nearest_over(const uint32_t *row, const ColumnWalk &walk, uint32_t *d, int32_t n) {
    uint64_t at = start_of(walk);
    const uint64_t step = Enlarging ? walk.fraction_step : step_of(walk);
    const auto next = [&] {
        const uint32_t p = row[static_cast<uint32_t>(at >> 32)];
        at += step;
        return p;
    };
    const uint32_t m = lanes_mask();
    // Up to an end pointer: one compare a turn, no count to keep.
    for (const uint32_t *quads_end = d + (n & ~3); d != quads_end; d += 4) {
        const uint32_t s0 = next(), s1 = next(), s2 = next(), s3 = next();
        if (((s0 | s1 | s2 | s3) & kAlphaMask) == 0) continue;
        if ((s0 & s1 & s2 & s3) >= kAlphaMask) {
            d[0] = s0, d[1] = s1, d[2] = s2, d[3] = s3;
            continue;
        }
        over_changed<KeepAlpha>(s0, d, m);
        over_changed<KeepAlpha>(s1, d + 1, m);
        over_changed<KeepAlpha>(s2, d + 2, m);
        over_changed<KeepAlpha>(s3, d + 3, m);
    }
    for (int32_t i = 0; i < (n & 3); ++i) over_changed<KeepAlpha>(next(), d + i, m);
}

template <bool KeepAlpha>
void nearest_over(const uint32_t *row, const ColumnWalk &walk, uint32_t *d, int32_t n) {
    if (n <= 0) return;
    if (walk.whole == 0) nearest_over<KeepAlpha, true>(row, walk, d, n);
    else nearest_over<KeepAlpha, false>(row, walk, d, n);
}

bool fraction_exact(const ColumnWalk &walk, int32_t n) {
    return uint64_t{static_cast<uint32_t>(n)} * walk.divisor <= uint64_t{1} << 32;
}

}  // namespace

void nearest_over_rgb(const uint32_t *row, const ColumnWalk &walk, uint32_t *dst, int32_t n) {
    if (fraction_exact(walk, n)) nearest_over<true>(row, walk, dst, n);
    else px::nearest_over_rgb(row, walk, dst, n);
}

void nearest_over_rgba(const uint32_t *row, const ColumnWalk &walk, uint32_t *dst, int32_t n) {
    if (fraction_exact(walk, n)) nearest_over<false>(row, walk, dst, n);
    else px::nearest_over_rgba(row, walk, dst, n);
}

void nearest_words(const uint32_t *row, const ColumnWalk &walk, uint32_t *out, int32_t n) {
    if (fraction_exact(walk, n)) nearest(row, walk, out, n);
    else px::nearest_words(row, walk, out, n);
}

void nearest_halfwords(const uint16_t *row, const ColumnWalk &walk, uint16_t *out, int32_t n) {
    if (fraction_exact(walk, n)) nearest(row, walk, out, n);
    else px::nearest_halfwords(row, walk, out, n);
}

}  // namespace fbc::px::swar

// The scalers' row passes for a CPU without a vector unit. Each byte is
// (next x f + cur x (65536 - f)) >> 16, which the reference's difference
// form equals exactly; each term, and their sum, stays below 2^24. Bytes 0
// and 2 (and 1 and 3) of a word are spread 24 bits apart, so one 32 x 32 ->
// 64-bit multiply-accumulate pair blends two channels without their sums
// meeting: four multiplies a word, against four per byte pair in the
// reference. The box averages keep a whole box's channel totals in two
// registers, three operations a word, where the reference adds byte by
// byte; picked everywhere, since the reference's walk down the rows of
// each box does not vectorise either.
#include <bit>

#include "pixel/scale_rows.hpp"

namespace fbc::px::swar {
namespace {

// Bytes 0 and 2 of w at bits 0 and 24; bytes 1 and 3 the same.
inline uint32_t even_bytes(uint32_t w) { return (w & 0xFFu) | ((w << 8) & 0xFF000000u); }
inline uint32_t odd_bytes(uint32_t w) { return ((w >> 8) & 0xFFu) | (w & 0xFF000000u); }

// Two channels' weighted sums, 24 bits apart.
inline uint64_t blend_lanes(uint32_t cur, uint32_t next, uint32_t f, uint32_t g) {
    return uint64_t{next} * f + uint64_t{cur} * g;
}

// The word between cur and next at f; g is 65536 - f.
inline uint32_t lerp_word(uint32_t cur, uint32_t next, uint32_t f, uint32_t g) {
    const uint64_t even = blend_lanes(even_bytes(cur), even_bytes(next), f, g);
    const uint64_t odd = blend_lanes(odd_bytes(cur), odd_bytes(next), f, g);
    const auto even_lo = uint32_t(even), even_hi = uint32_t(even >> 32);
    const auto odd_lo = uint32_t(odd), odd_hi = uint32_t(odd >> 32);
    return ((even_lo >> 16) & 0xFFu) | ((odd_lo >> 8) & 0xFF00u) | ((even_hi << 8) & 0xFF0000u) |
           ((odd_hi << 16) & 0xFF000000u);
}

}  // namespace

void lerp_rows(const uint32_t *top, const uint32_t *bottom, uint32_t *out, int32_t n, uint32_t f) {
    const uint32_t g = 65536 - f;
    for (int32_t i = 0; i < n; ++i) out[i] = lerp_word(top[i], bottom[i], f, g);
}

void lerp_words(const uint32_t *row, const WordTap *taps, uint32_t *out, int32_t n) {
    for (int32_t i = 0; i < n; ++i) {
        const WordTap &t = taps[i];
        out[i] = lerp_word(row[t.at], row[t.next], t.f, 65536 - t.f);
    }
}

// The box averages.
namespace {

// A box of up to this many words keeps each channel's total in 16 bits
// (255 x 257 = 65535).
constexpr int32_t kMaxLaneWords = 257;

// Channel totals of a box in two words: `even` holds channels 0 and 2 in
// 16-bit lanes; `shifted` is the plain total of the words shifted down by
// 8, channel 1 + channel 2 x 2^8 + channel 3 x 2^16, which channel 2's
// lane unmixes. Three operations a word: the lanes need a mask, the shifted
// total does not.
struct BoxTotals {
    uint32_t even = 0, shifted = 0;

    void add(uint32_t w) {
        even += w & 0x00FF00FFu;
        shifted += w >> 8;
    }
    // Channels 1 and 3 in 16-bit lanes; modulo 2^32, which the true value
    // is below.
    uint32_t odd() const { return shifted - ((even >> 16) << 8); }
};

// floor(total / count) from the reciprocal alone: exact for the lanes'
// totals (see Divider).
inline uint32_t quotient(uint32_t total, uint32_t reciprocal) {
#if defined(__arm__)
    // One UMULL: GCC adds a multiply for a high word it cannot prove zero.
    uint32_t low, high;
    asm("umull %0, %1, %2, %3" : "=&r"(low), "=&r"(high) : "r"(total), "r"(reciprocal));
    return high;
#else
    return static_cast<uint32_t>((uint64_t{total} * reciprocal) >> 32);
#endif
}

#if defined(__arm__)
// One row of a quad: one LDM, then three operations a word.
#define FBC_QUAD_ROW                                                           \
    "ldmia %[p], {%0, %1, %2, %3}\n\t"                                         \
    "add %[p], %[p], %[stride]\n\t"                                            \
    "add %[s], %[s], %0, lsr #8\n\tand %0, %0, %[m]\n\tadd %[e], %[e], %0\n\t" \
    "add %[s], %[s], %1, lsr #8\n\tand %1, %1, %[m]\n\tadd %[e], %[e], %1\n\t" \
    "add %[s], %[s], %2, lsr #8\n\tand %2, %2, %[m]\n\tadd %[e], %[e], %2\n\t" \
    "add %[s], %[s], %3, lsr #8\n\tand %3, %3, %[m]\n\tadd %[e], %[e], %3\n\t"
#endif

// Adds the four words at row, and at the same place in each of the next
// `rows` - 1 rows, `stride` bytes apart: the boxes of a quarter-size
// reduction. ARM takes each row with one LDM, four rows straight and other
// counts two to a loop turn, 14 instructions a row; GCC finds neither for
// the loop below.
inline void add_quads(BoxTotals &s, const uint8_t *row, intptr_t stride, int32_t rows) {
#if defined(__arm__)
    // LDM loads registers in ascending order: the four are pinned.
    register uint32_t w0 asm("r4"), w1 asm("r5"), w2 asm("r6"), w3 asm("r7");
    if (rows == 4) {
        asm volatile(FBC_QUAD_ROW FBC_QUAD_ROW FBC_QUAD_ROW FBC_QUAD_ROW
                     : "=&r"(w0), "=&r"(w1), "=&r"(w2),
                       "=&r"(w3), [p] "+r"(row), [e] "+r"(s.even), [s] "+r"(s.shifted)
                     : [stride] "r"(stride), [m] "r"(0x00FF00FFu)
                     : "memory");
        return;
    }
    int32_t turns = (rows + 1) / 2;
    asm volatile(
        "tst %[rows], #1\n\t"
        "bne 2f\n"
        "1:\n\t" FBC_QUAD_ROW "\n2:\n\t" FBC_QUAD_ROW
        "subs %[turns], %[turns], #1\n\t"
        "bne 1b"
        : "=&r"(w0), "=&r"(w1), "=&r"(w2),
          "=&r"(w3), [p] "+r"(row), [e] "+r"(s.even), [s] "+r"(s.shifted), [turns] "+r"(turns)
        : [stride] "r"(stride), [m] "r"(0x00FF00FFu), [rows] "r"(rows)
        : "cc", "memory");
#else
    for (int32_t r = 0; r < rows; ++r, row += stride) {
        const auto *p = reinterpret_cast<const uint32_t *>(row);
        s.add(p[0]), s.add(p[1]), s.add(p[2]), s.add(p[3]);
    }
#endif
}

void add_words(BoxTotals &s, const uint8_t *row, intptr_t stride, int32_t rows, int32_t count) {
    for (int32_t r = 0; r < rows; ++r, row += stride) {
        const auto *p = reinterpret_cast<const uint32_t *>(row);
        for (int32_t k = 0; k < count; ++k) s.add(p[k]);
    }
}

uint32_t average(const BoxTotals &s, const Divider &divide) {
    const uint32_t odd = s.odd();
    if ((divide.count & (divide.count - 1)) == 0) {
        // A power of two (a quarter-size reduction's 16): a shift divides
        // both lanes of a word at once, and a lane's quotient fits its byte.
        const int shift = std::countr_zero(divide.count);
        return (s.even >> shift & 0x00FF00FFu) | (odd >> shift & 0x00FF00FFu) << 8;
    }
    const auto reciprocal = static_cast<uint32_t>(divide.reciprocal);
    return quotient(s.even & 0xFFFFu, reciprocal) | quotient(odd & 0xFFFFu, reciprocal) << 8 |
           quotient(s.even >> 16, reciprocal) << 16 | quotient(odd >> 16, reciprocal) << 24;
}

// One destination word of any box; kept out of line so that the quarter
// loop below keeps its registers.
[[gnu::noinline]] void box_word(const uint32_t *top, intptr_t stride, int32_t rows, const BoxTap &t,
                                uint32_t *out) {
    BoxTotals s;
    const auto *row = reinterpret_cast<const uint8_t *>(top + t.first);
    if (t.count == 4 && rows <= kMaxLaneWords / 4) {
        add_quads(s, row, stride, rows);
    } else if (int64_t{t.count} * rows <= kMaxLaneWords && t.divide.count > 1) {
        add_words(s, row, stride, rows, t.count);
    } else {
        // A box of one word has no reciprocal below 2^32; a larger box than
        // the lanes hold goes the long way.
        px::box_row(top, stride, rows, &t, out, 1);
        return;
    }
    *out = average(s, t.divide);
}

}  // namespace

void box_row(const uint32_t *top, intptr_t stride, int32_t rows, const BoxTap *taps, uint32_t *out,
             int32_t n) {
    const BoxTap *end = taps + n;
    while (taps != end) {
        // Runs of quarter-size boxes, 4 x 4 words averaged by a shift.
        if (rows == 4)
            for (; taps != end && taps->count == 4; ++taps, ++out) {
                BoxTotals s;
                add_quads(s, reinterpret_cast<const uint8_t *>(top + taps->first), stride, 4);
                const uint32_t odd = s.odd();
                *out = (s.even >> 4 & 0x00FF00FFu) | (odd >> 4 & 0x00FF00FFu) << 8;
            }
        if (taps != end) box_word(top, stride, rows, *taps++, out++);
    }
}

}  // namespace fbc::px::swar

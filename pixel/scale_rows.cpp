// The scalers' row passes as plain loops: the readable equations, which
// the compiler also vectorises where it can.
#include "pixel/scale_rows.hpp"

#include "pixel/channel.hpp"

namespace fbc::px {
namespace {

template <typename Pixel>
void nearest(const Pixel *row, const ColumnWalk &walk, Pixel *out, int32_t n) {
    int32_t at = walk.first;
    uint32_t rem = walk.rem;
    for (int32_t i = 0; i < n; ++i) {
        out[i] = row[at];
        step(walk, at, rem);
    }
}

template <bool KeepAlpha>
void nearest_over(const uint32_t *row, const ColumnWalk &walk, uint32_t *dst, int32_t n) {
    int32_t at = walk.first;
    uint32_t rem = walk.rem;
    for (int32_t i = 0; i < n; ++i) {
        dst[i] = over<KeepAlpha>(row[at], dst[i]);
        step(walk, at, rem);
    }
}

uint32_t lerp_bytes(uint32_t cur, uint32_t next, uint32_t f) {
    const auto w = static_cast<int32_t>(f);
    uint32_t out = 0;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        const auto c = static_cast<int32_t>((cur >> shift) & 0xFFu);
        const auto n = static_cast<int32_t>((next >> shift) & 0xFFu);
        out |= static_cast<uint32_t>(c + (((n - c) * w) >> 16)) << shift;
    }
    return out;
}

}  // namespace

void nearest_words(const uint32_t *row, const ColumnWalk &walk, uint32_t *out, int32_t n) {
    nearest(row, walk, out, n);
}

void nearest_halfwords(const uint16_t *row, const ColumnWalk &walk, uint16_t *out, int32_t n) {
    nearest(row, walk, out, n);
}

void nearest_over_rgb(const uint32_t *row, const ColumnWalk &walk, uint32_t *dst, int32_t n) {
    nearest_over<true>(row, walk, dst, n);
}

void nearest_over_rgba(const uint32_t *row, const ColumnWalk &walk, uint32_t *dst, int32_t n) {
    nearest_over<false>(row, walk, dst, n);
}

void lerp_rows(const uint32_t *top, const uint32_t *bottom, uint32_t *out, int32_t n, uint32_t f) {
    // Byte by byte over the row: a loop of one operation the compiler can widen.
    const auto *a = reinterpret_cast<const uint8_t *>(top);
    const auto *b = reinterpret_cast<const uint8_t *>(bottom);
    auto *o = reinterpret_cast<uint8_t *>(out);
    const auto w = static_cast<int32_t>(f);
    for (int32_t k = 0; k < 4 * n; ++k)
        o[k] = static_cast<uint8_t>(a[k] + (((b[k] - a[k]) * w) >> 16));
}

void lerp_words(const uint32_t *row, const WordTap *taps, uint32_t *out, int32_t n) {
    for (int32_t i = 0; i < n; ++i)
        out[i] = lerp_bytes(row[taps[i].at], row[taps[i].next], taps[i].f);
}

void box_row(const uint32_t *top, intptr_t stride, int32_t rows, const BoxTap *taps, uint32_t *out,
             int32_t n) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(top);
    for (int32_t i = 0; i < n; ++i)
        out[i] = box_average(bytes + intptr_t{4} * taps[i].first, 4, taps[i].count, taps[i].divide,
                             rows, stride);
}

}  // namespace fbc::px

// The box average: channel totals over a block of colour words, each
// divided by the number of words, rounding down.
#pragma once

#include <cstdint>

namespace fbc::px {

// floor(total / count) by a reciprocal multiply and one correction: the
// reciprocal is worked out once, the divisions are per channel. The
// correction is needed only when total x (count - 1) reaches 2^32, so
// kernels that know their totals are small may take the high word of
// total x reciprocal alone.
struct Divider {
    explicit Divider(uint32_t n = 1) : count(n), reciprocal(((uint64_t{1} << 32) + n - 1) / n) {}
    uint32_t operator()(uint32_t total) const {
        auto q = static_cast<uint32_t>((uint64_t{total} * reciprocal) >> 32);
        return q * count > total ? q - 1 : q;
    }

    uint32_t count;
    uint64_t reciprocal;  // ceil(2^32 / count)
};

// The box average of `count` pixels of four channels each, `stride`
// channels apart, in each of `rows` rows `row_stride` channels apart, as a
// colour word: channel totals divided by `divide`.
template <class Channel>
uint32_t box_average(const Channel *channels, intptr_t stride, int32_t count, const Divider &divide,
                     int32_t rows = 1, intptr_t row_stride = 0) {
    uint32_t sum[4] = {0, 0, 0, 0};
    for (int32_t r = 0; r < rows; ++r, channels += row_stride) {
        const Channel *c = channels;
        for (int32_t k = 0; k < count; ++k, c += stride)
            for (int ch = 0; ch < 4; ++ch) sum[ch] += c[ch];
    }
    uint32_t out = 0;
    for (int ch = 0; ch < 4; ++ch) out |= divide(sum[ch]) << (8 * ch);
    return out;
}

}  // namespace fbc::px

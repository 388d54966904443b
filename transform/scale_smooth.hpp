// The filters of the smoothing scalers, shared with the one-dimensional
// resampler: along one direction, each destination pixel is either a box
// average over every source pixel that falls on it, or a 16.16 linear
// interpolation between two neighbours.
#pragma once

#include <cstdint>
#include <vector>

namespace fbc {

enum class Filter { box, linear };

// Where one destination pixel reads, along one direction, relative to the
// start of the source area: box: `count` pixels from `first`; linear:
// `first` and the pixel after it, the latter weighted `f` of 65536.
struct Tap {
    int32_t first;
    int32_t count;
    uint32_t f;
};

// Taps of destination pixels `from` .. `to` - 1 of `dst_size`, reading
// `src_size` source pixels. Box factor (src_size << 16) / dst_size; linear
// step ((src_size - 1) << 16) / (dst_size - 1). No tap reaches outside
// 0 .. src_size - 1.
std::vector<Tap> make_taps(Filter filter, int32_t src_size, int32_t dst_size, int32_t from,
                           int32_t to);

// floor(total / count) by a reciprocal multiply and one correction: the
// reciprocal is worked out once, the divisions are per channel.
class Divider {
public:
    explicit Divider(uint32_t count)
        : count_(count), reciprocal_(((uint64_t{1} << 32) + count - 1) / count) {}
    uint32_t operator()(uint32_t total) const {
        auto q = static_cast<uint32_t>((uint64_t{total} * reciprocal_) >> 32);
        return q * count_ > total ? q - 1 : q;
    }

private:
    uint32_t count_;
    uint64_t reciprocal_;
};

// The box average of `count` pixels of four channels each, `stride`
// channels apart, as a colour word: channel sums divided by `divide`.
template <class Channel>
uint32_t box_average(const Channel *channels, intptr_t stride, int32_t count,
                     const Divider &divide) {
    uint32_t sum[4] = {0, 0, 0, 0};
    for (int32_t k = 0; k < count; ++k, channels += stride)
        for (int ch = 0; ch < 4; ++ch) sum[ch] += channels[ch];
    uint32_t out = 0;
    for (int ch = 0; ch < 4; ++ch) out |= divide(sum[ch]) << (8 * ch);
    return out;
}

}  // namespace fbc

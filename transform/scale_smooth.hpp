// The filters of the smoothing scalers, shared with the one-dimensional
// resampler: along one direction, each destination pixel is either a box
// average over every source pixel that falls on it, or a 16.16 linear
// interpolation between two neighbours.
#pragma once

#include <cstdint>
#include <vector>

#include "pixel/box_average.hpp"

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

}  // namespace fbc

// The filtering scanline engine behind the box down-scalers and the linear
// scaler: each direction is either a box average over every source pixel
// that falls on a destination pixel, or a 16.16 linear interpolation.
#pragma once

#include <cstdint>
#include <vector>

#include "fbcompose/image.h"
#include "transform/drawer_guard.hpp"

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

// floor(total / count) by a reciprocal multiply and one correction.
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

// Draws the rows and columns of the guard's clip, one span call per row,
// filtering horizontally with `fx` and vertically with `fy`; the guard has
// let the drawing through.
void smooth_scale(const DrawerGuard &guard, xc_image *dst, const xg_area &src_area,
                  const xg_area &dst_area, uint32_t color, Filter fx, Filter fy);

}  // namespace fbc

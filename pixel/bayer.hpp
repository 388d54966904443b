// The 4x4 Bayer matrix of the panel converters' ordered dither: the row is
// picked by output x, the column by output y. Data only, so the vector
// kernels share it with the reference.
#pragma once

#include <cstdint>

namespace fbc::px {

inline constexpr uint8_t kBayer[4][4] = {
    {0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};

}  // namespace fbc::px

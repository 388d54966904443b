// The smoothing dispatcher: a box filter in each direction that shrinks
// below half, linear interpolation otherwise.
#include "fbcompose/transform.h"
#include "transform/scale_common.hpp"

extern "C" {

void xc_scale_smooth(const xc_image *src, xc_image *dst, const xg_area *clip,
                     const xg_area *src_area, const xg_area *dst_area, uint32_t color) {
    // In 64 bits: the drawer chosen checks the areas, this only compares.
    const bool shrink_x = fbc::wide_width(*dst_area) < fbc::wide_width(*src_area) / 2;
    const bool shrink_y = fbc::wide_height(*dst_area) < fbc::wide_height(*src_area) / 2;
    xc_scale_func drawer = xc_scale_linear;
    if (shrink_x && shrink_y)
        drawer = xc_image_scale_down_xy;
    else if (shrink_x)
        drawer = xc_image_scale_down_x;
    else if (shrink_y)
        drawer = xc_image_scale_down_y;
    drawer(src, dst, clip, src_area, dst_area, color);
}

}  // extern "C"

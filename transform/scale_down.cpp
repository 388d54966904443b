// Box down-scalers: average in each direction that shrinks, interpolate
// linearly in one that does not.
#include "fbcompose/transform.h"
#include "transform/smooth_engine.hpp"

namespace fbc {
namespace {

void scale_down(const xc_image *src, xc_image *dst, const xg_area *clip, const xg_area *src_area,
                const xg_area *dst_area, uint32_t color, Filter fx, Filter fy) {
    const DrawerGuard guard(src, dst, clip, src_area, dst_area, color);
    if (guard) smooth_scale(guard, dst, *src_area, *dst_area, color, fx, fy);
}

}  // namespace
}  // namespace fbc

extern "C" {

void xc_image_scale_down_x(const xc_image *src, xc_image *dst, const xg_area *clip,
                           const xg_area *src_area, const xg_area *dst_area, uint32_t color) {
    fbc::scale_down(src, dst, clip, src_area, dst_area, color, fbc::Filter::box,
                    fbc::Filter::linear);
}

void xc_image_scale_down_y(const xc_image *src, xc_image *dst, const xg_area *clip,
                           const xg_area *src_area, const xg_area *dst_area, uint32_t color) {
    fbc::scale_down(src, dst, clip, src_area, dst_area, color, fbc::Filter::linear,
                    fbc::Filter::box);
}

void xc_image_scale_down_xy(const xc_image *src, xc_image *dst, const xg_area *clip,
                            const xg_area *src_area, const xg_area *dst_area, uint32_t color) {
    fbc::scale_down(src, dst, clip, src_area, dst_area, color, fbc::Filter::box,
                    fbc::Filter::box);
}

}  // extern "C"

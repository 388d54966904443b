// Bilinear scaling that never reads outside the source area.
#include "core/assert.hpp"
#include "fbcompose/transform.h"
#include "transform/smooth_engine.hpp"

extern "C" {

void xc_scale_linear(const xc_image *src, xc_image *dst, const xg_area *clip,
                     const xg_area *src_area, const xg_area *dst_area, uint32_t color) {
    const fbc::DrawerGuard guard(src, dst, clip, src_area, dst_area, color);
    if (!guard) return;
    // The guard has refused any area outside the source, so this holds
    // whatever the caller passed.
    FBC_ASSERT("scale_linear", src_area->x1 >= 0 && src_area->x2 <= src->width &&
                                   src_area->x1 < src_area->x2);
    FBC_ASSERT("scale_linear", src_area->y1 >= 0 && src_area->y2 <= src->height &&
                                   src_area->y1 < src_area->y2);
    fbc::smooth_scale(guard, dst, *src_area, *dst_area, color, fbc::Filter::linear,
                      fbc::Filter::linear);
}

}  // extern "C"

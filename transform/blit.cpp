// The blit: clipping, the single-colour shortcut and the choice of drawer.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "core/pixel_bounds.hpp"
#include "fbcompose/draw.h"
#include "fbcompose/loader.h"
#include "fbcompose/pixel.h"
#include "fbcompose/transform.h"
#include "transform/scale_common.hpp"

namespace fbc {
namespace {

// A source rectangle of one pixel read as a 32-bit word with `width` words
// per row, unchecked against the size (compat:); only a read outside the
// pixel block is refused.
bool read_single_pixel(const xc_image *src, int32_t sx, int32_t sy, uint32_t *pixel) {
    const int64_t offset = (int64_t{sy} * src->width + sx) * 4;
    if (offset < 0 || offset + 4 > block_bytes(src)) return false;
    std::memcpy(pixel, src->data + offset, 4);
    return true;
}

// compat: c = c x 256 / a, at most 255: the factor 256 is kept on purpose.
uint32_t unpremultiply(uint32_t pixel) {
    const uint32_t a = pixel >> 24;
    if (a == 255) return pixel;
    uint32_t out = pixel & 0xFF000000u;
    for (int shift = 0; shift < 24; shift += 8)
        out |= std::min<uint32_t>((((pixel >> shift) & 0xFF) * 256) / a, 255) << shift;
    return out;
}

void blit_single_color(xc_image *src, xc_image *dst, const xg_area *clip, int32_t sx, int32_t sy,
                       xg_area area, uint32_t color) {
    uint32_t pixel;
    if (!read_single_pixel(src, sx, sy, &pixel)) return;
    if (color != kNoModulation) {
        if (pixel == kNoModulation) {
            pixel = color;
        } else {
            uint32_t out = 0;
            xc_blend_pixels_mul_color_rgba_to_rgba(&pixel, &out, 1, color);
            pixel = out;
        }
    }
    if ((pixel >> 24) == 0) return;
    pixel = unpremultiply(pixel);
    xc_rectangle_draw(dst, clip, &area, pixel);
}

xc_scale_func choose_drawer(int32_t sw, int32_t sh, int32_t dw, int32_t dh, int smooth) {
    if (sw == dw && sh == dh) return xc_scale_noscale;
    if (sw == 1) return xc_scale_h;
    if (sh == 1) return xc_scale_v;
    return smooth ? xc_scale_smooth : xc_scale_sample;
}

// (pixels x factor) >> 16, the move of a destination edge for `pixels`
// source pixels clipped away. A product beyond 64 bits moves the edge past
// any int32 coordinate; it is reported as such a move.
int64_t scaled(int64_t pixels, int64_t factor) {
    constexpr int64_t kFar = int64_t{1} << 40;
    if (pixels != 0 && (factor > INT64_MAX / pixels || factor < -(INT64_MAX / pixels)))
        return factor > 0 ? kFar : -kFar;
    return (pixels * factor) >> 16;
}

}  // namespace
}  // namespace fbc

extern "C" {

// Edges are moved in 64 bits. An empty source area (a division by zero)
// and an edge moved beyond the int32 range leave everything as it was and
// give 0: the blit passes neither.
int xc_scale_handle_clip(const xc_image *src, const xc_image * /*dst*/, xg_area *clip,
                         xg_area *src_area, xg_area *dst_area) {
    const int64_t sw = fbc::wide_width(*src_area), sh = fbc::wide_height(*src_area);
    if (sw == 0 || sh == 0) return 0;
    const int64_t fx = (fbc::wide_width(*dst_area) << 16) / sw;
    const int64_t fy = (fbc::wide_height(*dst_area) << 16) / sh;
    xg_area s = *src_area;
    int64_t x1 = dst_area->x1, y1 = dst_area->y1, x2 = dst_area->x2, y2 = dst_area->y2;
    if (s.x1 < 0) {
        x1 += fbc::scaled(-int64_t{s.x1}, fx);
        s.x1 = 0;
    }
    if (s.y1 < 0) {
        y1 += fbc::scaled(-int64_t{s.y1}, fy);
        s.y1 = 0;
    }
    if (src->width < s.x2) {
        x2 -= fbc::scaled(int64_t{s.x2} - src->width, fx);
        s.x2 = src->width;
    }
    if (src->height < s.y2) {
        y2 -= fbc::scaled(int64_t{s.y2} - src->height, fy);
        s.y2 = src->height;
    }
    for (const int64_t edge : {x1, y1, x2, y2})
        if (edge < INT32_MIN || edge > INT32_MAX) return 0;
    *src_area = s;
    *dst_area = {static_cast<int32_t>(x1), static_cast<int32_t>(y1), static_cast<int32_t>(x2),
                 static_cast<int32_t>(y2)};
    xg_area_cross(clip, dst_area);
    return clip->x1 < clip->x2 && clip->y1 < clip->y2;
}

void xc_image_blit(xc_image *src, xc_image *dst, const xg_area *clip, int32_t sx, int32_t sy,
                   int32_t sw, int32_t sh, int32_t dx, int32_t dy, int32_t dw, int32_t dh,
                   int smooth, uint32_t color) {
    if (!(dw > 0 && dh > 0 && sw > 0 && sh > 0)) return;
    if (!src->data && src->loader) xc_image_load_data_rescaled(src, dw, dh);
    if (!src->data || !dst->data) return;
    const int64_t right = int64_t{dx} + dw, bottom = int64_t{dy} + dh;
    if (!(clip->x1 < right && dx < clip->x2 && clip->y1 < bottom && dy < clip->y2)) return;
    if (right > INT32_MAX || bottom > INT32_MAX) return;
    const xg_area dst_area{dx, dy, dx + dw, dy + dh};
    if (sw == 1 && sh == 1) {
        fbc::blit_single_color(src, dst, clip, sx, sy, dst_area, color);
        return;
    }
    if (int64_t{sx} + sw > INT32_MAX || int64_t{sy} + sh > INT32_MAX) return;
    xg_area src_clipped{sx, sy, sx + sw, sy + sh};
    xg_area dst_clipped = dst_area;
    xg_area clip_copy = *clip;
    // The drawer's guard holds the clip to the destination image and checks
    // both images' rows; a source area clipped to nothing draws nothing.
    if (!xc_scale_handle_clip(src, dst, &clip_copy, &src_clipped, &dst_clipped)) return;
    fbc::choose_drawer(sw, sh, dw, dh, smooth)(src, dst, &clip_copy, &src_clipped, &dst_clipped,
                                               color);
}

}  // extern "C"

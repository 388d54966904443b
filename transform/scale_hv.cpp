// Drawers for a source one pixel wide (every row one colour) or one pixel
// high (every row the same). Both take the source as 32-bit words with
// `width` words per row, and keep their row on the stack.
#include <cstdint>

#include "core/pixel_bounds.hpp"
#include "core/stack_buffer.hpp"
#include "fbcompose/transform.h"
#include "transform/scale_common.hpp"

namespace fbc {
namespace {

// Wide enough for any panel without touching the heap.
using RowBuffer = StackBuffer<uint32_t, 2048>;

void fill_row(uint32_t *row, int32_t n, uint32_t pixel) {
    for (int32_t i = 0; i < n; ++i) row[i] = pixel;
}

}  // namespace
}  // namespace fbc

extern "C" {

void xc_scale_h(const xc_image *src, xc_image *dst, const xg_area *clip,
                const xg_area *src_area, const xg_area *dst_area, uint32_t color) {
    if (!fbc::rows_hold(src, 4)) return;
    const xc_draw_func draw = fbc::row_function(src, dst, color);
    const int32_t n = fbc::width_of(*clip);
    fbc::RowBuffer row(n);
    const int32_t sh = fbc::height_of(*src_area), dh = fbc::height_of(*dst_area);
    if (sh == dh) {
        const uint32_t *s = fbc::word_at(src, src_area->x1, clip->y1 - dst_area->y1 + src_area->y1);
        for (int32_t y = clip->y1; y < clip->y2; ++y, s += src->width) {
            fbc::fill_row(row.data(), n, *s);
            draw(row.data(), xc_image_pointer(dst, clip->x1, y), n, color);
        }
        return;
    }
    const int64_t step = fbc::end_to_end_step(sh, dh);
    const int64_t position = int64_t{clip->y1 - dst_area->y1} * step;
    int64_t f = position & 0xFFFF;
    const uint32_t *s = fbc::word_at(src, src_area->x1, src_area->y1 + static_cast<int32_t>(position >> 16));
    uint32_t pixel = 0;
    for (int32_t y = clip->y1; y < clip->y2; ++y) {
        pixel = f == 0 ? *s
                       : fbc::lerp_word(*s, s[src->width], static_cast<uint32_t>(f),
                                        src->has_alpha, pixel);
        f += step;
        s += (f >> 16) * src->width;
        f &= 0xFFFF;
        fbc::fill_row(row.data(), n, pixel);
        draw(row.data(), xc_image_pointer(dst, clip->x1, y), n, color);
    }
}

void xc_scale_v(const xc_image *src, xc_image *dst, const xg_area *clip,
                const xg_area *src_area, const xg_area *dst_area, uint32_t color) {
    if (!fbc::rows_hold(src, 4)) return;
    const xc_draw_func draw = fbc::row_function(src, dst, color);
    const int32_t n = fbc::width_of(*clip);
    const int32_t sw = fbc::width_of(*src_area), dw = fbc::width_of(*dst_area);
    if (sw == dw) {
        const uint32_t *s = fbc::word_at(src, clip->x1 - dst_area->x1 + src_area->x1, src_area->y1);
        for (int32_t y = clip->y1; y < clip->y2; ++y)
            draw(s, xc_image_pointer(dst, clip->x1, y), n, color);
        return;
    }
    fbc::RowBuffer row(n);
    const int64_t step = fbc::end_to_end_step(sw, dw);
    const int64_t position = int64_t{clip->x1 - dst_area->x1} * step;
    int64_t f = position & 0xFFFF;
    int32_t x = src_area->x1 + static_cast<int32_t>(position >> 16);
    uint32_t pixel = 0;
    for (int32_t i = 0; i < n; ++i) {
        const uint32_t *s = fbc::word_at(src, x, src_area->y1);
        // The right neighbour is read even at weight 0; at the image's last
        // column (where the weight is always 0) the pixel stands in for it.
        const uint32_t next = x + 1 < src->width ? s[1] : s[0];
        pixel = fbc::lerp_word(s[0], next, static_cast<uint32_t>(f), src->has_alpha, pixel);
        row[static_cast<size_t>(i)] = pixel;
        f += step;
        x += static_cast<int32_t>(f >> 16);
        f &= 0xFFFF;
    }
    for (int32_t y = clip->y1; y < clip->y2; ++y)
        draw(row.data(), xc_image_pointer(dst, clip->x1, y), n, color);
}

}  // extern "C"

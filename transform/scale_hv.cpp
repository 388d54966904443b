// Drawers for a source one pixel wide (every row one colour) or one pixel
// high (every row the same). Both take the source as 32-bit words with
// `width` words per row, and keep their row on the stack.
#include <cstdint>

#include "core/stack_buffer.hpp"
#include "fbcompose/transform.h"
#include "transform/drawer_guard.hpp"
#include "transform/scale_common.hpp"

namespace fbc {
namespace {

// Wide enough for any panel without touching the heap.
using RowBuffer = StackBuffer<uint32_t, 2048>;

constexpr DrawerKind kWordSource{.src_rows = Rows::words};

void fill_row(uint32_t *row, int32_t n, uint32_t pixel) {
    for (int32_t i = 0; i < n; ++i) row[i] = pixel;
}

}  // namespace
}  // namespace fbc

extern "C" {

void xc_scale_h(const xc_image *src, xc_image *dst, const xg_area *clip, const xg_area *src_area,
                const xg_area *dst_area, uint32_t color) {
    const fbc::DrawerGuard guard(src, dst, clip, src_area, dst_area, color, fbc::kWordSource);
    if (!guard) return;
    const fbc::RowWriter &out = guard.out();
    const xc_image *from = guard.source();
    const xg_area &c = guard.clip();
    const int32_t n = fbc::width_of(c), x = src_area->x1;
    fbc::RowBuffer row(n);
    const int32_t sh = fbc::height_of(*src_area), dh = fbc::height_of(*dst_area);
    if (sh == dh) {
        for (int32_t y = c.y1; y < c.y2; ++y) {
            fbc::fill_row(row.data(), n, *fbc::word_at(from, x, y - dst_area->y1 + src_area->y1));
            out.draw(row.data(), nullptr, xc_image_pointer(dst, c.x1, y), n);
        }
        return;
    }
    const int64_t step = fbc::end_to_end_step(sh, dh);
    const int64_t position = int64_t{c.y1 - dst_area->y1} * step;
    int64_t f = position & fbc::kFractionMask;
    // The source row as a number: it only becomes an address when read.
    int64_t r = src_area->y1 + (position >> fbc::kFixedShift);
    uint32_t pixel = 0;
    for (int32_t y = c.y1; y < c.y2; ++y) {
        const uint32_t *s = fbc::word_at(from, x, static_cast<int32_t>(r));
        pixel = f == 0 ? *s
                       : fbc::lerp_word(*s, s[from->width], static_cast<uint32_t>(f),
                                        from->has_alpha, pixel);
        f += step;
        r += f >> fbc::kFixedShift;
        f &= fbc::kFractionMask;
        fbc::fill_row(row.data(), n, pixel);
        out.draw(row.data(), nullptr, xc_image_pointer(dst, c.x1, y), n);
    }
}

void xc_scale_v(const xc_image *src, xc_image *dst, const xg_area *clip, const xg_area *src_area,
                const xg_area *dst_area, uint32_t color) {
    const fbc::DrawerGuard guard(src, dst, clip, src_area, dst_area, color, fbc::kWordSource);
    if (!guard) return;
    const fbc::RowWriter &out = guard.out();
    const xc_image *from = guard.source();
    const xg_area &c = guard.clip();
    const int32_t n = fbc::width_of(c);
    const int32_t sw = fbc::width_of(*src_area), dw = fbc::width_of(*dst_area);
    if (sw == dw) {
        const uint32_t *s = fbc::word_at(from, c.x1 - dst_area->x1 + src_area->x1, src_area->y1);
        for (int32_t y = c.y1; y < c.y2; ++y) out.draw(s, from, xc_image_pointer(dst, c.x1, y), n);
        return;
    }
    fbc::RowBuffer row(n);
    const int64_t step = fbc::end_to_end_step(sw, dw);
    const int64_t position = int64_t{c.x1 - dst_area->x1} * step;
    int64_t f = position & fbc::kFractionMask;
    int64_t x = src_area->x1 + (position >> fbc::kFixedShift);
    uint32_t pixel = 0;
    for (int32_t i = 0; i < n; ++i) {
        const uint32_t *s = fbc::word_at(from, static_cast<int32_t>(x), src_area->y1);
        // The right neighbour is read even at weight 0; at the image's last
        // column (where the weight is always 0) the pixel stands in for it.
        const uint32_t next = x + 1 < from->width ? s[1] : s[0];
        pixel = fbc::lerp_word(s[0], next, static_cast<uint32_t>(f), from->has_alpha, pixel);
        row[static_cast<size_t>(i)] = pixel;
        f += step;
        x += f >> fbc::kFixedShift;
        f &= fbc::kFractionMask;
    }
    for (int32_t y = c.y1; y < c.y2; ++y)
        out.draw(row.data(), nullptr, xc_image_pointer(dst, c.x1, y), n);
}

}  // extern "C"

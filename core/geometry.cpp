// Rectangles (origin and size) and areas (two corners, the second
// exclusive), and colour premultiplication.
#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "core/log.hpp"
#include "fbcompose/image.h"

namespace {

// Ends are summed in 64 bits: any int32 origin and size may be passed.
int64_t right(const xg_rect *r) { return int64_t{r->x} + r->w; }
int64_t bottom(const xg_rect *r) { return int64_t{r->y} + r->h; }

}  // namespace

extern "C" {

// compat: strict comparisons: rectangles that only touch count as
// crossing, and so does an empty rectangle lying on another's edge.
int xg_rect_is_cross(const xg_rect *a, const xg_rect *b) {
    if (right(a) < b->x || right(b) < a->x) return 0;
    if (bottom(a) < b->y || bottom(b) < a->y) return 0;
    return 1;
}

// Returns out->h, which callers must not take as "non-empty": touching
// rectangles give a zero width with a non-zero result. Crossing rectangles
// give a width between min(a.w, b.w, 0) and max(a.w, b.w): it always fits.
int xg_rect_intersect(xg_rect *out, const xg_rect *a, const xg_rect *b) {
    if (!xg_rect_is_cross(a, b)) {
        out->w = out->h = 0;
        return 0;
    }
    out->x = std::max(a->x, b->x);
    out->w = static_cast<int32_t>(std::min(right(a), right(b)) - out->x);
    out->y = std::max(a->y, b->y);
    out->h = static_cast<int32_t>(std::min(bottom(a), bottom(b)) - out->y);
    return out->h;
}

void xg_area_cross(xg_area *a, const xg_area *b) {
    a->x1 = std::max(a->x1, b->x1);
    a->y1 = std::max(a->y1, b->y1);
    a->x2 = std::min(a->x2, b->x2);
    a->y2 = std::min(a->y2, b->y2);
}

void xg_area_intersect_area(xg_area *a, const xg_area *b) {
    if (a->x1 < b->x2 && b->x1 < a->x2 && a->y1 < b->y2 && b->y1 < a->y2) {
        xg_area_cross(a, b);
    } else {
        a->x2 = a->x1;
        a->y2 = a->y1;
    }
}

// A size beyond the int32 range wraps, as two's complement arithmetic
// always gave it, instead of overflowing.
void xg_rect_from_area(xg_rect *rect, const xg_area *area) {
    rect->x = area->x1;
    rect->y = area->y1;
    rect->w = static_cast<int32_t>(uint32_t(area->x2) - uint32_t(area->x1));
    rect->h = static_cast<int32_t>(uint32_t(area->y2) - uint32_t(area->y1));
}

// compat: c = c * a >> 8: the blend arithmetic divides by shifting too, so an
// opaque 255 channel becomes 254 here by design.
void xg_color_premultiply(uint32_t *color) {
    const uint32_t a = *color >> 24;
    uint32_t out = *color & 0xFF000000u;
    for (int shift = 0; shift < 24; shift += 8) {
        const uint32_t c = (*color >> shift) & 0xFFu;
        out |= ((c * a) >> 8) << shift;
    }
    *color = out;
}

void xc_print_area(const xg_area *area, const char *name) {
    fbc::log_out("%s: x1 = %d y1 = %d x2 = %d y2 = %d\n", name, area->x1, area->y1, area->x2,
                 area->y2);
}

}  // extern "C"

// Filled rectangles: one fill span per row.
#include <algorithm>

#include "draw/shape_target.hpp"
#include "fbcompose/draw.h"
#include "fbcompose/pixel.h"

extern "C" {

void xc_rectangle_draw(xc_image *image, const xg_area *clip, xg_area *area, uint32_t color) {
    if ((color >> 24) == 0) return;
    // The caller's area becomes the drawn part. Corners are compared, not
    // subtracted: any int32 corners may come in.
    xg_area_cross(area, clip);
    if (area->x2 <= area->x1 || area->y2 <= area->y1) return;
    if (!fbc::words_addressable(image)) return;
    // The clip should lie within the image; the image bounds keep one that
    // does not from reaching outside the pixels.
    const xg_area box = fbc::clip_to_image(image, *area);
    if (box.x2 <= box.x1) return;
    const int32_t width = box.x2 - box.x1;
    xg_color_premultiply(&color);
    const xc_fill_func fill = xc_get_fill_func(color, image);
    for (int32_t y = box.y1; y < box.y2; ++y)
        fill(color, fbc::shape_pixel(image, box.x1, y), width);
}

}  // extern "C"

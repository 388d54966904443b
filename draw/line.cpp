// One-pixel lines: horizontal, vertical and single points with the colour
// as given, every other line by Bresenham with the premultiplied colour.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "draw/shape_target.hpp"
#include "fbcompose/draw.h"

namespace fbc {
namespace {

// d = ((255 - a) * d >> 8) + c for the colour bytes; the byte store
// truncates an unpremultiplied colour's overflow.
void plot_rgb(uint8_t *d, uint32_t color) {
    const uint32_t inv = 255 - (color >> 24);
    for (int i = 0; i < 3; ++i)
        d[i] = static_cast<uint8_t>(((inv * d[i]) >> 8) + ((color >> (8 * i)) & 0xFF));
}

// As plot_rgb, and the alpha byte the same way: d3 = ((255 - a) * d3 >> 8) + a.
void plot_rgba(uint8_t *d, uint32_t color) {
    plot_rgb(d, color);
    const uint32_t a = color >> 24;
    d[3] = static_cast<uint8_t>((((255 - a) * d[3]) >> 8) + a);
}

using Plot = void (*)(uint8_t *, uint32_t);

struct Canvas {
    xc_image *image;
    xg_area bounds;  // the whole image
    Plot plot;

    // Every write goes through here: pixels outside the image are dropped.
    void put(int64_t x, int64_t y, uint32_t color) const {
        if (inside(bounds, x, y))
            plot(shape_pixel(image, static_cast<int32_t>(x), static_cast<int32_t>(y)), color);
    }
};

void draw_point(const Canvas &c, const xg_area &clip, int32_t x, int32_t y, uint32_t color) {
    if (inside(clip, x, y)) c.put(x, y, color);
}

// The right clip edge is not tested and the lower end point is not drawn.
void draw_vertical(const Canvas &c, const xg_area &clip, int32_t x, int32_t y0, int32_t y1,
                   uint32_t color) {
    if (x < clip.x1) return;
    const int32_t top = std::max(std::min(y0, y1), clip.y1);
    const int32_t end = std::min(std::max(y0, y1), clip.y2);
    for (int32_t y = top; y < end; ++y) c.put(x, y, color);
}

// The bottom clip edge is not tested and the right end point is not drawn.
void draw_horizontal(const Canvas &c, const xg_area &clip, int32_t y, int32_t x0, int32_t x1,
                     uint32_t color) {
    if (y < clip.y1) return;
    const int32_t left = std::max(std::min(x0, x1), clip.x1);
    const int32_t end = std::min(std::max(x0, x1), clip.x2);
    for (int32_t x = left; x < end; ++x) c.put(x, y, color);
}

// Bresenham with doubled deltas; both end points are drawn. The walk stops
// early once the major coordinate has left the clip for good.
void draw_bresenham(const Canvas &c, const xg_area &clip, int32_t x0, int32_t y0, int32_t x1,
                    int32_t y1, uint32_t color) {
    const int64_t ax = 2 * std::llabs(int64_t{x1} - x0);
    const int64_t ay = 2 * std::llabs(int64_t{y1} - y0);
    const int32_t sx = x1 > x0 ? 1 : -1;
    const int32_t sy = y1 > y0 ? 1 : -1;
    int64_t x = x0, y = y0;
    if (ax <= ay) {
        int64_t e = ax - (ay >> 1);
        for (;;) {
            if (inside(clip, x, y)) c.put(x, y, color);
            if (y == y1 || (sy > 0 ? y >= clip.y2 : y < clip.y1)) return;
            y += sy;
            if (e >= 0) {
                e -= ay;
                x += sx;
            }
            e += ax;
        }
    }
    int64_t e = ay - (ax >> 1);
    for (;;) {
        if (inside(clip, x, y)) c.put(x, y, color);
        if (x == x1 || (sx > 0 ? x >= clip.x2 : x < clip.x1)) return;
        x += sx;
        if (e >= 0) {
            e -= ax;
            y += sy;
        }
        e += ay;
    }
}

void draw_sloped(const Canvas &c, const xg_area &clip, int32_t x0, int32_t y0, int32_t x1,
                 int32_t y1, uint32_t color) {
    // compat: the box's x extent has no +1, unlike its y extent.
    xg_area box{std::min(x0, x1), std::min(y0, y1), std::max(x0, x1),
                static_cast<int32_t>(std::min<int64_t>(int64_t{std::max(y0, y1)} + 1, INT32_MAX))};
    xg_area_cross(&box, &clip);
    if (box.x2 <= box.x1 || box.y2 <= box.y1) return;
    xg_color_premultiply(&color);
    draw_bresenham(c, clip, x0, y0, x1, y1, color);
}

}  // namespace
}  // namespace fbc

extern "C" {

void xc_line_draw(xc_image *image, const xg_area *clip, int32_t x0, int32_t y0, int32_t x1,
                  int32_t y1, uint32_t color) {
    if (!fbc::rows_hold(image, 4)) return;
    const fbc::Canvas canvas{image, {0, 0, image->width, image->height},
                             image->has_alpha ? fbc::plot_rgba : fbc::plot_rgb};
    if (x0 == x1 && y0 == y1) {
        fbc::draw_point(canvas, *clip, x0, y0, color);
    } else if (x0 == x1) {
        fbc::draw_vertical(canvas, *clip, x0, y0, y1, color);
    } else if (y0 == y1) {
        fbc::draw_horizontal(canvas, *clip, y0, x0, x1, color);
    } else {
        fbc::draw_sloped(canvas, *clip, x0, y0, x1, y1, color);
    }
}

}  // extern "C"

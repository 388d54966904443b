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
// Rows outside the image would all be dropped, so they are not visited.
void draw_vertical(const Canvas &c, const xg_area &clip, int32_t x, int32_t y0, int32_t y1,
                   uint32_t color) {
    if (x < clip.x1 || x < c.bounds.x1 || x >= c.bounds.x2) return;
    const int32_t top = std::max({std::min(y0, y1), clip.y1, c.bounds.y1});
    const int32_t end = std::min({std::max(y0, y1), clip.y2, c.bounds.y2});
    for (int32_t y = top; y < end; ++y) c.put(x, y, color);
}

// The bottom clip edge is not tested and the right end point is not drawn.
void draw_horizontal(const Canvas &c, const xg_area &clip, int32_t y, int32_t x0, int32_t x1,
                     uint32_t color) {
    if (y < clip.y1 || y < c.bounds.y1 || y >= c.bounds.y2) return;
    const int32_t left = std::max({std::min(x0, x1), clip.x1, c.bounds.x1});
    const int32_t end = std::min({std::max(x0, x1), clip.x2, c.bounds.x2});
    for (int32_t x = left; x < end; ++x) c.put(x, y, color);
}

// Bresenham with doubled deltas along the major axis (y when steep, x
// otherwise): with a = 2|major delta| and b = 2|minor delta| (b <= a), the
// error starts at b - a / 2, and each step moves the minor coordinate when
// the error is not negative (subtracting a) and adds b.
struct Walk {
    int64_t major, minor, error;
    int64_t end;         // major coordinate of the last pixel
    int32_t smaj, smin;  // steps, +1 or -1
    int64_t a, b;

    // Takes k steps at once. After k steps the minor coordinate has moved
    // m = floor((k b - a / 2) / a) + 1 times, which with P = k |minor delta|
    // = Q |major delta| + R is Q + (2R >= |major delta|); the error is what
    // remains, b - a / 2 + 2R less a if R made the extra move. Every term
    // fits 64 bits for any int32 end points.
    void skip(uint64_t k) {
        const auto half_a = static_cast<uint64_t>(a / 2), half_b = static_cast<uint64_t>(b / 2);
        const uint64_t p = k * half_b;
        const uint64_t q = p / half_a, r = p % half_a;
        const bool extra = 2 * r >= half_a;
        major += smaj * static_cast<int64_t>(k);
        minor += smin * static_cast<int64_t>(q + extra);
        error = b - a / 2 + 2 * static_cast<int64_t>(r) - (extra ? a : 0);
    }
    void step() {
        major += smaj;
        if (error >= 0) {
            error -= a;
            minor += smin;
        }
        error += b;
    }
};

// Both end points are drawn. Only the stretch of the major axis where the
// clip and the image overlap can draw, so the walk jumps to it and stops
// when it leaves it.
void draw_bresenham(const Canvas &c, const xg_area &clip, int32_t x0, int32_t y0, int32_t x1,
                    int32_t y1, uint32_t color) {
    const int64_t ax = 2 * std::llabs(int64_t{x1} - x0);
    const int64_t ay = 2 * std::llabs(int64_t{y1} - y0);
    const bool steep = ax <= ay;
    const int32_t sx = x1 > x0 ? 1 : -1, sy = y1 > y0 ? 1 : -1;
    Walk w = steep ? Walk{y0, x0, 0, y1, sy, sx, ay, ax} : Walk{x0, y0, 0, x1, sx, sy, ax, ay};
    w.error = w.b - (w.a >> 1);
    const int64_t lo = std::max(steep ? clip.y1 : clip.x1, steep ? c.bounds.y1 : c.bounds.x1);
    const int64_t hi = std::min(steep ? clip.y2 : clip.x2, steep ? c.bounds.y2 : c.bounds.x2);
    if (lo >= hi) return;
    // Steps to the first major coordinate inside [lo, hi), if the walk
    // starts before it; none if the line ends first.
    const int64_t ahead = w.smaj > 0 ? lo - w.major : w.major - (hi - 1);
    const int64_t length = (w.end - w.major) * w.smaj;
    if (ahead > length) return;
    if (ahead > 0) w.skip(static_cast<uint64_t>(ahead));
    for (;;) {
        const int64_t x = steep ? w.minor : w.major, y = steep ? w.major : w.minor;
        if (inside(clip, x, y)) c.put(x, y, color);
        if (w.major == w.end) return;
        w.step();
        if (w.major < lo || w.major >= hi) return;
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
    if (!fbc::words_addressable(image)) return;
    const fbc::Canvas canvas{image,
                             {0, 0, image->width, image->height},
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

// Drawing text: each glyph's coverage rows are laid onto a 32-bit image
// through the alpha span function, with a solid colour or a texture.
#include <algorithm>
#include <vector>

#include "core/pixel_bounds.hpp"
#include "core/pixel_format.hpp"
#include "fbcompose/pixel.h"
#include "fbcompose/text.h"
#include "text/text_pen.hpp"

namespace fbc {
namespace {

constexpr int32_t kBytesPerPixel = 4;

// Half-open pixel ranges on the destination, wide enough for any pen.
struct Box {
    int64_t x1, y1, x2, y2;
    bool empty() const { return x1 >= x2 || y1 >= y2; }
    Box cut(const Box &b) const {
        return {std::max(x1, b.x1), std::max(y1, b.y1), std::min(x2, b.x2), std::min(y2, b.y2)};
    }
};

// Everything a row of coverage needs besides the coverage itself.
struct Painter {
    xc_image *image;
    Box limit;  // clip, image and texture, intersected
    xc_alpha_func alpha;
    uint32_t color;  // premultiplied
    xc_alpha_texture_func alpha_texture;
    const xc_image *texture;
    int32_t tx, ty;
};

// Rows of 32-bit pixels through rowstride, long enough and aligned.
bool has_32bit_pixels(const xc_image *image) {
    return image->format != pixel_format::kPacked24 && image->format != pixel_format::kRgb565 &&
           image->depth != 16 && rows_addressable(image, kBytesPerPixel);
}

uint8_t *pixel_at(const xc_image *image, int64_t x, int64_t y) {
    return image->data + y * image->rowstride + x * kBytesPerPixel;
}

// Bits [from, from + count) of a one-bit row, most significant first, as
// 0 / 0xFF coverage bytes.
void expand_mono_row(const uint8_t *bits, int64_t from, int64_t count, uint8_t *out) {
    for (int64_t i = 0; i < count; ++i) {
        const int64_t bit = from + i;
        out[i] = (bits[bit >> 3] >> (7 - (bit & 7))) & 1 ? 0xFF : 0;
    }
}

void draw_row(const Painter &p, const uint8_t *cov, int64_t x, int64_t y, int32_t n) {
    void *dst = pixel_at(p.image, x, y);
    if (p.texture) {
        const uint8_t *tex = pixel_at(p.texture, x - p.tx, y - p.ty);
        p.alpha_texture(cov, dst, n, reinterpret_cast<const uint32_t *>(tex));
    } else {
        p.alpha(cov, dst, n, p.color);
    }
}

// Lays the part of a bitmap whose top-left pixel is at (gx, gy) that falls
// within the painter's limit.
void draw_bitmap(const Painter &p, const FT_Bitmap &bitmap, int64_t gx, int64_t gy,
                 std::vector<uint8_t> &scratch) {
    const Box glyph{gx, gy, gx + bitmap.width, gy + bitmap.rows};
    const Box drawn = glyph.cut(p.limit);
    if (drawn.empty()) return;
    const auto n = static_cast<int32_t>(drawn.x2 - drawn.x1);
    const int64_t first_col = drawn.x1 - gx;
    const bool mono = bitmap.pixel_mode != FT_PIXEL_MODE_GRAY;
    if (mono) scratch.resize(static_cast<size_t>(n));
    for (int64_t y = drawn.y1; y < drawn.y2; ++y) {
        const uint8_t *row = bitmap.buffer + (y - gy) * bitmap.pitch;
        const uint8_t *cov = row + first_col;
        if (mono) {
            expand_mono_row(row, first_col, n, scratch.data());
            cov = scratch.data();
        }
        draw_row(p, cov, drawn.x1, y, n);
    }
}

// The painter for one call, or false when nothing can be drawn.
bool make_painter(xc_image *image, const xg_area &clip, const xc_paint &paint, Painter &p) {
    if (!has_32bit_pixels(image)) return false;
    p = Painter{image,   {clip.x1, clip.y1, clip.x2, clip.y2},
                nullptr, paint.color,
                nullptr, paint.texture,
                paint.x, paint.y};
    // The image bounds keep a careless clip from reaching outside the pixels.
    p.limit = p.limit.cut({0, 0, image->width, image->height});
    if (paint.texture) {
        if (!has_32bit_pixels(paint.texture)) return false;
        const Box texture{paint.x, paint.y, int64_t{paint.x} + paint.texture->width,
                          int64_t{paint.y} + paint.texture->height};
        p.limit = p.limit.cut(texture);
        p.alpha_texture = xc_get_alpha_texture_func(image);
    } else {
        p.alpha = xc_get_alpha_func(image);
        xg_color_premultiply(&p.color);
    }
    return !p.limit.empty();
}

}  // namespace
}  // namespace fbc

extern "C" {

void xc_font_draw(xc_image *image, const xg_area *clip, xc_font *font, int32_t x, int32_t y,
                  const uint16_t *text, int32_t count, xc_paint paint) {
    if (count < 0) count = 0x7FFFFFFF;
    if (!image || !clip || !font || !text) return;
    if (clip->x1 >= clip->x2 || clip->y1 >= clip->y2) return;
    xc_font_set_size(font);
    fbc::Painter painter;
    if (!fbc::make_painter(image, *clip, paint, painter)) return;
    std::vector<uint8_t> scratch;
    int64_t pen = static_cast<int64_t>(x) * 256;
    for (int32_t i = 0; i < count && text[i] != 0; ++i) {
        const xc_font_glyph *fg = xc_font_get_glyph(font, text[i]);
        if (!fg) continue;
        const int64_t gx = fbc::pen_pixels(pen) + fg->bitmap->left;
        // Later glyphs are not looked at, even one whose negative bearing
        // would bring it back inside.
        if (gx >= clip->x2) break;
        pen += fbc::glyph_advance(fg);
        const FT_Bitmap &bitmap = fg->bitmap->bitmap;
        if (bitmap.width == 0 || gx + bitmap.width <= clip->x1) continue;
        fbc::draw_bitmap(painter, bitmap, gx, int64_t{y} - fg->bitmap->top, scratch);
    }
}

}  // extern "C"

// Text metrics: ascent and descent, string widths, character boxes and
// hit-testing. Pen positions are 24.8 fixed point; pixels are the pen
// shifted right by 8 (rounding towards minus infinity).
#include "fbcompose/text.h"
#include "text/text_pen.hpp"

namespace fbc {
namespace {

int32_t line_height(xc_font *font) { return xc_font_get_ascent(font) + xc_font_get_descent(font); }

// Stores a character's box in whichever outputs are non-null.
void store_box(xc_font *font, const xc_font_glyph *fg, int64_t pen, int32_t *x, int32_t *y,
               int32_t *w, int32_t *h) {
    if (x) *x = static_cast<int32_t>(pen_pixels(pen) + fg->bitmap->left);
    if (y) *y = -xc_font_get_ascent(font);
    if (w) *w = static_cast<int32_t>(fg->bitmap->bitmap.width);
    if (h) *h = line_height(font);
}

// Sum of the 24.8 advances of up to `count` characters (negative: all).
int64_t advance_sum(xc_font *font, const uint16_t *text, int32_t count) {
    int64_t pen = 0;
    if (!text) return 0;
    for (int32_t i = 0; (count < 0 || i < count) && text[i] != 0; ++i)
        if (const xc_font_glyph *fg = xc_font_get_glyph(font, text[i])) pen += glyph_advance(fg);
    return pen;
}

}  // namespace
}  // namespace fbc

extern "C" {

int32_t xc_font_get_ascent(xc_font *font) {
    xc_font_set_size(font);
    return static_cast<int32_t>(font->face->size->metrics.ascender >> 6);
}

int32_t xc_font_get_descent(xc_font *font) {
    xc_font_set_size(font);
    return static_cast<int32_t>(-(font->face->size->metrics.descender >> 6));
}

int32_t xc_font_query_advance(xc_font *font, const uint16_t *text, int32_t count) {
    xc_font_set_size(font);
    return static_cast<int32_t>(fbc::pen_pixels(fbc::advance_sum(font, text, count)));
}

void xc_font_query_size(xc_font *font, const uint16_t *text, int32_t count, int32_t *width,
                        int32_t *height) {
    const int32_t advance = xc_font_query_advance(font, text, count);
    if (width) *width = advance;
    if (height) *height = fbc::line_height(font);
}

int xc_font_query_char_coords(xc_font *font, const uint16_t *text, int32_t pos, int32_t *x,
                              int32_t *y, int32_t *w, int32_t *h) {
    if (!text) return 0;
    xc_font_set_size(font);
    // The box is that of the character just before the caret.
    const int32_t index = pos > 1 ? pos - 1 : 0;
    for (int32_t i = 0; i < index; ++i)
        if (text[i] == 0) return 0;
    if (text[index] == 0) return 0;
    const int64_t pen = fbc::advance_sum(font, text, index);
    const xc_font_glyph *fg = xc_font_get_glyph(font, text[index]);
    if (!fg) return 0;
    fbc::store_box(font, fg, pen, x, y, w, h);
    return 1;
}

int32_t xc_font_query_text_at_pos(xc_font *font, const uint16_t *text, int32_t px, int32_t py,
                                  int32_t *x, int32_t *y, int32_t *w, int32_t *h) {
    if (px < 0 || py < -xc_font_get_ascent(font) || py > xc_font_get_descent(font)) return -1;
    if (!text || text[0] == 0) return -1;
    int64_t pen = 0;
    for (int32_t i = 0; text[i] != 0; ++i) {
        const xc_font_glyph *fg = xc_font_get_glyph(font, text[i]);
        if (!fg) continue;
        const int64_t after = pen + fbc::glyph_advance(fg);
        // A point on a boundary belongs to the character on its left.
        if (px <= fbc::pen_pixels(after)) {
            fbc::store_box(font, fg, pen, x, y, w, h);
            return i;
        }
        pen = after;
    }
    return -1;
}

}  // extern "C"

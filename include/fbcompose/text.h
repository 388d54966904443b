/* Text: UTF-8 and 16-bit wide strings, fonts, glyphs, drawing and measuring.
 *
 * Wide strings are zero-terminated arrays of 16-bit units, one per
 * character (a character beyond U+FFFF keeps its low 16 bits), allocated
 * with malloc and freed by the caller. Fonts are
 * reference-counted handles (file, size, emboldening) that share one
 * FreeType face per file; unreferenced handles stay cached within the budget
 * set by xc_font_set_cache. */
#ifndef FBCOMPOSE_TEXT_H
#define FBCOMPOSE_TEXT_H

#include <stdint.h>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_GLYPH_H

#include "export.h"
#include "image.h"

FBC_BEGIN_DECLS

/* UTF-8. Positions are byte indexes; 0 is both the end and an error. */
FBC_API uint32_t xg_utf8_get_next(const char *utf8, int32_t *pos);
FBC_API uint32_t xg_utf8_get_prev(const char *utf8, int32_t *pos);
FBC_API int32_t xg_utf8_get_last(const char *utf8, int32_t len);
FBC_API int32_t xg_utf8_len_full(const char *utf8, int32_t max_bytes);
FBC_API int32_t xg_utf8_len(const char *utf8);

/* Wide strings. */
FBC_API int32_t xg_unicode_decode_utf8(uint16_t *dest, const char *utf8);
FBC_API uint16_t *xg_unicode_new_from_utf8(const char *utf8);
FBC_API int32_t xg_unicode_get_utf8_size(const uint16_t *str);
FBC_API int32_t xg_unicode_get_utf8_size_full(const uint16_t *str, int32_t n);
/* Encodes exactly n units (not stopping at 0) and a terminating 0 byte. */
FBC_API int32_t xg_unicode_encode_utf8_full(const uint16_t *str, int32_t n,
                                            char *out);
FBC_API int32_t xg_unicode_encode_utf8(const uint16_t *str, char *out);
/* Valid until the next call; "" for NULL or an empty string. */
FBC_API const char *xg_unicode_to_utf8_for_debug(const uint16_t *str);
FBC_API int32_t xg_unicode_len(const uint16_t *str);
FBC_API uint16_t *xg_unicode_dup(const uint16_t *str);
FBC_API uint16_t *xg_unicode_ndup(const uint16_t *str, int32_t n);
/* Grows str1 (malloc'd, or NULL) with realloc and returns it, or returns
 * str1 unchanged when it cannot. */
FBC_API uint16_t *xg_unicode_concat(uint16_t *str1, const uint16_t *str2);
FBC_API int xg_unicode_cmp(const uint16_t *str1, const uint16_t *str2);
FBC_API int xg_unicode_is_latin(uint32_t ch);

/* One FreeType face per font file. */
typedef struct xc_font_source {
    char *filename;
    int32_t cur_size;
    FT_Face face;
    int32_t ref;
} xc_font_source;

/* One handle per file, size and emboldening. */
typedef struct xc_font {
    xc_font_source *source;
    int32_t size;
    int32_t bold_x, bold_y;
    FT_Face face;
    FT_Size ft_size;
    void *glyphs;
    struct xc_font *fallback[3];
    int32_t ref;
} xc_font;

typedef struct {
    FT_Glyph glyph;
    FT_BitmapGlyph bitmap;
} xc_font_glyph;

/* Colour (not premultiplied) or a texture whose pixel (0, 0) lies at (x, y)
 * on the destination. */
typedef struct {
    uint32_t color;
    xc_image *texture;
    int32_t x, y;
} xc_paint;

FBC_API extern FT_Library xg_ft_lib;
FBC_API extern char *font_fallback[8];

FBC_API int xc_font_init(void);
/* size in points at 75 dpi; bold_x, bold_y in whole pixels. */
FBC_API xc_font *xc_font_load(const char *filename, int32_t size,
                              int32_t bold_x, int32_t bold_y);
FBC_API void xc_font_set_size(xc_font *font);
FBC_API void xc_font_free(xc_font *font);
FBC_API void xc_font_set_cache(int32_t bytes);
FBC_API int32_t xc_font_get_cache(void);
/* Comma-separated font files tried, in order, for missing characters. */
FBC_API void xc_font_set_fallback(const char *names);
FBC_API int32_t xc_font_get_ascent(xc_font *font);
FBC_API int32_t xc_font_get_descent(xc_font *font);
FBC_API xc_font_glyph *xc_font_get_glyph(xc_font *font, uint32_t ch);
/* count < 0 draws the whole string; (x, y) is the pen and the baseline. */
FBC_API void xc_font_draw(xc_image *image, const xg_area *clip, xc_font *font,
                          int32_t x, int32_t y, const uint16_t *text,
                          int32_t count, xc_paint paint);
FBC_API int32_t xc_font_query_advance(xc_font *font, const uint16_t *text,
                                      int32_t count);
FBC_API void xc_font_query_size(xc_font *font, const uint16_t *text,
                                int32_t count, int32_t *width, int32_t *height);
FBC_API int xc_font_query_char_coords(xc_font *font, const uint16_t *text,
                                      int32_t pos, int32_t *x, int32_t *y,
                                      int32_t *w, int32_t *h);
FBC_API int32_t xc_font_query_text_at_pos(xc_font *font, const uint16_t *text,
                                          int32_t px, int32_t py, int32_t *x,
                                          int32_t *y, int32_t *w, int32_t *h);

FBC_END_DECLS

#endif

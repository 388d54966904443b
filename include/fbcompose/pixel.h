/* Span primitives, their selection, and the conversion of a canvas into the
 * panel's pixel format.
 *
 * A span primitive processes one run of `count` pixels (count < 1 writes
 * nothing). Colour is premultiplied throughout: blends add the source's
 * colour bytes without weighting them by its own alpha, and every product is
 * divided by a shift of 8. "rgba" runs carry alpha, "rgb" runs ignore it,
 * "16" runs are RGB565. Drawing code never names a primitive: it asks a
 * getter once per operation and calls the result once per row.
 * 32-bit runs must be 4-byte aligned and 16-bit runs 2-byte aligned (the
 * device has no unaligned word access); coverage runs may start anywhere. */
#ifndef FBCOMPOSE_PIXEL_H
#define FBCOMPOSE_PIXEL_H

#include <stdint.h>

#include "export.h"
#include "image.h"

FBC_BEGIN_DECLS

typedef void (*xc_fill_func)(uint32_t color, void *dst, int32_t count);
/* Draw and mul draw share one type; plain draw primitives ignore color. */
typedef void (*xc_draw_func)(const void *src, void *dst, int32_t count,
                             uint32_t color);
typedef void (*xc_alpha_func)(const uint8_t *cov, void *dst, int32_t count,
                              uint32_t color);
typedef void (*xc_alpha_texture_func)(const uint8_t *cov, void *dst,
                                      int32_t count, const uint32_t *tex);
/* Skips are pixels between the end of one row and the start of the next;
 * dither_x, dither_y give the phase of the 4x4 ordered dither. */
typedef void (*xc_convert_func)(const void *src, void *dst, int32_t src_skip,
                                int32_t dst_skip, int32_t width, int32_t height,
                                int32_t dither_x, int32_t dither_y);

/* Fill. */
FBC_API void xc_blend_color_rgba_to_rgb(uint32_t color, void *dst,
                                        int32_t count);
FBC_API void xc_blend_color_rgba_to_rgba(uint32_t color, void *dst,
                                         int32_t count);
FBC_API void xc_copy_color_rgba_to_rgba(uint32_t color, void *dst,
                                        int32_t count);
FBC_API void xc_copy_color_rgb_to_rgba(uint32_t color, void *dst,
                                       int32_t count);

/* Draw. */
FBC_API void xc_blend_pixels_rgba_to_rgb(const void *src, void *dst,
                                         int32_t count, uint32_t color);
FBC_API void xc_blend_pixels_rgba_to_rgba(const void *src, void *dst,
                                          int32_t count, uint32_t color);
FBC_API void xc_copy_pixels_rgba_to_rgba(const void *src, void *dst,
                                         int32_t count, uint32_t color);
FBC_API void xc_copy_pixels_rgb_to_rgba(const void *src, void *dst,
                                        int32_t count, uint32_t color);
FBC_API void xc_copy_pixels_rgba_to_16(const void *src, void *dst,
                                       int32_t count, uint32_t color);
FBC_API void xc_copy_pixels_16_to_rgb(const void *src, void *dst, int32_t count,
                                      uint32_t color);
FBC_API void xc_copy_pixels_16_to_16(const void *src, void *dst, int32_t count,
                                     uint32_t color);

/* Coverage with a colour. */
FBC_API void xc_blend_alpha_color_rgba_to_rgb(const uint8_t *cov, void *dst,
                                              int32_t count, uint32_t color);
FBC_API void xc_blend_alpha_color_rgba_to_rgba(const uint8_t *cov, void *dst,
                                               int32_t count, uint32_t color);

/* Coverage with a texture (one texture pixel per destination pixel). */
FBC_API void xc_blend_alpha_texture_rgba_to_rgb(const uint8_t *cov, void *dst,
                                                int32_t count,
                                                const uint32_t *tex);
FBC_API void xc_blend_alpha_texture_rgba_to_rgba(const uint8_t *cov, void *dst,
                                                 int32_t count,
                                                 const uint32_t *tex);

/* Source modulated by a colour. */
FBC_API void xc_blend_pixels_mul_color_rgba_to_rgb(const void *src, void *dst,
                                                   int32_t count,
                                                   uint32_t color);
FBC_API void xc_blend_pixels_mul_color_rgba_to_rgba(const void *src, void *dst,
                                                    int32_t count,
                                                    uint32_t color);
FBC_API void xc_blend_pixels_mul_color_rgb_to_rgb(const void *src, void *dst,
                                                  int32_t count,
                                                  uint32_t color);
FBC_API void xc_blend_pixels_mul_color_rgb_to_rgba(const void *src, void *dst,
                                                   int32_t count,
                                                   uint32_t color);

/* Selection by the images' has_alpha and depth (and the fill colour's
 * alpha). xc_get_draw_func aborts for an opaque pair whose destination
 * depth is below 16. */
FBC_API xc_fill_func xc_get_fill_func(uint32_t color, const xc_image *dst);
FBC_API xc_draw_func xc_get_draw_func(const xc_image *src, const xc_image *dst);
FBC_API xc_draw_func xc_get_mul_draw_func(const xc_image *src,
                                          const xc_image *dst, uint32_t color);
FBC_API xc_alpha_func xc_get_alpha_func(const xc_image *dst);
FBC_API xc_alpha_texture_func xc_get_alpha_texture_func(const xc_image *dst);

/* Display conversion from 32-bit colour words. */
FBC_API void xc_convert_rgba_to_16(const void *src, void *dst, int32_t src_skip,
                                   int32_t dst_skip, int32_t width,
                                   int32_t height, int32_t dither_x,
                                   int32_t dither_y);
FBC_API void xc_convert_rgba_to_16_90(const void *src, void *dst,
                                      int32_t src_skip, int32_t dst_skip,
                                      int32_t width, int32_t height,
                                      int32_t dither_x, int32_t dither_y);
FBC_API void xc_convert_rgba_to_16_270(const void *src, void *dst,
                                       int32_t src_skip, int32_t dst_skip,
                                       int32_t width, int32_t height,
                                       int32_t dither_x, int32_t dither_y);
FBC_API void xc_convert_rgba_to_18(const void *src, void *dst, int32_t src_skip,
                                   int32_t dst_skip, int32_t width,
                                   int32_t height, int32_t dither_x,
                                   int32_t dither_y);
FBC_API void xc_convert_rgba_to_18_90(const void *src, void *dst,
                                      int32_t src_skip, int32_t dst_skip,
                                      int32_t width, int32_t height,
                                      int32_t dither_x, int32_t dither_y);
FBC_API void xc_convert_rgba_to_18_270(const void *src, void *dst,
                                       int32_t src_skip, int32_t dst_skip,
                                       int32_t width, int32_t height,
                                       int32_t dither_x, int32_t dither_y);
FBC_API void xc_convert_rgba_to_32(const void *src, void *dst, int32_t src_skip,
                                   int32_t dst_skip, int32_t width,
                                   int32_t height, int32_t dither_x,
                                   int32_t dither_y);
FBC_API void xc_convert_rgba_to_32_90(const void *src, void *dst,
                                      int32_t src_skip, int32_t dst_skip,
                                      int32_t width, int32_t height,
                                      int32_t dither_x, int32_t dither_y);
FBC_API void xc_convert_rgba_to_32_270(const void *src, void *dst,
                                       int32_t src_skip, int32_t dst_skip,
                                       int32_t width, int32_t height,
                                       int32_t dither_x, int32_t dither_y);
/* depth 16, 18 or 32; rotation 0, 90 or 270; anything else gives NULL.
 * The first two arguments take no part in the choice. */
FBC_API xc_convert_func xc_get_convert_func(int32_t a, int32_t b, int32_t depth,
                                            int32_t rotation);
/* 16-bit sources; here the third and fourth arguments are full row lengths
 * in pixels, not skips. */
FBC_API void xc_convert_16_to_16(const uint16_t *src, uint16_t *dst,
                                 int32_t src_row, int32_t dst_row,
                                 int32_t width, int32_t height);
FBC_API void xc_convert_16_to_18(const uint16_t *src, uint32_t *dst,
                                 int32_t src_row, int32_t dst_row,
                                 int32_t width, int32_t height);

FBC_END_DECLS

#endif

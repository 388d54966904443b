/* Blitting, scaling, fitting and colour transformation.
 *
 * Every scanline drawer has the xc_scale_func signature: it draws the rows
 * and columns of `clip` (destination coordinates, already inside dst_area),
 * reading the source through src_area, one span call per row. A colour of
 * 0xFFFFFFFF means no modulation. A drawer draws nothing when the clip is
 * not inside dst_area, src_area is empty or not inside the source, or an
 * image's rows do not hold its pixels; a clip reaching past the destination
 * image is held to it. Drawing an image onto itself (or onto an image
 * sharing its pixels) gives what copying the source first would. */
#ifndef FBCOMPOSE_TRANSFORM_H
#define FBCOMPOSE_TRANSFORM_H

#include <stdint.h>

#include "export.h"
#include "image.h"

FBC_BEGIN_DECLS

typedef void (*xc_scale_func)(const xc_image *src, xc_image *dst,
                              const xg_area *clip, const xg_area *src_area,
                              const xg_area *dst_area, uint32_t color);

/* Draws source rectangle (sx, sy, sw, sh) into destination rectangle
 * (dx, dy, dw, dh), limited to clip, optionally smoothed and modulated.
 * Draws nothing when a rectangle's end lies beyond the int32 range. src may
 * be dst: the result is that of copying the source first. */
FBC_API void xc_image_blit(xc_image *src, xc_image *dst, const xg_area *clip,
                           int32_t sx, int32_t sy, int32_t sw, int32_t sh,
                           int32_t dx, int32_t dy, int32_t dw, int32_t dh,
                           int smooth, uint32_t color);
/* Clips the areas against the source and the clip against the destination
 * area, in place; 1 when something remains to draw. 0, with nothing
 * changed, for an empty source area or when a destination edge would move
 * beyond the int32 range. */
FBC_API int xc_scale_handle_clip(const xc_image *src, const xc_image *dst,
                                 xg_area *clip, xg_area *src_area,
                                 xg_area *dst_area);

FBC_API void xc_scale_noscale(const xc_image *src, xc_image *dst,
                              const xg_area *clip, const xg_area *src_area,
                              const xg_area *dst_area, uint32_t color);
FBC_API void xc_scale_sample(const xc_image *src, xc_image *dst,
                             const xg_area *clip, const xg_area *src_area,
                             const xg_area *dst_area, uint32_t color);
/* Nearest-pixel sampling like xc_scale_sample, but of 32-bit words whatever
 * the name says, with rows of width x 4 bytes: the first source row is
 * found through xc_image_pointer (by rowstride), the rows below it and the
 * destination rows by width x 4. The blit never chooses it. */
FBC_API void xc_scale_sample_rgb16_to_rgb16(const xc_image *src, xc_image *dst,
                                            const xg_area *clip,
                                            const xg_area *src_area,
                                            const xg_area *dst_area,
                                            uint32_t color);
FBC_API void xc_scale_h(const xc_image *src, xc_image *dst, const xg_area *clip,
                        const xg_area *src_area, const xg_area *dst_area,
                        uint32_t color);
FBC_API void xc_scale_v(const xc_image *src, xc_image *dst, const xg_area *clip,
                        const xg_area *src_area, const xg_area *dst_area,
                        uint32_t color);
FBC_API void xc_scale_smooth(const xc_image *src, xc_image *dst,
                             const xg_area *clip, const xg_area *src_area,
                             const xg_area *dst_area, uint32_t color);
FBC_API void xc_scale_linear(const xc_image *src, xc_image *dst,
                             const xg_area *clip, const xg_area *src_area,
                             const xg_area *dst_area, uint32_t color);
FBC_API void xc_image_scale_down_x(const xc_image *src, xc_image *dst,
                                   const xg_area *clip, const xg_area *src_area,
                                   const xg_area *dst_area, uint32_t color);
FBC_API void xc_image_scale_down_y(const xc_image *src, xc_image *dst,
                                   const xg_area *clip, const xg_area *src_area,
                                   const xg_area *dst_area, uint32_t color);
FBC_API void xc_image_scale_down_xy(const xc_image *src, xc_image *dst,
                                    const xg_area *clip,
                                    const xg_area *src_area,
                                    const xg_area *dst_area, uint32_t color);

/* mode: "crop" (or NULL, or any unknown word), "matte", "matte-both",
 * "distort". Returns a new opaque image of width x height, or NULL with a
 * diagnostic when a size is not positive, the result would hold more than
 * 64 megapixels, or its pixels cannot be allocated. */
FBC_API xc_image *xc_image_fit_size(xc_image *src, int32_t width,
                                    int32_t height, const char *mode);
/* matrix: 4 x 4 row-major; rows 0-2 weigh red, green, blue, row 3 holds the
 * biases; columns 0-2 produce red, green, blue. NULL copies the image.
 * NULL with a diagnostic when the pixels to read are not there. */
FBC_API xc_image *xc_image_new_from_color_transformed_image(
    xc_image *image, const float matrix[16], const int32_t lower[3],
    const int32_t upper[3]);

/* Box reductions to new images. Each returns a new image with one
 * reference (format 0 with alpha when the source has alpha, else an opaque
 * canvas), or NULL with a diagnostic when the source has no 32- or 16-bit
 * pixels or the target size is not positive. Every result pixel averages
 * every source pixel that falls on it. */

/* Half the size (each side at least 1): 2 x 2 blocks, 3 across an odd
 * edge. */
FBC_API xc_image *xc_image_scale_down_2x(xc_image *src);
/* A quarter of the size (each side at least 1): 4 x 4 blocks. */
FBC_API xc_image *xc_image_scale_down_4x(xc_image *src);
/* To width x height in stages: halves by 2 x 2 blocks while the image is at
 * least twice the target both ways, then one smoothing pass (box average in
 * a direction that still shrinks below half, linear interpolation
 * otherwise). NULL with a diagnostic, too, for a target of more than 64
 * megapixels or whose pixels cannot be allocated. */
FBC_API xc_image *xc_image_scale_down_xy_2(xc_image *src, int32_t width,
                                           int32_t height);

/* Resamples one run of src_count 32-bit pixels into dst_count pixels: box
 * average when dst_count < src_count / 2, else 16.16 linear interpolation
 * from first to last pixel. The steps are the distances in pixels between
 * neighbours (1 for a row, the row length for a column). Counts below 1 do
 * nothing. */
FBC_API void xc_image_scale_1d(const uint32_t *src, int32_t src_count,
                               int32_t src_step, uint32_t *dst,
                               int32_t dst_count, int32_t dst_step);

/* A new image holding `image` turned clockwise by `degrees` (any integer,
 * taken modulo 360). Multiples of 90 permute the pixels exactly and keep
 * the source's format; any other angle resamples bilinearly into the
 * rotated bounding box, as format 0 with premultiplied alpha and
 * transparent corners. NULL with a diagnostic for a source without 32- or
 * 16-bit pixels or wider or higher than 16383 pixels. */
FBC_API xc_image *xc_image_new_from_rotated_image(xc_image *image,
                                                  int32_t degrees);

FBC_END_DECLS

#endif

/* The panel: the last step of every frame. A panel is a frame buffer in the
 * display's own pixel format and orientation (RGB565, RGB666 in 32-bit
 * words, or 32-bit words; mounted upright or turned by 90 or 270 degrees),
 * either in the caller's memory or a Linux frame-buffer device mapped into
 * it. xc_panel_update converts the damaged rectangles of a composed canvas
 * into it, each at its rotated place with the dither phase of that place,
 * so that updating in pieces gives exactly the bytes of one conversion of
 * the whole canvas.
 *
 * The canvas a panel expects is the panel turned back upright: as wide as
 * the panel for rotation 0, as wide as the panel is high for 90 and 270. */
#ifndef FBCOMPOSE_PANEL_H
#define FBCOMPOSE_PANEL_H

#include <stdint.h>

#include "export.h"
#include "image.h"
#include "list.h"

FBC_BEGIN_DECLS

typedef struct xc_panel xc_panel;

/* A panel over `pixels`, the caller's frame buffer, which must outlive the
 * panel: `width` x `height` pixels (the panel's own size, after rotation),
 * `stride` bytes from one row to the next, `depth` 16, 18 or 32 (2, 4 or 4
 * bytes per pixel, as the converters of pixel.h write them), `rotation`
 * 0, 90 or 270. NULL, with a message naming the argument, when an argument
 * is unusable (null pixels, sizes below 1, a stride shorter than a row or
 * not a whole number of pixels, another depth or rotation). */
FBC_API xc_panel *xc_panel_new(void *pixels, int32_t width, int32_t height,
                               int32_t stride, int depth, int rotation);

/* A panel over a Linux frame-buffer device such as "/dev/fb0": its visible
 * size, bits per pixel, line length and colour fields are read from the
 * device and its memory is mapped. Drives RGB565 at 16 bits per pixel, and
 * at 32 bits per pixel 8-bit fields at 16/8/0 (depth 32) or 6-bit fields at
 * 12/6/0 (depth 18). NULL, with a message naming the device and what it
 * found, when it cannot be opened, is not a frame buffer, has another
 * pixel layout, or maps less memory than its visible rows need. */
FBC_API xc_panel *xc_panel_open_fbdev(const char *path, int rotation);

/* Converts each rectangle of `rects` (xg_rect items in canvas coordinates,
 * as xc_dm_get_rects returns them; parts outside the canvas are ignored)
 * into the panel; NULL converts the whole canvas. The canvas is a 32-bit
 * image at least as large as the panel expects (xc_panel_get_canvas_size).
 * Returns the number of rectangles that had pixels to convert, or -1 with
 * a message when the panel or canvas is unusable. */
FBC_API int xc_panel_update(xc_panel *panel, const xc_image *canvas,
                            const xg_list *rects);

/* The canvas size the panel expects (its own size, turned back upright). */
FBC_API void xc_panel_get_canvas_size(const xc_panel *panel, int32_t *width,
                                      int32_t *height);

/* Frees the panel; a device panel is unmapped and closed. NULL is ignored. */
FBC_API void xc_panel_free(xc_panel *panel);

FBC_END_DECLS

#endif

/* Shapes and the damage manager. */
#ifndef FBCOMPOSE_DRAW_H
#define FBCOMPOSE_DRAW_H

#include <stdint.h>

#include "export.h"
#include "image.h"
#include "list.h"

FBC_BEGIN_DECLS

/* One-pixel line, source-over. */
FBC_API void xc_line_draw(xc_image *image, const xg_area *clip, int32_t x0,
                          int32_t y0, int32_t x1, int32_t y1, uint32_t color);
/* Even-odd fill of a list of xg_point. x_offset is in 14.18 fixed point
 * (262144 is one pixel), y_offset in whole pixels. */
FBC_API void xc_polygon_draw(xc_image *image, const xg_area *clip,
                             int32_t x_offset, int32_t y_offset,
                             xg_list *points, uint32_t color);
/* Fills area, which is first clipped to clip in place. */
FBC_API void xc_rectangle_draw(xc_image *image, const xg_area *clip,
                               xg_area *area, uint32_t color);

/* Damage manager: 16 x 16 tiles, merged into bands on request. */
typedef struct {
    int32_t tile_w;
    int32_t tile_h;
    int32_t cols;
    int32_t rows;
    int32_t width;
    int32_t height;
    int32_t *tiles;
} xc_dm;

/* A size whose grid cannot be held (negative, too many tiles, or bands
 * reaching past INT32_MAX) gives an empty screen, with a diagnostic. */
FBC_API xc_dm *xc_dm_new(int32_t width, int32_t height);
FBC_API void xc_dm_free(xc_dm *dm);
FBC_API void xc_dm_reset(xc_dm *dm);
/* Marks the tiles the rectangle touches, clipped to the screen; returns
 * their number, 0 when it misses the screen. */
FBC_API int32_t xc_dm_add_area(xc_dm *dm, const xg_rect *rect);
/* A list of new xg_rect records owned by the caller (NULL when clean),
 * runs of tiles merged into bands, top to bottom; leaves every tile clean.
 * The rectangles cover whole tiles, so on a screen whose size is not a
 * multiple of 16 the last ones reach past its edge: clip them. */
FBC_API xg_list *xc_dm_get_rects(xc_dm *dm);

FBC_END_DECLS

#endif

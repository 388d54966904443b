/* Images, geometry and the image cache.
 *
 * Pixel formats (xc_image.format) and the depth the constructors give them:
 *   0  32-bit colour word with meaningful alpha (premultiplied when decoded)
 *   1  32-bit colour word, alpha ignored: canvases (depth 24 from
 *      xc_image_create, 32 otherwise)
 *   2  three bytes per pixel (depth 24)
 *   3  RGB565 words (depth 16)
 *   8  RGB666 panel pixels in 32-bit words (depth 18)
 * A colour word holds alpha in bits 24-31, red 16-23, green 8-15, blue 0-7.
 */
#ifndef FBCOMPOSE_IMAGE_H
#define FBCOMPOSE_IMAGE_H

#include <stdint.h>

#include "export.h"

FBC_BEGIN_DECLS

/* Origin and size. */
typedef struct {
    int32_t x, y, w, h;
} xg_rect;

/* Two corners: (x1, y1) is inside, (x2, y2) is the first column and row
 * outside. x2 <= x1 or y2 <= y1 is empty. */
typedef struct {
    int32_t x1, y1, x2, y2;
} xg_area;

/* A polygon vertex. */
typedef struct {
    int32_t x, y;
} xg_point;

struct xc_image_loader;

typedef struct xc_image {
    char *filename;        /* owned; the cache key of file images */
    const char *type_name; /* borrowed from the loader */
    int32_t ref;
    uint8_t *data;
    int32_t width, height, rowstride;
    uint32_t format;
    struct xc_image_loader *loader;
    void *loader_data;
    uint32_t has_alpha : 1, foreign_data : 1, no_cache : 1, is_ani : 1,
        mapped : 1, depth : 8;
} xc_image;

/* What is known of a file without decoding it. */
typedef struct {
    int32_t width;
    int32_t height;
    uint32_t has_alpha;
    const char *type_name;
} xg_image_info;

/* Geometry. */
/* 1 when the rectangles overlap or only touch (an empty rectangle on
 * another's edge counts too), else 0. */
FBC_API int xg_rect_is_cross(const xg_rect *a, const xg_rect *b);
/* Stores the common part and returns its height (0 and an empty out when
 * the rectangles do not cross): touching rectangles give a width of 0 with
 * a non-zero result, so test out->w and out->h for emptiness. */
FBC_API int xg_rect_intersect(xg_rect *out, const xg_rect *a, const xg_rect *b);
/* Clamps a to b in place; the result may be empty or inverted. */
FBC_API void xg_area_cross(xg_area *a, const xg_area *b);
/* Replaces a by its intersection with b; no overlap leaves a empty at its
 * top-left corner. */
FBC_API void xg_area_intersect_area(xg_area *a, const xg_area *b);
FBC_API void xg_rect_from_area(xg_rect *rect, const xg_area *area);
/* Each colour byte becomes (c * alpha) >> 8: opaque 255 becomes 254. */
FBC_API void xg_color_premultiply(uint32_t *color);
/* One line on standard output. */
FBC_API void xc_print_area(const xg_area *area, const char *name);

/* Library start: the image tables, then the font engine. Returns the font
 * engine's result. */
FBC_API int xc_init(void);
FBC_API void xc_image_init(void);

/* Construction and lifetime. Every constructor returns one reference. An
 * absurd size or a lack of memory leaves the image's data NULL. Images made
 * from memory are never cached. */
FBC_API xc_image *xc_image_new(void);
/* Canvas: format 1, depth 24, uninitialised pixels. */
FBC_API xc_image *xc_image_create(int32_t width, int32_t height);
/* Allocates rowstride x height bytes (rowstride width x 4 when unset) and
 * returns them, or NULL. An earlier data block is not released. */
FBC_API uint8_t *xc_image_alloc_data(xc_image *image);
/* Pixels of width x 4 bytes a row: copied (copy 1: width x height x 4
 * bytes are read from data, whatever the depth), or used in place (copy 0;
 * data NULL allocates; foreign 1: never freed). depth 32 (or 1) marks alpha,
 * format 0; 16 makes RGB565 rows of width x 2 bytes (format 3); any other
 * depth is stored as it is, without alpha, the format staying 1 for a copy
 * and 0 otherwise. */
FBC_API xc_image *xc_image_new_from_data(int32_t width, int32_t height,
                                         void *data, int32_t depth, int copy,
                                         int foreign);
/* Pixels in the given format (alpha only for format 0; the depth follows
 * from the format) with rows of rowstride bytes (below 1: the format's
 * pixel size x width). copy 1 copies rowstride x height bytes from data;
 * copy 0 uses data in place (NULL allocates). foreign 1 means the record
 * never frees its pixels, even a copy. */
FBC_API xc_image *xc_image_new_with_data(int32_t width, int32_t height,
                                         void *data, uint32_t format, int copy,
                                         int foreign, int32_t rowstride);
FBC_API int xc_image_has_alpha(const xc_image *image);
/* Address of pixel (x, y): 2 bytes per pixel at depth 16, else 4. */
FBC_API void *xc_image_pointer(const xc_image *image, int32_t x, int32_t y);
/* Both accept NULL. The last release caches a named file image (see the
 * cache below) and destroys any other; releasing more often than the image
 * was referenced prints a line and frees nothing. */
FBC_API xc_image *xc_image_ref(xc_image *image);
FBC_API void xc_image_unref(xc_image *image);

/* Image cache: live file images by name, and released ones kept within a
 * byte budget (0, the start value, keeps none). A release that brings the
 * kept total to the budget or above drops the oldest until it is within. */
/* A new reference to the image of that name, or NULL. */
FBC_API xc_image *xc_image_lookup_in_cache(const char *filename);
FBC_API void xc_set_image_cache_size(int32_t bytes);
FBC_API int32_t xc_get_image_cache_size(void);
/* Takes the image out of the cache for good; a released image so taken
 * stays allocated for whoever holds it. */
FBC_API void xc_image_invalidate(xc_image *image);
/* Records a file's size, alpha and type ("png" and "jpg" are kept, any
 * other type as NULL) for xc_image_load_cached_info, which fills an image
 * from the record (no pixels) and returns 0, or -1 for an unknown name. */
FBC_API void xg_image_set_info(const char *filename, int32_t width,
                               int32_t height, uint32_t has_alpha,
                               const char *type);
FBC_API int xc_image_load_cached_info(xc_image *image, const char *filename);

FBC_END_DECLS

#endif

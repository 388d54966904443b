/* Image files: the loader record, the built-in loaders, the file front end
 * and the image archive.
 *
 * Loading is two-stage: xc_image_new_from_file reads only size and flags
 * (through the cache when the file is already known); pixels are decoded on
 * demand by xc_image_load_data. Further loaders come from shared objects
 * named, comma-separated, in CANVAS_IMAGE_LOADER; each exports a data symbol
 * `image_loader` that is an xc_image_loader record. */
#ifndef FBCOMPOSE_LOADER_H
#define FBCOMPOSE_LOADER_H

#include <stdint.h>

#include "export.h"
#include "image.h"

FBC_BEGIN_DECLS

typedef struct xc_image_loader {
    const char *const *ext; /* suffixes without the dot, NULL-terminated */
    const char *name;       /* becomes the image's type_name */
    int (*load_data)(xc_image *image, const char *filename);
    int (*load_info)(xc_image *image, const char *filename);
    int (*save)(xc_image *image, const char *filename, const xg_area *area,
                const char *options);
    int (*next_frame)(xc_image *image, int32_t *delay, int32_t *x, int32_t *y,
                      int32_t *w, int32_t *h);
    int (*get_delay)(xc_image *image);
    void (*release)(xc_image *image);
    int (*load_data_rescaled)(xc_image *image, const char *filename,
                              int32_t width, int32_t height);
} xc_image_loader;

FBC_API extern xc_image_loader jpeg_loader;
FBC_API extern xc_image_loader png_loader;
FBC_API extern xc_image_loader bmp_loader;
FBC_API extern xc_image_loader wbmp_loader;
FBC_API extern xc_image_loader gif_loader;

/* A new reference to a cached image, or a new image holding size and flags
 * but no pixels; NULL when no loader takes the file. */
FBC_API xc_image *xc_image_new_from_file(const char *filename);
/* "png", "gif", "jpg", "bmp" or NULL from a file's first bytes. */
FBC_API const char *xc_image_guess_image_type(const char *header);
/* 0 when the pixels are there (or the image has no loader), else the
 * loader's result. */
FBC_API int xc_image_load_data(xc_image *image);
/* Always 0: callers test image->data. */
FBC_API int xc_image_load_data_rescaled(xc_image *image, int32_t width,
                                        int32_t height);
/* area NULL saves the whole image; options such as "quality=90" go to the
 * loader unchanged. */
FBC_API int xc_image_save(xc_image *image, const char *filename,
                          const xg_area *area, const char *options);
FBC_API int xc_image_next_frame(xc_image *image, int32_t *delay, int32_t *x,
                                int32_t *y, int32_t *w, int32_t *h);
FBC_API int xc_image_get_delay(xc_image *image);

/* Sets the largest image, in pixels (width x height), that the built-in
 * loaders decode, and returns the limit in force before the call. Above it
 * xc_image_new_from_file returns NULL and xc_image_load_data fails, each
 * after a line on standard error naming the file, the image's size and the
 * limit. 0 means no limit; a negative value changes nothing, so
 * xc_image_set_decode_limit(-1) reads the limit. The default is 64 x 1024 x
 * 1024 pixels (8192 x 8192, 256 MiB of 32-bit pixels). Process-wide, like
 * the cache limits. Whatever the limit, the built-in loaders also refuse a
 * file whose header declares far more pixels than its bytes can hold (the
 * density depends on the format; images up to 1024 x 1024 pixels are never
 * refused for it), and sizes whose pixels would not fit 2 GiB. Loader
 * modules may apply the limit themselves by reading it. */
FBC_API int64_t xc_image_set_decode_limit(int64_t pixels);

/* The archive img.ar of the path's directory: returns the archive's path
 * (owned by the library) and the entry's data offset, or NULL. */
FBC_API const char *ar_img_lookup(const char *path, int32_t *offset_out);

/* Width and height from a WBMP header; 0 or -1. */
FBC_API int xc_wbmp_get_size(const char *path, int32_t *w, int32_t *h);

FBC_END_DECLS

#endif

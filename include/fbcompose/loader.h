/* Image files: the loader record, the built-in loaders, the file front end
 * and the image archive.
 *
 * Loading is two-stage: xc_image_new_from_file reads only size and flags
 * (through the cache when the file is already known); pixels are decoded on
 * demand by xc_image_load_data. Further loaders come from shared objects
 * named, comma-separated, in CANVAS_IMAGE_LOADER; each exports a data symbol
 * `image_loader` that is an xc_image_loader record. They are asked before the
 * built-in loaders; a loader is chosen by the file name's suffix, compared
 * without regard to case. The registry is built on first use and reports
 * itself, and every failed file, on standard output. */
#ifndef FBCOMPOSE_LOADER_H
#define FBCOMPOSE_LOADER_H

#include <stddef.h>
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
 * but no pixels; NULL for a NULL name, a name without a suffix, or a file no
 * loader takes. Animations are never cached: each call gives a new image. */
FBC_API xc_image *xc_image_new_from_file(const char *filename);
/* Decodes an image held in memory (built into the program, received over
 * a link): PNG, JPEG, BMP, GIF (its first frame only) or WBMP, by the
 * built-in loaders; loader modules are not asked. `type` is a suffix as a
 * file name would carry it ("png", "jpg", "jpeg", ...; case ignored); NULL
 * recognises the format from the first bytes (the PNG, GIF, JPEG and BMP
 * signatures, else two zero bytes for WBMP, which has none). The bytes are
 * read in place and may be freed once the call returns. Returns a new image
 * with its pixels loaded and no file name, so it never enters the image
 * cache (xc_image_unref frees it), or NULL, with a line on standard error,
 * for NULL or empty bytes, an unknown type, or bytes the loader refuses.
 * The decode limit (xc_image_set_decode_limit) applies as for files. */
FBC_API xc_image *xc_image_new_from_memory(const void *bytes, size_t size,
                                           const char *type);
/* "png", "gif", "jpg", "bmp" or NULL from a file's first bytes (6 of them,
 * or fewer ending in a 0 byte). "jpg" only for FF D8 followed by "JFIF", a
 * narrower test than most JPEG files pass. */
FBC_API const char *xc_image_guess_image_type(const char *header);
/* Decodes the pixels of a file image. Returns 0 when there was nothing to
 * do (the pixels are there, or the image has no loader), otherwise the
 * loader's result: negative on failure, else 0 or more, and not always 0
 * (1 for a JPEG, 4 for a PNG with an alpha channel). Test for >= 0, or
 * test image->data. */
FBC_API int xc_image_load_data(xc_image *image);
/* Decodes the pixels through the loader's load_data_rescaled, with the
 * size the caller will draw at, or at full size through load_data when it
 * has none (no built-in loader has one). Always 0: callers test
 * image->data. An image without pixels must have a loader. */
FBC_API int xc_image_load_data_rescaled(xc_image *image, int32_t width,
                                        int32_t height);
/* Saves through the first loader that lists the file name's suffix; area
 * NULL saves the whole image; options such as "quality=90" go to the loader
 * unchanged. -1 for an image without pixels, a name without a suffix or a
 * suffix whose first loader cannot save; otherwise the loader's result
 * (0 on success). */
FBC_API int xc_image_save(xc_image *image, const char *filename,
                          const xg_area *area, const char *options);
/* Animations: the loader's next_frame and get_delay operations, or -1 when
 * the image's loader has none. */
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
 * (owned by the library) and stores the entry's data offset, or returns
 * NULL and stores 0. The first lookup in a directory without a usable
 * archive returns NULL and leaves *offset_out alone. Each directory is read
 * once per process. The base name "name" is reserved (the tool refuses to
 * store it) and is not found in an archive without such an entry. */
FBC_API const char *ar_img_lookup(const char *path, int32_t *offset_out);

/* Width and height as a WBMP file's header stores them (a header cut short
 * gives what it holds); 0, or -1 with a message when the file cannot be
 * read. */
FBC_API int xc_wbmp_get_size(const char *path, int32_t *w, int32_t *h);

FBC_END_DECLS

#endif

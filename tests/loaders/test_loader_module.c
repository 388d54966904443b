/* A loader module as a caller would build one: a shared object exporting
 * the record `image_loader`. It needs nothing from the library. Names
 * holding "refuse" are refused; names holding "anim" are animations. */
#include <stdlib.h>
#include <string.h>

#include "fbcompose/loader.h"

static const char *const extensions[] = {"mod", "PNG", NULL};

static int mod_load_info(xc_image *image, const char *filename) {
    if (strstr(filename, "refuse")) return -1;
    image->width = 3;
    image->height = 2;
    image->is_ani = strstr(filename, "anim") != NULL;
    return 0;
}

/* Every pixel holds the colour 0xFF000000 | width << 8 | height. */
static int fill(xc_image *image, int32_t width, int32_t height) {
    int32_t i;
    uint32_t *pixels;
    if (width <= 0 || height <= 0) return -1;
    pixels = malloc((size_t)width * (size_t)height * 4);
    if (!pixels) return -1;
    for (i = 0; i < width * height; ++i)
        pixels[i] = 0xFF000000u | (uint32_t)width << 8 | (uint32_t)height;
    image->data = (uint8_t *)pixels;
    image->width = width;
    image->height = height;
    image->rowstride = width * 4;
    image->format = 1;
    return 0;
}

static int mod_load_data(xc_image *image, const char *filename) {
    (void)filename;
    return fill(image, 3, 2);
}

static int mod_load_data_rescaled(xc_image *image, const char *filename,
                                  int32_t width, int32_t height) {
    (void)filename;
    return fill(image, width, height);
}

static int mod_next_frame(xc_image *image, int32_t *delay, int32_t *x, int32_t *y,
                          int32_t *w, int32_t *h) {
    *delay = 40;
    *x = 1;
    *y = 0;
    *w = image->width - 1;
    *h = image->height;
    return 7;
}

static int mod_get_delay(xc_image *image) {
    (void)image;
    return 40;
}

xc_image_loader image_loader = {extensions,     "mod",          mod_load_data,
                                mod_load_info,  NULL,           mod_next_frame,
                                mod_get_delay,  NULL,           mod_load_data_rescaled};

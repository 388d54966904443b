// A loader module as a caller would build one: a shared object exporting
// the record `image_loader`. It needs nothing from the library. Names
// holding "refuse" are refused.
#include <stdlib.h>
#include <string.h>

#include "fbcompose/loader.h"

static const char *const extensions[] = {"mod", "PNG", NULL};

static int mod_load_info(xc_image *image, const char *filename) {
    if (strstr(filename, "refuse")) return -1;
    image->width = 3;
    image->height = 2;
    return 0;
}

// Every pixel holds the colour 0xFF000000 | width << 8 | height.
static int mod_load_data_rescaled(xc_image *image, const char *filename, int32_t width,
                                  int32_t height) {
    uint32_t *pixels = width > 0 && height > 0 ? malloc((size_t)width * (size_t)height * 4) : NULL;
    (void)filename;
    if (!pixels) return -1;
    for (int32_t i = 0; i < width * height; ++i)
        pixels[i] = 0xFF000000u | (uint32_t)width << 8 | (uint32_t)height;
    image->data = (uint8_t *)pixels;
    image->width = width;
    image->height = height;
    image->rowstride = width * 4;
    return 0;
}

static int mod_load_data(xc_image *image, const char *filename) {
    return mod_load_data_rescaled(image, filename, 3, 2);
}

xc_image_loader image_loader = {extensions, "mod", mod_load_data, mod_load_info,         NULL,
                                NULL,       NULL,  NULL,          mod_load_data_rescaled};

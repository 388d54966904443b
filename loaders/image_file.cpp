// The file front end: choosing a loader by suffix, two-stage loading through
// the image cache, saving, and stepping animations.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/image_internal.hpp"
#include "core/log.hpp"
#include "fbcompose/image.h"
#include "fbcompose/loader.h"
#include "loaders/loader_registry.hpp"

namespace fbc {
namespace {

// The text after the last dot, or null when the name has no dot.
const char *suffix_of(const char *filename) {
    const char *dot = std::strrchr(filename, '.');
    return dot ? dot + 1 : nullptr;
}

// Walks the registry asking each loader that lists the suffix for the
// image's information; returns the first that accepts the file.
xc_image_loader *find_accepting_loader(xc_image *image, const char *filename, const char *suffix,
                                       bool *suffix_known) {
    for (xc_image_loader *const *loader = loader_registry(); *loader; ++loader) {
        const char *ext = loader_matching_suffix(*loader, suffix);
        if (!ext) continue;
        if ((*loader)->load_info(image, filename) >= 0) return *loader;
        fbc::log_out("%s file(%s) load failed\n", ext, filename);
        *suffix_known = true;
    }
    return nullptr;
}

}  // namespace
}  // namespace fbc

extern "C" {

xc_image *xc_image_new_from_file(const char *filename) {
    if (!filename) return nullptr;
    if (xc_image *cached = xc_image_lookup_in_cache(filename)) return cached;
    const char *suffix = fbc::suffix_of(filename);
    if (!suffix) return nullptr;
    xc_image *image = xc_image_new();
    bool suffix_known = false;
    xc_image_loader *loader = fbc::find_accepting_loader(image, filename, suffix, &suffix_known);
    if (!loader) {
        if (suffix_known) fbc::log_out("file(%s) load failed\n", filename);
        else fbc::log_out("file(%s) load failed: unsupported suffix %s\n", filename, suffix);
        xc_image_unref(image);
        return nullptr;
    }
    image->filename = strdup(filename);
    image->type_name = loader->name;
    image->loader = loader;
    // Animations change their pixels frame by frame: never shared or cached.
    if (image->is_ani) {
        image->no_cache = 1;
        return image;
    }
    fbc::xc_image_add_active(image);
    return image;
}

const char *xc_image_guess_image_type(const char *header) {
    if (std::strncmp(header, "\x89PNG", 4) == 0) return "png";
    if (std::strncmp(header, "GIF8", 4) == 0) return "gif";
    // compat: only files that start exactly with SOI and a JFIF segment: a
    // narrow test kept on purpose.
    if (std::strncmp(header, "\xFF\xD8JFIF", 6) == 0) return "jpg";
    if (std::strncmp(header, "BM", 2) == 0) return "bmp";
    return nullptr;
}

int xc_image_load_data(xc_image *image) {
    if (image->data || !image->loader) return 0;
    return image->loader->load_data(image, image->filename);
}

int xc_image_load_data_rescaled(xc_image *image, int32_t width, int32_t height) {
    if (image->data) return 0;
    xc_image_loader *loader = image->loader;
    // Callers learn of a failure by finding no pixels: the result is always 0.
    if (loader->load_data_rescaled)
        loader->load_data_rescaled(image, image->filename, width, height);
    else loader->load_data(image, image->filename);
    return 0;
}

int xc_image_save(xc_image *image, const char *filename, const xg_area *area, const char *options) {
    if (!image->data) return -1;
    const char *suffix = fbc::suffix_of(filename);
    if (!suffix) return -1;
    for (xc_image_loader *const *loader = fbc::loader_registry(); *loader; ++loader) {
        if (!fbc::loader_matching_suffix(*loader, suffix)) continue;
        // compat: the first loader listing the suffix decides, even when it cannot save.
        if (!(*loader)->save) return -1;
        return (*loader)->save(image, filename, area, options);
    }
    return -1;
}

int xc_image_next_frame(xc_image *image, int32_t *delay, int32_t *x, int32_t *y, int32_t *w,
                        int32_t *h) {
    if (!image->loader || !image->loader->next_frame) return -1;
    return image->loader->next_frame(image, delay, x, y, w, h);
}

int xc_image_get_delay(xc_image *image) {
    if (!image->loader || !image->loader->get_delay) return -1;
    return image->loader->get_delay(image);
}

}  // extern "C"

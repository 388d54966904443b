// The image record: construction, pixel addressing and lifetime.
#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/image_internal.hpp"
#include "core/log.hpp"
#include "core/pixel_format.hpp"
#include "core/size_check.hpp"
#include "fbcompose/image.h"
#include "fbcompose/loader.h"
#include "fbcompose/text.h"

namespace fbc {
namespace {

// A pixel block of `bytes`, or null when the size was refused.
uint8_t *allocate_pixels(std::optional<int32_t> bytes) {
    if (!bytes) return nullptr;
    return static_cast<uint8_t *>(std::malloc(static_cast<size_t>(*bytes)));
}

// Row lengths are signed 32-bit; a width whose row does not fit gets 0,
// so that no block is ever sized from a wrapped product.
int32_t row_bytes(int32_t width, int32_t bytes_per_pixel) {
    return checked_product(width, bytes_per_pixel).value_or(0);
}

}  // namespace

int32_t image_cache_bytes(const xc_image *image) {
    if (!image->data || image->foreign_data) return 0;
    return checked_product(image->rowstride, image->height).value_or(0);
}

void image_destroy(xc_image *image) {
    if (image->loader && image->loader->release) image->loader->release(image);
    if (image->data) {
        if (!image->foreign_data) {
            std::free(image->data);
        } else if (image->mapped) {
            munmap(image->data,
                   static_cast<size_t>(image->rowstride) * static_cast<size_t>(image->height));
        }
    }
    std::free(image->filename);
    std::free(image);
}

}  // namespace fbc

extern "C" {

int xc_init(void) {
    xc_image_init();
    return xc_font_init();
}

xc_image *xc_image_new(void) {
    auto *image = static_cast<xc_image *>(std::calloc(1, sizeof(xc_image)));
    if (image) image->ref = 1;
    return image;
}

xc_image *xc_image_create(int32_t width, int32_t height) {
    xc_image *image = xc_image_new();
    image->width = width;
    image->height = height;
    image->format = fbc::pixel_format::kRgb;
    image->depth = 24;
    image->rowstride = fbc::row_bytes(width, 4);
    xc_image_alloc_data(image);
    return image;
}

uint8_t *xc_image_alloc_data(xc_image *image) {
    if (image->rowstride < 1) image->rowstride = fbc::row_bytes(image->width, 4);
    image->data = fbc::allocate_pixels(image->rowstride < 1
                                           ? std::nullopt
                                           : fbc::checked_product(image->rowstride, image->height));
    return image->data;
}

xc_image *xc_image_new_from_data(int32_t width, int32_t height, void *data, int32_t depth, int copy,
                                 int foreign) {
    const auto bytes = fbc::checked_product(width, height, 4);
    xc_image *image;
    if (copy) {
        image = xc_image_create(width, height);
        if (image->data && data && bytes)
            std::memcpy(image->data, data, static_cast<size_t>(*bytes));
    } else {
        image = xc_image_new();
        image->width = width;
        image->height = height;
        image->rowstride = fbc::row_bytes(width, 4);
        image->data = data ? static_cast<uint8_t *>(data) : fbc::allocate_pixels(bytes);
        image->foreign_data = foreign & 1;
    }
    image->no_cache = 1;
    if (depth == 32 || depth == 1) {
        image->has_alpha = 1;
        image->format = fbc::pixel_format::kRgba;
    } else if (depth == 16) {
        image->format = fbc::pixel_format::kRgb565;
        image->rowstride = fbc::row_bytes(width, 2);
    }
    // The argument is stored, not interpreted: depth 1 yields an image that
    // no span function accepts.
    image->depth = static_cast<uint32_t>(depth) & 0xFFu;
    return image;
}

xc_image *xc_image_new_with_data(int32_t width, int32_t height, void *data, uint32_t format,
                                 int copy, int foreign, int32_t rowstride) {
    xc_image *image = xc_image_new();
    image->width = width;
    image->height = height;
    image->format = format;
    image->rowstride = rowstride >= 1
                           ? rowstride
                           : fbc::row_bytes(width, fbc::pixel_format::bytes_per_pixel(format));
    image->depth = fbc::pixel_format::depth_of(format);
    image->has_alpha = format == fbc::pixel_format::kRgba;
    const auto bytes =
        image->rowstride < 1 ? std::nullopt : fbc::checked_product(image->rowstride, height);
    if (copy) {
        if (xc_image_alloc_data(image) && data && bytes)
            std::memcpy(image->data, data, static_cast<size_t>(*bytes));
    } else {
        image->data = data ? static_cast<uint8_t *>(data) : fbc::allocate_pixels(bytes);
    }
    // `foreign` states the caller's intent for the record, so a private copy
    // marked foreign is never freed either.
    image->foreign_data = foreign & 1;
    image->no_cache = 1;
    return image;
}

int xc_image_has_alpha(const xc_image *image) { return image->has_alpha; }

// The offset is formed in 64 bits so that no int32 argument overflows it,
// even on the 32-bit device; an address outside the block is the caller's.
void *xc_image_pointer(const xc_image *image, int32_t x, int32_t y) {
    const int64_t bpp = image->depth == 16 ? 2 : 4;
    return image->data + static_cast<intptr_t>(int64_t{y} * image->rowstride + x * bpp);
}

xc_image *xc_image_ref(xc_image *image) {
    if (image) ++image->ref;
    return image;
}

void xc_image_unref(xc_image *image) {
    if (!image) return;
    --image->ref;
    if (image->ref < 0) {
        fbc::log_out("!!!!!!!!!!!!!!!!!!!!!!!!!!!! image ref(%p) is negative: %d\n",
                     static_cast<void *>(image), image->ref);
        return;
    }
    if (image->ref > 0) return;
    if (image->filename && !image->no_cache) {
        fbc::image_add_cache(image);
    } else {
        fbc::image_destroy(image);
    }
}

}  // extern "C"

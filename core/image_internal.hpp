// What the image object and the image cache share, and what the file front
// end needs of the cache.
#pragma once

#include <cstdint>

#include "fbcompose/image.h"

namespace fbc {

// Releases the loader state, the pixels (free, munmap or nothing, as the
// flags say), the file name and the record.
void image_destroy(xc_image *image);

// Bytes an image holds against the cache budget: its own pixel block only.
int32_t image_cache_bytes(const xc_image *image);

// Takes a named, cacheable image whose count has reached 0.
void image_add_cache(xc_image *image);

// Enters a freshly loaded or revived, cacheable file image in the active
// table. compat: its assertion reads "xc_image_add_active: ... `im->is_ani
// == 0'", so the function and its parameter keep these names.
void xc_image_add_active(xc_image *im);

}  // namespace fbc

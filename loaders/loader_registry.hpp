// The list of image loaders: modules named in CANVAS_IMAGE_LOADER first,
// then the built-in records, built once at first use.
#pragma once

#include "fbcompose/loader.h"

namespace fbc {

// The null-terminated registry, built on the first call.
xc_image_loader *const *loader_registry();

// The first suffix of `loader` equal to `suffix` ignoring case, or null.
const char *loader_matching_suffix(const xc_image_loader *loader, const char *suffix);

}  // namespace fbc

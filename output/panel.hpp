// The panel record, shared by the frame buffer in caller memory and the
// frame-buffer device, which differ only in where the pixels come from.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fbcompose/panel.h"
#include "fbcompose/pixel.h"

struct xc_panel {
    uint8_t *pixels;
    int32_t width, height;  // the panel's own, after rotation
    int32_t stride;         // bytes
    int depth, rotation;
    int32_t pixel_bytes;
    xc_convert_func convert;
    // A device panel's descriptor and mapping; -1 and null otherwise.
    int device;
    void *mapping;
    size_t mapping_length;
};

namespace fbc {

// A panel over `pixels` after checking every argument; null with a message
// that starts with `caller` otherwise.
xc_panel *make_panel(void *pixels, int32_t width, int32_t height, int32_t stride, int depth,
                     int rotation, const char *caller);

}  // namespace fbc

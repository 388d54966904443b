// The codes of xc_image.format by name, and the depth bits and bytes per
// pixel that follow from a code. Codes 4 to 7 and 9 up have no name: they
// only mean 32-bit storage, and the helpers treat them so.
#pragma once

#include <cstdint>

namespace fbc::pixel_format {

enum Code : uint32_t {
    kRgba = 0,      // 32-bit colour word with alpha
    kRgb = 1,       // the same word with its alpha byte ignored (canvases)
    kPacked24 = 2,  // three bytes per pixel
    kRgb565 = 3,    // one RGB565 halfword
    kRgb666 = 8,    // RGB666 panel pixel in the low 18 bits of a word
};

// Depth bits that xc_image_new_with_data sets for a code.
constexpr uint32_t depth_of(uint32_t code) {
    switch (code) {
        case kPacked24: return 24;
        case kRgb565: return 16;
        case kRgb666: return 18;
        default: return 32;
    }
}

constexpr int32_t bytes_per_pixel(uint32_t code) {
    switch (code) {
        case kPacked24: return 3;
        case kRgb565: return 2;
        default: return 4;
    }
}

}  // namespace fbc::pixel_format

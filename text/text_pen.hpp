// The pen of text layout: 24.8 fixed point, shared by drawing and measuring
// so both place every glyph at the same pixel.
#pragma once

#include <cstdint>

#include "fbcompose/text.h"

namespace fbc {

// A glyph's advance: FreeType's 16.16 value in 24.8.
inline int64_t glyph_advance(const xc_font_glyph *fg) {
    return static_cast<int64_t>(fg->glyph->advance.x) >> 8;
}

// Whole pixels of a pen position, rounding towards minus infinity; in 64
// bits, since a pen may start anywhere in the int32 range and run on.
inline int64_t pen_pixels(int64_t pen) { return pen >> 8; }

}  // namespace fbc

// What the transform tests share beyond the image helpers.
#pragma once

#include "fbcompose/transform.h"
#include "image_words.hpp"

namespace test {

constexpr uint32_t kWhite = 0xFFFFFFFF;

// The words of a w x h canvas (filled with `background`) after `drawer`
// drew area s of src into all of it through `clip` (default: everything).
inline Words drawn(xc_scale_func drawer, const xc_image *src, xg_area s, int32_t w, int32_t h,
                   const xg_area *clip = nullptr, uint32_t background = 0) {
    Image dst = canvas(w, h, background);
    const xg_area whole{0, 0, w, h};
    drawer(src, dst.get(), clip ? clip : &whole, &s, &whole, kWhite);
    return all(dst.get());
}

}  // namespace test

// Each built-in codec decoded in one step, size, flags and pixels, from
// either kind of source. The file path reaches the same code through the
// loader records (load_info, then load_data); images from memory come
// through here, as they have no name to load by later.
#pragma once

#include "fbcompose/image.h"
#include "loaders/codec_support.hpp"

namespace fbc {

// Each returns 0 or more with the pixels loaded, or -1 with no pixels kept
// and a diagnostic naming the source. A GIF gives its first frame.
int decode_png(xc_image *image, const Source &source);
int decode_jpeg(xc_image *image, const Source &source);
int decode_bmp(xc_image *image, const Source &source);
int decode_gif(xc_image *image, const Source &source);
int decode_wbmp(xc_image *image, const Source &source);

}  // namespace fbc

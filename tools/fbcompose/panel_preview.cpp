// The panel's pixels decoded back into an image, so that a preview shows the
// dithering (and the rotation) as the panel will.
#include "panels.hpp"

namespace fbctool {
namespace {

uint32_t widen(uint32_t v, int bits) {
    return (v << (8 - bits)) | (v >> (2 * bits - 8));  // replicate the top bits
}

uint32_t decode(const uint8_t *p, int32_t depth) {
    if (depth == 16) {
        const uint32_t v = static_cast<uint32_t>(p[0] | p[1] << 8);
        return 0xFF000000u | widen(v >> 11, 5) << 16 | widen((v >> 5) & 63, 6) << 8 |
               widen(v & 31, 5);
    }
    const uint32_t v =
        static_cast<uint32_t>(p[0] | p[1] << 8 | p[2] << 16) | static_cast<uint32_t>(p[3]) << 24;
    if (depth == 18)
        return 0xFF000000u | widen((v >> 12) & 63, 6) << 16 | widen((v >> 6) & 63, 6) << 8 |
               widen(v & 63, 6);
    return 0xFF000000u | (v & 0xFFFFFFu);
}

}  // namespace

fbcompose::image decode_panel(const memory_panel &panel) {
    fbcompose::image image = fbcompose::image::create(panel.width(), panel.height());
    if (!image) return image;
    const size_t pixel_bytes = panel.depth() == 16 ? 2 : 4;
    const uint8_t *in = panel.bytes().data();
    for (int32_t y = 0; y < panel.height(); ++y)
        for (uint32_t &pixel : image.row(y)) {
            pixel = decode(in, panel.depth());
            in += pixel_bytes;
        }
    return image;
}

}  // namespace fbctool

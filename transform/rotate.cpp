// Rotation: exact permutations for quarter turns, bilinear resampling into
// the rotated bounding box for any other angle.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "core/log.hpp"
#include "core/pixel_bounds.hpp"
#include "fbcompose/loader.h"
#include "fbcompose/transform.h"
#include "pixel/channel.hpp"
#include "transform/scale_common.hpp"

namespace fbc {
namespace {

// Beyond this, 16.16 positions inside the bounding box could overflow.
constexpr int32_t kMaxSide = 16383;

// A result with the source's pixel format and flags, whose rows hold its
// pixels at the source's pointer step: a three-byte source (format 2) is
// turned as the 32-bit words it is addressed as, so its result has rows of
// 4 bytes a pixel too.
xc_image *same_kind(const xc_image *src, int32_t width, int32_t height) {
    xc_image *result = src->depth == 16 ? xc_image_new_from_data(width, height, nullptr, 16, 0, 0)
                                        : xc_image_new_with_data(width, height, nullptr,
                                                                 src->format, 0, 0, width * 4);
    result->depth = src->depth;
    result->has_alpha = src->has_alpha;
    return result;
}

// Result pixel (x, y) takes the source pixel this quarter turn brings there.
template <typename Pixel>
void permute(const xc_image *src, xc_image *dst, int32_t quarter) {
    const int32_t w = src->width, h = src->height;
    for (int32_t y = 0; y < dst->height; ++y) {
        auto *out = static_cast<Pixel *>(xc_image_pointer(dst, 0, y));
        for (int32_t x = 0; x < dst->width; ++x) {
            int32_t sx = x, sy = y;
            if (quarter == 1) sx = y, sy = h - 1 - x;
            if (quarter == 2) sx = w - 1 - x, sy = h - 1 - y;
            if (quarter == 3) sx = w - 1 - y, sy = x;
            out[x] = *static_cast<const Pixel *>(xc_image_pointer(src, sx, sy));
        }
    }
}

xc_image *quarter_turn(const xc_image *src, int32_t quarter) {
    const bool swap = quarter % 2 == 1;
    xc_image *result =
        same_kind(src, swap ? src->height : src->width, swap ? src->width : src->height);
    if (!result->data) return result;
    if (src->depth == 16) permute<uint16_t>(src, result, quarter);
    else permute<uint32_t>(src, result, quarter);
    return result;
}

// Source pixel as premultiplied colour: transparent outside the image,
// opaque for sources without alpha.
uint32_t fetch(const xc_image *src, int32_t x, int32_t y) {
    if (x < 0 || y < 0 || x >= src->width || y >= src->height) return 0;
    const void *p = xc_image_pointer(src, x, y);
    if (src->depth == 16) {
        return 0xFF000000u | px::unpack_565(*static_cast<const uint16_t *>(p));
    }
    const uint32_t v = *static_cast<const uint32_t *>(p);
    return src->has_alpha ? v : v | 0xFF000000u;
}

// Bilinear sample at a 16.16 position on the pixel-centre grid.
uint32_t sample(const xc_image *src, int32_t px, int32_t py) {
    const int32_t x = px >> 16, y = py >> 16;
    if (x < -1 || y < -1 || x >= src->width || y >= src->height) return 0;
    const auto fx = static_cast<uint32_t>(px & 0xFFFF), fy = static_cast<uint32_t>(py & 0xFFFF);
    const uint32_t top = lerp_word(fetch(src, x, y), fetch(src, x + 1, y), fx, true, 0);
    const uint32_t bottom = lerp_word(fetch(src, x, y + 1), fetch(src, x + 1, y + 1), fx, true, 0);
    return lerp_word(top, bottom, fy, true, 0);
}

xc_image *free_turn(const xc_image *src, int32_t degrees) {
    // The only floating point: one sine and one cosine per call.
    const double radians = degrees * 3.14159265358979323846 / 180.0;
    const auto c = static_cast<int64_t>(std::lround(std::cos(radians) * 65536.0));
    const auto s = static_cast<int64_t>(std::lround(std::sin(radians) * 65536.0));
    const int64_t w = src->width, h = src->height;
    const auto bw = static_cast<int32_t>((w * std::llabs(c) + h * std::llabs(s) + 0xFFFF) >> 16);
    const auto bh = static_cast<int32_t>((w * std::llabs(s) + h * std::llabs(c) + 0xFFFF) >> 16);
    xc_image *result = xc_image_new_from_data(bw, bh, nullptr, 32, 0, 0);
    if (!result->data) return result;
    // Offsets of pixel centres from the box's centre, turned back into the
    // source by the inverse rotation, then stepped per pixel in 16.16.
    const int64_t dx = 0x8000 - (int64_t{bw} << 15);
    for (int32_t y = 0; y < bh; ++y) {
        const int64_t dy = (int64_t{y} << 16) + 0x8000 - (int64_t{bh} << 15);
        auto px = static_cast<int32_t>(((dx * c + dy * s) >> 16) + (w << 15) - 0x8000);
        auto py = static_cast<int32_t>(((dy * c - dx * s) >> 16) + (h << 15) - 0x8000);
        auto *out = static_cast<uint32_t *>(xc_image_pointer(result, 0, y));
        for (int32_t x = 0; x < bw;
             ++x, px += static_cast<int32_t>(c), py -= static_cast<int32_t>(s))
            out[x] = sample(src, px, py);
    }
    return result;
}

}  // namespace
}  // namespace fbc

extern "C" {

xc_image *xc_image_new_from_rotated_image(xc_image *image, int32_t degrees) {
    if (image && !image->data && image->loader) xc_image_load_data(image);
    if (!image || !fbc::rows_addressable(image, fbc::pointer_step(image)) || image->width < 1 ||
        image->height < 1 || image->width > fbc::kMaxSide || image->height > fbc::kMaxSide) {
        fbc::log_out("xc_image_new_from_rotated_image: no pixels to turn, or too large\n");
        return nullptr;
    }
    const int32_t turn = ((degrees % 360) + 360) % 360;
    if (turn % 90 == 0) return fbc::quarter_turn(image, turn / 90);
    return fbc::free_turn(image, turn);
}

}  // extern "C"

// Draw primitives: a source run over or into a destination run.
#include <cstring>

#include "fbcompose/pixel.h"
#include "pixel/channel.hpp"

namespace fbc::px {
namespace {

template <bool KeepAlpha>
void blend_pixels(const uint32_t *src, uint32_t *dst, int32_t count) {
    for (int32_t i = 0; i < count; ++i) dst[i] = over<KeepAlpha>(src[i], dst[i]);
}

void copy_bytes(const void *src, void *dst, int32_t count, size_t pixel_bytes) {
    if (count > 0) std::memcpy(dst, src, static_cast<size_t>(count) * pixel_bytes);
}

}  // namespace
}  // namespace fbc::px

using fbc::px::kAlphaMask;

extern "C" {

// a = s.alpha; a = 0: d kept; a = 255: d = s; else d.c = ((d.c x (255 - a)) >> 8) + s.c, d.alpha
// kept
void xc_blend_pixels_rgba_to_rgb(const void *src, void *dst, int32_t count, uint32_t) {
    fbc::px::blend_pixels<true>(static_cast<const uint32_t *>(src), static_cast<uint32_t *>(dst),
                                count);
}

// a = s.alpha; a = 0: d kept; a = 255: d = s; else every byte d = ((d x (255 - a)) >> 8) + s byte
void xc_blend_pixels_rgba_to_rgba(const void *src, void *dst, int32_t count, uint32_t) {
    fbc::px::blend_pixels<false>(static_cast<const uint32_t *>(src), static_cast<uint32_t *>(dst),
                                 count);
}

// d = s
void xc_copy_pixels_rgba_to_rgba(const void *src, void *dst, int32_t count, uint32_t) {
    fbc::px::copy_bytes(src, dst, count, 4);
}

// d = s | 0xFF000000
void xc_copy_pixels_rgb_to_rgba(const void *src, void *dst, int32_t count, uint32_t) {
    const auto *s = static_cast<const uint32_t *>(src);
    auto *d = static_cast<uint32_t *>(dst);
    for (int32_t i = 0; i < count; ++i) d[i] = s[i] | kAlphaMask;
}

// d = r >> 3 << 11 | g >> 2 << 5 | b >> 3 (truncated, never dithered)
void xc_copy_pixels_rgba_to_16(const void *src, void *dst, int32_t count, uint32_t) {
    const auto *s = static_cast<const uint32_t *>(src);
    auto *d = static_cast<uint16_t *>(dst);
    for (int32_t i = 0; i < count; ++i) d[i] = fbc::px::pack_565(s[i]);
}

// d = r5 << 19 | g6 << 10 | b5 << 3, alpha 0
void xc_copy_pixels_16_to_rgb(const void *src, void *dst, int32_t count, uint32_t) {
    const auto *s = static_cast<const uint16_t *>(src);
    auto *d = static_cast<uint32_t *>(dst);
    for (int32_t i = 0; i < count; ++i) d[i] = fbc::px::unpack_565(s[i]);
}

// d = s
void xc_copy_pixels_16_to_16(const void *src, void *dst, int32_t count, uint32_t) {
    fbc::px::copy_bytes(src, dst, count, 2);
}

}  // extern "C"

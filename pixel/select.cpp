// Choice of the span primitive for an operation, made once per operation
// from the images' has_alpha and depth and the fill colour's alpha.
#include <cstdio>

#include "core/assert.hpp"
#include "core/log.hpp"
#include "fbcompose/pixel.h"

namespace fbc::px {
namespace {

// [colour counts as opaque][destination has alpha]
constexpr xc_fill_func kFill[2][2] = {
    {xc_blend_color_rgba_to_rgb, xc_blend_color_rgba_to_rgba},
    {xc_copy_color_rgba_to_rgba, xc_copy_color_rgb_to_rgba},
};

// [source has alpha][destination has alpha]; opaque onto opaque goes by depth.
constexpr xc_draw_func kDraw[2][2] = {
    {nullptr, xc_copy_pixels_rgb_to_rgba},
    {xc_blend_pixels_rgba_to_rgb, xc_blend_pixels_rgba_to_rgba},
};

// Opaque onto opaque: [destination is 16-bit][source is 16-bit]
constexpr xc_draw_func kOpaqueCopy[2][2] = {
    {xc_copy_pixels_rgba_to_rgba, xc_copy_pixels_16_to_rgb},
    {xc_copy_pixels_rgba_to_16, xc_copy_pixels_16_to_16},
};

// [source has alpha][destination has alpha]
constexpr xc_draw_func kMulDraw[2][2] = {
    {xc_blend_pixels_mul_color_rgb_to_rgb, xc_blend_pixels_mul_color_rgb_to_rgba},
    {xc_blend_pixels_mul_color_rgba_to_rgb, xc_blend_pixels_mul_color_rgba_to_rgba},
};

// [destination has alpha]
constexpr xc_alpha_func kAlpha[2] = {xc_blend_alpha_color_rgba_to_rgb,
                                     xc_blend_alpha_color_rgba_to_rgba};
constexpr xc_alpha_texture_func kAlphaTexture[2] = {xc_blend_alpha_texture_rgba_to_rgb,
                                                    xc_blend_alpha_texture_rgba_to_rgba};

// 254 counts as opaque: a product >> 8 turns a full 255 into 254, and such
// a colour is still meant to cover what lies beneath.
constexpr bool counts_as_opaque(uint32_t color) { return (color >> 24) >= 254; }

}  // namespace
}  // namespace fbc::px

extern "C" {

xc_fill_func xc_get_fill_func(uint32_t color, const xc_image *dst) {
    return fbc::px::kFill[fbc::px::counts_as_opaque(color)][dst->has_alpha];
}

xc_draw_func xc_get_draw_func(const xc_image *src, const xc_image *dst) {
    if (src->has_alpha || dst->has_alpha) return fbc::px::kDraw[src->has_alpha][dst->has_alpha];
    const unsigned dst_depth = dst->depth;
    if (dst_depth < 16) {
        fbc::log_out("dst depth = %d\n", static_cast<int>(dst_depth));
        FBC_ASSERT("draw_func", 0);
        return nullptr;
    }
    return fbc::px::kOpaqueCopy[dst_depth == 16][src->depth == 16];
}

xc_draw_func xc_get_mul_draw_func(const xc_image *src, const xc_image *dst, uint32_t) {
    return fbc::px::kMulDraw[src->has_alpha][dst->has_alpha];
}

xc_alpha_func xc_get_alpha_func(const xc_image *dst) {
    return fbc::px::kAlpha[dst->has_alpha];
}

xc_alpha_texture_func xc_get_alpha_texture_func(const xc_image *dst) {
    return fbc::px::kAlphaTexture[dst->has_alpha];
}

}  // extern "C"

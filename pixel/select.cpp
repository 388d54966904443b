// Choice of the span primitive for an operation, made once per operation
// from the images' has_alpha and depth and the fill colour's alpha, and of
// the converter for a panel's depth and rotation. The rules name the
// references; each getter hands out what their rows pick on this CPU,
// looked up once, on its first call.
#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>

#include "core/assert.hpp"
#include "core/log.hpp"
#include "fbcompose/pixel.h"
#include "pixel/kernel_table.hpp"

namespace fbc::px {
namespace {

// [colour counts as opaque][destination has alpha]
constexpr xc_fill_func kFillRule[2][2] = {
    {xc_blend_color_rgba_to_rgb, xc_blend_color_rgba_to_rgba},
    {xc_copy_color_rgba_to_rgba, xc_copy_color_rgb_to_rgba},
};

// [source has alpha][destination has alpha]; opaque onto opaque goes by depth.
constexpr xc_draw_func kDrawRule[2][2] = {
    {nullptr, xc_copy_pixels_rgb_to_rgba},
    {xc_blend_pixels_rgba_to_rgb, xc_blend_pixels_rgba_to_rgba},
};

// Opaque onto opaque: [destination is 16-bit][source is 16-bit]
constexpr xc_draw_func kOpaqueCopyRule[2][2] = {
    {xc_copy_pixels_rgba_to_rgba, xc_copy_pixels_16_to_rgb},
    {xc_copy_pixels_rgba_to_16, xc_copy_pixels_16_to_16},
};

// [source has alpha][destination has alpha]
constexpr xc_draw_func kMulDrawRule[2][2] = {
    {xc_blend_pixels_mul_color_rgb_to_rgb, xc_blend_pixels_mul_color_rgb_to_rgba},
    {xc_blend_pixels_mul_color_rgba_to_rgb, xc_blend_pixels_mul_color_rgba_to_rgba},
};

// [destination has alpha]
constexpr xc_alpha_func kAlphaRule[2] = {xc_blend_alpha_color_rgba_to_rgb,
                                         xc_blend_alpha_color_rgba_to_rgba};
constexpr xc_alpha_texture_func kAlphaTextureRule[2] = {xc_blend_alpha_texture_rgba_to_rgb,
                                                        xc_blend_alpha_texture_rgba_to_rgba};

constexpr int32_t kPanelDepths[] = {16, 18, 32};
constexpr int32_t kRotations[] = {0, 270, 90};
// [depth][rotation], in the orders above
constexpr xc_convert_func kConvertRule[3][3] = {
    {xc_convert_rgba_to_16, xc_convert_rgba_to_16_270, xc_convert_rgba_to_16_90},
    {xc_convert_rgba_to_18, xc_convert_rgba_to_18_270, xc_convert_rgba_to_18_90},
    {xc_convert_rgba_to_32, xc_convert_rgba_to_32_270, xc_convert_rgba_to_32_90},
};

// A rule table with each reference replaced by what stands in for it here.
template <class Fn, size_t N>
std::array<Fn, N> picks(const Fn (&rule)[N]) {
    std::array<Fn, N> out{};
    std::transform(std::begin(rule), std::end(rule), out.begin(), chosen<Fn>);
    return out;
}

template <class Fn, size_t N, size_t M>
std::array<std::array<Fn, M>, N> picks(const Fn (&rule)[N][M]) {
    std::array<std::array<Fn, M>, N> out{};
    for (size_t i = 0; i < N; ++i) out[i] = picks(rule[i]);
    return out;
}

// 254 counts as opaque: a product >> 8 turns a full 255 into 254, and such
// a colour is still meant to cover what lies beneath.
constexpr bool counts_as_opaque(uint32_t color) { return (color >> 24) >= 254; }

// Position of `value` in `list`, or the list's size.
template <size_t N>
size_t index_of(const int32_t (&list)[N], int32_t value) {
    return size_t(std::find(std::begin(list), std::end(list), value) - std::begin(list));
}

}  // namespace
}  // namespace fbc::px

extern "C" {

xc_fill_func xc_get_fill_func(uint32_t color, const xc_image *dst) {
    static const auto table = fbc::px::picks(fbc::px::kFillRule);
    return table[fbc::px::counts_as_opaque(color)][dst->has_alpha];
}

xc_draw_func xc_get_draw_func(const xc_image *src, const xc_image *dst) {
    static const auto table = fbc::px::picks(fbc::px::kDrawRule);
    static const auto opaque_copy = fbc::px::picks(fbc::px::kOpaqueCopyRule);
    if (src->has_alpha || dst->has_alpha) return table[src->has_alpha][dst->has_alpha];
    const unsigned dst_depth = dst->depth;
    if (dst_depth < 16) {
        fbc::log_out("dst depth = %d\n", static_cast<int>(dst_depth));
        FBC_ASSERT("draw_func", 0);
        return nullptr;
    }
    return opaque_copy[dst_depth == 16][src->depth == 16];
}

xc_draw_func xc_get_mul_draw_func(const xc_image *src, const xc_image *dst, uint32_t) {
    static const auto table = fbc::px::picks(fbc::px::kMulDrawRule);
    return table[src->has_alpha][dst->has_alpha];
}

xc_alpha_func xc_get_alpha_func(const xc_image *dst) {
    static const auto table = fbc::px::picks(fbc::px::kAlphaRule);
    return table[dst->has_alpha];
}

xc_alpha_texture_func xc_get_alpha_texture_func(const xc_image *dst) {
    static const auto table = fbc::px::picks(fbc::px::kAlphaTextureRule);
    return table[dst->has_alpha];
}

// The first two arguments take no part in the choice.
xc_convert_func xc_get_convert_func(int32_t, int32_t, int32_t depth, int32_t rotation) {
    using fbc::px::kPanelDepths, fbc::px::kRotations;
    static const auto table = fbc::px::picks(fbc::px::kConvertRule);
    const size_t d = fbc::px::index_of(kPanelDepths, depth);
    const size_t r = fbc::px::index_of(kRotations, rotation);
    if (d < std::size(kPanelDepths) && r < std::size(kRotations)) return table[d][r];
    // compat: names the depth even when it is the rotation that was refused.
    fbc::log_out("****fatal**** %s: failed depth = %d\n", "xc_get_convert_func", depth);
    return nullptr;
}

}  // extern "C"

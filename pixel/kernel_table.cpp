// The six kernel tables. Each row is a reference and, best first, the
// variants that may stand in for it; a variant enters a row through its
// instruction set's macro (pixel/variants.hpp) and lives in a file of its own.
#include "pixel/kernel_table.hpp"
#include "pixel/variants.hpp"

namespace fbc::px {
namespace {

#define FBC_KERNEL(reference, ...)             \
    {                                          \
#reference, reference, { __VA_ARGS__ } \
    }

constexpr Kernel<xc_fill_func> kFillKernels[] = {
    FBC_KERNEL(xc_blend_color_rgba_to_rgb,
               FBC_X86(blend_color_rgba_to_rgb) FBC_SWAR(swar::blend_color_rgba_to_rgb)),
    FBC_KERNEL(xc_blend_color_rgba_to_rgba,
               FBC_X86(blend_color_rgba_to_rgba) FBC_SWAR(swar::blend_color_rgba_to_rgba)),
    FBC_KERNEL(xc_copy_color_rgba_to_rgba, FBC_X86(copy_color_rgba_to_rgba)),
    FBC_KERNEL(xc_copy_color_rgb_to_rgba, FBC_X86(copy_color_rgb_to_rgba)),
};

constexpr Kernel<xc_draw_func> kDrawKernels[] = {
    FBC_KERNEL(xc_blend_pixels_rgba_to_rgb,
               FBC_X86(blend_pixels_rgba_to_rgb) FBC_SWAR(swar::blend_pixels_rgba_to_rgb)),
    FBC_KERNEL(xc_blend_pixels_rgba_to_rgba,
               FBC_X86(blend_pixels_rgba_to_rgba) FBC_SWAR(swar::blend_pixels_rgba_to_rgba)),
    FBC_KERNEL(xc_copy_pixels_rgba_to_rgba),
    FBC_KERNEL(xc_copy_pixels_rgb_to_rgba,
               FBC_X86(copy_pixels_rgb_to_rgba) FBC_SWAR(swar::copy_pixels_rgb_to_rgba)),
    FBC_KERNEL(xc_copy_pixels_rgba_to_16,
               FBC_X86(copy_pixels_rgba_to_16) FBC_SWAR(swar::copy_pixels_rgba_to_16)),
    FBC_KERNEL(xc_copy_pixels_16_to_rgb,
               FBC_X86(copy_pixels_16_to_rgb) FBC_SWAR(swar::copy_pixels_16_to_rgb)),
    FBC_KERNEL(xc_copy_pixels_16_to_16,
               FBC_X86(copy_pixels_16_to_16) FBC_SWAR(swar::copy_pixels_16_to_16)),
};

constexpr Kernel<xc_draw_func> kMulDrawKernels[] = {
    FBC_KERNEL(xc_blend_pixels_mul_color_rgba_to_rgb,
               FBC_X86(blend_pixels_mul_color_rgba_to_rgb)
                   FBC_SWAR(swar::blend_pixels_mul_color_rgba_to_rgb)),
    FBC_KERNEL(xc_blend_pixels_mul_color_rgba_to_rgba,
               FBC_X86(blend_pixels_mul_color_rgba_to_rgba)
                   FBC_SWAR(swar::blend_pixels_mul_color_rgba_to_rgba)),
    FBC_KERNEL(xc_blend_pixels_mul_color_rgb_to_rgb,
               FBC_X86(blend_pixels_mul_color_rgb_to_rgb)
                   FBC_SWAR(swar::blend_pixels_mul_color_rgb_to_rgb)),
    FBC_KERNEL(xc_blend_pixels_mul_color_rgb_to_rgba,
               FBC_X86(blend_pixels_mul_color_rgb_to_rgba)
                   FBC_SWAR(swar::blend_pixels_mul_color_rgb_to_rgba)),
};

constexpr Kernel<xc_alpha_func> kAlphaKernels[] = {
    FBC_KERNEL(xc_blend_alpha_color_rgba_to_rgb, FBC_X86(blend_alpha_color_rgba_to_rgb)
                                                     FBC_SWAR(swar::blend_alpha_color_rgba_to_rgb)),
    FBC_KERNEL(xc_blend_alpha_color_rgba_to_rgba, FBC_X86(blend_alpha_color_rgba_to_rgba) FBC_SWAR(
                                                      swar::blend_alpha_color_rgba_to_rgba)),
};

constexpr Kernel<xc_alpha_texture_func> kAlphaTextureKernels[] = {
    FBC_KERNEL(xc_blend_alpha_texture_rgba_to_rgb,
               FBC_X86(blend_alpha_texture_rgba_to_rgb)
                   FBC_SWAR(swar::blend_alpha_texture_rgba_to_rgb)),
    FBC_KERNEL(xc_blend_alpha_texture_rgba_to_rgba,
               FBC_X86(blend_alpha_texture_rgba_to_rgba)
                   FBC_SWAR(swar::blend_alpha_texture_rgba_to_rgba)),
};

constexpr Kernel<xc_convert_func> kConvertKernels[] = {
    FBC_KERNEL(xc_convert_rgba_to_16,
               FBC_X86(convert_rgba_to_16) FBC_SWAR(swar::convert_rgba_to_16)),
    FBC_KERNEL(xc_convert_rgba_to_16_90,
               FBC_X86(convert_rgba_to_16_90) FBC_SWAR(swar::convert_rgba_to_16_90)),
    FBC_KERNEL(xc_convert_rgba_to_16_270,
               FBC_X86(convert_rgba_to_16_270) FBC_SWAR(swar::convert_rgba_to_16_270)),
    FBC_KERNEL(xc_convert_rgba_to_18,
               FBC_X86(convert_rgba_to_18) FBC_SWAR(swar::convert_rgba_to_18)),
    FBC_KERNEL(xc_convert_rgba_to_18_90,
               FBC_X86(convert_rgba_to_18_90) FBC_SWAR(swar::convert_rgba_to_18_90)),
    FBC_KERNEL(xc_convert_rgba_to_18_270,
               FBC_X86(convert_rgba_to_18_270) FBC_SWAR(swar::convert_rgba_to_18_270)),
    FBC_KERNEL(xc_convert_rgba_to_32),
    FBC_KERNEL(xc_convert_rgba_to_32_90,
               FBC_X86(convert_rgba_to_32_90) FBC_SWAR(swar::convert_rgba_to_32_90)),
    FBC_KERNEL(xc_convert_rgba_to_32_270,
               FBC_X86(convert_rgba_to_32_270) FBC_SWAR(swar::convert_rgba_to_32_270)),
};

}  // namespace

constinit const Family<xc_fill_func> kFill{"fill", kFillKernels};
constinit const Family<xc_draw_func> kDraw{"draw", kDrawKernels};
constinit const Family<xc_draw_func> kMulDraw{"mul draw", kMulDrawKernels};
constinit const Family<xc_alpha_func> kAlpha{"alpha", kAlphaKernels};
constinit const Family<xc_alpha_texture_func> kAlphaTexture{"alpha texture", kAlphaTextureKernels};
constinit const Family<xc_convert_func> kConvert{"convert", kConvertKernels};

}  // namespace fbc::px

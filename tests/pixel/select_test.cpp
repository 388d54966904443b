// The getters' choices, row by row, and the abort for an impossible depth.
#include <gtest/gtest.h>
#include <unistd.h>

#include "fbcompose/pixel.h"

namespace {

xc_image record(bool has_alpha, uint32_t depth) {
    xc_image image{};
    image.has_alpha = has_alpha;
    image.depth = depth & 0xFF;
    return image;
}

TEST(Select, FillByColourAlphaAndDestination) {
    struct Row {
        uint32_t color;
        bool dst_alpha;
        xc_fill_func want;
    };
    const Row rows[] = {
        {0xFF102030, true, xc_copy_color_rgb_to_rgba},
        {0xFE102030, true, xc_copy_color_rgb_to_rgba},  // 254 counts as opaque
        {0xFD102030, true, xc_blend_color_rgba_to_rgba},
        {0x00000000, true, xc_blend_color_rgba_to_rgba},
        {0xFF102030, false, xc_copy_color_rgba_to_rgba},
        {0xFE102030, false, xc_copy_color_rgba_to_rgba},
        {0xFD102030, false, xc_blend_color_rgba_to_rgb},
        {0x01FFFFFF, false, xc_blend_color_rgba_to_rgb},
    };
    for (const Row &r : rows) {
        const xc_image dst = record(r.dst_alpha, 24);
        EXPECT_EQ(xc_get_fill_func(r.color, &dst), r.want) << std::hex << r.color << " " << r.dst_alpha;
    }
}

TEST(Select, DrawByAlphaThenDepth) {
    struct Row {
        bool src_alpha;
        uint32_t src_depth;
        bool dst_alpha;
        uint32_t dst_depth;
        xc_draw_func want;
    };
    const Row rows[] = {
        {true, 32, true, 32, xc_blend_pixels_rgba_to_rgba},
        {true, 16, true, 0, xc_blend_pixels_rgba_to_rgba},
        {true, 32, false, 24, xc_blend_pixels_rgba_to_rgb},
        {true, 32, false, 16, xc_blend_pixels_rgba_to_rgb},  // 16-bit reached only by opaque copies
        {true, 32, false, 0, xc_blend_pixels_rgba_to_rgb},
        {false, 24, true, 32, xc_copy_pixels_rgb_to_rgba},
        {false, 16, true, 3, xc_copy_pixels_rgb_to_rgba},
        {false, 16, false, 24, xc_copy_pixels_16_to_rgb},
        {false, 16, false, 17, xc_copy_pixels_16_to_rgb},
        {false, 24, false, 24, xc_copy_pixels_rgba_to_rgba},
        {false, 32, false, 255, xc_copy_pixels_rgba_to_rgba},
        {false, 17, false, 18, xc_copy_pixels_rgba_to_rgba},
        {false, 16, false, 16, xc_copy_pixels_16_to_16},
        {false, 24, false, 16, xc_copy_pixels_rgba_to_16},
        {false, 0, false, 16, xc_copy_pixels_rgba_to_16},
    };
    for (const Row &r : rows) {
        const xc_image src = record(r.src_alpha, r.src_depth);
        const xc_image dst = record(r.dst_alpha, r.dst_depth);
        EXPECT_EQ(xc_get_draw_func(&src, &dst), r.want)
            << r.src_alpha << "/" << r.src_depth << " onto " << r.dst_alpha << "/" << r.dst_depth;
    }
}

TEST(Select, MulDrawIgnoresTheColour) {
    const xc_draw_func want[2][2] = {
        {xc_blend_pixels_mul_color_rgb_to_rgb, xc_blend_pixels_mul_color_rgb_to_rgba},
        {xc_blend_pixels_mul_color_rgba_to_rgb, xc_blend_pixels_mul_color_rgba_to_rgba},
    };
    for (bool src_alpha : {false, true}) {
        for (bool dst_alpha : {false, true}) {
            const xc_image src = record(src_alpha, 16), dst = record(dst_alpha, 16);
            for (uint32_t color : {0x00000000u, 0xFFFFFFFFu, 0x80FF0000u})
                EXPECT_EQ(xc_get_mul_draw_func(&src, &dst, color), want[src_alpha][dst_alpha]);
        }
    }
}

TEST(Select, CoverageByDestinationAlpha) {
    const xc_image opaque = record(false, 24), alpha = record(true, 32);
    EXPECT_EQ(xc_get_alpha_func(&opaque), xc_blend_alpha_color_rgba_to_rgb);
    EXPECT_EQ(xc_get_alpha_func(&alpha), xc_blend_alpha_color_rgba_to_rgba);
    EXPECT_EQ(xc_get_alpha_texture_func(&opaque), xc_blend_alpha_texture_rgba_to_rgb);
    EXPECT_EQ(xc_get_alpha_texture_func(&alpha), xc_blend_alpha_texture_rgba_to_rgba);
}

// The depth message goes to standard output; it is joined to standard error
// here so the death test sees it ahead of the assertion line.
TEST(SelectDeathTest, OpaqueOntoDepthBelow16Aborts) {
    const xc_image src = record(false, 24);
    for (uint32_t depth : {0u, 15u}) {
        const xc_image dst = record(false, depth);
        EXPECT_DEATH(
            {
                dup2(STDERR_FILENO, STDOUT_FILENO);
                xc_get_draw_func(&src, &dst);
            },
            "dst depth = " + std::to_string(depth) +
                "\n.*draw_func:[0-9]+: xc_get_draw_func: Assertion `0' failed");
    }
}

}  // namespace

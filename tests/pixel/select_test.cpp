// The getters' choices, row by row, the refusals of an impossible depth, and
// how a table row picks between its reference and its variants.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "fbcompose/pixel.h"
#include "pixel/kernel_table.hpp"

namespace {

// What the getters hand out for a rule's reference: its table row's pick.
template <class Fn>
Fn picked(Fn reference) {
    const fbc::px::Kernel<Fn> *row = fbc::px::find_kernel(reference);
    EXPECT_TRUE(row) << "a rule names a kernel that no table holds";
    return row ? row->pick() : nullptr;
}

xc_image record(bool has_alpha, uint32_t depth) {
    xc_image image{};
    image.has_alpha = has_alpha;
    image.depth = depth & 0xFF;
    return image;
}

// Colour alpha 254 counts as opaque.
TEST(Select, FillByColourAlphaAndDestination) {
    const struct {
        uint32_t color;
        xc_fill_func onto_opaque, onto_alpha;
    } rows[] = {
        {0xFF102030, picked(xc_copy_color_rgba_to_rgba), picked(xc_copy_color_rgb_to_rgba)},
        {0xFE102030, picked(xc_copy_color_rgba_to_rgba), picked(xc_copy_color_rgb_to_rgba)},
        {0xFD102030, picked(xc_blend_color_rgba_to_rgb), picked(xc_blend_color_rgba_to_rgba)},
    };
    const xc_image opaque = record(false, 24), alpha = record(true, 32);
    for (const auto &r : rows) {
        EXPECT_EQ(xc_get_fill_func(r.color, &opaque), r.onto_opaque) << std::hex << r.color;
        EXPECT_EQ(xc_get_fill_func(r.color, &alpha), r.onto_alpha) << std::hex << r.color;
    }
}

// Alpha on either side decides before depth; otherwise only depth 16 counts as 16-bit.
TEST(Select, DrawByAlphaThenDepth) {
    const struct {
        xc_image src, dst;
        xc_draw_func want;
    } rows[] = {
        {record(true, 32), record(true, 32), picked(xc_blend_pixels_rgba_to_rgba)},
        {record(true, 32), record(false, 16), picked(xc_blend_pixels_rgba_to_rgb)},
        {record(false, 16), record(true, 3), picked(xc_copy_pixels_rgb_to_rgba)},
        {record(false, 16), record(false, 24), picked(xc_copy_pixels_16_to_rgb)},
        {record(false, 16), record(false, 17), picked(xc_copy_pixels_16_to_rgb)},
        {record(false, 17), record(false, 255), picked(xc_copy_pixels_rgba_to_rgba)},
        {record(false, 16), record(false, 16), picked(xc_copy_pixels_16_to_16)},
        {record(false, 0), record(false, 16), picked(xc_copy_pixels_rgba_to_16)},
    };
    for (const auto &r : rows) {
        EXPECT_EQ(xc_get_draw_func(&r.src, &r.dst), r.want)
            << r.src.has_alpha << "/" << r.src.depth << " onto " << r.dst.has_alpha << "/"
            << r.dst.depth;
    }
}

// Multiplied draws go by alpha alone, whatever the colour and depth; coverage by the destination's.
TEST(Select, MulDrawAndCoverageByAlpha) {
    const xc_image plain = record(false, 16), alpha = record(true, 32);
    EXPECT_EQ(xc_get_mul_draw_func(&plain, &plain, ~0u),
              picked(xc_blend_pixels_mul_color_rgb_to_rgb));
    EXPECT_EQ(xc_get_mul_draw_func(&plain, &alpha, 0),
              picked(xc_blend_pixels_mul_color_rgb_to_rgba));
    EXPECT_EQ(xc_get_mul_draw_func(&alpha, &plain, 0x80FF00),
              picked(xc_blend_pixels_mul_color_rgba_to_rgb));
    EXPECT_EQ(xc_get_mul_draw_func(&alpha, &alpha, 0),
              picked(xc_blend_pixels_mul_color_rgba_to_rgba));
    EXPECT_EQ(xc_get_alpha_func(&plain), picked(xc_blend_alpha_color_rgba_to_rgb));
    EXPECT_EQ(xc_get_alpha_func(&alpha), picked(xc_blend_alpha_color_rgba_to_rgba));
    EXPECT_EQ(xc_get_alpha_texture_func(&plain), picked(xc_blend_alpha_texture_rgba_to_rgb));
    EXPECT_EQ(xc_get_alpha_texture_func(&alpha), picked(xc_blend_alpha_texture_rgba_to_rgba));
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

// The first two arguments take no part; a refusal names the depth, even for a bad rotation.
TEST(Select, ConvertByDepthAndRotation) {
    const struct {
        int depth, rotation;
        xc_convert_func want;
    } rows[] = {
        {16, 0, picked(xc_convert_rgba_to_16)},
        {16, 90, picked(xc_convert_rgba_to_16_90)},
        {16, 270, picked(xc_convert_rgba_to_16_270)},
        {18, 0, picked(xc_convert_rgba_to_18)},
        {18, 90, picked(xc_convert_rgba_to_18_90)},
        {18, 270, picked(xc_convert_rgba_to_18_270)},
        {32, 0, picked(xc_convert_rgba_to_32)},
        {32, 90, picked(xc_convert_rgba_to_32_90)},
        {32, 270, picked(xc_convert_rgba_to_32_270)},
        {24, 0, nullptr},
        {16, 180, nullptr},
        {32, -90, nullptr},
        {0, 0, nullptr},
        {18, 360, nullptr},
    };
    const std::string refusal = "****fatal**** xc_get_convert_func: failed depth = ";
    for (const auto &r : rows) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(xc_get_convert_func(123, -4, r.depth, r.rotation), r.want)
            << r.depth << "/" << r.rotation;
        const std::string printed = testing::internal::GetCapturedStdout();
        EXPECT_EQ(printed, r.want ? "" : refusal + std::to_string(r.depth) + "\n");
    }
}

// A row hands out its first variant meant for this CPU, else its reference;
// a variant that runs here but is meant for another CPU is passed over.
TEST(Dispatch, PickIsTheFirstVariantMeantForThisCpu) {
    using fbc::px::Isa;
    using Row = fbc::px::Kernel<xc_fill_func>;
    Isa missing = Isa::kPortable;  // no CPU has every instruction set
    for (Isa isa : {Isa::kArmv5te, Isa::kSse2, Isa::kAvx2, Isa::kNeon})
        if (!fbc::px::cpu_has(isa)) missing = isa;
    ASSERT_NE(missing, Isa::kPortable);
    const xc_fill_func ref = xc_copy_color_rgba_to_rgba, a = xc_blend_color_rgba_to_rgb,
                       b = xc_blend_color_rgba_to_rgba;
    EXPECT_EQ((Row{"ref", ref}).pick(), ref);
    EXPECT_EQ((Row{"ref", ref, {{"a", Isa::kPortable, a}, {"b", Isa::kPortable, b}}}).pick(), a);
    EXPECT_EQ((Row{"ref", ref, {{"a", missing, a}, {"b", Isa::kPortable, b}}}).pick(), b);
    EXPECT_EQ((Row{"ref", ref, {{"a", missing, a}}}).pick(), ref);
    EXPECT_EQ((Row{"ref", ref, {{"a", Isa::kPortable, a, missing}}}).pick(), ref);
}

}  // namespace

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

const xc_image a32 = record(true, 32), a3 = record(true, 3), o0 = record(false, 0),
               o16 = record(false, 16), o17 = record(false, 17), o24 = record(false, 24),
               o255 = record(false, 255);

// Fills: colour alpha 254 counts as opaque. Draws: alpha on either side
// decides before depth, then only depth 16 counts as 16-bit. Multiplied
// draws go by alpha alone, whatever the colour and depth; coverage by the
// destination's.
TEST(Select, EachGetterByItsRule) {
    EXPECT_EQ(xc_get_fill_func(0xFF102030, &o24), picked(xc_copy_color_rgba_to_rgba));
    EXPECT_EQ(xc_get_fill_func(0xFE102030, &o24), picked(xc_copy_color_rgba_to_rgba));
    EXPECT_EQ(xc_get_fill_func(0xFD102030, &o24), picked(xc_blend_color_rgba_to_rgb));
    EXPECT_EQ(xc_get_fill_func(0xFF102030, &a32), picked(xc_copy_color_rgb_to_rgba));
    EXPECT_EQ(xc_get_fill_func(0xFE102030, &a32), picked(xc_copy_color_rgb_to_rgba));
    EXPECT_EQ(xc_get_fill_func(0xFD102030, &a32), picked(xc_blend_color_rgba_to_rgba));
    EXPECT_EQ(xc_get_draw_func(&a32, &a32), picked(xc_blend_pixels_rgba_to_rgba));
    EXPECT_EQ(xc_get_draw_func(&a32, &o16), picked(xc_blend_pixels_rgba_to_rgb));
    EXPECT_EQ(xc_get_draw_func(&o16, &a3), picked(xc_copy_pixels_rgb_to_rgba));
    EXPECT_EQ(xc_get_draw_func(&o16, &o24), picked(xc_copy_pixels_16_to_rgb));
    EXPECT_EQ(xc_get_draw_func(&o16, &o17), picked(xc_copy_pixels_16_to_rgb));
    EXPECT_EQ(xc_get_draw_func(&o17, &o255), picked(xc_copy_pixels_rgba_to_rgba));
    EXPECT_EQ(xc_get_draw_func(&o16, &o16), picked(xc_copy_pixels_16_to_16));
    EXPECT_EQ(xc_get_draw_func(&o0, &o16), picked(xc_copy_pixels_rgba_to_16));
    EXPECT_EQ(xc_get_mul_draw_func(&o16, &o16, ~0u), picked(xc_blend_pixels_mul_color_rgb_to_rgb));
    EXPECT_EQ(xc_get_mul_draw_func(&o16, &a32, 0), picked(xc_blend_pixels_mul_color_rgb_to_rgba));
    EXPECT_EQ(xc_get_mul_draw_func(&a32, &o16, 0x80FF00),
              picked(xc_blend_pixels_mul_color_rgba_to_rgb));
    EXPECT_EQ(xc_get_mul_draw_func(&a32, &a32, 0), picked(xc_blend_pixels_mul_color_rgba_to_rgba));
    EXPECT_EQ(xc_get_alpha_func(&o16), picked(xc_blend_alpha_color_rgba_to_rgb));
    EXPECT_EQ(xc_get_alpha_func(&a32), picked(xc_blend_alpha_color_rgba_to_rgba));
    EXPECT_EQ(xc_get_alpha_texture_func(&o16), picked(xc_blend_alpha_texture_rgba_to_rgb));
    EXPECT_EQ(xc_get_alpha_texture_func(&a32), picked(xc_blend_alpha_texture_rgba_to_rgba));
}

// The depth message goes to standard output; it is joined to standard error
// here so the death test sees it ahead of the assertion line.
TEST(SelectDeathTest, OpaqueOntoDepthBelow16Aborts) {
    for (uint32_t depth : {0u, 15u}) {
        const xc_image dst = record(false, depth);
        EXPECT_DEATH(
            {
                dup2(STDERR_FILENO, STDOUT_FILENO);
                xc_get_draw_func(&o24, &dst);
            },
            "dst depth = " + std::to_string(depth) +
                "\n.*draw_func:[0-9]+: xc_get_draw_func: Assertion `0' failed");
    }
}

// The first two arguments take no part; a refusal names the depth, even for a bad rotation.
TEST(Select, ConvertByDepthAndRotation) {
    const auto expect = [](int depth, int rotation, xc_convert_func want) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(xc_get_convert_func(123, -4, depth, rotation), want) << depth << "/" << rotation;
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  want ? ""
                       : "****fatal**** xc_get_convert_func: failed depth = " +
                             std::to_string(depth) + "\n");
    };
    const xc_convert_func kernels[3][3] = {
        {xc_convert_rgba_to_16, xc_convert_rgba_to_16_90, xc_convert_rgba_to_16_270},
        {xc_convert_rgba_to_18, xc_convert_rgba_to_18_90, xc_convert_rgba_to_18_270},
        {xc_convert_rgba_to_32, xc_convert_rgba_to_32_90, xc_convert_rgba_to_32_270}};
    const int depths[] = {16, 18, 32}, rotations[] = {0, 90, 270};
    for (int d = 0; d < 3; ++d)
        for (int r = 0; r < 3; ++r) expect(depths[d], rotations[r], picked(kernels[d][r]));
    for (auto [depth, rotation] : {std::pair{24, 0}, {16, 180}, {32, -90}, {0, 0}, {18, 360}})
        expect(depth, rotation, nullptr);
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

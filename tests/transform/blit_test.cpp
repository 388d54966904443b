#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "fbcompose/draw.h"
#include "fbcompose/pixel.h"
#include "fbcompose/transform.h"
#include "images.hpp"

namespace {

using test::Words;

TEST(ScaleHandleClip, MovesDestinationEdgesByTheScaledOverhang) {
    const struct {
        const char *name;
        xg_area src, dst, clip;
        xg_area want_src, want_dst, want_clip;
        int result;
    } cases[] = {
        {"left overhang at 2:1", {-10, 0, 10, 10}, {0, 0, 40, 20}, {0, 0, 100, 100},
         {0, 0, 10, 10}, {20, 0, 40, 20}, {20, 0, 40, 20}, 1},
        {"top overhang at 1:2", {0, -4, 10, 6}, {0, 0, 10, 5}, {0, 0, 100, 100},
         {0, 0, 10, 6}, {0, 2, 10, 5}, {0, 2, 10, 5}, 1},
        {"right and bottom overhang", {10, 10, 30, 30}, {0, 0, 40, 40}, {0, 0, 100, 100},
         {10, 10, 16, 12}, {0, 0, 12, 4}, {0, 0, 12, 4}, 1},
        {"truncating factor", {-1, 0, 2, 1}, {0, 0, 4, 1}, {0, 0, 100, 100},
         {0, 0, 2, 1}, {1, 0, 4, 1}, {1, 0, 4, 1}, 1},
        {"clip outside", {0, 0, 4, 4}, {0, 0, 4, 4}, {10, 10, 20, 20},
         {0, 0, 4, 4}, {0, 0, 4, 4}, {10, 10, 4, 4}, 0},
        {"clip shrunk to the area", {0, 0, 4, 4}, {2, 2, 6, 6}, {0, 0, 5, 100},
         {0, 0, 4, 4}, {2, 2, 6, 6}, {2, 2, 5, 6}, 1},
    };
    xc_image *src = test::canvas(16, 12, 0u);
    for (const auto &c : cases) {
        xg_area s = c.src, d = c.dst, k = c.clip;
        EXPECT_EQ(xc_scale_handle_clip(src, nullptr, &k, &s, &d), c.result) << c.name;
        EXPECT_EQ(std::vector<int>({s.x1, s.y1, s.x2, s.y2}),
                  std::vector<int>({c.want_src.x1, c.want_src.y1, c.want_src.x2, c.want_src.y2}))
            << c.name;
        EXPECT_EQ(std::vector<int>({d.x1, d.y1, d.x2, d.y2}),
                  std::vector<int>({c.want_dst.x1, c.want_dst.y1, c.want_dst.x2, c.want_dst.y2}))
            << c.name;
        EXPECT_EQ(std::vector<int>({k.x1, k.y1, k.x2, k.y2}),
                  std::vector<int>({c.want_clip.x1, c.want_clip.y1, c.want_clip.x2, c.want_clip.y2}))
            << c.name;
    }
    xc_image_unref(src);
}

// --- single-colour path ---------------------------------------------------

struct SingleColour {
    const char *name;
    uint32_t pixel, modulation, expected;
};

TEST(BlitSingleColour, FillsTheDestinationWithTheUnpremultipliedPixel) {
    const SingleColour cases[] = {
        {"opaque", 0xFF102030, 0xFFFFFFFF, 0xFF102030},
        {"alpha 128 doubles by 256 / 128", 0x80402010, 0xFFFFFFFF, 0x80804020},
        {"clamped at 255", 0x80C80000, 0xFFFFFFFF, 0x80FF0000},
        {"white takes the modulation colour", 0xFFFFFFFF, 0xFF00FF00, 0xFF00FF00},
        // Modulated through the span function into a word starting at 0:
        // a = 255 x 255 >> 8 = 254, red = (200 x 128 x 255 >> 8) >> 8 = 99,
        // then un-premultiplied by 256 / 254.
        {"modulated", 0xFFC80000, 0xFF800000, 0xFE630000},
    };
    for (const auto &c : cases) {
        xc_image *src = test::canvas(3, 3, 0u);
        reinterpret_cast<uint32_t *>(src->data)[4] = c.pixel;  // pixel (1, 1)
        xc_image *dst = test::blank_alpha(12, 12);
        const xg_area clip{0, 0, 12, 12};
        xc_image_blit(src, dst, &clip, 1, 1, 1, 1, 1, 1, 10, 10, 0, c.modulation);
        // A blend of colour c over transparent black at alpha a stores the
        // colour's premultiplied bytes: compare with the same fill directly.
        xc_image *want = test::blank_alpha(12, 12);
        xg_area area{1, 1, 11, 11};
        xc_rectangle_draw(want, &clip, &area, c.expected);
        EXPECT_EQ(test::all(dst), test::all(want)) << c.name;
        EXPECT_NE(test::at(dst, 5, 5), 0u) << c.name;
        EXPECT_EQ(test::at(dst, 0, 0), 0u) << c.name;
        EXPECT_EQ(test::at(dst, 11, 11), 0u) << c.name;
        xc_image_unref(want);
        xc_image_unref(dst);
        xc_image_unref(src);
    }
}

TEST(BlitSingleColour, TransparentPixelDrawsNothing) {
    xc_image *src = test::canvas(1, 1, 0x00FFFFFFu);
    xc_image *dst = test::canvas(4, 4, 0x12345678u);
    const xg_area clip{0, 0, 4, 4};
    xc_image_blit(src, dst, &clip, 0, 0, 1, 1, 0, 0, 4, 4, 0, 0xFFFFFFFF);
    EXPECT_EQ(test::all(dst), Words(16, 0x12345678u));
    xc_image_unref(dst);
    xc_image_unref(src);
}

TEST(BlitSingleColour, ReadsAThirtyTwoBitWordEvenFromASixteenBitImage) {
    std::vector<uint16_t> words{0x3456, 0xFF12, 0x0000, 0x0000};
    xc_image *src = xc_image_new_from_data(2, 2, words.data(), 16, 0, 1);
    xc_image *dst = test::canvas(2, 2, 0u);
    const xg_area clip{0, 0, 2, 2};
    xc_image_blit(src, dst, &clip, 0, 0, 1, 1, 0, 0, 2, 2, 0, 0xFFFFFFFF);
    // The word 0xFF123456 read at offset 0, premultiplied by the fill.
    EXPECT_EQ(test::at(dst, 1, 1), 0xFF113355u);
    // A position whose word lies past the pixel block draws nothing.
    xc_image *dst2 = test::canvas(2, 2, 0u);
    xc_image_blit(src, dst2, &clip, 1, 1, 1, 1, 0, 0, 2, 2, 0, 0xFFFFFFFF);
    EXPECT_EQ(test::all(dst2), Words(4, 0u));
    xc_image_unref(dst2);
    xc_image_unref(dst);
    xc_image_unref(src);
}

// --- early returns ----------------------------------------------------------

TEST(Blit, NothingForEmptyRectanglesMissingPixelsOrAMissedClip) {
    xc_image *src = test::canvas(4, 4, 0xFF0000FFu);
    const xg_area clip{0, 0, 4, 4};
    const int32_t args[][8] = {
        {0, 0, 0, 4, 0, 0, 4, 4}, {0, 0, 4, 0, 0, 0, 4, 4}, {0, 0, 4, 4, 0, 0, 0, 4},
        {0, 0, 4, 4, 0, 0, 4, -1}, {0, 0, 4, 4, 4, 0, 4, 4}, {0, 0, 4, 4, -4, 0, 4, 4},
        {0, 0, 4, 4, 0, 4, 4, 4},
    };
    for (const auto &a : args) {
        xc_image *dst = test::canvas(4, 4, 0u);
        xc_image_blit(src, dst, &clip, a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], 0,
                      0xFFFFFFFF);
        EXPECT_EQ(test::all(dst), Words(16, 0u));
        xc_image_unref(dst);
    }
    xc_image *empty = xc_image_new();
    empty->width = empty->height = 4;
    xc_image *dst = test::canvas(4, 4, 0u);
    xc_image_blit(empty, dst, &clip, 0, 0, 4, 4, 0, 0, 8, 8, 1, 0xFFFFFFFF);
    EXPECT_EQ(test::all(dst), Words(16, 0u));
    xc_image_unref(dst);
    xc_image_unref(empty);
    xc_image_unref(src);
}

// --- no scale -----------------------------------------------------------------

TEST(BlitNoScale, CopiesTheClippedPartAtTheRightOffset) {
    xc_image *src = test::painted(4, 4, [](int x, int y) { return 0xFF000000u | uint32_t(y * 4 + x); });
    xc_image *dst = test::canvas(6, 6, 0u);
    const xg_area clip{2, 2, 5, 4};
    xc_image_blit(src, dst, &clip, 0, 0, 4, 4, 1, 1, 4, 4, 0, 0xFFFFFFFF);
    EXPECT_EQ(test::row(dst, 1), Words(6, 0u));
    EXPECT_EQ(test::row(dst, 2), (Words{0, 0, 0xFF000005, 0xFF000006, 0xFF000007, 0}));
    EXPECT_EQ(test::row(dst, 3), (Words{0, 0, 0xFF000009, 0xFF00000A, 0xFF00000B, 0}));
    EXPECT_EQ(test::row(dst, 4), Words(6, 0u));
    xc_image_unref(dst);
    xc_image_unref(src);
}

// Rows padded by one word: the whole-block shortcut copies the padding as
// pixels, so its single run leaves the last pixel of the last row unwritten.
xc_image *padded(uint32_t base) {
    xc_image *image = xc_image_new_with_data(2, 2, nullptr, 1, 0, 0, 12);
    auto *w = reinterpret_cast<uint32_t *>(image->data);
    for (int i = 0; i < 6; ++i) w[i] = base + uint32_t(i);
    image->depth = 24;
    return image;
}

TEST(BlitNoScale, FullWidthBetweenLikeImagesIsOneRun) {
    xc_image *src = padded(0xFF000000u);
    xc_image *dst = padded(0);
    const xg_area clip{0, 0, 2, 2};
    xc_image_blit(src, dst, &clip, 0, 0, 2, 2, 0, 0, 2, 2, 0, 0xFFFFFFFF);
    auto *d = reinterpret_cast<uint32_t *>(dst->data);
    EXPECT_EQ(Words(d, d + 6), (Words{0xFF000000, 0xFF000001, 0xFF000002, 0xFF000003, 4, 5}));
    xc_image_unref(dst);
    // Unequal row pitches: row by row, padding untouched.
    xc_image *other = test::canvas(2, 2, 0u);
    xc_image_blit(src, other, &clip, 0, 0, 2, 2, 0, 0, 2, 2, 0, 0xFFFFFFFF);
    EXPECT_EQ(test::all(other), (Words{0xFF000000, 0xFF000001, 0xFF000003, 0xFF000004}));
    xc_image_unref(other);
    xc_image_unref(src);
}

TEST(BlitNoScale, ModulationUsesTheModulatingSpanFunction) {
    xc_image *src = test::canvas(2, 1, 0xFF808080u);
    xc_image *dst = test::canvas(2, 1, 0u);
    const xg_area clip{0, 0, 2, 1};
    xc_image_blit(src, dst, &clip, 0, 0, 2, 1, 0, 0, 2, 1, 0, 0x80FF0000);
    uint32_t want[2] = {0, 0};
    const uint32_t in[2] = {0xFF808080u, 0xFF808080u};
    xc_blend_pixels_mul_color_rgb_to_rgb(in, want, 2, 0x80FF0000);
    EXPECT_EQ(test::all(dst), (Words{want[0], want[1]}));
    EXPECT_NE(want[0], 0xFF808080u);
    xc_image_unref(dst);
    xc_image_unref(src);
}

// --- nearest sampling ---------------------------------------------------------

TEST(BlitSample, ColumnsMapEndToEndRowsSizeOverSize) {
    xc_image *src = test::painted(4, 4, [](int x, int y) { return uint32_t(y << 8 | x); });
    const struct {
        int32_t dw, dh;
        Words columns, rows;
    } cases[] = {
        {7, 7, {0, 0, 1, 1, 2, 2, 3}, {0, 0, 1, 1, 2, 2, 3}},
        {3, 3, {0, 1, 3}, {0, 1, 2}},
        {1, 2, {0}, {0, 2}},
    };
    for (const auto &c : cases) {
        xc_image *dst = test::canvas(c.dw, c.dh, 0xDEADBEEFu);
        const xg_area clip{0, 0, c.dw, c.dh};
        xc_image_blit(src, dst, &clip, 0, 0, 4, 4, 0, 0, c.dw, c.dh, 0, 0xFFFFFFFF);
        Words columns, rows;
        for (int32_t x = 0; x < c.dw; ++x) columns.push_back(test::at(dst, x, 0) & 0xFF);
        for (int32_t y = 0; y < c.dh; ++y) rows.push_back(test::at(dst, 0, y) >> 8 & 0xFF);
        EXPECT_EQ(columns, c.columns) << c.dw << "x" << c.dh;
        EXPECT_EQ(rows, c.rows) << c.dw << "x" << c.dh;
        xc_image_unref(dst);
    }
    xc_image_unref(src);
}

TEST(BlitSample, SixteenBitSourceIsSampledAsWords) {
    std::vector<uint16_t> words{0xF800, 0x07E0, 0x001F, 0xFFFF};
    xc_image *src = xc_image_new_from_data(2, 2, words.data(), 16, 0, 1);
    xc_image *dst = test::canvas(3, 3, 0u);
    const xg_area clip{0, 0, 3, 3};
    xc_image_blit(src, dst, &clip, 0, 0, 2, 2, 0, 0, 3, 3, 0, 0xFFFFFFFF);
    EXPECT_EQ(test::row(dst, 0), (Words{0x00F80000, 0x00F80000, 0x0000FC00}));
    EXPECT_EQ(test::row(dst, 2), (Words{0x000000F8, 0x000000F8, 0x00F8FCF8}));
    xc_image_unref(dst);
    xc_image_unref(src);
}

TEST(ScaleSampleRgb16, MovesWordsWithWidthPitchedRows) {
    xc_image *src = test::painted(4, 4, [](int x, int y) { return uint32_t(y << 8 | x); });
    xc_image *dst = test::canvas(7, 3, 0u);
    const xg_area clip{1, 1, 7, 3}, s{0, 0, 4, 4}, d{0, 0, 7, 3};
    xc_scale_sample_rgb16_to_rgb16(src, dst, &clip, &s, &d, 0xFFFFFFFF);
    EXPECT_EQ(test::row(dst, 0), Words(7, 0u));
    EXPECT_EQ(test::row(dst, 1), (Words{0, 0x100, 0x101, 0x101, 0x102, 0x102, 0x103}));
    EXPECT_EQ(test::row(dst, 2), (Words{0, 0x200, 0x201, 0x201, 0x202, 0x202, 0x203}));
    xc_image_unref(dst);
    xc_image_unref(src);
}

// --- one column, one row ----------------------------------------------------------

TEST(BlitOneColumn, InterpolatesDownTheColumnAndFillsEachRow) {
    xc_image *src = test::canvas(1, 2, Words{test::grey(0), test::grey(200)});
    xc_image *dst = test::canvas(4, 3, 0u);
    const xg_area clip{0, 0, 4, 3};
    xc_image_blit(src, dst, &clip, 0, 0, 1, 2, 0, 0, 4, 3, 0, 0xFFFFFFFF);
    EXPECT_EQ(test::row(dst, 0), Words(4, test::grey(0)));
    // Step 0.5: grey 100, and the opaque source's alpha byte kept from the
    // previous working pixel.
    EXPECT_EQ(test::row(dst, 1), Words(4, 0xFF646464u));
    EXPECT_EQ(test::row(dst, 2), Words(4, test::grey(200)));
    xc_image_unref(dst);
    xc_image_unref(src);
}

TEST(BlitOneColumn, AlphaIsInterpolatedOnlyForAlphaSources) {
    uint32_t words[2] = {0xFF000000u, 0x01000000u};
    xc_image *src = xc_image_new_from_data(1, 2, words, 32, 0, 1);
    xc_image *dst = test::canvas(1, 3, 0u);
    const xg_area clip{0, 1, 1, 2}, s{0, 0, 1, 2}, d{0, 0, 1, 3};
    xc_image *opaque = xc_image_new_from_data(1, 2, words, 24, 0, 1);
    opaque->depth = 24;
    // The clip starts at the half-way row: f = 0x8000 on its first row.
    xc_image *alpha_dst = test::blank_alpha(1, 3);
    xc_scale_h(src, alpha_dst, &clip, &s, &d, 0xFFFFFFFF);
    EXPECT_EQ(test::at(alpha_dst, 0, 1) >> 24, 0x80u);
    xc_image *opaque_dst = test::blank_alpha(1, 3);
    xc_scale_h(opaque, opaque_dst, &clip, &s, &d, 0xFFFFFFFF);
    EXPECT_EQ(test::at(opaque_dst, 0, 1), 0xFF000000u) << "copy with alpha forced, working alpha 0";
    xc_image_unref(opaque_dst);
    xc_image_unref(alpha_dst);
    xc_image_unref(opaque);
    xc_image_unref(dst);
    xc_image_unref(src);
}

TEST(BlitOneColumn, EqualHeightsCopyEachSourceRow) {
    xc_image *src = test::canvas(1, 3, Words{1, 2, 3});
    xc_image *dst = test::canvas(2, 3, 0u);
    const xg_area clip{0, 1, 2, 3};
    xc_image_blit(src, dst, &clip, 0, 0, 1, 3, 0, 0, 2, 3, 0, 0xFFFFFFFF);
    EXPECT_EQ(test::all(dst), (Words{0, 0, 2, 2, 3, 3}));
    xc_image_unref(dst);
    xc_image_unref(src);
}

TEST(BlitOneRow, InterpolatesAlongTheRowOnceForAllRows) {
    xc_image *src = test::canvas(3, 1, Words{test::grey(0), test::grey(100), test::grey(200)});
    xc_image *dst = test::canvas(5, 2, 0u);
    const xg_area clip{0, 0, 5, 2};
    xc_image_blit(src, dst, &clip, 0, 0, 3, 1, 0, 0, 5, 2, 0, 0xFFFFFFFF);
    // An opaque source's alpha byte is not interpolated: the working pixel
    // keeps its initial 0.
    const Words want{0, 0x323232, 0x646464, 0x969696, 0xC8C8C8};
    EXPECT_EQ(test::row(dst, 0), want);
    EXPECT_EQ(test::row(dst, 1), want);
    xc_image_unref(dst);
    xc_image_unref(src);
}

TEST(BlitOneRow, EqualWidthsDrawStraightFromTheSource) {
    xc_image *src = test::canvas(4, 2, Words{1, 2, 3, 4, 5, 6, 7, 8});
    xc_image *dst = test::canvas(3, 3, 0u);
    const xg_area clip{1, 0, 3, 3};
    xc_image_blit(src, dst, &clip, 1, 1, 3, 1, 0, 0, 3, 3, 0, 0xFFFFFFFF);
    EXPECT_EQ(test::all(dst), (Words{0, 7, 8, 0, 7, 8, 0, 7, 8}));
    xc_image_unref(dst);
    xc_image_unref(src);
}

// --- drawer selection -----------------------------------------------------------

// The blit's result for the given sizes, and that of calling a drawer directly.
Words via_blit(xc_image *src, int32_t sw, int32_t sh, int32_t dw, int32_t dh, int smooth) {
    xc_image *dst = test::canvas(dw, dh, 0u);
    const xg_area clip{0, 0, dw, dh};
    xc_image_blit(src, dst, &clip, 0, 0, sw, sh, 0, 0, dw, dh, smooth, 0xFFFFFFFF);
    Words out = test::all(dst);
    xc_image_unref(dst);
    return out;
}

Words via_drawer(xc_scale_func drawer, xc_image *src, int32_t sw, int32_t sh, int32_t dw,
                 int32_t dh) {
    xc_image *dst = test::canvas(dw, dh, 0u);
    const xg_area clip{0, 0, dw, dh}, s{0, 0, sw, sh}, d{0, 0, dw, dh};
    drawer(src, dst, &clip, &s, &d, 0xFFFFFFFF);
    Words out = test::all(dst);
    xc_image_unref(dst);
    return out;
}

TEST(BlitSelection, PicksTheDrawerBySizesAndSmoothing) {
    xc_image *src = test::painted(100, 100, [](int x, int y) {
        return 0xFF000000u | uint32_t((x * 37 + y * 11) & 0xFF) << 8 | uint32_t((x * y) & 0xFF);
    });
    const struct {
        int32_t sw, sh, dw, dh;
        int smooth;
        xc_scale_func want;
        xc_scale_func differs_from;
    } cases[] = {
        {100, 100, 100, 100, 1, xc_scale_noscale, nullptr},
        {1, 100, 3, 40, 1, xc_scale_h, xc_scale_sample},
        {100, 1, 40, 3, 1, xc_scale_v, xc_scale_sample},
        {100, 100, 40, 60, 0, xc_scale_sample, xc_scale_smooth},
        {100, 100, 40, 60, 1, xc_image_scale_down_x, xc_scale_linear},
        {100, 100, 60, 40, 1, xc_image_scale_down_y, xc_scale_linear},
        {100, 100, 40, 40, 1, xc_image_scale_down_xy, xc_image_scale_down_x},
        {100, 100, 50, 50, 1, xc_scale_linear, xc_image_scale_down_xy},
        {100, 100, 150, 130, 1, xc_scale_linear, xc_scale_sample},
    };
    for (const auto &c : cases) {
        const Words got = via_blit(src, c.sw, c.sh, c.dw, c.dh, c.smooth);
        EXPECT_EQ(got, via_drawer(c.want, src, c.sw, c.sh, c.dw, c.dh)) << c.dw << "x" << c.dh;
        if (c.differs_from) {
            EXPECT_NE(got, via_drawer(c.differs_from, src, c.sw, c.sh, c.dw, c.dh))
                << c.dw << "x" << c.dh;
        }
    }
    xc_image_unref(src);
}

}  // namespace

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "fbcompose/draw.h"
#include "fbcompose/transform.h"
#include "image_words.hpp"

namespace {

using namespace test;
using Corners = std::array<int32_t, 4>;
constexpr uint32_t kWhite = 0xFFFFFFFF;

struct Rect {
    int32_t sx, sy, sw, sh, dx, dy, dw, dh;
};

// Blits area r of src onto dst through a clip of all of dst.
void blit(xc_image *src, xc_image *dst, const Rect &r, int smooth = 0, uint32_t colour = kWhite) {
    const xg_area clip{0, 0, dst->width, dst->height};
    xc_image_blit(src, dst, &clip, r.sx, r.sy, r.sw, r.sh, r.dx, r.dy, r.dw, r.dh, smooth, colour);
}

// The words of a 20 x 20 black canvas after that blit.
Words blitted(xc_image *src, const Rect &r, int smooth) {
    const Image dst = canvas(20, 20, 0u);
    blit(src, dst.get(), r, smooth);
    return all(dst.get());
}

TEST(ScaleHandleClip, MovesDestinationEdgesByTheScaledOverhang) {
    struct Case {
        xg_area src, dst, clip;
        Corners src_to, dst_to, clip_to;
        int result;
    };
    const xg_area big{0, 0, 99, 99};
    const Case cases[] = {
        // Right and bottom overhang of the 16 x 12 source.
        {{10, 10, 30, 30}, {0, 0, 40, 40}, big, {10, 10, 16, 12}, {0, 0, 12, 4}, {0, 0, 12, 4}, 1},
        // The factor is truncated: 4 / 3 moves the edge by one pixel, not two.
        {{-1, 0, 2, 1}, {0, 0, 4, 1}, big, {0, 0, 2, 1}, {1, 0, 4, 1}, {1, 0, 4, 1}, 1},
        // The clip is crossed with the destination; missing it returns 0.
        {{0, 0, 4, 4}, {0, 0, 4, 4}, {9, 9, 20, 20}, {0, 0, 4, 4}, {0, 0, 4, 4}, {9, 9, 4, 4}, 0},
        {{0, 0, 4, 4}, {2, 2, 6, 6}, {0, 0, 5, 99}, {0, 0, 4, 4}, {2, 2, 6, 6}, {2, 2, 5, 6}, 1},
    };
    const Image src = canvas(16, 12, 0u);
    for (const Case &c : cases) {
        xg_area s = c.src, d = c.dst, k = c.clip;
        EXPECT_EQ(xc_scale_handle_clip(src.get(), nullptr, &k, &s, &d), c.result);
        EXPECT_EQ((std::array{corners(s), corners(d), corners(k)}),
                  (std::array{c.src_to, c.dst_to, c.clip_to}));
    }
}

TEST(BlitSingleColour, FillsTheDestinationWithTheUnpremultipliedPixel) {
    struct Case {
        uint32_t pixel, modulation, expected;
    };
    const Case cases[] = {
        {0xFF102030, kWhite, 0xFF102030},
        // Un-premultiplied by 256 / alpha, clamped at 255; alpha 0 draws nothing.
        {0x80402010, kWhite, 0x80804020},
        {0x80C80000, kWhite, 0x80FF0000},
        {0x00FFFFFF, kWhite, 0},
        // White takes the modulation colour.
        {0xFFFFFFFF, 0xFF00FF00, 0xFF00FF00},
        // Modulated through the span function into a word starting at 0:
        // a = 255 x 255 >> 8 = 254, red = (200 x 128 x 255 >> 8) >> 8 = 99,
        // then un-premultiplied by 256 / 254.
        {0xFFC80000, 0xFF800000, 0xFE630000},
    };
    const xg_area clip{0, 0, 12, 12};
    for (const Case &c : cases) {
        const Image src = canvas(3, 3, Words{0, 0, 0, 0, c.pixel, 0, 0, 0, 0});
        const Image dst = blank_alpha(12, 12), want = blank_alpha(12, 12);
        blit(src.get(), dst.get(), {1, 1, 1, 1, 1, 1, 10, 10}, 0, c.modulation);
        // Colour c blended over transparent black stores its premultiplied
        // bytes: compare with the same fill drawn directly.
        xg_area area{1, 1, 11, 11};
        xc_rectangle_draw(want.get(), &clip, &area, c.expected);
        EXPECT_EQ(all(dst.get()), all(want.get())) << std::hex << c.pixel;
    }
    // A 16-bit source is read a 32-bit word at a time: 0xFF123456 at offset
    // 0, premultiplied by the fill; a word past the pixel block draws nothing.
    std::vector<uint16_t> words{0x3456, 0xFF12, 0x0000, 0x0000};
    const Image rgb16{xc_image_new_from_data(2, 2, words.data(), 16, 0, 1)};
    for (const auto &[x, want] : {std::pair{0, 0xFF113355u}, {1, 0u}}) {
        const Image dst = canvas(2, 2, 0u);
        blit(rgb16.get(), dst.get(), {x, x, 1, 1, 0, 0, 2, 2});
        EXPECT_EQ(all(dst.get()), Words(4, want)) << x;
    }
}

// Rows padded by one word: the whole-block shortcut copies the padding as
// pixels, so its single run leaves the last pixel of the last row unwritten.
Image padded(uint32_t base) {
    Image image{xc_image_new_with_data(2, 2, nullptr, 1, 0, 0, 12)};
    for (uint32_t i = 0; i < 6; ++i) reinterpret_cast<uint32_t *>(image->data)[i] = base + i;
    image->depth = 24;
    return image;
}

TEST(BlitNoScale, FullWidthBetweenLikeImagesIsOneRun) {
    const Image src = padded(0xFF000000u), dst = padded(0), other = canvas(2, 2, 0u);
    blit(src.get(), dst.get(), {0, 0, 2, 2, 0, 0, 2, 2});
    const auto *d = reinterpret_cast<uint32_t *>(dst->data);
    EXPECT_EQ(Words(d, d + 6), (Words{0xFF000000, 0xFF000001, 0xFF000002, 0xFF000003, 4, 5}));
    // Unequal row pitches: row by row, padding untouched.
    blit(src.get(), other.get(), {0, 0, 2, 2, 0, 0, 2, 2});
    EXPECT_EQ(all(other.get()), (Words{0xFF000000, 0xFF000001, 0xFF000003, 0xFF000004}));
}

TEST(BlitSample, SixteenBitDrawerSteps32BitWordsByWidth) {
    auto sampled = [](const xc_image *src, xg_area s, int32_t w, int32_t h, xg_area clip) {
        const Image dst = canvas(w, h, 0u);
        const xg_area whole{0, 0, w, h};
        xc_scale_sample_rgb16_to_rgb16(src, dst.get(), &clip, &s, &whole, kWhite);
        return all(dst.get());
    };
    // Straight to 16 bits, words move with rows pitched at width x 4 bytes.
    const Image src = painted(4, 4, [](int x, int y) { return uint32_t(y << 8 | x); });
    EXPECT_EQ(sampled(src.get(), {0, 0, 4, 4}, 7, 3, {1, 1, 7, 3}),
              (Words{0, 0,     0,     0,     0,     0,     0,
                     0, 0x100, 0x101, 0x101, 0x102, 0x102, 0x103,  //
                     0, 0x200, 0x201, 0x201, 0x202, 0x202, 0x203}));
    // Rows padded to 3 words: the first source row is found by rowstride, the
    // rows below it by width x 4 bytes.
    Words padded{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    const Image wide{xc_image_new_with_data(2, 4, padded.data(), 1, 0, 1, 12)};
    EXPECT_EQ(sampled(wide.get(), {0, 1, 2, 3}, 2, 2, {0, 0, 2, 2}), (Words{3, 4, 5, 6}));
}

TEST(Blit, EmptyOrMissedRectanglesAndAreasClippedToNothingDrawNothing) {
    const Image src = canvas(10, 10, 0xFF555555u), flat{xc_image_create(10, 0)},
                empty{xc_image_new()};
    empty->width = empty->height = 4;
    const Rect cases[] = {
        // Empty source or destination sizes; destinations past the clip.
        {0, 0, 0, 4, 0, 0, 4, 4},
        {0, 0, 4, 0, 0, 0, 4, 4},
        {0, 0, 4, 4, 0, 0, 0, 4},
        {0, 0, 4, 4, 0, 0, 4, -1},
        {0, 0, 4, 4, 20, 0, 4, 4},
        {0, 0, 4, 4, -4, 0, 4, 4},
        {0, 0, 4, 4, 0, 20, 4, 4},
        // Starting at the right edge, sampled and smoothed; one pixel wide
        // just below; one pixel high just right.
        {10, 0, 3, 10, 0, 0, 7, 10},
        {0, 10, 1, 3, 0, 0, 4, 7},
        {10, 0, 3, 1, 0, 0, 7, 4},
        // Overhangs whose scaled length overflows 64 bits, or whose end does
        // not fit.
        {INT32_MIN, 0, 2, 2, 0, 0, INT32_MAX, 5},
        {0, INT32_MIN, 2, 3, 0, 0, 5, INT32_MAX},
        {INT32_MAX - 1, 0, 5, 5, 0, 0, 9, 9},
        {0, 0, 5, 5, 10, 0, INT32_MAX, 5},
    };
    for (const Rect &r : cases)
        for (int smooth : {0, 1}) EXPECT_EQ(blitted(src.get(), r, smooth), Words(400, 0u)) << r.sx;
    // A source of height 0 has a block of 0 bytes; one without pixels none.
    for (xc_image *from : {flat.get(), empty.get()})
        EXPECT_EQ(blitted(from, {0, 0, 3, 3, 0, 0, 7, 7}, 0), Words(400, 0u));
}

TEST(Blit, ClippingNearTheInt32LimitsMatchesTheSameBlitInSmallNumbers) {
    const Image src =
        painted(10, 10, [](int x, int y) { return 0xFF000000u | uint32_t(y * 10 + x) * 997u; });
    // Exact factors of 1 and 2 clip these down to the small rectangles.
    constexpr int32_t M = INT32_MAX - 20, H = (1 << 30) - 20;
    const struct {
        Rect big, small;
    } cases[] = {
        {{-M, -M, M + 10, M + 10, -M, -M, M + 10, M + 10}, {0, 0, 10, 10, 0, 0, 10, 10}},
        {{-H, -H, H + 10, H + 10, -2 * H, -2 * H, 2 * H + 20, 2 * H + 20},
         {0, 0, 10, 10, 0, 0, 20, 20}},
        {{0, 0, H, H, 0, 0, 2 * H, 2 * H}, {0, 0, 10, 10, 0, 0, 20, 20}},
        {{3, -H, 1, H + 10, 0, -2 * H, 4, 2 * H + 20}, {3, 0, 1, 10, 0, 0, 4, 20}},
        {{-H, 3, H + 10, 1, -2 * H, 0, 2 * H + 20, 4}, {0, 3, 10, 1, 0, 0, 20, 4}},
    };
    for (const auto &c : cases)
        for (int smooth : {0, 1}) {
            const Words want = blitted(src.get(), c.small, smooth);
            EXPECT_NE(want, Words(400, 0u));
            EXPECT_EQ(blitted(src.get(), c.big, smooth), want) << c.big.sx << " smooth " << smooth;
        }
}

std::vector<uint8_t> block(const xc_image *image) {
    return {image->data, image->data + image->rowstride * image->height};
}

TEST(BlitOntoItself, GivesTheResultOfCopyingTheSourceFirst) {
    constexpr int32_t opaque = 24, alpha = 32, rgb16 = 16;
    struct Case {
        Rect r;
        int smooth;
        uint32_t colour;
        int32_t depth;
    };
    const Case cases[] = {
        // Scrolling up and down by whole rows (one run, longer than the
        // scratch words), left and right within rows; overlapping
        // diagonally; a part of each row; the whole image onto itself.
        {{0, 3, 40, 27, 0, 0, 40, 27}, 0, kWhite, opaque},
        {{0, 0, 40, 27, 0, 1, 40, 27}, 0, kWhite, opaque},
        {{3, 0, 37, 30, 0, 0, 37, 30}, 0, kWhite, opaque},
        {{0, 0, 37, 30, 3, 0, 37, 30}, 0, kWhite, opaque},
        {{1, 1, 30, 20, 3, 2, 30, 20}, 0, kWhite, alpha},
        {{2, 9, 26, 16, 2, 1, 26, 16}, 0, kWhite, opaque},
        {{0, 0, 40, 30, 0, 0, 40, 30}, 0, 0x80FF8040, alpha},
        {{0, 0, 40, 24, 0, 6, 40, 24}, 0, kWhite, rgb16},
        {{1, 0, 39, 30, 0, 0, 39, 30}, 0, kWhite, rgb16},
        // A 16-bit image through a 32-bit span function is read from a copy.
        {{0, 0, 30, 20, 2, 1, 30, 20}, 0, 0xC0FFFFFF, rgb16},
        // Scaled, by every drawer.
        {{0, 0, 20, 20, 2, 2, 33, 27}, 0, kWhite, opaque},
        {{0, 0, 40, 30, 1, 1, 16, 12}, 1, kWhite, alpha},
        {{2, 2, 30, 20, 0, 0, 40, 29}, 1, kWhite, opaque},
        {{4, 0, 1, 30, 0, 0, 40, 30}, 0, kWhite, opaque},
        {{0, 4, 40, 1, 0, 0, 40, 30}, 0, kWhite, opaque},
    };
    auto make = [](int32_t depth) {
        Image image{xc_image_new_from_data(40, 30, nullptr, depth, 1, 0)};
        for (int32_t i = 0; i < image->rowstride * 30; ++i)
            image->data[i] = uint8_t(i * 37 + (i >> 4));
        return image;
    };
    for (const Case &c : cases) {
        const Image self = make(c.depth), target = make(c.depth), source = make(c.depth);
        blit(self.get(), self.get(), c.r, c.smooth, c.colour);
        blit(source.get(), target.get(), c.r, c.smooth, c.colour);
        EXPECT_EQ(block(self.get()), block(target.get()))
            << c.r.sx << "," << c.r.sy << " to " << c.r.dx << "," << c.r.dy;
    }
}

const xc_scale_func kDrawers[] = {xc_scale_noscale,
                                  xc_scale_sample,
                                  xc_scale_sample_rgb16_to_rgb16,
                                  xc_scale_h,
                                  xc_scale_v,
                                  xc_scale_smooth,
                                  xc_scale_linear,
                                  xc_image_scale_down_x,
                                  xc_image_scale_down_y,
                                  xc_image_scale_down_xy};

TEST(Drawers, InconsistentAreasDrawNothingAndAClipPastTheImageIsHeld) {
    const Image src =
        painted(8, 8, [](int x, int y) { return 0xFF000000u | uint32_t(y << 8 | x); });
    const struct {
        xg_area clip, s, d;
    } nothing[] = {
        {{0, 0, 8, 8}, {0, 0, 8, 8}, {0, 0, 4, 4}},  // clip outside the destination area
        {{0, 0, 8, 8}, {2, 2, 10, 10}, {0, 0, 8, 8}},
        {{0, 0, 8, 8}, {-1, 0, 7, 8}, {0, 0, 8, 8}},
        {{0, 0, 8, 8}, {3, 3, 3, 8}, {0, 0, 8, 8}},
        {{0, 0, 8, 8}, {3, 3, 8, 2}, {0, 0, 8, 8}},
        {{0, 0, 8, 8}, {0, 0, 8, 8}, {INT32_MIN, 0, INT32_MAX, 8}},
        {{9, 9, 20, 20}, {0, 0, 8, 8}, {0, 0, 20, 20}},  // clip off the image
    };
    const xg_area whole{0, 0, 6, 6}, beyond{-2, -2, 6, 6};
    for (const xc_scale_func &fn : kDrawers) {
        for (const auto &c : nothing) {
            const Image dst = canvas(8, 8, 7u);
            fn(src.get(), dst.get(), &c.clip, &c.s, &c.d, kWhite);
            EXPECT_EQ(all(dst.get()), Words(64, 7u)) << &fn - kDrawers << ": " << c.s.x1;
        }
        // A clip reaching past the image draws what lies on it.
        const Image held = canvas(8, 8, 7u), want = canvas(8, 8, 7u);
        const xg_area s{0, 0, 8, 8}, d = beyond;
        fn(src.get(), held.get(), &beyond, &s, &d, kWhite);
        fn(src.get(), want.get(), &whole, &s, &d, kWhite);
        EXPECT_EQ(all(held.get()), all(want.get())) << &fn - kDrawers;
        EXPECT_NE(all(want.get()), Words(64, 7u)) << &fn - kDrawers;
    }
}

TEST(Blit, SpanFunctionsThatDoNotFitTheImagesStayInsideThem) {
    // An alpha source onto a 16-bit image gets the 32-bit blend (the span
    // selection's rule): each run covers twice its pixels' bytes. On an
    // image one row taller the last run ends inside the block; here it is
    // held to the block, every byte inside coming out the same.
    const Image src{xc_image_new_from_data(9, 4, nullptr, 32, 0, 0)};
    for (uint32_t i = 0; i < 36; ++i) reinterpret_cast<uint32_t *>(src->data)[i] = 0x80402010u + i;
    for (int32_t x : {0, 1, 4}) {
        std::vector<uint16_t> exact(7 * 4, 0x1234), taller(7 * 5, 0x1234);
        const Image a{xc_image_new_from_data(7, 4, exact.data(), 16, 0, 1)};
        const Image b{xc_image_new_from_data(7, 5, taller.data(), 16, 0, 1)};
        for (xc_image *dst : {a.get(), b.get()})
            blit(src.get(), dst, {0, 0, 7 - x, 4, x, 0, 7 - x, 4});
        EXPECT_EQ(exact, std::vector<uint16_t>(taller.begin(), taller.begin() + 28)) << x;
        EXPECT_NE(exact, std::vector<uint16_t>(28, 0x1234));
    }
    // No span function draws an opaque image onto an opaque one below 16
    // bits: nothing is drawn, and the program goes on.
    const Image low{xc_image_new_from_data(4, 4, nullptr, 8, 1, 0)}, opaque = canvas(4, 4, 9u);
    std::memset(low->data, 0, 64);
    testing::internal::CaptureStderr();
    blit(opaque.get(), low.get(), {0, 0, 4, 4, 0, 0, 4, 4});
    EXPECT_NE(testing::internal::GetCapturedStderr().find("depth 8"), std::string::npos);
    EXPECT_EQ(all(low.get()), Words(16, 0u));
}

}  // namespace

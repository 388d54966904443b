#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "fbcompose/transform.h"
#include "images.hpp"

namespace {

using test::Words;

struct Drawer {
    const char *name;
    xc_scale_func fn;
};

const Drawer kDrawers[] = {
    {"linear", xc_scale_linear},
    {"down_x", xc_image_scale_down_x},
    {"down_y", xc_image_scale_down_y},
    {"down_xy", xc_image_scale_down_xy},
};

struct Size {
    int32_t w, h;
};

const Size kTargets[] = {{1, 1}, {3, 7}, {10, 10}, {17, 5}, {40, 33}, {64, 48}};

Words draw(xc_scale_func fn, xc_image *src, const xg_area &s, Size d, const xg_area *clip = nullptr,
           uint32_t background = 0) {
    xc_image *dst = test::canvas(d.w, d.h, background);
    const xg_area whole{0, 0, d.w, d.h};
    fn(src, dst, clip ? clip : &whole, &s, &whole, 0xFFFFFFFF);
    Words out = test::all(dst);
    xc_image_unref(dst);
    return out;
}

TEST(Smoothing, ConstantImageStaysConstant) {
    xc_image *src = test::canvas(21, 13, 0xFF5A3C1Eu);
    for (const Drawer &drawer : kDrawers)
        for (Size d : kTargets) {
            const Words out = draw(drawer.fn, src, {0, 0, 21, 13}, d);
            EXPECT_EQ(std::count(out.begin(), out.end(), 0xFF5A3C1Eu), d.w * d.h)
                << drawer.name << " " << d.w << "x" << d.h;
        }
    xc_image_unref(src);
}

TEST(Smoothing, ConstantSixteenBitImageStaysConstant) {
    std::vector<uint16_t> words(12 * 9, 0xA5F3);
    xc_image *src = xc_image_new_from_data(12, 9, words.data(), 16, 0, 1);
    for (const Drawer &drawer : kDrawers) {
        const Words out = draw(drawer.fn, src, {0, 0, 12, 9}, {5, 4});
        // 0xA5F3 unpacks to red 0xA0, green 0xBC, blue 0x98, alpha 0.
        EXPECT_EQ(std::count(out.begin(), out.end(), 0x00A0BC98u), 20) << drawer.name;
    }
    xc_image_unref(src);
}

// Grey levels 10 x along one direction.
xc_image *gradient(int32_t n, bool vertical) {
    return test::painted(vertical ? 3 : n, vertical ? n : 3,
                         [=](int x, int y) { return test::grey(uint32_t(10 * (vertical ? y : x))); });
}

Words greys(std::initializer_list<uint32_t> levels) {
    Words out;
    for (uint32_t g : levels) out.push_back(test::grey(g));
    return out;
}

TEST(Smoothing, BoxAveragesEverySourcePixelOfItsDestinationPixel) {
    const struct {
        const char *name;
        xc_scale_func fn;
        bool vertical;
        int32_t from, to;
        Words expected;
    } cases[] = {
        {"x by 4", xc_image_scale_down_x, false, 8, 2, greys({15, 55})},
        {"xy by 4", xc_image_scale_down_xy, false, 8, 2, greys({15, 55})},
        {"y by 4", xc_image_scale_down_y, true, 8, 2, greys({15, 55})},
        {"uneven boxes of 4, 3, 3", xc_image_scale_down_x, false, 10, 3, greys({15, 50, 80})},
        {"uneven vertical boxes", xc_image_scale_down_y, true, 10, 3, greys({15, 50, 80})},
        {"truncating average", xc_image_scale_down_x, false, 3, 1, greys({10})},
        {"linear enlarges end to end", xc_scale_linear, false, 3, 5, greys({0, 5, 10, 15, 20})},
        {"linear reduces end to end", xc_scale_linear, false, 9, 5, greys({0, 20, 40, 60, 80})},
    };
    for (const auto &c : cases) {
        xc_image *src = gradient(c.from, c.vertical);
        const Size d = c.vertical ? Size{3, c.to} : Size{c.to, 3};
        const xg_area s{0, 0, src->width, src->height};
        const Words out = draw(c.fn, src, s, d);
        Words line;
        for (int32_t i = 0; i < c.to; ++i)
            line.push_back(out[static_cast<size_t>(c.vertical ? i * 3 + 1 : c.to + i)]);
        EXPECT_EQ(line, c.expected) << c.name;
        xc_image_unref(src);
    }
}

TEST(Smoothing, LinearDirectionOfADownScalerInterpolates) {
    // down_x over a vertical gradient: the rows are interpolated, 4 into 7.
    xc_image *src = test::painted(8, 4, [](int, int y) { return test::grey(uint32_t(60 * y)); });
    const Words out = draw(xc_image_scale_down_x, src, {0, 0, 8, 4}, {2, 7});
    Words column;
    for (int y = 0; y < 7; ++y) column.push_back(out[static_cast<size_t>(y * 2)]);
    EXPECT_EQ(column, greys({0, 30, 60, 90, 120, 150, 180}));
    xc_image_unref(src);
}

TEST(Smoothing, WritesOnlyTheClip) {
    xc_image *src = test::painted(30, 30, [](int x, int y) { return 0xFF000000u | uint32_t(x * 8 + y); });
    const xg_area clip{2, 3, 9, 7};
    for (const Drawer &drawer : kDrawers)
        for (Size d : {Size{10, 10}, Size{12, 8}, Size{40, 45}}) {
            const Words out = draw(drawer.fn, src, {0, 0, 30, 30}, d, &clip, 0x12345678u);
            const Words full = draw(drawer.fn, src, {0, 0, 30, 30}, d);
            for (int32_t y = 0; y < d.h; ++y)
                for (int32_t x = 0; x < d.w; ++x) {
                    const size_t i = static_cast<size_t>(y * d.w + x);
                    const bool in = x >= clip.x1 && x < clip.x2 && y >= clip.y1 && y < clip.y2;
                    // Inside, the clipped draw matches the unclipped one.
                    EXPECT_EQ(out[i], in ? full[i] : 0x12345678u)
                        << drawer.name << " " << d.w << "x" << d.h << " at " << x << "," << y;
                }
        }
    xc_image_unref(src);
}

TEST(Smoothing, NothingBleedsInFromOutsideTheSourceArea) {
    // A red frame around a grey interior; only the interior is the source.
    xc_image *src = test::painted(12, 10, [](int x, int y) {
        const bool frame = x < 2 || y < 2 || x >= 10 || y >= 8;
        return frame ? 0xFFFF0000u : test::grey(uint32_t(20 * x + y));
    });
    const xg_area s{2, 2, 10, 8};
    for (const Drawer &drawer : kDrawers)
        for (Size d : {Size{1, 1}, Size{3, 2}, Size{8, 6}, Size{20, 15}, Size{5, 17}})
            for (uint32_t v : draw(drawer.fn, src, s, d))
                EXPECT_EQ(v >> 16 & 0xFF, v >> 8 & 0xFF) << drawer.name << " " << d.w << "x" << d.h;
    xc_image_unref(src);
}

TEST(Smoothing, AlphaIsFilteredLikeTheColours) {
    std::vector<uint32_t> words{0x00000000, 0xFF404040, 0x00000000, 0xFF404040};
    xc_image *src = xc_image_new_from_data(4, 1, words.data(), 32, 0, 1);
    xc_image *dst = test::blank_alpha(2, 1);
    const xg_area clip{0, 0, 2, 1}, s{0, 0, 4, 1};
    xc_image_scale_down_x(src, dst, &clip, &s, &clip, 0xFFFFFFFF);
    EXPECT_EQ(test::row(dst, 0), (Words{0x7F202020, 0x7F202020}));
    xc_image_unref(dst);
    xc_image_unref(src);
}

TEST(Smoothing, BadAreasDrawNothing) {
    xc_image *src = test::canvas(4, 4, 0xFFFFFFFFu);
    const xg_area outside{2, 2, 6, 6};
    EXPECT_EQ(draw(xc_image_scale_down_xy, src, outside, {2, 2}), Words(4, 0u));
    xc_image_unref(src);
}

TEST(SmoothingDeathTest, LinearAssertsAnAreaInsideTheSource) {
    xc_image *src = test::canvas(4, 4, 0xFFFFFFFFu);
    EXPECT_DEATH(draw(xc_scale_linear, src, {-1, 0, 4, 4}, {8, 8}), "scale_linear:.*Assertion");
    xc_image_unref(src);
}

}  // namespace

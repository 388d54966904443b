#include <gtest/gtest.h>

#include <algorithm>

#include "drawn.hpp"

namespace {

using test::Image;
using test::Words;

const struct {
    const char *name;
    xc_scale_func fn;
} kDrawers[] = {
    {"linear", xc_scale_linear},
    {"down_x", xc_image_scale_down_x},
    {"down_y", xc_image_scale_down_y},
    {"down_xy", xc_image_scale_down_xy},
};

TEST(Smoothing, ConstantImageStaysConstant) {
    std::vector<uint16_t> words(12 * 9, 0xA5F3);
    const Image rgb16{xc_image_new_from_data(12, 9, words.data(), 16, 0, 1)};
    const Image rgb32 = test::canvas(12, 9, 0xFF5A3C1Eu);
    // 0xA5F3 unpacks to red 0xA0, green 0xBC, blue 0x98, alpha 0.
    for (const auto &[src, colour] : {std::pair{rgb32.get(), 0xFF5A3C1Eu}, {rgb16.get(), 0x00A0BC98u}})
        for (const auto &drawer : kDrawers)
            for (const auto &[w, h] : {std::pair{1, 1}, {3, 7}, {5, 4}, {17, 5}, {40, 33}})
                EXPECT_EQ(test::drawn(drawer.fn, src, {0, 0, 12, 9}, w, h), Words(size_t(w * h), colour))
                    << drawer.name << " " << w << "x" << h;
}

// Grey levels 10 x along one direction, three pixels across.
Image gradient(int32_t n, bool vertical) {
    return test::painted(vertical ? 3 : n, vertical ? n : 3,
                         [=](int x, int y) { return test::grey(uint32_t(10 * (vertical ? y : x))); });
}

TEST(Smoothing, BoxAveragesEverySourcePixelOfItsDestinationPixel) {
    const struct {
        const char *name;
        xc_scale_func fn;
        bool vertical;
        int32_t from, to;
        std::vector<uint32_t> levels;
    } cases[] = {
        {"x by 4", xc_image_scale_down_x, false, 8, 2, {15, 55}},
        {"xy by 4", xc_image_scale_down_xy, false, 8, 2, {15, 55}},
        {"y by 4", xc_image_scale_down_y, true, 8, 2, {15, 55}},
        {"uneven boxes of 4, 3, 3", xc_image_scale_down_x, false, 10, 3, {15, 50, 80}},
        {"uneven vertical boxes", xc_image_scale_down_y, true, 10, 3, {15, 50, 80}},
        {"truncating average", xc_image_scale_down_x, false, 3, 1, {10}},
        {"linear enlarges end to end", xc_scale_linear, false, 3, 5, {0, 5, 10, 15, 20}},
        {"linear reduces end to end", xc_scale_linear, false, 9, 5, {0, 20, 40, 60, 80}},
        // The linear direction of a down-scaler interpolates.
        {"down_x interpolates rows", xc_image_scale_down_x, true, 4, 7, {0, 5, 10, 15, 20, 25, 30}},
    };
    for (const auto &c : cases) {
        const Image src = gradient(c.from, c.vertical);
        const Words out = test::drawn(c.fn, src.get(), {0, 0, src->width, src->height},
                                      c.vertical ? 3 : c.to, c.vertical ? c.to : 3);
        Words line, want;
        for (int32_t i = 0; i < c.to; ++i) line.push_back(out[size_t(c.vertical ? i * 3 + 1 : c.to + i)]);
        for (uint32_t g : c.levels) want.push_back(test::grey(g));
        EXPECT_EQ(line, want) << c.name;
    }
}

TEST(Smoothing, WritesOnlyTheClip) {
    const Image src = test::painted(30, 30, [](int x, int y) { return 0xFF000000u | uint32_t(x * 8 + y); });
    const xg_area clip{2, 3, 9, 7}, s{0, 0, 30, 30};
    for (const auto &drawer : kDrawers)
        for (const auto &[w, h] : {std::pair{10, 10}, {12, 8}, {40, 45}}) {
            const Words out = test::drawn(drawer.fn, src.get(), s, w, h, &clip, 0x12345678u);
            Words want = test::drawn(drawer.fn, src.get(), s, w, h);
            for (int32_t i = 0; i < w * h; ++i) {
                const int32_t x = i % w, y = i / w;
                if (x < clip.x1 || x >= clip.x2 || y < clip.y1 || y >= clip.y2) want[size_t(i)] = 0x12345678u;
            }
            EXPECT_EQ(out, want) << drawer.name << " " << w << "x" << h;
        }
}

TEST(Smoothing, NothingBleedsInFromOutsideTheSourceArea) {
    // A red frame around a grey interior; only the interior is the source.
    const Image src = test::painted(12, 10, [](int x, int y) {
        const bool frame = x < 2 || y < 2 || x >= 10 || y >= 8;
        return frame ? 0xFFFF0000u : test::grey(uint32_t(20 * x + y));
    });
    for (const auto &drawer : kDrawers)
        for (const auto &[w, h] : {std::pair{1, 1}, {3, 2}, {8, 6}, {20, 15}, {5, 17}})
            for (uint32_t v : test::drawn(drawer.fn, src.get(), {2, 2, 10, 8}, w, h))
                EXPECT_EQ(v >> 16 & 0xFF, v >> 8 & 0xFF) << drawer.name << " " << w << "x" << h;
}

TEST(Smoothing, AlphaIsFilteredLikeTheColours) {
    std::vector<uint32_t> words{0x00000000, 0xFF404040, 0x00000000, 0xFF404040};
    const Image src{xc_image_new_from_data(4, 1, words.data(), 32, 0, 1)};
    const Image dst = test::blank_alpha(2, 1);
    const xg_area clip{0, 0, 2, 1}, s{0, 0, 4, 1};
    xc_image_scale_down_x(src.get(), dst.get(), &clip, &s, &clip, test::kWhite);
    EXPECT_EQ(test::all(dst.get()), (Words{0x7F202020, 0x7F202020}));
}

TEST(Smoothing, AreaOutsideTheSourceDrawsNothingOrAssertsInLinear) {
    const Image src = test::canvas(4, 4, test::kWhite);
    EXPECT_EQ(test::drawn(xc_image_scale_down_xy, src.get(), {2, 2, 6, 6}, 2, 2), Words(4, 0u));
    EXPECT_DEATH(test::drawn(xc_scale_linear, src.get(), {-1, 0, 4, 4}, 8, 8), "scale_linear:.*Assertion");
}

}  // namespace

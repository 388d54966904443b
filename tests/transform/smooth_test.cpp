#include <gtest/gtest.h>

#include "drawn.hpp"

namespace {

using namespace test;

const xc_scale_func kDrawers[] = {xc_scale_linear, xc_image_scale_down_x, xc_image_scale_down_y,
                                  xc_image_scale_down_xy};

Words greys(const std::vector<uint32_t> &levels) {
    Words out;
    for (uint32_t g : levels) out.push_back(grey(g));
    return out;
}

TEST(Smoothing, ConstantImageStaysConstant) {
    std::vector<uint16_t> words(12 * 9, 0xA5F3);
    const Image rgb16{xc_image_new_from_data(12, 9, words.data(), 16, 0, 1)};
    const Image rgb32 = canvas(12, 9, 0xFF5A3C1Eu);
    // 0xA5F3 unpacks to red 0xA0, green 0xBC, blue 0x98, alpha 0.
    for (const auto &[src, colour] : {std::pair{rgb32.get(), 0xFF5A3C1E}, {rgb16.get(), 0xA0BC98}})
        for (const xc_scale_func &fn : kDrawers)
            for (const auto &[w, h] : {std::pair{1, 1}, {3, 7}, {5, 4}, {17, 5}, {40, 33}})
                EXPECT_EQ(drawn(fn, src, {0, 0, 12, 9}, w, h), Words(size_t(w * h), colour))
                    << (fn == xc_scale_linear ? "linear" : "box") << " " << w << "x" << h;
}

TEST(Smoothing, BoxAveragesEverySourcePixelOfItsDestinationPixel) {
    struct Case {
        xc_scale_func fn;
        bool vertical;
        int32_t from, to;
        Words levels;
    };
    const Case cases[] = {
        // Grey levels 10 x along one direction, three pixels across.
        {xc_image_scale_down_x, false, 8, 2, {15, 55}},
        {xc_image_scale_down_xy, false, 8, 2, {15, 55}},
        {xc_image_scale_down_y, true, 8, 2, {15, 55}},
        // Uneven boxes of 4, 3, 3; a truncating average.
        {xc_image_scale_down_x, false, 10, 3, {15, 50, 80}},
        {xc_image_scale_down_y, true, 10, 3, {15, 50, 80}},
        {xc_image_scale_down_x, false, 3, 1, {10}},
        // Linear maps end to end, enlarging or reducing, and is the other
        // direction of a down-scaler.
        {xc_scale_linear, false, 3, 5, {0, 5, 10, 15, 20}},
        {xc_scale_linear, false, 9, 5, {0, 20, 40, 60, 80}},
        {xc_image_scale_down_x, true, 4, 7, {0, 5, 10, 15, 20, 25, 30}},
    };
    for (const Case &c : cases) {
        const bool v = c.vertical;
        const int32_t w = v ? 3 : c.from, h = v ? c.from : 3, dw = v ? 3 : c.to, dh = v ? c.to : 3;
        const Image src = painted(w, h, [&](int x, int y) { return grey(10u * (v ? y : x)); });
        const Words out = drawn(c.fn, src.get(), {0, 0, w, h}, dw, dh);
        Words line;
        // The middle column or row.
        for (int32_t i = 0; i < c.to; ++i) line.push_back(out[size_t(v ? 3 * i + 1 : dw + i)]);
        EXPECT_EQ(line, greys(c.levels)) << c.from << " to " << c.to;
    }
}

TEST(Smoothing, WritesOnlyTheClip) {
    const Image src = painted(30, 30, [](int x, int y) { return 0xFF000000u | (x * 8u + y); });
    const xg_area clip{2, 3, 9, 7}, s{0, 0, 30, 30};
    for (const xc_scale_func &fn : kDrawers)
        for (const auto &[w, h] : {std::pair{10, 10}, {12, 8}, {40, 45}}) {
            // Inside, the clipped draw matches the unclipped one.
            Words want = drawn(fn, src.get(), s, w, h);
            for (int32_t i = 0; i < w * h; ++i) {
                const int32_t x = i % w, y = i / w;
                if (x < clip.x1 || x >= clip.x2 || y < clip.y1 || y >= clip.y2) want[size_t(i)] = 7;
            }
            EXPECT_EQ(drawn(fn, src.get(), s, w, h, &clip, 7), want) << &fn - kDrawers << ": " << w;
        }
}

TEST(Smoothing, NothingBleedsInFromOutsideTheSourceArea) {
    // A red frame around a grey interior; only the interior is the source.
    const Image src = painted(12, 10, [](int x, int y) {
        const bool frame = x < 2 || y < 2 || x >= 10 || y >= 8;
        return frame ? 0xFFFF0000u : grey(uint32_t(20 * x + y));
    });
    for (const xc_scale_func &fn : kDrawers)
        for (const auto &[w, h] : {std::pair{1, 1}, {3, 2}, {8, 6}, {20, 15}, {5, 17}})
            for (uint32_t v : drawn(fn, src.get(), {2, 2, 10, 8}, w, h))
                EXPECT_EQ(v >> 16 & 0xFF, v >> 8 & 0xFF) << &fn - kDrawers << ": " << w << "x" << h;
}

Image ramp(int32_t w, int32_t h) {
    return painted(w, h, [](int x, int y) { return grey(uint32_t(8 * x + 40 * y)); });
}

TEST(ScaleDown, BlocksAreAveragedWithSmallerBoxesAtOddEdges) {
    const Image src = ramp(8, 4), odd = ramp(5, 1);
    const Image half{xc_image_scale_down_2x(src.get())}, quarter{xc_image_scale_down_4x(src.get())};
    // Block (0, 0): x 0, 1 and y 0, 1 -> (0 + 8 + 40 + 48) / 4 = 24.
    EXPECT_EQ(all(half.get()), greys({24, 40, 56, 72, 104, 120, 136, 152}));
    EXPECT_EQ(all(quarter.get()), greys({72, 104}));
    EXPECT_EQ((std::array{half->width, quarter->width, quarter->height, int(half->format)}),
              (std::array{4, 2, 1, 1}));
    // Boxes of 3 and 2: (0 + 8 + 16) / 3 = 8, (24 + 32) / 2 = 28; then one of 2.
    const Image odd_half{xc_image_scale_down_2x(odd.get())};
    const Image odd_quarter{xc_image_scale_down_4x(odd_half.get())};
    EXPECT_EQ(all(odd_half.get()), greys({8, 28}));
    EXPECT_EQ(all(odd_quarter.get()), greys({18}));
    // An alpha source gives an alpha result.
    uint32_t words[4] = {0x80402010, 0x80402010, 0, 0};
    const Image alpha{xc_image_new_from_data(2, 2, words, 32, 0, 1)};
    const Image alpha_half{xc_image_scale_down_2x(alpha.get())};
    EXPECT_EQ(alpha_half->has_alpha, 1u);
    EXPECT_EQ(all(alpha_half.get()), Words{0x40201008u});
}

TEST(ScaleDown, StagedReductionReachesTheTargetAndHalvesFirst) {
    const Image flat = canvas(100, 60, 0xFF336699);
    const Image small{xc_image_scale_down_xy_2(flat.get(), 12, 7)};
    ASSERT_NE(small, nullptr);
    EXPECT_EQ((std::array{small->width, small->height}), (std::array{12, 7}));
    EXPECT_EQ(all(small.get()), Words(84, 0xFF336699u));
    // A ramp reduced 8 -> 2 equals two 2x steps.
    const Image r = ramp(8, 8), staged{xc_image_scale_down_xy_2(r.get(), 2, 2)};
    const Image h1{xc_image_scale_down_2x(r.get())}, h2{xc_image_scale_down_2x(h1.get())};
    EXPECT_EQ(all(staged.get()), all(h2.get()));
}

TEST(Scale1d, BoxBelowHalfLinearOtherwiseWithStepsAndEmptyCounts) {
    struct Case {
        Words src;
        int32_t src_count, src_step, dst_count, dst_step;
        Words want;
    };
    const Case cases[] = {
        // Boxes 0-2, 3-5, 6-7; then linear end to end.
        {{0, 10, 20, 30, 40, 50, 60, 70}, 8, 1, 3, 1, {10, 40, 65, 7, 7, 7}},
        {{0, 100, 200}, 3, 1, 5, 1, {0, 50, 100, 150, 200, 7}},
        // A column of a 2-wide image into every other word.
        {{0, 99, 0x40, 99, 0x80, 99}, 3, 2, 3, 2, {0, 7, 0x40, 7, 0x80, 7}},
        // Counts below one do nothing.
        {{1, 2, 3}, 0, 1, 3, 1, Words(6, 7)},
        {{1, 2, 3}, 3, 1, 0, 1, Words(6, 7)},
    };
    for (const Case &c : cases) {
        Words out(6, 7);
        xc_image_scale_1d(c.src.data(), c.src_count, c.src_step, out.data(), c.dst_count,
                          c.dst_step);
        EXPECT_EQ(out, c.want) << c.src_count << " to " << c.dst_count;
    }
}

}  // namespace

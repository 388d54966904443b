#include <gtest/gtest.h>

#include "drawn.hpp"

namespace {

using test::Image;
using test::Words;

Image ramp(int32_t w, int32_t h) {
    return test::painted(w, h, [](int x, int y) { return test::grey(uint32_t(8 * x + 40 * y)); });
}

Words greys(std::initializer_list<uint32_t> levels) {
    Words out;
    for (uint32_t g : levels) out.push_back(test::grey(g));
    return out;
}

TEST(ScaleDown, BlocksAreAveragedWithSmallerBoxesAtOddEdges) {
    const Image src = ramp(8, 4), odd = ramp(5, 1);
    const Image half{xc_image_scale_down_2x(src.get())}, quarter{xc_image_scale_down_4x(src.get())};
    // Block (0, 0): x 0, 1 and y 0, 1 -> (0 + 8 + 40 + 48) / 4 = 24.
    EXPECT_EQ(test::all(half.get()), greys({24, 40, 56, 72, 104, 120, 136, 152}));
    EXPECT_EQ(test::all(quarter.get()), greys({72, 104}));
    EXPECT_EQ((std::array{half->width, half->height, quarter->width, quarter->height, int(half->format)}),
              (std::array{4, 2, 2, 1, 1}));
    // Boxes of 3 and 2: (0 + 8 + 16) / 3 = 8, (24 + 32) / 2 = 28; then one of 2.
    const Image odd_half{xc_image_scale_down_2x(odd.get())};
    const Image odd_quarter{xc_image_scale_down_4x(odd_half.get())};
    EXPECT_EQ(test::all(odd_half.get()), greys({8, 28}));
    EXPECT_EQ(test::all(odd_quarter.get()), greys({18}));
}

TEST(ScaleDown, AlphaSourcesGiveAlphaResults) {
    std::vector<uint32_t> words{0x80402010, 0x80402010, 0x00000000, 0x00000000};
    const Image src{xc_image_new_from_data(2, 2, words.data(), 32, 0, 1)};
    const Image half{xc_image_scale_down_2x(src.get())};
    EXPECT_EQ(half->has_alpha, 1u);
    EXPECT_EQ(test::all(half.get()), Words{0x40201008u});
}

TEST(ScaleDown, StagedReductionReachesTheTargetAndHalvesFirst) {
    const Image flat = test::canvas(100, 60, 0xFF336699u);
    const Image small{xc_image_scale_down_xy_2(flat.get(), 12, 7)};
    ASSERT_NE(small, nullptr);
    EXPECT_EQ((std::array{small->width, small->height}), (std::array{12, 7}));
    EXPECT_EQ(test::all(small.get()), Words(84, 0xFF336699u));
    // A ramp reduced 8 -> 2 equals two 2x steps.
    const Image r = ramp(8, 8), staged{xc_image_scale_down_xy_2(r.get(), 2, 2)};
    const Image h1{xc_image_scale_down_2x(r.get())}, h2{xc_image_scale_down_2x(h1.get())};
    EXPECT_EQ(test::all(staged.get()), test::all(h2.get()));
}

TEST(ScaleDown, RefusesMissingPixelsAndBadSizes) {
    const Image empty{xc_image_new()}, src = test::canvas(4, 4, 0u);
    testing::internal::CaptureStdout();
    EXPECT_EQ(xc_image_scale_down_2x(empty.get()), nullptr);
    EXPECT_EQ(xc_image_scale_down_4x(nullptr), nullptr);
    EXPECT_EQ(xc_image_scale_down_xy_2(src.get(), 0, 3), nullptr);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("xc_image_scale_down_2x: no pixels"), std::string::npos);
    EXPECT_NE(out.find("xc_image_scale_down_xy_2: bad size 0 x 3"), std::string::npos);
}

TEST(Scale1d, BoxBelowHalfLinearOtherwiseWithStepsAndEmptyCounts) {
    const struct {
        Words src;
        int32_t src_count, src_step, dst_count, dst_step;
        Words want;
    } cases[] = {
        {{0, 10, 20, 30, 40, 50, 60, 70}, 8, 1, 3, 1, {10, 40, 65, 7, 7, 7}},  // boxes 0-2, 3-5, 6-7
        {{0, 100, 200}, 3, 1, 5, 1, {0, 50, 100, 150, 200, 7}},
        // A column of a 2-wide image into every other word.
        {{0, 99, 0x40, 99, 0x80, 99}, 3, 2, 3, 2, {0, 7, 0x40, 7, 0x80, 7}},
        // Counts below one do nothing.
        {{1, 2, 3}, 0, 1, 3, 1, Words(6, 7)},
        {{1, 2, 3}, 3, 1, 0, 1, Words(6, 7)},
    };
    for (const auto &c : cases) {
        Words out(6, 7);
        xc_image_scale_1d(c.src.data(), c.src_count, c.src_step, out.data(), c.dst_count, c.dst_step);
        EXPECT_EQ(out, c.want) << c.src_count << " to " << c.dst_count;
    }
}

}  // namespace

#include <gtest/gtest.h>

#include "drawn.hpp"

namespace {

using namespace test;

Words greys(const std::vector<uint32_t> &levels) {
    Words out;
    for (uint32_t g : levels) out.push_back(grey(g));
    return out;
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

TEST(Scale1d, CountsBelowOneWriteNothing) {
    const Words src{1, 2, 3};
    for (const auto &[from, to] : {std::pair{0, 3}, {3, 0}, {-1, 3}, {3, -2}}) {
        Words out(3, 7);
        xc_image_scale_1d(src.data(), from, 1, out.data(), to, 1);
        EXPECT_EQ(out, Words(3, 7)) << from << " to " << to;
    }
}

}  // namespace

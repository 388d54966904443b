// The reductions' box averages are pinned with the other scalers' output by
// the seeded blits; here, what only the reductions decide: sizes, kinds and
// the staging.
#include <gtest/gtest.h>

#include <tuple>

#include "fbcompose/transform.h"
#include "image_words.hpp"

namespace {

using namespace test;

TEST(ScaleDown, ReductionsKeepAtLeastOnePixelAndTheSourceKind) {
    const Image src = canvas(8, 4, 0xFF336699u), odd = canvas(5, 1, 0xFF336699u);
    const Image half{xc_image_scale_down_2x(src.get())}, quarter{xc_image_scale_down_4x(src.get())};
    const Image odd_half{xc_image_scale_down_2x(odd.get())}, one{xc_image_scale_down_4x(odd.get())};
    for (const auto &[image, w, h] : {std::tuple{half.get(), 4, 2},
                                      {quarter.get(), 2, 1},
                                      {odd_half.get(), 2, 1},
                                      {one.get(), 1, 1}}) {
        EXPECT_EQ((std::array{image->width, image->height, int(image->format)}),
                  (std::array{w, h, 1}));
        EXPECT_EQ(all(image), Words(size_t(w * h), 0xFF336699u)) << w << " x " << h;
    }
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
    const Image r = painted(8, 8, [](int x, int y) { return grey(uint32_t(8 * x + 24 * y)); });
    const Image staged{xc_image_scale_down_xy_2(r.get(), 2, 2)};
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

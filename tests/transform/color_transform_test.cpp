#include <gtest/gtest.h>

#include <cstring>

#include "drawn.hpp"

namespace {

using test::Image;
using test::Words;
using Matrix = std::array<float, 16>;

constexpr Matrix kIdentity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0};
constexpr Matrix kGrey{0.299f, 0.299f, 0.299f, 0, 0.587f, 0.587f, 0.587f, 0,
                       0.114f, 0.114f, 0.114f, 0, 0,      0,      0,      0};
constexpr int32_t kLow[3] = {0, 0, 0};
constexpr int32_t kHigh[3] = {255, 255, 255};

const Words kPixels{0xFF000000, 0x80FFFFFF, 0x40FA0A05, 0x00123456, 0xFF80C020, 0x11FFFFFF};

Words transform(const Matrix &m, const int32_t lower[3], const Words &pixels = kPixels,
                const int32_t upper[3] = kHigh) {
    const Image src = test::canvas(3, 2, pixels);
    const Image out{xc_image_new_from_color_transformed_image(src.get(), m.data(), lower, upper)};
    return test::all(out.get());
}

TEST(ColorTransform, GreyMatrixTakesTheFastPathAndKeepsAlpha) {
    Words expected;
    for (uint32_t p : kPixels) {
        const uint32_t g = ((p >> 16 & 0xFF) * 19595 + (p >> 8 & 0xFF) * 38469 + (p & 0xFF) * 7471) >> 16;
        expected.push_back((p & 0xFF000000u) | g << 16 | g << 8 | g);
    }
    EXPECT_EQ(transform(kGrey, kLow), expected);
    // The general path (a lower bound of -1 turns it on) agrees in range.
    const int32_t low[3] = {-1, 0, 0};
    EXPECT_EQ(transform(kGrey, low), expected);
}

TEST(ColorTransform, BiasesAreClampedAndWeightsTruncatedToSixteenBitFractions) {
    Matrix grey_biased = kGrey, red_biased = kIdentity, fractions{};
    grey_biased[12] = 100;   // the fast path clamps each channel after its bias
    grey_biased[13] = -300;
    red_biased[12] = 10;
    // 0.99999 and 1.00001 become 65535 and 65536: 0 and 1; blue from red is
    // (255 x 32768 + 32768) >> 16 = 128.
    fractions[12] = 0.99999f;
    fractions[13] = 1.00001f;
    fractions[14] = 0.5f;
    fractions[2] = 0.5f;
    EXPECT_EQ(transform(grey_biased, kLow, Words(6, 0xFFC8C8C8u)), Words(6, 0xFFFF00C7u));
    EXPECT_EQ(transform(red_biased, kLow, Words(6, 0x20FA0A05u)), Words(6, 0x20FF0A05u));
    EXPECT_EQ(transform(red_biased, kLow, Words(6, 0x20100A05u)), Words(6, 0x201A0A05u));
    EXPECT_EQ(transform(fractions, kLow, Words(6, 0xFFFF0000u)), Words(6, 0xFF000180u));
}

TEST(ColorTransform, LowerBoundWinsOverALowerUpperBound) {
    const int32_t lower[3] = {0, 100, 0}, upper[3] = {255, 50, 255};
    for (uint32_t p : transform(kIdentity, lower, kPixels, upper)) EXPECT_EQ(p >> 8 & 0xFF, 100u);
}

TEST(ColorTransform, ResultIsANewOpaqueUncachedImageAndANullMatrixCopies) {
    const Image src = test::canvas(3, 2, kPixels);
    for (const float *m : {kIdentity.data(), static_cast<const float *>(nullptr)}) {
        const Image out{xc_image_new_from_color_transformed_image(src.get(), m, m ? kLow : nullptr,
                                                                  m ? kHigh : nullptr)};
        ASSERT_NE(out, nullptr);
        EXPECT_EQ((std::array{out->ref, int(out->no_cache), int(out->format)}), (std::array{1, 1, 1}));
        EXPECT_EQ(test::all(out.get()), kPixels);
        std::memset(out->data, 0, 24);
        EXPECT_EQ(test::all(src.get()), kPixels) << "an independent copy";
    }
}

TEST(ColorTransform, ImagesWithoutThirtyTwoBitPixelsAreRefused) {
    uint16_t words[4] = {};
    const Image rgb16{xc_image_new_from_data(2, 2, words, 16, 0, 1)}, empty{xc_image_new()};
    for (xc_image *image : {rgb16.get(), empty.get()}) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(xc_image_new_from_color_transformed_image(image, kIdentity.data(), kLow, kHigh), nullptr);
        EXPECT_NE(testing::internal::GetCapturedStdout().find("no 32-bit pixels"), std::string::npos);
    }
}

}  // namespace

#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "fbcompose/transform.h"
#include "images.hpp"

namespace {

using test::Words;
using Matrix = std::array<float, 16>;

constexpr Matrix kIdentity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0};
constexpr Matrix kGrey{0.299f, 0.299f, 0.299f, 0, 0.587f, 0.587f, 0.587f, 0,
                       0.114f, 0.114f, 0.114f, 0, 0,      0,      0,      0};
constexpr int32_t kLow[3] = {0, 0, 0};
constexpr int32_t kHigh[3] = {255, 255, 255};

const Words kPixels{0xFF000000, 0x80FFFFFF, 0x40FA0A05, 0x00123456, 0xFF80C020, 0x11FFFFFF};

Words transform(const Matrix &m, const int32_t lower[3], const int32_t upper[3],
                const Words &pixels = kPixels) {
    xc_image *src = test::canvas(3, 2, pixels);
    xc_image *out = xc_image_new_from_color_transformed_image(src, m.data(), lower, upper);
    Words words = test::all(out);
    xc_image_unref(out);
    xc_image_unref(src);
    return words;
}

TEST(ColorTransform, GreyMatrixTakesTheFastPathAndKeepsAlpha) {
    Words expected;
    for (uint32_t p : kPixels) {
        const uint32_t g =
            ((p >> 16 & 0xFF) * 19595 + (p >> 8 & 0xFF) * 38469 + (p & 0xFF) * 7471) >> 16;
        expected.push_back((p & 0xFF000000u) | g << 16 | g << 8 | g);
    }
    EXPECT_EQ(transform(kGrey, kLow, kHigh), expected);
    // The general path (a lower bound of -1 turns it on) agrees in range.
    const int32_t low[3] = {-1, 0, 0};
    EXPECT_EQ(transform(kGrey, low, kHigh), expected);
}

TEST(ColorTransform, FastPathClampsEachChannelAfterItsBias) {
    Matrix m = kGrey;
    m[12] = 100;   // red bias
    m[13] = -300;  // green bias
    const Words out = transform(m, kLow, kHigh, Words(6, 0xFFC8C8C8u));
    EXPECT_EQ(out, Words(6, 0xFFFF00C7u));
}

TEST(ColorTransform, BiasRaisesAChannelAndBoundsLimitIt) {
    Matrix m = kIdentity;
    m[12] = 10;
    EXPECT_EQ(transform(m, kLow, kHigh, Words(6, 0x20FA0A05u)), Words(6, 0x20FF0A05u));
    EXPECT_EQ(transform(m, kLow, kHigh, Words(6, 0x20100A05u)), Words(6, 0x201A0A05u));
}

TEST(ColorTransform, LowerBoundWinsOverALowerUpperBound) {
    const int32_t lower[3] = {0, 100, 0};
    const int32_t upper[3] = {255, 50, 255};
    for (uint32_t p : transform(kIdentity, lower, upper)) EXPECT_EQ(p >> 8 & 0xFF, 100u);
}

TEST(ColorTransform, WeightsAreTruncatedToSixteenBitFractions) {
    // Biases of 0.99999 and 1.00001 become 65535 and 65536: 0 and 1.
    Matrix m{};
    m[12] = 0.99999f;
    m[13] = 1.00001f;
    m[14] = 0.5f;
    m[2] = 0.5f;  // blue from red: (255 x 32768 + 32768) >> 16 = 128
    EXPECT_EQ(transform(m, kLow, kHigh, Words(6, 0xFFFF0000u)), Words(6, 0xFF000180u));
}

TEST(ColorTransform, NullMatrixGivesAnIndependentCopy) {
    xc_image *src = test::canvas(3, 2, kPixels);
    xc_image *copy = xc_image_new_from_color_transformed_image(src, nullptr, nullptr, nullptr);
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy->data, src->data);
    EXPECT_EQ(copy->format, src->format);
    EXPECT_EQ(test::all(copy), kPixels);
    std::memset(copy->data, 0, 24);
    EXPECT_EQ(test::all(src), kPixels);
    xc_image_unref(copy);
    xc_image_unref(src);
}

TEST(ColorTransform, ResultIsANewOpaqueUncachedImage) {
    xc_image *src = test::canvas(3, 2, kPixels);
    xc_image *out = xc_image_new_from_color_transformed_image(src, kIdentity.data(), kLow, kHigh);
    EXPECT_EQ(out->ref, 1);
    EXPECT_EQ(out->no_cache, 1u);
    EXPECT_EQ(out->format, 1u);
    EXPECT_EQ(test::all(out), kPixels);
    xc_image_unref(out);
    xc_image_unref(src);
}

TEST(ColorTransform, ImagesWithoutThirtyTwoBitPixelsAreRefused) {
    uint16_t words[4] = {};
    xc_image *rgb16 = xc_image_new_from_data(2, 2, words, 16, 0, 1);
    xc_image *empty = xc_image_new();
    for (xc_image *image : {rgb16, empty}) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(xc_image_new_from_color_transformed_image(image, kIdentity.data(), kLow, kHigh),
                  nullptr);
        EXPECT_NE(testing::internal::GetCapturedStdout().find("no 32-bit pixels"), std::string::npos);
    }
    xc_image_unref(empty);
    xc_image_unref(rgb16);
}

}  // namespace

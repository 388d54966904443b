// Transforms that return a new image: fit to size, rotation, colour matrix,
// and their refusals (with those of the box down-scalers).
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "fbcompose/transform.h"
#include "image_words.hpp"

namespace {

using namespace test;

// Format, depth, has_alpha and no_cache of a result.
using Kind = std::array<uint32_t, 4>;
Kind kind(const xc_image *image) {
    return {image->format, image->depth, image->has_alpha, image->no_cache};
}

// The fitted image and the debug line printed on the way.
std::pair<Image, std::string> fit(xc_image *src, int32_t w, int32_t h, const char *mode) {
    testing::internal::CaptureStdout();
    Image out{xc_image_fit_size(src, w, h, mode)};
    return {std::move(out), testing::internal::GetCapturedStdout()};
}

std::string geometry(std::array<int, 8> v) {
    char line[200];
    std::snprintf(line, sizeof line,
                  "xc_image_fit_size: src: x = %d y = %d w = %d h = %d dst: x = %d y = %d w = %d "
                  "h = %d\n",
                  v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]);
    return line;
}

TEST(FitSize, GeometryOfEveryModeIsPrintedOnTheDebugLine) {
    struct Case {
        int32_t w0, h0, w, h;
        const char *mode;
        std::array<int, 8> line;
    };
    const Case cases[] = {
        {400, 100, 200, 100, "crop", {100, 0, 200, 100, 0, 0, 200, 100}},
        {100, 200, 100, 100, "crop", {0, 50, 100, 100, 0, 0, 100, 100}},
        {200, 100, 100, 100, nullptr, {0, 0, 200, 100, 0, 0, 100, 100}},
        {300, 100, 100, 50, "crop", {75, 0, 150, 100, 0, 0, 100, 50}},
        {60, 60, 30, 30, "crop", {0, 0, 60, 60, 0, 0, 30, 30}},
        {200, 100, 100, 100, "matte", {0, 0, 200, 100, 0, 25, 100, 50}},
        {100, 200, 100, 100, "matte", {0, 0, 100, 200, 25, 0, 50, 100}},
        {50, 40, 100, 100, "matte", {0, 0, 50, 40, 0, 10, 100, 80}},
        {60, 60, 30, 30, "matte", {0, 0, 60, 60, 0, 0, 30, 30}},
        {50, 40, 100, 100, "matte-both", {0, 0, 50, 40, 25, 30, 50, 40}},
        {200, 100, 100, 100, "matte-both", {0, 0, 200, 100, 0, 25, 100, 50}},
        {200, 100, 100, 100, "distort", {0, 0, 200, 100, 0, 0, 100, 100}},
        {400, 100, 200, 100, "Matte", {100, 0, 200, 100, 0, 0, 200, 100}},
        {400, 100, 200, 100, "stretch", {100, 0, 200, 100, 0, 0, 200, 100}},
    };
    for (const Case &c : cases) {
        const Image src = canvas(c.w0, c.h0, 0xFF336699u);
        const auto [out, line] = fit(src.get(), c.w, c.h, c.mode);
        EXPECT_EQ(line, geometry(c.line)) << (c.mode ? c.mode : "null");
        ASSERT_NE(out, nullptr);
        EXPECT_EQ((std::array{out->width, out->height, out->ref}), (std::array{c.w, c.h, 1}));
        EXPECT_EQ(kind(out.get()), (Kind{1, 24, 0, 1}));
        // The colour fills the destination area; matte bars are opaque black.
        const auto &d = c.line;
        const Image want = painted(c.w, c.h, [&d](int x, int y) {
            const bool in = x >= d[4] && x < d[4] + d[6] && y >= d[5] && y < d[5] + d[7];
            return in ? 0xFF336699u : 0xFF000000u;
        });
        EXPECT_EQ(all(out.get()), all(want.get())) << (c.mode ? c.mode : "null");
    }
}

TEST(FitSize, SourceWithoutPixelsGivesBlackAfterTheDebugLine) {
    const Image src{xc_image_new()};
    src->width = src->height = 10;
    const auto [out, line] = fit(src.get(), 4, 4, "distort");
    EXPECT_EQ(line, geometry({0, 0, 10, 10, 0, 0, 4, 4}));
    EXPECT_EQ(all(out.get()), Words(16, 0xFF000000u));
}

TEST(Rotate, QuarterTurnsPermuteExactlyAndKeepTheFormat) {
    const Image src = canvas(3, 2, Words{1, 2, 3, 4, 5, 6});
    struct Case {
        int32_t degrees, w;
        Words expected;
    };
    const Case cases[] = {{0, 3, {1, 2, 3, 4, 5, 6}},   {90, 2, {4, 1, 5, 2, 6, 3}},
                          {180, 3, {6, 5, 4, 3, 2, 1}}, {270, 2, {3, 6, 2, 5, 1, 4}},
                          {-90, 2, {3, 6, 2, 5, 1, 4}}, {450, 2, {4, 1, 5, 2, 6, 3}},
                          {-720, 3, {1, 2, 3, 4, 5, 6}}};
    for (const Case &c : cases) {
        const Image out{xc_image_new_from_rotated_image(src.get(), c.degrees)};
        EXPECT_EQ(all(out.get()), c.expected) << c.degrees;
        EXPECT_EQ((std::array{out->width, out->height}), (std::array{c.w, 6 / c.w}));
        EXPECT_EQ(kind(out.get()), (Kind{1, 24, 0, 1}));
    }
    // Sixteen-bit pixels stay sixteen bits, in rows of width x 2 bytes.
    std::vector<uint16_t> words{1, 2, 3, 4, 5, 6};
    const Image rgb16{xc_image_new_from_data(3, 2, words.data(), 16, 0, 1)};
    const Image out{xc_image_new_from_rotated_image(rgb16.get(), 90)};
    const auto *p = reinterpret_cast<uint16_t *>(out->data);
    EXPECT_EQ((std::array{int(out->depth), out->rowstride}), (std::array{16, 4}));
    EXPECT_EQ(std::vector<uint16_t>(p, p + 6), (std::vector<uint16_t>{4, 1, 5, 2, 6, 3}));
    // Three-byte rows pitched as 32-bit words are turned as words, into
    // rows of 4 bytes a pixel.
    Words wide{1, 2, 3, 4, 5, 6};
    const Image rgb24{xc_image_new_with_data(3, 2, wide.data(), 2, 0, 1, 12)};
    const Image turned{xc_image_new_from_rotated_image(rgb24.get(), 90)};
    EXPECT_EQ((std::array{int(turned->format), turned->rowstride}), (std::array{2, 8}));
    EXPECT_EQ(all(turned.get()), (Words{4, 1, 5, 2, 6, 3}));
}

TEST(Rotate, OtherAnglesFillTheBoundingBoxWithTransparentCorners) {
    const Image src = canvas(20, 10, 0x00406080u);  // opaque source: alpha byte ignored
    for (const auto &[degrees, w, h] :
         {std::array{45, 22, 22}, {30, 23, 19}, {-30, 23, 19}, {135, 22, 22}, {1, 21, 11}}) {
        const Image out{xc_image_new_from_rotated_image(src.get(), degrees)};
        EXPECT_EQ((std::array{out->width, out->height}), (std::array{w, h}));
        EXPECT_EQ(kind(out.get()), (Kind{0, 32, 1, 1}));
        const uint32_t corners = at(out.get(), 0, 0) | at(out.get(), w - 1, h - 1);
        EXPECT_TRUE(degrees == 1 || corners == 0) << degrees;
        // The interior of a constant opaque image stays exactly that colour.
        EXPECT_EQ(at(out.get(), w / 2, h / 2), 0xFF406080u) << degrees;
        // Edges are antialiased: alpha somewhere strictly between 0 and 255,
        // and colour never exceeds alpha (premultiplied).
        bool partial = false;
        for (uint32_t v : all(out.get())) {
            partial |= v >> 24 > 0 && v >> 24 < 255;
            EXPECT_LE(v >> 16 & 0xFF, v >> 24);
        }
        EXPECT_TRUE(partial) << degrees;
    }
    // A horizontal gradient turned by 1 degree: the box grows to 22 x 12, so
    // the middle row sits half a pixel left of the source's columns (5 grey
    // levels) and keeps its values within what the tilt moves them.
    const Image ramp = painted(21, 11, [](int x, int) { return grey(uint32_t(10 * x)); });
    const Image out{xc_image_new_from_rotated_image(ramp.get(), 1)};
    for (int32_t x = 2; x < 19; ++x) EXPECT_NEAR(int(at(out.get(), x, 5) & 0xFF), 10 * x - 5, 2);
}

using Matrix = std::array<float, 16>;

constexpr Matrix kIdentity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0};
constexpr Matrix kGrey{0.299f, 0.299f, 0.299f, 0, 0.587f, 0.587f, 0.587f, 0,
                       0.114f, 0.114f, 0.114f, 0, 0,      0,      0,      0};
using Bounds = std::array<int32_t, 3>;
constexpr Bounds kLow{0, 0, 0}, kHigh{255, 255, 255};
const Words kPixels{0xFF000000, 0x80FFFFFF, 0x40FA0A05, 0x00123456, 0xFF80C020, 0x11FFFFFF};

// m with entries set.
Matrix with(Matrix m, std::initializer_list<std::pair<int, float>> entries) {
    for (const auto &[i, v] : entries) m[size_t(i)] = v;
    return m;
}

TEST(ColorTransform, WeightsAndBiasesAreSixteenBitFractionsClampedToTheBounds) {
    // Grey weights 19595, 38469 and 7471 over 65536, truncated; alpha kept.
    const Words greyed{0xFF000000, 0x80FEFEFE, 0x40515151, 0x002D2D2D, 0xFF9A9A9A, 0x11FEFEFE};
    const struct {
        Matrix m;
        Bounds lower, upper;
        Words pixels, want;
    } cases[] = {
        {kGrey, kLow, kHigh, kPixels, greyed},
        // The general path (a lower bound of -1 turns it on) agrees in range.
        {kGrey, {-1, 0, 0}, kHigh, kPixels, greyed},
        // The fast path clamps each channel after its bias.
        {with(kGrey, {{12, 100}, {13, -300}}), kLow, kHigh, {0xFFC8C8C8u}, {0xFFFF00C7u}},
        {with(kIdentity, {{12, 10}}), kLow, kHigh, {0x20FA0A05u}, {0x20FF0A05u}},
        {with(kIdentity, {{12, 10}}), kLow, kHigh, {0x20100A05u}, {0x201A0A05u}},
        // 0.99999 and 1.00001 become 65535 and 65536: 0 and 1; blue from red
        // is (255 x 32768 + 32768) >> 16 = 128.
        {with({}, {{12, 0.99999f}, {13, 1.00001f}, {14, 0.5f}, {2, 0.5f}}),
         kLow,
         kHigh,
         {0xFFFF0000u},
         {0xFF000180u}},
        {kIdentity, kLow, kHigh, kPixels, kPixels},
        // A lower bound wins over a lower upper bound.
        {kIdentity, {0, 100, 0}, {255, 50, 255}, {0xFF80C020u}, {0xFF806420u}},
    };
    for (const auto &c : cases) {
        const Image src = canvas(int32_t(c.pixels.size()), 1, c.pixels);
        const Image out{xc_image_new_from_color_transformed_image(src.get(), c.m.data(),
                                                                  c.lower.data(), c.upper.data())};
        EXPECT_EQ(all(out.get()), c.want) << std::hex << c.pixels[0];
        // A new opaque, uncached image with its own pixels.
        EXPECT_EQ(kind(out.get()), (Kind{1, 24, 0, 1}));
        EXPECT_EQ(out->ref, 1);
        EXPECT_NE(out->data, src->data);
    }
}

TEST(ColorTransform, ANullMatrixCopies) {
    const Image src = canvas(3, 2, kPixels);
    const Image out{
        xc_image_new_from_color_transformed_image(src.get(), nullptr, nullptr, nullptr)};
    EXPECT_EQ(all(out.get()), kPixels);
    EXPECT_NE(out->data, src->data);
}

TEST(NewImage, RefusedInputGivesNullAndSaysWhy) {
    const Image src = canvas(10, 10, 0u), empty{xc_image_new()}, sized{xc_image_new()};
    const Image huge{xc_image_new_with_data(20000, 1, nullptr, 1, 0, 0, 0)};
    std::vector<uint16_t> words(4);
    const Image rgb16{xc_image_new_from_data(2, 2, words.data(), 16, 0, 1)};
    sized->width = sized->height = 4;
    const char *kFit = "xc_image_fit_size: bad size", *kRotate = "xc_image_new_from_rotated_image";
    const char *kFitRefused = "xc_image_fit_size: refused size";
    // Rows of 4 bytes where the format's are 40: a copy would read past them.
    const Image short_rows{xc_image_new_with_data(10, 2, words.data(), 0, 0, 1, 4)};
    const char *k32 = "no 32-bit pixels";
    const float *m = kIdentity.data();
    const int32_t *low = kLow.data(), *high = kHigh.data();
    const struct {
        std::function<xc_image *()> call;
        const char *message;
    } cases[] = {
        // Sizes that would divide by zero.
        {[&] { return xc_image_fit_size(src.get(), 0, 10, "matte"); }, kFit},
        {[&] { return xc_image_fit_size(src.get(), 10, 0, "matte"); }, kFit},
        {[&] { return xc_image_fit_size(src.get(), -5, 10, "matte"); }, kFit},
        {[&] { return xc_image_fit_size(empty.get(), 10, 10, "matte"); }, kFit},
        // Sizes whose pixels would fill gigabytes, or not fit int32 at all.
        {[&] { return xc_image_fit_size(src.get(), 23170, 23170, "crop"); }, kFitRefused},
        {[&] { return xc_image_fit_size(src.get(), INT32_MAX, 1, "crop"); }, kFitRefused},
        {[&] { return xc_image_scale_down_xy_2(src.get(), (1 << 30) + 1, (1 << 30) + 1); },
         "xc_image_scale_down_xy_2: refused size 1073741825 x 1073741825"},
        {[&] {
             return xc_image_new_from_color_transformed_image(short_rows.get(), nullptr, low, high);
         },
         "rows too short to copy"},
        {[&] { return xc_image_new_from_rotated_image(sized.get(), 30); }, kRotate},
        {[&] { return xc_image_new_from_rotated_image(huge.get(), 30); }, kRotate},
        {[&] { return xc_image_new_from_color_transformed_image(rgb16.get(), m, low, high); }, k32},
        {[&] { return xc_image_new_from_color_transformed_image(empty.get(), m, low, high); }, k32},
        {[&] { return xc_image_scale_down_2x(empty.get()); }, "xc_image_scale_down_2x: no pixels"},
        {[&] { return xc_image_scale_down_4x(nullptr); }, ""},
        {[&] { return xc_image_scale_down_xy_2(src.get(), 0, 3); },
         "xc_image_scale_down_xy_2: bad size 0 x 3"},
    };
    for (const auto &c : cases) {
        testing::internal::CaptureStdout();
        const Image out{c.call()};
        const std::string printed = testing::internal::GetCapturedStdout();
        EXPECT_EQ(out, nullptr) << c.message;
        EXPECT_NE(printed.find(c.message), std::string::npos) << c.message;
    }
}

}  // namespace

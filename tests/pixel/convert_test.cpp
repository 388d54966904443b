// The display converters against the model: traversal, skips, dither phase,
// then the worked examples, exhaustive sweeps and relations between calls.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "fbcompose/pixel.h"
#include "harness.hpp"
#include "model.hpp"

namespace {

using pixel_test::kGuard;
using pixel_test::RandomPixels;
using pixel_test::same_pixels;

struct Converter {
    const char *name;
    xc_convert_func function;
    int depth;
    int rotation;
};

const Converter kConverters[] = {
    {"rgba_to_16", xc_convert_rgba_to_16, 16, 0},
    {"rgba_to_16_90", xc_convert_rgba_to_16_90, 16, 90},
    {"rgba_to_16_270", xc_convert_rgba_to_16_270, 16, 270},
    {"rgba_to_18", xc_convert_rgba_to_18, 18, 0},
    {"rgba_to_18_90", xc_convert_rgba_to_18_90, 18, 90},
    {"rgba_to_18_270", xc_convert_rgba_to_18_270, 18, 270},
    {"rgba_to_32", xc_convert_rgba_to_32, 32, 0},
    {"rgba_to_32_90", xc_convert_rgba_to_32_90, 32, 90},
    {"rgba_to_32_270", xc_convert_rgba_to_32_270, 32, 270},
};

[[maybe_unused]] void PrintTo(const Converter &c, std::ostream *os) { *os << c.name; }

// A source rectangle and the output layout a converter gives it.
struct Shape {
    int width, height, src_skip, dst_skip;
    int out_width(int rotation) const { return std::max(rotation ? height : width, 0); }
    int out_height(int rotation) const { return std::max(rotation ? width : height, 0); }
    size_t dst_size(int rotation) const {
        return size_t(out_height(rotation)) * size_t(out_width(rotation) + dst_skip) + kGuard;
    }
};

// Runs `c` over a random source and checks every output pixel and guard.
template <class Out>
void check_convert(const Converter &c, RandomPixels &rnd, const Shape &s, int dither_x,
                   int dither_y) {
    const int stride = s.width + s.src_skip, out_stride = s.out_width(c.rotation) + s.dst_skip;
    const auto src = rnd.words(size_t(std::max(s.height, 0)) * size_t(std::max(stride, 0)) + 1, false);
    std::vector<Out> dst(s.dst_size(c.rotation));
    for (auto &d : dst) d = static_cast<Out>(rnd.word(false));
    std::vector<Out> want = dst;
    for (int j = 0; j < s.out_height(c.rotation); ++j) {
        for (int i = 0; i < s.out_width(c.rotation); ++i) {
            const model::Point p = model::source_of(i, j, s.width, s.height, c.rotation);
            const int t = model::threshold(i, j, dither_x, dither_y);
            want[size_t(j * out_stride + i)] =
                static_cast<Out>(model::panel_pixel(src[size_t(p.y * stride + p.x)], c.depth, t));
        }
    }
    c.function(src.data(), dst.data(), s.src_skip, s.dst_skip, s.width, s.height, dither_x,
               dither_y);
    EXPECT_TRUE(same_pixels(want, dst)) << s.width << "x" << s.height << ", skips " << s.src_skip
                                        << "/" << s.dst_skip << ", phase " << dither_x << ","
                                        << dither_y;
}

class Convert : public testing::TestWithParam<Converter> {};

TEST_P(Convert, EqualsTheModel) {
    const Converter &c = GetParam();
    RandomPixels rnd(11);
    std::vector<Shape> shapes = {{5, 0, 0, 0}, {-1, 3, 0, 0}, {3, -2, 1, 1}, {17, 17, 2, 3}};
    for (int width : {0, 1, 3, 8, 17, 1000})
        for (int height : {1, 3})
            for (int skip : {0, 3}) shapes.push_back({width, height, skip, 2 - skip / 3 * 2});
    for (const Shape &s : shapes) {
        for (auto [dx, dy] : {std::pair{0, 0}, {1, 0}, {2, 3}, {-1, 7}}) {
            if (c.depth == 16) check_convert<uint16_t>(c, rnd, s, dx, dy);
            else check_convert<uint32_t>(c, rnd, s, dx, dy);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Converter, Convert, testing::ValuesIn(kConverters),
                         [](const auto &test) { return std::string(test.param.name); });

// One pixel at dither phase (dither_x, dither_y): the model and the converter must agree with `want`.
TEST(Convert, WorkedExamples) {
    struct Row {
        xc_convert_func function;
        int depth;
        int dither_x, dither_y;
        uint32_t src, want;
    };
    const Row rows[] = {
        {xc_convert_rgba_to_16, 16, 0, 0, 0x00070000, 0x0821},    // 7 >= 0, and 0 >= 0
        {xc_convert_rgba_to_16, 16, 3, 0, 0x00070000, 1u << 11},  // entry 15: 7 >= 7
        {xc_convert_rgba_to_16, 16, 3, 0, 0x00060000, 0},         // 6 < 7
        {xc_convert_rgba_to_16, 16, 1, 0, 0x00050000, 0},         // phase (1, 0) is entry 12
        {xc_convert_rgba_to_16, 16, 0, 0, 0x00000000, 0x0821},    // threshold 0 lifts even 0
        {xc_convert_rgba_to_16, 16, 0, 2, 0x00000000, 0x0020},    // entry 2: only green lifts
        {xc_convert_rgba_to_18, 18, 3, 0, 0x00030303, 0x01041},
        {xc_convert_rgba_to_18, 18, 3, 0, 0x00020202, 0},
        {xc_convert_rgba_to_32, 32, 0, 0, 0x12345678, 0x12345678},
    };
    for (const Row &r : rows) {
        const int t = model::threshold(0, 0, r.dither_x, r.dither_y);
        EXPECT_EQ(model::panel_pixel(r.src, r.depth, t), r.want) << std::hex << r.src;
        uint32_t out = 0xDEADBEEF;
        r.function(&r.src, &out, 0, 0, 1, 1, r.dither_x, r.dither_y);
        if (r.depth == 16) out &= 0xFFFF;  // little-endian: the 565 word is the low half
        EXPECT_EQ(out, r.want) << std::hex << r.src;
    }
}

TEST(Convert, FullChannelsStayFullAtEveryEntry) {
    const std::vector<uint32_t> white(16, 0x00FFFFFF);
    std::vector<uint16_t> out16(16);
    std::vector<uint32_t> out18(16);
    xc_convert_rgba_to_16(white.data(), out16.data(), 0, 0, 4, 4, 0, 0);
    xc_convert_rgba_to_18(white.data(), out18.data(), 0, 0, 4, 4, 0, 0);
    EXPECT_TRUE(same_pixels(std::vector<uint16_t>(16, 0xFFFF), out16));
    EXPECT_TRUE(same_pixels(std::vector<uint32_t>(16, 0x3FFFF), out18));
}

// Every grey level at every matrix entry: row y of the source holds level y / 4.
TEST(ConvertExhaustive, EveryLevelAtEveryThreshold) {
    std::vector<uint32_t> src(4 * 1024);
    for (size_t p = 0; p < src.size(); ++p) src[p] = uint32_t(p / 16) * 0x010101u;
    for (int depth : {16, 18}) {
        std::vector<uint32_t> want(src.size()), got(src.size());
        for (size_t p = 0; p < src.size(); ++p)
            want[p] = model::panel_pixel(src[p], depth, model::threshold(p % 4, p / 4, 0, 0));
        if (depth == 18) {
            xc_convert_rgba_to_18(src.data(), got.data(), 0, 0, 4, 1024, 0, 0);
        } else {
            std::vector<uint16_t> out(src.size());
            xc_convert_rgba_to_16(src.data(), out.data(), 0, 0, 4, 1024, 0, 0);
            std::copy(out.begin(), out.end(), got.begin());
        }
        EXPECT_TRUE(same_pixels(want, got)) << depth;
    }
}

// Converting the output's left part and then its right part, with the phase
// moved by the part's width, gives the same pixels as one pass.
TEST(ConvertRelations, TwoPartsWithShiftedPhaseEqualOnePass) {
    RandomPixels rnd(5);
    const int w = 13, h = 9, src_skip = 2, dst_skip = 1, dx = 3, dy = 1;
    const auto src = rnd.words(size_t(h * (w + src_skip)), false);
    for (const Converter &c : kConverters) {
        if (c.depth == 32) continue;
        const int out_w = c.rotation ? h : w, out_h = c.rotation ? w : h, k = 5;
        std::vector<uint32_t> whole(size_t(out_h * (out_w + dst_skip))), parts = whole;
        std::vector<uint16_t> whole16(whole.size()), parts16(whole.size());
        void *whole_out = c.depth == 16 ? static_cast<void *>(whole16.data()) : whole.data();
        c.function(src.data(), whole_out, src_skip, dst_skip, w, h, dx, dy);
        // The source part behind output columns [0, k), then the rest.
        const uint32_t *first = src.data(), *second = src.data() + k;
        int first_w = k, first_h = h, second_w = w - k, second_h = h;
        if (c.rotation) {
            first_w = second_w = w;
            first_h = k;
            second_h = h - k;
            const int first_row = c.rotation == 90 ? h - k : 0;
            first = src.data() + first_row * (w + src_skip);
            second = src.data() + (c.rotation == 90 ? 0 : k) * (w + src_skip);
        }
        const int parts_skip = dst_skip + out_w;
        char *base = c.depth == 16 ? reinterpret_cast<char *>(parts16.data())
                                   : reinterpret_cast<char *>(parts.data());
        const int bytes = c.depth == 16 ? 2 : 4;
        c.function(first, base, src_skip + (w - first_w), parts_skip - k, first_w, first_h, dx, dy);
        c.function(second, base + k * bytes, src_skip + (w - second_w), parts_skip - (out_w - k),
                   second_w, second_h, dx + k, dy);
        EXPECT_TRUE(same_pixels(whole, parts)) << c.name;
        EXPECT_TRUE(same_pixels(whole16, parts16)) << c.name;
    }
}

TEST(ConvertRelations, Rotating90Then270GivesTheOriginal) {
    RandomPixels rnd(9);
    const int w = 7, h = 5;
    const auto src = rnd.words(size_t(w * h), false);
    std::vector<uint32_t> turned(src.size()), back(src.size());
    xc_convert_rgba_to_32_90(src.data(), turned.data(), 0, 0, w, h, 0, 0);
    xc_convert_rgba_to_32_270(turned.data(), back.data(), 0, 0, h, w, 0, 0);
    EXPECT_TRUE(same_pixels(src, back));
    EXPECT_FALSE(same_pixels(src, turned));
    xc_convert_rgba_to_32_270(src.data(), turned.data(), 0, 0, w, h, 0, 0);
    xc_convert_rgba_to_32_90(turned.data(), back.data(), 0, 0, h, w, 0, 0);
    EXPECT_TRUE(same_pixels(src, back));
}

TEST(ConvertSelect, DepthAndRotationTable) {
    for (const Converter &c : kConverters)
        EXPECT_EQ(xc_get_convert_func(123, -4, c.depth, c.rotation), c.function) << c.name;
}

TEST(ConvertSelect, RefusalNamesTheDepth) {
    struct Row {
        int depth, rotation;
    };
    for (const Row &r : {Row{24, 0}, Row{16, 180}, Row{32, -90}, Row{0, 0}, Row{18, 360}}) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(xc_get_convert_func(0, 0, r.depth, r.rotation), nullptr);
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  "****fatal**** xc_get_convert_func: failed depth = " + std::to_string(r.depth) +
                      "\n");
    }
}

// Row lengths, not skips; lead and guard around each row stay untouched.
TEST(Convert16, CopiesAndWidensRowsByRowLength) {
    RandomPixels rnd(3);
    for (auto [w, h] : {std::pair{0, 3}, {3, 0}, {-2, 2}, {1, 1}, {17, 3}, {1000, 2}}) {
        const int src_row = std::max(w, 0) + 3, dst_row = std::max(w, 0) + 2;
        const auto src = rnd.halfwords(size_t(std::max(h, 0) * src_row));
        std::vector<uint16_t> copy(size_t(std::max(h, 0) * dst_row) + kGuard, 0xAAAA);
        std::vector<uint32_t> wide(copy.size(), 0xAAAAAAAA);
        auto want_copy = copy;
        auto want_wide = wide;
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                const uint32_t v = src[size_t(y * src_row + x)];
                want_copy[size_t(y * dst_row + x)] = uint16_t(v);
                want_wide[size_t(y * dst_row + x)] =
                    (v >> 11) * 2 << 12 | ((v >> 5) & 63) << 6 | (v & 31) * 2;
            }
        }
        xc_convert_16_to_16(src.data(), copy.data(), src_row, dst_row, w, h);
        xc_convert_16_to_18(src.data(), wide.data(), src_row, dst_row, w, h);
        EXPECT_TRUE(same_pixels(want_copy, copy)) << w << "x" << h;
        EXPECT_TRUE(same_pixels(want_wide, wide)) << w << "x" << h;
    }
}

TEST(Convert16, WidensEveryWord) {
    std::vector<uint16_t> words(65536);
    std::vector<uint32_t> wide(65536), want(65536);
    for (uint32_t v = 0; v < 65536; ++v) {
        words[v] = uint16_t(v);
        want[v] = (v >> 11) * 2 << 12 | ((v >> 5) & 63) << 6 | (v & 31) * 2;
    }
    xc_convert_16_to_18(words.data(), wide.data(), 65536, 65536, 65536, 1);
    EXPECT_TRUE(same_pixels(want, wide));
    EXPECT_EQ(wide[0xFFFF], 0x3EFFEu);
}

}  // namespace

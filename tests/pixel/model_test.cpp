// Every span primitive and display converter against the per-pixel model:
// random runs over many counts, offsets, skips, dither phases and rotations,
// exhaustive sweeps where the inputs are few, and relations between calls.
#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>
#include <variant>

#include "fbcompose/pixel.h"
#include "harness.hpp"
#include "model.hpp"

namespace {

using namespace pixel_test;
using namespace model;
using enum DstAlpha;

// One pixel's inputs: the source is a colour, texture or RGB565 word; t is the dither threshold.
struct In { uint32_t color = 0, src = 0, cov = 0; int t = 0; };

// A function's kind is its signature.
using Function = std::variant<xc_fill_func, xc_draw_func, xc_alpha_func, xc_alpha_texture_func,
                              xc_convert_func>;

struct Row {
    const char *name;
    Function function;
    uint32_t (*model)(const In &, uint32_t dst);
    int src_bits = 32, dst_bits = 32, rotation = 0;
};

// A function, its model for one pixel `in` over destination `d`, then any 16-bit runs and rotation.
#define ROW(f, value, ...) \
    {#f, f, [](const In &in, [[maybe_unused]] uint32_t d) -> uint32_t { return value; }, __VA_ARGS__}

// The 565 converters take row lengths; as xc_convert_func they take skips.
template <class Out, void (*F)(const uint16_t *, Out *, int32_t, int32_t, int32_t, int32_t)>
void by_skips(const void *src, void *dst, int32_t src_skip, int32_t dst_skip, int32_t w,
              int32_t h, int32_t, int32_t) {
    F(static_cast<const uint16_t *>(src), static_cast<Out *>(dst), w + src_skip, w + dst_skip, w, h);
}
constexpr xc_convert_func xc_convert_16_to_16_by_skips = by_skips<uint16_t, xc_convert_16_to_16>;
constexpr xc_convert_func xc_convert_16_to_18_by_skips = by_skips<uint32_t, xc_convert_16_to_18>;

const Row kRows[] = {
    ROW(xc_blend_color_rgba_to_rgb, fill_blend(in.color, d, kKept)),
    ROW(xc_blend_color_rgba_to_rgba, fill_blend(in.color, d, kBlended)),
    ROW(xc_copy_color_rgba_to_rgba, in.color),
    ROW(xc_copy_color_rgb_to_rgba, in.color | 0xFF000000u),
    ROW(xc_blend_pixels_rgba_to_rgb, over(in.src, d, kKept)),
    ROW(xc_blend_pixels_rgba_to_rgba, over(in.src, d, kBlended)),
    ROW(xc_copy_pixels_rgba_to_rgba, in.src),
    ROW(xc_copy_pixels_rgb_to_rgba, in.src | 0xFF000000u),
    ROW(xc_copy_pixels_rgba_to_16, to_565(in.src), 32, 16),
    ROW(xc_copy_pixels_16_to_rgb, from_565(in.src), 16),
    ROW(xc_copy_pixels_16_to_16, in.src, 16, 16),
    ROW(xc_blend_alpha_color_rgba_to_rgb, coverage(in.cov, in.color, d, kKept)),
    ROW(xc_blend_alpha_color_rgba_to_rgba, coverage(in.cov, in.color, d, kBlended)),
    ROW(xc_blend_alpha_texture_rgba_to_rgb, coverage(in.cov, in.src, d, kKept)),
    ROW(xc_blend_alpha_texture_rgba_to_rgba, coverage(in.cov, in.src, d, kBlended)),
    ROW(xc_blend_pixels_mul_color_rgba_to_rgb, modulate(in.src, in.color, d, true, kKept)),
    ROW(xc_blend_pixels_mul_color_rgba_to_rgba, modulate(in.src, in.color, d, true, kBlended)),
    ROW(xc_blend_pixels_mul_color_rgb_to_rgb, modulate(in.src, in.color, d, false, kKept)),
    ROW(xc_blend_pixels_mul_color_rgb_to_rgba, modulate(in.src, in.color, d, false, kBlended)),
    ROW(xc_convert_rgba_to_16, panel_pixel(in.src, 16, in.t), 32, 16),
    ROW(xc_convert_rgba_to_16_90, panel_pixel(in.src, 16, in.t), 32, 16, 90),
    ROW(xc_convert_rgba_to_16_270, panel_pixel(in.src, 16, in.t), 32, 16, 270),
    ROW(xc_convert_rgba_to_18, panel_pixel(in.src, 18, in.t)),
    ROW(xc_convert_rgba_to_18_90, panel_pixel(in.src, 18, in.t), 32, 32, 90),
    ROW(xc_convert_rgba_to_18_270, panel_pixel(in.src, 18, in.t), 32, 32, 270),
    ROW(xc_convert_rgba_to_32, in.src),
    ROW(xc_convert_rgba_to_32_90, in.src, 32, 32, 90),
    ROW(xc_convert_rgba_to_32_270, in.src, 32, 32, 270),
    ROW(xc_convert_16_to_16_by_skips, in.src, 16, 16),
    ROW(xc_convert_16_to_18_by_skips, from_565_to_666(in.src), 16),
};

// A source rectangle and its row skips; a span is one row of `width` pixels.
struct Shape { int width, height, src_skip, dst_skip; };

void call(const Row &r, const void *src, const uint8_t *cov, uint32_t color, void *dst,
          const Shape &s, int dx, int dy) {
    const int32_t n = s.width;
    const auto *tex = static_cast<const uint32_t *>(src);
    if (auto *f = std::get_if<xc_fill_func>(&r.function)) (*f)(color, dst, n);
    if (auto *f = std::get_if<xc_draw_func>(&r.function)) (*f)(src, dst, n, color);
    if (auto *f = std::get_if<xc_alpha_func>(&r.function)) (*f)(cov, dst, n, color);
    if (auto *f = std::get_if<xc_alpha_texture_func>(&r.function)) (*f)(cov, dst, n, tex);
    if (auto *f = std::get_if<xc_convert_func>(&r.function))
        (*f)(src, dst, s.src_skip, s.dst_skip, n, s.height, dx, dy);
}

// One call on random sources `at` pixels in and a random destination `lead`
// pixels in: every output pixel is the model's, lead and guard stay put.
template <class Src, class Dst>
void check(const Row &r, std::mt19937 &rng, const Shape &s, size_t lead, bool premultiplied,
           uint32_t color, int dx, int dy) {
    const int out_w = std::max(r.rotation ? s.height : s.width, 0);
    const int out_h = std::max(r.rotation ? s.width : s.height, 0);
    const int stride = s.width + s.src_skip, out_stride = out_w + s.dst_skip;
    const size_t at = 3 - lead, n = at + size_t(std::max(s.height * stride, 0)) + 1;
    auto dst = random_words<Dst>(rng, lead + size_t(out_h * out_stride) + kGuard, premultiplied);
    const auto src = random_words<Src>(rng, n, premultiplied && sizeof(Src) == 4);
    const auto cov = random_words<uint8_t>(rng, n, false, 24);
    auto want = dst;
    for (int j = 0; j < out_h; ++j) {
        for (int i = 0; i < out_w; ++i) {
            const Point p = source_of(i, j, s.width, s.height, r.rotation);
            const size_t from = at + size_t(p.y * stride + p.x), to = lead + size_t(j * out_stride + i);
            want[to] = Dst(r.model({color, src[from], cov[from], threshold(i, j, dx, dy)}, dst[to]));
        }
    }
    call(r, src.data() + at, cov.data() + at, color, dst.data() + lead, s, dx, dy);
    EXPECT_TRUE(same_pixels(want, dst)) << s.width << "x" << s.height << ", skips " << s.src_skip
                                        << "/" << s.dst_skip << ", lead " << lead << ", phase " << dx
                                        << "," << dy << std::hex << ", colour 0x" << color;
}

[[maybe_unused]] void PrintTo(const Row &r, std::ostream *os) { *os << r.name; }

class Model : public testing::TestWithParam<Row> {};

TEST_P(Model, EqualsTheFunctionOnRandomInputs) {
    const Row &r = GetParam();
    const auto check_run = r.src_bits == 16 ? (r.dst_bits == 16 ? check<uint16_t, uint16_t>
                                                                : check<uint16_t, uint32_t>)
                                            : (r.dst_bits == 16 ? check<uint32_t, uint16_t>
                                                                : check<uint32_t, uint32_t>);
    const bool span = !std::holds_alternative<xc_convert_func>(r.function);
    std::mt19937 rng(7);
    std::vector<uint32_t> colors = {0, 0xFFFFFFFF, 0x80FFFFFF, 0x00FFFFFF, 0xFE00FF80, 0xFF123456};
    for (int i = 0; i < 4; ++i) colors.push_back(random_word(rng, i % 2));
    std::vector<Shape> shapes = {{-5, 1, 0, 0}, {5, 0, 0, 0}, {3, -2, 1, 1}, {17, 17, 2, 3}};
    for (int width : {0, 1, 3, 8, 17, 1000})
        for (int height : {1, 3})
            for (int skip : {0, 3}) shapes.push_back({width, height, skip, 2 - skip / 3 * 2});
    const std::pair<int, int> phases[] = {{0, 0}, {1, 0}, {2, 3}, {-1, 7}};
    for (const Shape &s : shapes) {
        // A span is one row; dither phase and colour mean nothing to the converters.
        if (span && (s.height != 1 || s.src_skip != 0)) continue;
        for (size_t lead = 0; lead < 4; ++lead)
            for (bool premultiplied : {false, true})
                for (size_t i = 0; i < (span ? colors.size() : 4); ++i)
                    check_run(r, rng, s, lead, premultiplied, colors[i], phases[i % 4].first,
                              phases[i % 4].second);
    }
}

INSTANTIATE_TEST_SUITE_P(Row, Model, testing::ValuesIn(kRows),
                         [](const auto &test) { return std::string(test.param.name); });

// Blue, green and red carry one (source, destination) channel pair and the
// alpha byte the destination value: all 2^16 pairs, for every source alpha.
TEST(Exhaustive, SourceOverEveryAlphaAndChannelPair) {
    std::vector<uint32_t> src(65536), dst(65536), want(65536);
    for (const Row &r : kRows) {
        if (!std::string_view(r.name).starts_with("xc_blend_pixels_rgba_to_rgb")) continue;
        for (uint32_t a = 0; a < 256; ++a) {
            for (uint32_t pair = 0; pair < 65536; ++pair) {
                src[pair] = a << 24 | (pair >> 8) * 0x010101u;
                dst[pair] = (pair & 255) * 0x01010101u;
                want[pair] = r.model({.src = src[pair]}, dst[pair]);
            }
            call(r, src.data(), nullptr, 0, dst.data(), {65536, 1, 0, 0}, 0, 0);
            ASSERT_TRUE(same_pixels(want, dst)) << r.name << ", alpha " << a;
        }
    }
}

// Every RGB565 word widens to 32 and 18 bits as the model says, and packs back unchanged.
TEST(Exhaustive, EveryRgb565Word) {
    std::vector<uint16_t> words(65536), back(65536);
    std::vector<uint32_t> wide(65536), want(65536), wide18(65536), want18(65536);
    for (uint32_t v = 0; v < 65536; ++v) {
        words[v] = uint16_t(v);
        want[v] = from_565(v);
        want18[v] = from_565_to_666(v);
    }
    xc_copy_pixels_16_to_rgb(words.data(), wide.data(), 65536, 0);
    xc_copy_pixels_rgba_to_16(wide.data(), back.data(), 65536, 0);
    xc_convert_16_to_18(words.data(), wide18.data(), 65536, 65536, 65536, 1);
    EXPECT_TRUE(same_pixels(want, wide));
    EXPECT_TRUE(same_pixels(words, back));
    EXPECT_TRUE(same_pixels(want18, wide18));
}

// Every grey level at every matrix entry: row y of the source holds level y / 4.
TEST(Exhaustive, EveryLevelAtEveryThreshold) {
    std::vector<uint32_t> src(4 * 1024), want16(src.size()), want18(src.size()), got18(src.size());
    std::vector<uint16_t> got16(src.size());
    for (size_t p = 0; p < src.size(); ++p) {
        src[p] = uint32_t(p / 16) * 0x010101u;
        want16[p] = panel_pixel(src[p], 16, threshold(p % 4, p / 4, 0, 0));
        want18[p] = panel_pixel(src[p], 18, threshold(p % 4, p / 4, 0, 0));
    }
    xc_convert_rgba_to_16(src.data(), got16.data(), 0, 0, 4, 1024, 0, 0);
    xc_convert_rgba_to_18(src.data(), got18.data(), 0, 0, 4, 1024, 0, 0);
    EXPECT_TRUE(same_pixels(want16, std::vector<uint32_t>(got16.begin(), got16.end())));
    EXPECT_TRUE(same_pixels(want18, got18));
}

// Converting the output's left part and then its right part, with the phase
// moved by the part's width, gives the same pixels as one pass.
TEST(Relations, TwoPartsWithShiftedPhaseEqualOnePass) {
    const int w = 13, h = 9, src_skip = 2, dst_skip = 1, stride = w + src_skip, dx = 3, dy = 1;
    std::mt19937 rng(5);
    const auto src = random_words(rng, size_t(h * stride));
    for (const Row &r : kRows) {
        if (!std::string_view(r.name).starts_with("xc_convert_rgba_to_1")) continue;  // 16 and 18
        const int out_w = r.rotation ? h : w, out_h = r.rotation ? w : h;
        std::vector<uint32_t> whole(size_t(out_h * (out_w + dst_skip))), parts = whole;
        call(r, src.data(), nullptr, 0, whole.data(), {w, h, src_skip, dst_skip}, dx, dy);
        // Output columns [from, from + n) come from source columns, or rows when rotated.
        const auto convert_part = [&](int from, int n) {
            const int first = r.rotation == 90 ? h - from - n : from;
            const uint32_t *part = src.data() + (r.rotation ? first * stride : from);
            const Shape s = r.rotation ? Shape{w, n, src_skip, dst_skip + out_w - n}
                                       : Shape{n, h, src_skip + w - n, dst_skip + out_w - n};
            char *out = reinterpret_cast<char *>(parts.data()) + from * r.dst_bits / 8;
            call(r, part, nullptr, 0, out, s, dx + from, dy);
        };
        convert_part(0, 5);
        convert_part(5, out_w - 5);
        EXPECT_TRUE(same_pixels(whole, parts)) << r.name;
    }
}

TEST(Relations, Rotating90Then270GivesTheOriginal) {
    std::mt19937 rng(9);
    const auto src = random_words(rng, 7 * 5);
    std::vector<uint32_t> turned(src.size()), back(src.size());
    const xc_convert_func turns[2][2] = {{xc_convert_rgba_to_32_90, xc_convert_rgba_to_32_270},
                                         {xc_convert_rgba_to_32_270, xc_convert_rgba_to_32_90}};
    for (const auto &turn : turns) {
        turn[0](src.data(), turned.data(), 0, 0, 7, 5, 0, 0);
        turn[1](turned.data(), back.data(), 0, 0, 5, 7, 0, 0);
        EXPECT_FALSE(same_pixels(src, turned));
        EXPECT_TRUE(same_pixels(src, back));
    }
}

}  // namespace

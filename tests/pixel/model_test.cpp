// Every span primitive and display converter against the per-pixel model:
// random runs over many counts, offsets, skips, dither phases and rotations,
// exhaustive sweeps where the inputs are few, and relations between calls.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string_view>
#include <variant>
#include <vector>

#include "fbcompose/pixel.h"
#include "model.hpp"

namespace {

using namespace model;
using enum DstAlpha;

// Alpha is 0, 1, 128, 254 or 255 half of the time; channels may be premultiplied by it.
uint32_t random_word(std::mt19937 &rng, bool premultiplied = false) {
    static constexpr uint32_t kEdges[] = {0, 1, 128, 254, 255};
    const uint32_t pick = rng() % 10, a = pick < 5 ? kEdges[pick] : rng() & 255;
    uint32_t out = a << 24;
    for (int shift = 0; shift < 24; shift += 8)
        out |= (rng() & 255) * (premultiplied ? a : 256) / 256 << shift;
    return out;
}

// 16- or 32-bit pixels, or with `shift` 24 coverage bytes where none and full are common.
template <class T = uint32_t>
std::vector<T> random_words(std::mt19937 &rng, size_t n, bool premultiplied = false,
                            int shift = 0) {
    std::vector<T> out(n);
    for (auto &w : out) w = static_cast<T>(random_word(rng, premultiplied) >> shift);
    return out;
}

template <class T>
testing::AssertionResult same_pixels(const std::vector<T> &want, const std::vector<T> &got) {
    const auto [w, g] = std::mismatch(want.begin(), want.end(), got.begin(), got.end());
    if (w == want.end() && g == got.end()) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "pixel " << w - want.begin() << std::hex << ": want 0x"
                                       << uint32_t(*w) << ", got 0x" << uint32_t(*g);
}

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
#define ROW(f, value, ...)                                                                  \
    {#f, f, [](const In &in, [[maybe_unused]] uint32_t d) -> uint32_t { return value; }, \
     __VA_ARGS__}

// The 565 converters take row lengths; as xc_convert_func they take skips.
template <class Out, void (*F)(const uint16_t *, Out *, int32_t, int32_t, int32_t, int32_t)>
void by_skips(const void *src, void *dst, int32_t src_skip, int32_t dst_skip, int32_t w,
              int32_t h, int32_t, int32_t) {
    F(static_cast<const uint16_t *>(src), static_cast<Out *>(dst), w + src_skip, w + dst_skip, w,
      h);
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

const Row &row(std::string_view name) {
    return *std::find_if(std::begin(kRows), std::end(kRows),
                         [&](const Row &r) { return r.name == name; });
}

// A source rectangle and its row skips; a span is one row of `width` pixels.
struct Shape {
    int width, height, src_skip, dst_skip;
    int out_w(int rotation) const { return std::max(rotation ? height : width, 0); }
    int out_h(int rotation) const { return std::max(rotation ? width : height, 0); }
};

// One call: sources read from `at`, the destination written from `lead`.
struct Call { size_t at = 0, lead = 0; uint32_t color = 0; int dx = 0, dy = 0; };

void call(const Row &r, const Shape &s, const Call &c, const void *src, const uint8_t *cov,
          void *dst) {
    const auto *tex = static_cast<const uint32_t *>(src);
    if (auto *f = std::get_if<xc_fill_func>(&r.function)) (*f)(c.color, dst, s.width);
    if (auto *f = std::get_if<xc_draw_func>(&r.function)) (*f)(src, dst, s.width, c.color);
    if (auto *f = std::get_if<xc_alpha_func>(&r.function)) (*f)(cov, dst, s.width, c.color);
    if (auto *f = std::get_if<xc_alpha_texture_func>(&r.function)) (*f)(cov, dst, s.width, tex);
    if (auto *f = std::get_if<xc_convert_func>(&r.function))
        (*f)(src, dst, s.src_skip, s.dst_skip, s.width, s.height, c.dx, c.dy);
}

// Runs `r` once: every output pixel must be the model's; lead pixels and
// whatever follows the output (guard pixels) stay as they were.
template <class Src, class Dst>
void check(const Row &r, const Shape &s, const Call &c, const std::vector<Src> &src,
           const std::vector<uint8_t> &cov, std::vector<Dst> dst) {
    const int stride = s.width + s.src_skip, out_stride = s.out_w(r.rotation) + s.dst_skip;
    auto want = dst;
    for (int j = 0; j < s.out_h(r.rotation); ++j) {
        for (int i = 0; i < s.out_w(r.rotation); ++i) {
            const Point p = source_of(i, j, s.width, s.height, r.rotation);
            const size_t from = c.at + size_t(p.y * stride + p.x);
            const size_t to = c.lead + size_t(j * out_stride + i);
            const In in{c.color, src[from], from < cov.size() ? cov[from] : 0u,
                        threshold(i, j, c.dx, c.dy)};
            want[to] = Dst(r.model(in, dst[to]));
        }
    }
    call(r, s, c, src.data() + c.at, cov.data() + c.at, dst.data() + c.lead);
    EXPECT_TRUE(same_pixels(want, dst))
        << s.width << "x" << s.height << " skips " << s.src_skip << "/" << s.dst_skip << " lead "
        << c.lead << " phase " << c.dx << "," << c.dy << std::hex << " colour " << c.color;
}

// Random sources and destinations over every shape, lead, colour and phase;
// a span is one row, and colour and phase mean nothing to a converter.
template <class Src, class Dst>
void check_random(const Row &r) {
    const bool span = !std::holds_alternative<xc_convert_func>(r.function);
    const uint32_t colors[] = {0,          0xFFFFFFFF, 0x80FFFFFF, 0x00FFFFFF, 0xFE00FF80,
                               0xFF123456, 0x7F808080, 0x40302010, 0xC0FFFFFF, 0x01FF0000};
    const int phases[4][2] = {{0, 0}, {1, 0}, {2, 3}, {-1, 7}};
    std::vector<Shape> shapes = {{-5, 1, 0, 0}, {5, 0, 0, 0}, {3, -2, 1, 1}, {17, 17, 2, 3}};
    for (int width : {0, 1, 3, 8, 17, 1000})
        for (int height : {1, 3})
            for (int skip : {0, 3}) shapes.push_back({width, height, skip, 2 - skip / 3 * 2});
    std::mt19937 rng(7);
    for (const Shape &s : shapes) {
        if (span && (s.height != 1 || s.src_skip != 0)) continue;
        const size_t n = 4 + size_t(std::max(s.height * (s.width + s.src_skip), 0));
        const size_t out = 3 + size_t(s.out_h(r.rotation) * (s.out_w(r.rotation) + s.dst_skip)) + 8;
        for (size_t lead = 0; lead < 4; ++lead)
            for (bool premultiplied : {false, true})
                for (size_t i = 0; i < (span ? std::size(colors) : 4); ++i) {
                    const auto src = random_words<Src>(rng, n, premultiplied && sizeof(Src) == 4);
                    const auto cov = random_words<uint8_t>(rng, n, false, 24);
                    const auto dst = random_words<Dst>(rng, out, premultiplied);
                    const Call c{3 - lead, lead, colors[i], phases[i % 4][0], phases[i % 4][1]};
                    check(r, s, c, src, cov, dst);
                }
    }
}

[[maybe_unused]] void PrintTo(const Row &r, std::ostream *os) { *os << r.name; }

class Model : public testing::TestWithParam<Row> {};

TEST_P(Model, EqualsTheFunctionOnRandomInputs) {
    const Row &r = GetParam();
    if (r.src_bits == 16 && r.dst_bits == 16) check_random<uint16_t, uint16_t>(r);
    if (r.src_bits == 16 && r.dst_bits == 32) check_random<uint16_t, uint32_t>(r);
    if (r.src_bits == 32 && r.dst_bits == 16) check_random<uint32_t, uint16_t>(r);
    if (r.src_bits == 32 && r.dst_bits == 32) check_random<uint32_t, uint32_t>(r);
}

INSTANTIATE_TEST_SUITE_P(Row, Model, testing::ValuesIn(kRows),
                         [](const auto &test) { return std::string(test.param.name); });

// Blue, green and red carry one (source, destination) channel pair and the
// alpha byte the destination value: all 2^16 pairs, for every source alpha.
TEST(Exhaustive, SourceOverEveryAlphaAndChannelPair) {
    std::vector<uint32_t> src(65536), dst(65536);
    for (uint32_t pair = 0; pair < 65536; ++pair) dst[pair] = (pair & 255) * 0x01010101u;
    for (uint32_t a = 0; a < 256; ++a) {
        for (uint32_t pair = 0; pair < 65536; ++pair) src[pair] = a << 24 | (pair >> 8) * 0x010101u;
        check(row("xc_blend_pixels_rgba_to_rgb"), {65536, 1, 0, 0}, {}, src, {}, dst);
        check(row("xc_blend_pixels_rgba_to_rgba"), {65536, 1, 0, 0}, {}, src, {}, dst);
    }
}

// Every RGB565 word widens to 32 and 18 bits as the model says, and packs back unchanged.
TEST(Exhaustive, EveryRgb565Word) {
    std::vector<uint16_t> words(65536), back(65536);
    std::vector<uint32_t> wide(65536);
    for (uint32_t v = 0; v < 65536; ++v) words[v] = uint16_t(v);
    check(row("xc_copy_pixels_16_to_rgb"), {65536, 1, 0, 0}, {}, words, {}, wide);
    check(row("xc_convert_16_to_18_by_skips"), {65536, 1, 0, 0}, {}, words, {}, wide);
    xc_copy_pixels_16_to_rgb(words.data(), wide.data(), 65536, 0);
    xc_copy_pixels_rgba_to_16(wide.data(), back.data(), 65536, 0);
    EXPECT_TRUE(same_pixels(words, back));
}

// Every grey level at every matrix entry: row y of the source holds level y / 4.
TEST(Exhaustive, EveryLevelAtEveryThreshold) {
    std::vector<uint32_t> src(4 * 1024);
    for (size_t p = 0; p < src.size(); ++p) src[p] = uint32_t(p / 16) * 0x010101u;
    check(row("xc_convert_rgba_to_16"), {4, 1024, 0, 0}, {}, src, {}, std::vector<uint16_t>(4096));
    check(row("xc_convert_rgba_to_18"), {4, 1024, 0, 0}, {}, src, {}, std::vector<uint32_t>(4096));
}

// Converting the output's left part and then its right part, with the phase
// moved by the part's width, gives the same pixels as one pass.
TEST(Relations, TwoPartsWithShiftedPhaseEqualOnePass) {
    const int w = 13, h = 9, src_skip = 2, dst_skip = 1, stride = w + src_skip;
    std::mt19937 rng(5);
    const auto src = random_words(rng, size_t(h * stride));
    for (const Row &r : kRows) {
        if (!std::string_view(r.name).starts_with("xc_convert_rgba_to_1")) continue;  // 16 and 18
        const int out_w = r.rotation ? h : w, out_h = r.rotation ? w : h;
        std::vector<uint32_t> whole(size_t(out_h * (out_w + dst_skip))), parts = whole;
        call(r, {w, h, src_skip, dst_skip}, {.dx = 3, .dy = 1}, src.data(), nullptr, whole.data());
        // Output columns [from, from + n) come from source columns, or rows when rotated.
        const auto convert_part = [&](int from, int n) {
            const int first = r.rotation == 90 ? h - from - n : from;
            const uint32_t *part = src.data() + (r.rotation ? first * stride : from);
            const Shape s = r.rotation ? Shape{w, n, src_skip, dst_skip + out_w - n}
                                       : Shape{n, h, src_skip + w - n, dst_skip + out_w - n};
            char *out = reinterpret_cast<char *>(parts.data()) + from * r.dst_bits / 8;
            call(r, s, {.dx = 3 + from, .dy = 1}, part, nullptr, out);
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
    xc_convert_rgba_to_32_90(src.data(), turned.data(), 0, 0, 7, 5, 0, 0);
    xc_convert_rgba_to_32_270(turned.data(), back.data(), 0, 0, 5, 7, 0, 0);
    EXPECT_FALSE(same_pixels(src, turned));
    EXPECT_TRUE(same_pixels(src, back));
}

}  // namespace

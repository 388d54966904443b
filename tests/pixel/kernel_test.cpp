// Every kernel of the tables, its reference and each variant this CPU runs,
// against the per-pixel model and so against each other: exhaustively where
// the inputs are few, over every count from 0 to 70 at each start offset with
// guard words around the run, at every dither phase and rotation. Relations
// between calls (round trips, pieces against the whole) follow from the model.
// The scalers' row passes, which have no per-pixel model, against their
// reference; that reference is pinned by the seeded scaled-output hashes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "fbcompose/pixel.h"
#include "model.hpp"
#include "pixel/kernel_table.hpp"
#include "pixel/scale_rows.hpp"
#include "seeded.hpp"

namespace {

using namespace model;
using enum DstAlpha;

// One pixel's inputs: the source is a colour, texture or RGB565 word; t is the dither threshold.
struct In {
    uint32_t color = 0, src = 0, cov = 0;
    int t = 0;
};

// What a kernel does to one pixel over destination `d`, and the shape of its runs.
struct Model {
    const char *name;
    uint32_t (*pixel)(const In &, uint32_t d);
    int src_bits = 32, dst_bits = 32, rotation = 0;
};

// clang-format off
#define MODEL(f, value, ...) \
    {#f, [](const In &in, [[maybe_unused]] uint32_t d) -> uint32_t { return value; }, __VA_ARGS__}
// clang-format on

const Model kModels[] = {
    MODEL(xc_blend_color_rgba_to_rgb, fill_blend(in.color, d, kKept)),
    MODEL(xc_blend_color_rgba_to_rgba, fill_blend(in.color, d, kBlended)),
    MODEL(xc_copy_color_rgba_to_rgba, in.color),
    MODEL(xc_copy_color_rgb_to_rgba, in.color | 0xFF000000u),
    MODEL(xc_blend_pixels_rgba_to_rgb, over(in.src, d, kKept)),
    MODEL(xc_blend_pixels_rgba_to_rgba, over(in.src, d, kBlended)),
    MODEL(xc_copy_pixels_rgba_to_rgba, in.src),
    MODEL(xc_copy_pixels_rgb_to_rgba, in.src | 0xFF000000u),
    MODEL(xc_copy_pixels_rgba_to_16, to_565(in.src), 32, 16),
    MODEL(xc_copy_pixels_16_to_rgb, from_565(in.src), 16),
    MODEL(xc_copy_pixels_16_to_16, in.src, 16, 16),
    MODEL(xc_blend_alpha_color_rgba_to_rgb, coverage(in.cov, in.color, d, kKept)),
    MODEL(xc_blend_alpha_color_rgba_to_rgba, coverage(in.cov, in.color, d, kBlended)),
    MODEL(xc_blend_alpha_texture_rgba_to_rgb, coverage(in.cov, in.src, d, kKept)),
    MODEL(xc_blend_alpha_texture_rgba_to_rgba, coverage(in.cov, in.src, d, kBlended)),
    MODEL(xc_blend_pixels_mul_color_rgba_to_rgb, modulate(in.src, in.color, d, true, kKept)),
    MODEL(xc_blend_pixels_mul_color_rgba_to_rgba, modulate(in.src, in.color, d, true, kBlended)),
    MODEL(xc_blend_pixels_mul_color_rgb_to_rgb, modulate(in.src, in.color, d, false, kKept)),
    MODEL(xc_blend_pixels_mul_color_rgb_to_rgba, modulate(in.src, in.color, d, false, kBlended)),
    MODEL(xc_convert_rgba_to_16, panel_pixel(in.src, 16, in.t), 32, 16),
    MODEL(xc_convert_rgba_to_16_90, panel_pixel(in.src, 16, in.t), 32, 16, 90),
    MODEL(xc_convert_rgba_to_16_270, panel_pixel(in.src, 16, in.t), 32, 16, 270),
    MODEL(xc_convert_rgba_to_18, panel_pixel(in.src, 18, in.t)),
    MODEL(xc_convert_rgba_to_18_90, panel_pixel(in.src, 18, in.t), 32, 32, 90),
    MODEL(xc_convert_rgba_to_18_270, panel_pixel(in.src, 18, in.t), 32, 32, 270),
    MODEL(xc_convert_rgba_to_32, in.src),
    MODEL(xc_convert_rgba_to_32_90, in.src, 32, 32, 90),
    MODEL(xc_convert_rgba_to_32_270, in.src, 32, 32, 270),
    MODEL(xc_convert_16_to_16, in.src, 16, 16),
    MODEL(xc_convert_16_to_18, from_565_to_666(in.src), 16),
};

// A kernel's kind is its signature.
using Function =
    std::variant<xc_fill_func, xc_draw_func, xc_alpha_func, xc_alpha_texture_func, xc_convert_func>;

// The two 16-bit converters are not in the tables: they take row lengths,
// and as xc_convert_func they take skips.
template <class Out, void (*F)(const uint16_t *, Out *, int32_t, int32_t, int32_t, int32_t)>
void by_skips(const void *src, void *dst, int32_t src_skip, int32_t dst_skip, int32_t w, int32_t h,
              int32_t, int32_t) {
    F(static_cast<const uint16_t *>(src), static_cast<Out *>(dst), w + src_skip, w + dst_skip, w,
      h);
}

// A reference or a variant, by name.
struct Candidate {
    std::string name;
    Function run;
};

// One kernel: its family, its model, and every version of it this CPU runs.
struct Case {
    std::string family, name;
    Model model;
    std::vector<Candidate> candidates;
    bool span() const { return family != "convert"; }
};

// Calls run(name, function) for each variant this CPU runs and names the rest.
template <class Fn, class Run>
void each_variant(const fbc::px::Kernel<Fn> &kernel, Run run) {
    for (const auto &v : kernel.variants) {
        if (v.run && fbc::px::cpu_has(v.isa)) run(v.name, v.run);
        else if (v.run) std::printf("not run here: %s, %s\n", v.name, fbc::px::isa_name(v.isa));
    }
}

// Every row of every family, then the two converters outside the tables.
std::vector<Case> all_cases() {
    std::vector<Case> out;
    const auto add = [&](std::string_view family, std::string_view name, Function reference) {
        const auto *m = std::find_if(std::begin(kModels), std::end(kModels),
                                     [&](const Model &r) { return r.name == name; });
        Case &k = out.emplace_back(std::string(family), std::string(name),
                                   m == std::end(kModels) ? Model{} : *m);
        k.candidates.push_back({"reference", reference});
        return &k;
    };
    fbc::px::for_each_family([&](const auto &family) {
        for (const auto &kernel : family.kernels) {
            Case *k = add(family.name, kernel.name, kernel.reference);
            each_variant(kernel, [&](const char *name, auto run) {
                k->candidates.push_back({name, run});
            });
        }
    });
    add("convert", "xc_convert_16_to_16", by_skips<uint16_t, xc_convert_16_to_16>);
    add("convert", "xc_convert_16_to_18", by_skips<uint32_t, xc_convert_16_to_18>);
    return out;
}

// Runs begin at a 32-byte boundary plus the offset under test.
template <class T>
struct Aligned {
    using value_type = T;
    T *allocate(size_t n) { return static_cast<T *>(::operator new(n * sizeof(T), kAlign)); }
    void deallocate(T *p, size_t) { ::operator delete(p, kAlign); }
    static constexpr std::align_val_t kAlign{32};
};
template <class T>
using Buffer = std::vector<T, Aligned<T>>;

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
Buffer<T> random_words(std::mt19937 &rng, size_t n, bool premultiplied = false, int shift = 0) {
    Buffer<T> out(n);
    for (auto &w : out) w = static_cast<T>(random_word(rng, premultiplied) >> shift);
    return out;
}

// A source rectangle and its row skips; a span is one row of `width` pixels.
struct Shape {
    int width, height = 1, src_skip = 0, dst_skip = 0;
    int out_w(int rotation) const { return std::max(rotation ? height : width, 0); }
    int out_h(int rotation) const { return std::max(rotation ? width : height, 0); }
};

// One call: sources read from `at`, the destination written from `lead`.
struct Call {
    size_t at = 0, lead = 0;
    uint32_t color = 0;
    int dx = 0, dy = 0;
};

void call(const Function &f, const Shape &s, const Call &c, const void *src, const uint8_t *cov,
          void *dst) {
    const auto *tex = static_cast<const uint32_t *>(src);
    if (auto *k = std::get_if<xc_fill_func>(&f)) (*k)(c.color, dst, s.width);
    if (auto *k = std::get_if<xc_draw_func>(&f)) (*k)(src, dst, s.width, c.color);
    if (auto *k = std::get_if<xc_alpha_func>(&f)) (*k)(cov, dst, s.width, c.color);
    if (auto *k = std::get_if<xc_alpha_texture_func>(&f)) (*k)(cov, dst, s.width, tex);
    if (auto *k = std::get_if<xc_convert_func>(&f))
        (*k)(src, dst, s.src_skip, s.dst_skip, s.width, s.height, c.dx, c.dy);
}

// Runs every candidate once on a copy of `dst`: each output pixel must be
// the model's, and the lead and the guard words after the output must stay.
template <class Src, class Dst>
void check(const Case &k, const Shape &s, const Call &c, const Buffer<Src> &src,
           const Buffer<uint8_t> &cov, const Buffer<Dst> &dst) {
    const int rotation = k.model.rotation;
    const int stride = s.width + s.src_skip, out_stride = s.out_w(rotation) + s.dst_skip;
    Buffer<Dst> want = dst, got(dst.size());
    for (int j = 0; j < s.out_h(rotation); ++j) {
        for (int i = 0; i < s.out_w(rotation); ++i) {
            const Point p = source_of(i, j, s.width, s.height, rotation);
            const size_t from = c.at + size_t(p.y * stride + p.x);
            const size_t to = c.lead + size_t(j * out_stride + i);
            const In in{c.color, src[from], from < cov.size() ? cov[from] : 0u,
                        threshold(i, j, c.dx, c.dy)};
            want[to] = Dst(k.model.pixel(in, dst[to]));
        }
    }
    for (const Candidate &candidate : k.candidates) {
        std::copy(dst.begin(), dst.end(), got.begin());
        call(candidate.run, s, c, src.data() + c.at, cov.data() + c.at, got.data() + c.lead);
        const auto [w, g] = std::mismatch(want.begin(), want.end(), got.begin());
        ASSERT_TRUE(w == want.end())
            << candidate.name << ", " << s.width << "x" << s.height << " skips " << s.src_skip
            << "/" << s.dst_skip << " at " << c.at << " lead " << c.lead << " phase " << c.dx << ","
            << c.dy << ": pixel " << w - want.begin() << std::hex << " want 0x" << *w << ", got 0x"
            << *g << " colour 0x" << c.color;
    }
}

constexpr uint32_t kColors[] = {0,          0xFFFFFFFF, 0x80FFFFFF, 0x00FFFFFF, 0xFE00FF80,
                                0xFF123456, 0x7F808080, 0x40302010, 0xC0FFFFFF, 0x01FF0000};
constexpr size_t kGuard = 4;

// Spans: every count from -1 to 70, source and destination each at every
// offset 0 to 3. Converters: every width from -1 to 70 at heights 1 and 3
// (and now and then 0, -1, or 17 and 21, which turn into whole blocks of
// 4 or 8 and a rest), every dither phase, skips 0 to 2 and the offsets.
// Random contents, premultiplied or not.
template <class Src, class Dst>
void every_count_and_offset(const Case &k) {
    std::mt19937 rng(7);
    for (int count = -1; count <= 70; ++count) {
        for (int variation = 0; variation < 32; ++variation) {
            const int phase = variation & 15, half = variation >> 4;
            const int height = phase == 15 ? -half : phase == 14 ? 17 + half * 4 : 1 + half * 2;
            const Shape s =
                k.span() ? Shape{count} : Shape{count, height, phase % 3, phase / 3 % 3};
            const Call c{size_t(phase & 3), size_t(phase >> 2), kColors[variation % 10],
                         (phase & 3) - half * 5, (phase >> 2) + half * 6};
            const int rotation = k.model.rotation;
            const int in_words = std::max(s.height * (s.width + s.src_skip), 0);
            const int out_words = s.out_h(rotation) * (s.out_w(rotation) + s.dst_skip);
            const size_t n = c.at + size_t(in_words) + kGuard;
            const size_t out = c.lead + size_t(out_words) + kGuard;
            const bool premultiplied = half;
            check(k, s, c, random_words<Src>(rng, n, premultiplied && sizeof(Src) == 4),
                  random_words<uint8_t>(rng, n, false, 24),
                  random_words<Dst>(rng, out, premultiplied));
            if (testing::Test::HasFatalFailure()) return;
        }
    }
}

// One call of the channel-pair sweep: alpha `a` and source channels `grey`
// for every call, `other` for a pass. What alpha means follows the family:
// the fill colour's, the source pixel's, the coverage (with a colour or
// texture alpha per pass), or the modulating colour's (with a source alpha
// and a tint, white or not, per pass).
In pair_inputs(std::string_view family, uint32_t other, uint32_t a, uint32_t grey) {
    if (family == "fill") return {.color = a << 24 | grey};
    if (family == "draw") return {.src = a << 24 | grey};
    if (family == "mul draw") return {a << 24 | (other & 0xFFFFFFu), (other & 0xFF000000u) | grey};
    return {other << 24 | grey, other << 24 | grey, a};  // alpha, alpha texture
}

std::vector<uint32_t> passes(std::string_view family) {
    if (family == "mul draw") return {0xFFFFFFFF, 0x808040C0, 0xC8FFFFFF, 0x01FF00FF, 0x0030A0FF};
    if (family == "alpha" || family == "alpha texture") return {255, 200, 128, 1};
    return {0};
}

// Every (source, destination) channel pair at every alpha: blue, green and
// red carry the pair, the alpha byte the destination value. 16-bit sources
// instead take every RGB565 word.
template <class Src, class Dst>
void every_pair_at_every_alpha(const Case &k) {
    Buffer<Src> src(256);
    Buffer<uint8_t> cov(256);
    Buffer<Dst> dst(256 + kGuard);
    for (uint32_t d = 0; d < 256; ++d) dst[d] = Dst(d * 0x01010101u);
    if (k.model.src_bits == 16) {
        for (uint32_t hi = 0; hi < 256; ++hi) {
            for (uint32_t lo = 0; lo < 256; ++lo) src[lo] = Src(hi << 8 | lo);
            check(k, {256}, {}, src, cov, dst);
        }
        return;
    }
    // Emulated and sanitized builds sample the alphas, edges included, to stay quick.
#if defined(__arm__) || defined(__SANITIZE_ADDRESS__)
    const auto sampled = [](uint32_t a) { return a % 16 == 0 || a % 127 <= 1 || a >= 254; };
#else
    const auto sampled = [](uint32_t) { return true; };
#endif
    for (uint32_t other : passes(k.family)) {
        for (uint32_t a = 0; a < 256; ++a) {
            if (!sampled(a)) continue;
            for (uint32_t s = 0; s < 256; ++s) {
                const In in = pair_inputs(k.family, other, a, s * 0x010101u);
                std::fill(src.begin(), src.end(), Src(in.src));
                std::fill(cov.begin(), cov.end(), uint8_t(in.cov));
                check(k, {256}, {.color = in.color}, src, cov, dst);
                if (testing::Test::HasFatalFailure()) return;
            }
        }
    }
}

// Converters: every grey level at every matrix entry, in every rotation:
// row y of the source holds level y / 4.
template <class Dst>
void every_level_at_every_threshold(const Case &k) {
    Buffer<uint32_t> src(12 * 1024);
    for (size_t p = 0; p < src.size(); ++p) src[p] = uint32_t(p / 48) * 0x010101u;
    check(k, {12, 1024}, {}, src, {}, Buffer<Dst>(src.size()));
}

// Calls test(Src{}, Dst{}) with the pixel types of the case's runs.
template <class Test>
void with_pixel_types(const Model &m, Test test) {
    if (m.src_bits == 16 && m.dst_bits == 16) test(uint16_t{}, uint16_t{});
    if (m.src_bits == 16 && m.dst_bits == 32) test(uint16_t{}, uint32_t{});
    if (m.src_bits == 32 && m.dst_bits == 16) test(uint32_t{}, uint16_t{});
    if (m.src_bits == 32 && m.dst_bits == 32) test(uint32_t{}, uint32_t{});
}

[[maybe_unused]] void PrintTo(const Case &k, std::ostream *os) { *os << k.name; }

class Kernels : public testing::TestWithParam<Case> {};

TEST_P(Kernels, EveryVersionEqualsTheModel) {
    const Case &k = GetParam();
    ASSERT_TRUE(k.model.pixel) << "no model for " << k.name;
    with_pixel_types(k.model, [&](auto src, auto dst) {
        using Src = decltype(src);
        using Dst = decltype(dst);
        every_count_and_offset<Src, Dst>(k);
        if (k.span()) every_pair_at_every_alpha<Src, Dst>(k);
        else if (k.model.src_bits == 32) every_level_at_every_threshold<Dst>(k);
    });
}

INSTANTIATE_TEST_SUITE_P(Table, Kernels, testing::ValuesIn(all_cases()),
                         [](const auto &test) { return test.param.name; });

// Rows of 0 to 70 words at weights on both sides of half and at the ends,
// taps anywhere in the row with the next word or the same one.
TEST(ScaleRows, EveryVariantEqualsTheReference) {
    static constexpr uint32_t kWeights[] = {0, 1, 255, 256, 32767, 32768, 32769, 65280, 65535};
    test::Rng rng(11);
    for (int32_t n = 0; n <= 70; ++n)
        for (int trial = 0; trial < 4; ++trial) {
            Buffer<uint32_t> top(size_t(n) + 1), bottom(top.size()), row(size_t(n) + 2);
            for (auto *words : {&top, &bottom, &row})
                for (uint32_t &v : *words) v = rng.word();
            const uint32_t f = trial < 3 ? kWeights[rng.below(9)] : uint32_t(rng.below(65536));
            std::vector<fbc::px::WordTap> taps;
            for (int32_t i = 0; i < n; ++i) {
                const int32_t at = rng.below(int32_t(row.size()) - 1);
                taps.push_back(
                    {at, at + rng.below(2), uint32_t(rng.below(2) ? rng.below(65536) : f)});
            }
            Buffer<uint32_t> want(size_t(n) + 1, 7), got;
            fbc::px::kLerpRows.reference(top.data(), bottom.data(), want.data(), n, f);
            each_variant(fbc::px::kLerpRows, [&](const char *name, auto run) {
                got.assign(want.size(), 7);
                run(top.data(), bottom.data(), got.data(), n, f);
                EXPECT_EQ(got, want) << name << " n " << n << " f " << f;
            });
            fbc::px::kLerpWords.reference(row.data(), taps.data(), want.data(), n);
            each_variant(fbc::px::kLerpWords, [&](const char *name, auto run) {
                got.assign(want.size(), 7);
                run(row.data(), taps.data(), got.data(), n);
                EXPECT_EQ(got, want) << name << " n " << n;
            });
        }
}

// Nearest rows enlarging, reducing, on one column and with remainders near
// 2^31, from offset starts: every kernel reads the columns the division
// names, from a row whose pixels are their own column numbers; blending
// them over equals gathering them and then blending.
TEST(ScaleRows, EveryNearestKernelReadsTheDividedColumns) {
    test::Rng rng(13);
    for (int32_t n = 0; n <= 70; ++n)
        for (int trial = 0; trial < 4; ++trial) {
            const int64_t wide = INT32_MAX - 1;
            const int64_t den = trial == 3 ? wide : rng.between(0, 90);
            const int64_t num = trial == 3 ? wide - rng.between(1, 3) : rng.between(0, 200);
            const int64_t x0 = rng.between(0, 40);
            const int32_t base = rng.between(0, 5);
            const auto column = [&](int64_t i) { return den ? base + (x0 + i) * num / den : base; };
            Buffer<uint32_t> words(size_t(column(n)) + 1), want(size_t(n) + 1, 7), got;
            for (size_t k = 0; k < words.size(); ++k) words[k] = uint32_t(k);
            for (int32_t i = 0; i < n; ++i) want[size_t(i)] = uint32_t(column(i));
            const std::vector<uint16_t> halves(words.begin(), words.end());
            const std::vector<uint16_t> want16(want.begin(), want.end());
            const auto walk = fbc::px::column_walk(x0, num, den, base);
            const auto check = [&](const char *name, auto run) {
                got.assign(want.size(), 7);
                run(words.data(), walk, got.data(), n);
                EXPECT_EQ(got, want) << name << " n " << n << " " << num << "/" << den;
            };
            const auto check16 = [&](const char *name, auto run) {
                std::vector<uint16_t> got16(want16.size(), 7);
                run(halves.data(), walk, got16.data(), n);
                EXPECT_EQ(got16, want16) << name << " n " << n << " " << num << "/" << den;
            };
            check("reference", fbc::px::kNearestWords.reference);
            each_variant(fbc::px::kNearestWords, check);
            check16("reference", fbc::px::kNearestHalfwords.reference);
            each_variant(fbc::px::kNearestHalfwords, check16);
            // Blending the sampled pixels over equals gathering them, then
            // the span function: runs of clear, opaque and mixed artwork.
            Buffer<uint32_t> art(words.size()), gathered(want.size()), under(want.size());
            for (size_t k = 0; k < art.size(); ++k)
                art[k] = k / 8 % 3 == 0   ? rng.word() & 0xFFFFFF
                         : k / 8 % 3 == 1 ? rng.word() | 0xFF000000
                                          : rng.color();
            for (uint32_t &v : under) v = rng.word();
            fbc::px::kNearestWords.reference(art.data(), walk, gathered.data(), n);
            for (auto [kernel, span] :
                 {std::pair{&fbc::px::kNearestOverRgb, &xc_blend_pixels_rgba_to_rgb},
                  std::pair{&fbc::px::kNearestOverRgba, &xc_blend_pixels_rgba_to_rgba}}) {
                want.assign(under.begin(), under.end());
                span(gathered.data(), want.data(), n, 0);
                const auto check_over = [&](const char *name, auto run) {
                    got.assign(under.begin(), under.end());
                    run(art.data(), walk, got.data(), n);
                    EXPECT_EQ(got, want) << name << " over, n " << n << " " << num << "/" << den;
                };
                check_over("reference", kernel->reference);
                each_variant(*kernel, check_over);
            }
        }
}

// Box rows of 1 to 9 rows at counts that fill 16-bit totals to the brim and
// one past, over full and random words.
TEST(ScaleRows, EveryBoxVariantEqualsTheReference) {
    test::Rng rng(12);
    for (int trial = 0; trial < 300; ++trial) {
        const int32_t rows = rng.between(1, 9), n = rng.between(0, 9), width = 320;
        const int32_t brim = 257 / rows;  // count x rows at most 257: the widest 16-bit totals
        const int32_t counts[] = {1, 2, 3, 4, 5, brim, brim + 1, rng.between(1, 300)};
        std::vector<fbc::px::BoxTap> taps;
        for (int32_t i = 0; i < n; ++i) {
            const int32_t count = std::min(counts[rng.below(8)], width);
            const int32_t first = rng.below(width - count + 1);
            taps.push_back({first, count, fbc::px::Divider(uint32_t(count * rows))});
        }
        const intptr_t stride = 4 * (width + rng.below(3));
        Buffer<uint32_t> source(size_t(stride / 4 * rows));
        const bool full = trial % 3 == 0;
        for (uint32_t &v : source) v = full ? 0xFFFFFFFFu : rng.word();
        Buffer<uint32_t> want(size_t(n) + 1, 7), got;
        fbc::px::kBoxRow.reference(source.data(), stride, rows, taps.data(), want.data(), n);
        each_variant(fbc::px::kBoxRow, [&](const char *name, auto run) {
            got.assign(want.size(), 7);
            run(source.data(), stride, rows, taps.data(), got.data(), n);
            EXPECT_EQ(got, want) << name << " rows " << rows << " trial " << trial;
        });
    }
}

}  // namespace

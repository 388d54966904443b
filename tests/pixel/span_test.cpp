// Every span primitive against the per-pixel model, on random runs of many
// lengths and offsets, plus the worked examples and exhaustive channel sweeps.
#include <gtest/gtest.h>

#include <algorithm>
#include <variant>
#include <vector>

#include "fbcompose/pixel.h"
#include "harness.hpp"
#include "model.hpp"

namespace {

using model::In;
using pixel_test::kGuard;
using pixel_test::RandomPixels;
using pixel_test::same_pixels;
constexpr auto kKept = model::DstAlpha::kKept;
constexpr auto kBlended = model::DstAlpha::kBlended;

using Function = std::variant<xc_fill_func, xc_draw_func, xc_alpha_func, xc_alpha_texture_func>;

struct Primitive {
    const char *name;
    Function function;
    int src_bits;  // of a draw kind's source run
    int dst_bits;
    uint32_t (*model)(const In &, uint32_t dst);
};

const Primitive kPrimitives[] = {
    {"blend_color_rgba_to_rgb", xc_blend_color_rgba_to_rgb, 32, 32,
     [](const In &in, uint32_t d) { return model::fill_blend(in.color, d, kKept); }},
    {"blend_color_rgba_to_rgba", xc_blend_color_rgba_to_rgba, 32, 32,
     [](const In &in, uint32_t d) { return model::fill_blend(in.color, d, kBlended); }},
    {"copy_color_rgba_to_rgba", xc_copy_color_rgba_to_rgba, 32, 32,
     [](const In &in, uint32_t) { return in.color; }},
    {"copy_color_rgb_to_rgba", xc_copy_color_rgb_to_rgba, 32, 32,
     [](const In &in, uint32_t) { return in.color | 0xFF000000u; }},
    {"blend_pixels_rgba_to_rgb", xc_blend_pixels_rgba_to_rgb, 32, 32,
     [](const In &in, uint32_t d) { return model::over(in.src, d, kKept); }},
    {"blend_pixels_rgba_to_rgba", xc_blend_pixels_rgba_to_rgba, 32, 32,
     [](const In &in, uint32_t d) { return model::over(in.src, d, kBlended); }},
    {"copy_pixels_rgba_to_rgba", xc_copy_pixels_rgba_to_rgba, 32, 32,
     [](const In &in, uint32_t) { return in.src; }},
    {"copy_pixels_rgb_to_rgba", xc_copy_pixels_rgb_to_rgba, 32, 32,
     [](const In &in, uint32_t) { return in.src | 0xFF000000u; }},
    {"copy_pixels_rgba_to_16", xc_copy_pixels_rgba_to_16, 32, 16,
     [](const In &in, uint32_t) { return model::to_565(in.src); }},
    {"copy_pixels_16_to_rgb", xc_copy_pixels_16_to_rgb, 16, 32,
     [](const In &in, uint32_t) { return model::from_565(in.src); }},
    {"copy_pixels_16_to_16", xc_copy_pixels_16_to_16, 16, 16,
     [](const In &in, uint32_t) { return in.src; }},
    {"blend_alpha_color_rgba_to_rgb", xc_blend_alpha_color_rgba_to_rgb, 32, 32,
     [](const In &in, uint32_t d) { return model::coverage(in.cov, in.color, d, kKept); }},
    {"blend_alpha_color_rgba_to_rgba", xc_blend_alpha_color_rgba_to_rgba, 32, 32,
     [](const In &in, uint32_t d) { return model::coverage(in.cov, in.color, d, kBlended); }},
    {"blend_alpha_texture_rgba_to_rgb", xc_blend_alpha_texture_rgba_to_rgb, 32, 32,
     [](const In &in, uint32_t d) { return model::coverage(in.cov, in.tex, d, kKept); }},
    {"blend_alpha_texture_rgba_to_rgba", xc_blend_alpha_texture_rgba_to_rgba, 32, 32,
     [](const In &in, uint32_t d) { return model::coverage(in.cov, in.tex, d, kBlended); }},
    {"blend_pixels_mul_color_rgba_to_rgb", xc_blend_pixels_mul_color_rgba_to_rgb, 32, 32,
     [](const In &in, uint32_t d) { return model::modulate(in.src, in.color, d, true, kKept); }},
    {"blend_pixels_mul_color_rgba_to_rgba", xc_blend_pixels_mul_color_rgba_to_rgba, 32, 32,
     [](const In &in, uint32_t d) { return model::modulate(in.src, in.color, d, true, kBlended); }},
    {"blend_pixels_mul_color_rgb_to_rgb", xc_blend_pixels_mul_color_rgb_to_rgb, 32, 32,
     [](const In &in, uint32_t d) { return model::modulate(in.src, in.color, d, false, kKept); }},
    {"blend_pixels_mul_color_rgb_to_rgba", xc_blend_pixels_mul_color_rgb_to_rgba, 32, 32,
     [](const In &in, uint32_t d) { return model::modulate(in.src, in.color, d, false, kBlended); }},
};

// The inputs of one run; each kind reads its own.
struct Sources {
    const void *src;
    const uint8_t *cov;
    const uint32_t *tex;
    uint32_t color;
};

void call(const Function &function, const Sources &in, void *dst, int32_t count) {
    switch (function.index()) {
        case 0: return std::get<0>(function)(in.color, dst, count);
        case 1: return std::get<1>(function)(in.src, dst, count, in.color);
        case 2: return std::get<2>(function)(in.cov, dst, count, in.color);
        default: return std::get<3>(function)(in.cov, dst, count, in.tex);
    }
}

// One run of `count` pixels, `offset` pixels into the destination, sources
// at another offset; the model gives every pixel, lead and guard stay put.
template <class Dst>
void check_run(const Primitive &p, RandomPixels &rnd, int32_t count, size_t offset,
               bool premultiplied, uint32_t color) {
    const size_t n = static_cast<size_t>(std::max(count, 0));
    const size_t src_offset = 3 - offset;
    std::vector<Dst> dst(offset + n + kGuard);
    for (auto &d : dst) d = static_cast<Dst>(rnd.word(premultiplied));
    const auto src32 = rnd.words(src_offset + n, premultiplied);
    const auto src16 = rnd.halfwords(src_offset + n);
    const auto tex = rnd.words(src_offset + n, premultiplied);
    const auto cov = rnd.coverage(src_offset + n);

    std::vector<Dst> want = dst;
    for (size_t i = 0; i < n; ++i) {
        const size_t s = src_offset + i;
        const In in{color, p.src_bits == 16 ? src16[s] : src32[s], cov[s], tex[s]};
        want[offset + i] = static_cast<Dst>(p.model(in, dst[offset + i]));
    }
    const void *src = p.src_bits == 16 ? static_cast<const void *>(src16.data() + src_offset)
                                       : static_cast<const void *>(src32.data() + src_offset);
    call(p.function, {src, cov.data() + src_offset, tex.data() + src_offset, color},
         dst.data() + offset, count);
    EXPECT_TRUE(same_pixels(want, dst)) << "count " << count << ", offset " << offset
                                        << (premultiplied ? ", premultiplied" : "")
                                        << std::hex << ", colour 0x" << color;
}

// Names the primitive in test output instead of dumping its bytes.
[[maybe_unused]] void PrintTo(const Primitive &p, std::ostream *os) { *os << p.name; }

class Span : public testing::TestWithParam<Primitive> {};

TEST_P(Span, EqualsTheModelOnRandomRuns) {
    const Primitive &p = GetParam();
    RandomPixels rnd(7);
    for (bool premultiplied : {false, true}) {
        std::vector<uint32_t> colors = {0x00000000, 0xFFFFFFFF, 0x80FFFFFF, 0x00FFFFFF,
                                        0xFE00FF80, 0xFF123456, 0x7F808080};
        for (int i = 0; i < 4; ++i) colors.push_back(rnd.word(premultiplied));
        for (int32_t count : {-5, 0, 1, 3, 8, 17, 1000}) {
            for (size_t offset = 0; offset < 4; ++offset) {
                for (uint32_t color : colors) {
                    if (p.dst_bits == 16) check_run<uint16_t>(p, rnd, count, offset, premultiplied, color);
                    else check_run<uint32_t>(p, rnd, count, offset, premultiplied, color);
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Primitive, Span, testing::ValuesIn(kPrimitives),
                         [](const auto &test) { return std::string(test.param.name); });

const Primitive &primitive(const char *name) {
    for (const auto &p : kPrimitives)
        if (std::string(p.name) == name) return p;
    throw std::invalid_argument(name);
}

// Worked examples: both the model and the primitive must give `want`.
struct Example {
    const char *primitive;
    In in;
    uint32_t dst;
    uint32_t want;
};

TEST(Span, WorkedExamples) {
    const Example examples[] = {
        // 0x80 + (255 x 127 >> 8) = 254; 0x40 + 126 = 190
        {"blend_pixels_rgba_to_rgba", {.src = 0x80404040}, 0xFFFFFFFF, 0xFEBEBEBE},
        {"blend_pixels_rgba_to_rgba", {.src = 0x00FFFFFF}, 0x12345678, 0x12345678},
        {"blend_pixels_rgba_to_rgb", {.src = 0xFF102030}, 0x00ABCDEF, 0xFF102030},
        {"blend_pixels_rgba_to_rgb", {.src = 0x80404040}, 0x11FFFFFF, 0x11BEBEBE},
        {"blend_alpha_color_rgba_to_rgba", {.color = 0xFFFF0000, .cov = 255}, 0x12345678, 0xFFFF0000},
        // a = 128: red (255 x 128) >> 8, blue (255 x 127) >> 8, alpha 126 + 128
        {"blend_alpha_color_rgba_to_rgba", {.color = 0xFFFF0000, .cov = 128}, 0xFF0000FF, 0xFE7F007E},
        {"blend_alpha_color_rgba_to_rgb", {.color = 0x00FFFFFF, .cov = 255}, 0x12345678, 0x12345678},
        // white colour: a = (255 x 255) >> 8 = 254, not 255
        {"blend_pixels_mul_color_rgba_to_rgba", {.color = 0xFFFFFFFF, .src = 0xFF102030}, 0xFF000000,
         0xFE0F1F2F},
        {"blend_pixels_mul_color_rgb_to_rgba", {.color = 0x80FF0000, .src = 0x00204060}, 0xFF808080,
         0xFE4F3F3F},
        {"copy_pixels_rgba_to_16", {.src = 0x00FFFFFF}, 0, 0xFFFF},
        {"copy_pixels_16_to_rgb", {.src = 0xFFFF}, 0, 0x00F8FCF8},
        {"blend_color_rgba_to_rgba", {.color = 0xFF112233}, 0x44556677, 0xFF112233},
        {"copy_color_rgb_to_rgba", {.color = 0x00123456}, 0, 0xFF123456},
    };
    for (const Example &e : examples) {
        SCOPED_TRACE(e.primitive);
        const Primitive &p = primitive(e.primitive);
        EXPECT_EQ(p.model(e.in, e.dst), e.want);
        const uint16_t src16 = static_cast<uint16_t>(e.in.src);
        const uint8_t cov = static_cast<uint8_t>(e.in.cov);
        const void *src = p.src_bits == 16 ? static_cast<const void *>(&src16) : &e.in.src;
        uint32_t dst32 = e.dst;
        uint16_t dst16 = static_cast<uint16_t>(e.dst);
        void *dst = p.dst_bits == 16 ? static_cast<void *>(&dst16) : &dst32;
        call(p.function, {src, &cov, &e.in.tex, e.in.color}, dst, 1);
        EXPECT_EQ(p.dst_bits == 16 ? dst16 : dst32, e.want);
    }
}

// Blue, green and red carry one (source, destination) channel pair and the
// alpha byte the destination value: all 2^16 pairs, for every source alpha.
TEST(SpanExhaustive, SourceOverEveryAlphaAndChannelPair) {
    std::vector<uint32_t> src(65536), dst(65536);
    for (const char *name : {"blend_pixels_rgba_to_rgba", "blend_pixels_rgba_to_rgb"}) {
        const Primitive &p = primitive(name);
        for (uint32_t a = 0; a < 256; ++a) {
            for (uint32_t pair = 0; pair < 65536; ++pair) {
                src[pair] = a << 24 | (pair >> 8) * 0x010101u;
                dst[pair] = (pair & 255) * 0x01010101u;
            }
            std::vector<uint32_t> want(65536);
            for (uint32_t i = 0; i < 65536; ++i) want[i] = p.model({.src = src[i]}, dst[i]);
            std::get<xc_draw_func>(p.function)(src.data(), dst.data(), 65536, 0);
            ASSERT_TRUE(same_pixels(want, dst)) << name << ", alpha " << a;
        }
    }
}

TEST(SpanExhaustive, Rgb565WordsSurviveUnpackingAndPacking) {
    std::vector<uint16_t> words(65536), back(65536);
    std::vector<uint32_t> wide(65536), want(65536);
    for (uint32_t v = 0; v < 65536; ++v) {
        words[v] = static_cast<uint16_t>(v);
        want[v] = model::from_565(v);
    }
    xc_copy_pixels_16_to_rgb(words.data(), wide.data(), 65536, 0);
    EXPECT_TRUE(same_pixels(want, wide));
    xc_copy_pixels_rgba_to_16(wide.data(), back.data(), 65536, 0);
    EXPECT_TRUE(same_pixels(words, back));
}

}  // namespace

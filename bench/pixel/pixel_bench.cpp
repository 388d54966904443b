// Megapixels per second of every span primitive and panel converter on an
// 800x480 canvas, as a user gets them (the kernel the getters pick on this
// CPU) and as the scalar reference, beside pixman doing the same job on the
// same buffers at its best (its fast paths, pixman_fill and pixman_blt where
// a user would call them). Two contents: icon-like runs of transparent,
// opaque and translucent pixels, and random alpha. One table at the end, of
// the medians of the repetitions.
//
//   pixel_bench [--benchmark_repetitions=N] [--benchmark_filter=REGEX]
#include <benchmark/benchmark.h>
#include <pixman.h>

#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "bench/content.hpp"
#include "fbcompose/pixel.h"
#include "pixel/kernel_table.hpp"
#include "report.hpp"

namespace {

using bench::Canvas;
using bench::Content;
using bench::content_name;
using bench::kContents;
constexpr int kWidth = Canvas::kWidth, kHeight = Canvas::kHeight;
constexpr size_t kPixels = Canvas::kPixels;

Canvas &canvas(Content content) {
    static Canvas icons(Content::kIcons), random(Content::kRandom);
    return content == Content::kIcons ? icons : random;
}

using Run = std::function<void()>;
using Prepare = std::function<Run(Canvas &)>;

// Premultiplied: opaque, and half-transparent.
constexpr uint32_t kOpaqueColor = 0xFF336699, kHalfColor = 0x80193350, kHalfWhite = 0x80FFFFFF;

// Ours: one primitive call per row, as the drawing code makes them.

Prepare fill(xc_fill_func f, uint32_t color) {
    return [=](Canvas &c) -> Run {
        return [&c, f, color] {
            for (int y = 0; y < kHeight; ++y) f(color, &c.dst[size_t(y) * kWidth], kWidth);
        };
    };
}

enum class Src { kWithAlpha, kOpaque, k16 };

Prepare draw(xc_draw_func f, Src src, bool dst16, uint32_t color = 0) {
    return [=](Canvas &c) -> Run {
        return [&c, f, src, dst16, color] {
            for (int y = 0; y < kHeight; ++y) {
                const size_t row = size_t(y) * kWidth;
                const void *s = src == Src::k16       ? static_cast<const void *>(&c.src16[row])
                                : src == Src::kOpaque ? &c.opaque[row]
                                                      : &c.src[row];
                f(s, dst16 ? static_cast<void *>(&c.dst16[row]) : &c.dst[row], kWidth, color);
            }
        };
    };
}

Prepare cover(xc_alpha_func f) {
    return [=](Canvas &c) -> Run {
        return [&c, f] {
            for (size_t row = 0; row < kPixels; row += kWidth)
                f(&c.cov[row], &c.dst[row], kWidth, kOpaqueColor);
        };
    };
}

Prepare cover_texture(xc_alpha_texture_func f) {
    return [=](Canvas &c) -> Run {
        return [&c, f] {
            for (size_t row = 0; row < kPixels; row += kWidth)
                f(&c.cov[row], &c.dst[row], kWidth, &c.tex[row]);
        };
    };
}

// The whole canvas in one call, as for one damaged rectangle the size of the panel.
Prepare convert(xc_convert_func f, bool dst16) {
    return [=](Canvas &c) -> Run {
        void *d = dst16 ? static_cast<void *>(c.dst16.data()) : c.dst.data();
        return [&c, f, d] { f(c.src.data(), d, 0, 0, kWidth, kHeight, 0, 0); };
    };
}

// pixman: images over the same pixels, built before timing.

enum class Pix { kNone, kArgb, kXrgb, kRgb565, kX14rgb666, kSolid, kHalfSolid, kHalfMask, kA8 };

pixman_format_code_t format_of(Pix p) {
    switch (p) {
        case Pix::kXrgb: return PIXMAN_x8r8g8b8;
        case Pix::kRgb565: return PIXMAN_r5g6b5;
        case Pix::kX14rgb666: return PIXMAN_x14r6g6b6;
        case Pix::kA8: return PIXMAN_a8;
        default: return PIXMAN_a8r8g8b8;
    }
}

struct ImageRelease {
    void operator()(pixman_image_t *image) const { pixman_image_unref(image); }
};
using Image = std::shared_ptr<pixman_image_t>;

// A colour word as pixman's 16-bit channels.
pixman_color_t color16(uint32_t word) {
    const auto channel = [&](int shift) { return uint16_t((word >> shift & 0xFF) * 257); };
    return {channel(16), channel(8), channel(0), channel(24)};
}

Image make_image(Canvas &c, Pix p, bool is_dst, int w, int h) {
    if (p == Pix::kNone) return nullptr;
    if (p == Pix::kSolid || p == Pix::kHalfSolid || p == Pix::kHalfMask) {
        const pixman_color_t color = color16(p == Pix::kSolid       ? kOpaqueColor
                                             : p == Pix::kHalfSolid ? kHalfColor
                                                                    : 0x80000000u);
        return Image(pixman_image_create_solid_fill(&color), ImageRelease{});
    }
    const bool narrow = p == Pix::kRgb565;
    void *bits = p == Pix::kA8     ? static_cast<void *>(c.cov.data())
                 : narrow          ? (is_dst ? static_cast<void *>(c.dst16.data()) : c.src16.data())
                 : is_dst          ? static_cast<void *>(c.dst.data())
                 : p == Pix::kXrgb ? c.opaque.data()
                                   : c.src.data();
    const int bpp = PIXMAN_FORMAT_BPP(format_of(p)) / 8;
    return Image(
        pixman_image_create_bits(format_of(p), w, h, static_cast<uint32_t *>(bits), w * bpp),
        ImageRelease{});
}

// Nearest sampling turned by 90 or 270 degrees, the source's w x h into h x w.
void rotate(pixman_image_t *src, int rotation, int w, int h) {
    const pixman_fixed_t one = pixman_fixed_1;
    pixman_transform_t t;
    if (rotation == 90) {  // out(i, j) = src(j, h - 1 - i)
        t = {{{0, one, 0}, {-one, 0, pixman_int_to_fixed(h)}, {0, 0, one}}};
    } else {  // out(i, j) = src(w - 1 - j, i)
        t = {{{0, -one, pixman_int_to_fixed(w)}, {one, 0, 0}, {0, 0, one}}};
    }
    pixman_image_set_transform(src, &t);
    pixman_image_set_filter(src, PIXMAN_FILTER_NEAREST, nullptr, 0);
}

Prepare pixman(pixman_op_t op, Pix src, Pix mask, Pix dst, int rotation = 0) {
    return [=](Canvas &c) -> Run {
        const int out_w = rotation ? kHeight : kWidth, out_h = rotation ? kWidth : kHeight;
        Image s = make_image(c, src, false, kWidth, kHeight);
        Image m = make_image(c, mask, false, kWidth, kHeight);
        Image d = make_image(c, dst, true, out_w, out_h);
        if (rotation) rotate(s.get(), rotation, kWidth, kHeight);
        return [s, m, d, op, out_w, out_h] {
            pixman_image_composite32(op, s.get(), m.get(), d.get(), 0, 0, 0, 0, 0, 0, out_w, out_h);
        };
    };
}

Prepare pixman_fill(uint32_t color) {
    return [=](Canvas &c) -> Run {
        return
            [&c, color] { ::pixman_fill(c.dst.data(), kWidth, 32, 0, 0, kWidth, kHeight, color); };
    };
}

Prepare pixman_blt(int bpp) {
    return [=](Canvas &c) -> Run {
        auto *s = reinterpret_cast<uint32_t *>(bpp == 16 ? static_cast<void *>(c.src16.data())
                                                         : c.src.data());
        auto *d = reinterpret_cast<uint32_t *>(bpp == 16 ? static_cast<void *>(c.dst16.data())
                                                         : c.dst.data());
        const int stride = kWidth * bpp / 32;  // in uint32_t units
        return [=] { ::pixman_blt(s, d, stride, stride, bpp, bpp, 0, 0, 0, 0, kWidth, kHeight); };
    };
}

// The ratio to pixman that each kind of row is meant to reach.
constexpr double kAhead = 1.5, kLevel = 0.9;

// One primitive: how to time it as ours (the pick of its row, what the
// getters hand out on this CPU) and as its reference, and pixman's way to do
// the same job.
struct Op {
    Prepare ours, reference;
    bool has_variant;       // the pick is not the reference
    std::string pick_name;  // the variant's internal name, or "reference"
    const char *name;
    const char *pixman_name;
    Prepare theirs;
    double target;
};

template <class Fn>
Op op(Fn reference, const char *name, const std::function<Prepare(Fn)> &call,
      const char *pixman_name, Prepare theirs, double target) {
    const Fn pick = fbc::px::chosen(reference);
    std::string pick_name = "reference";
    if (const auto *row = fbc::px::find_kernel(reference))
        for (const auto &v : row->variants)
            if (v.run && v.run == pick) pick_name = v.name;
    return {call(pick), call(reference), pick != reference, std::move(pick_name),
            name,       pixman_name,     std::move(theirs), target};
}

#define OP(fn, call, ...) \
    op<decltype(&fn)>(    \
        fn, #fn, [=](decltype(&fn) f) { return call; }, __VA_ARGS__)

std::vector<Op> ops() {
    const auto over = PIXMAN_OP_OVER, copy = PIXMAN_OP_SRC;
    using P = Pix;
    return {
        OP(xc_copy_color_rgba_to_rgba, fill(f, kOpaqueColor), "pixman_fill",
           pixman_fill(kOpaqueColor), kLevel),
        OP(xc_copy_color_rgb_to_rgba, fill(f, kOpaqueColor), "pixman_fill",
           pixman_fill(kOpaqueColor | 0xFF000000u), kLevel),
        OP(xc_blend_color_rgba_to_rgb, fill(f, kHalfColor), "OVER solid -> x8r8g8b8",
           pixman(over, P::kHalfSolid, P::kNone, P::kXrgb), kAhead),
        OP(xc_blend_color_rgba_to_rgba, fill(f, kHalfColor), "OVER solid -> a8r8g8b8",
           pixman(over, P::kHalfSolid, P::kNone, P::kArgb), kAhead),
        OP(xc_blend_pixels_rgba_to_rgb, draw(f, Src::kWithAlpha, false),
           "OVER a8r8g8b8 -> x8r8g8b8", pixman(over, P::kArgb, P::kNone, P::kXrgb), kAhead),
        OP(xc_blend_pixels_rgba_to_rgba, draw(f, Src::kWithAlpha, false),
           "OVER a8r8g8b8 -> a8r8g8b8", pixman(over, P::kArgb, P::kNone, P::kArgb), kAhead),
        OP(xc_copy_pixels_rgba_to_rgba, draw(f, Src::kWithAlpha, false), "pixman_blt 32 bpp",
           pixman_blt(32), kLevel),
        OP(xc_copy_pixels_rgb_to_rgba, draw(f, Src::kOpaque, false), "SRC x8r8g8b8 -> a8r8g8b8",
           pixman(copy, P::kXrgb, P::kNone, P::kArgb), kLevel),
        OP(xc_copy_pixels_rgba_to_16, draw(f, Src::kOpaque, true), "SRC x8r8g8b8 -> r5g6b5",
           pixman(copy, P::kXrgb, P::kNone, P::kRgb565), kLevel),
        OP(xc_copy_pixels_16_to_rgb, draw(f, Src::k16, false), "SRC r5g6b5 -> x8r8g8b8",
           pixman(copy, P::kRgb565, P::kNone, P::kXrgb), kLevel),
        OP(xc_copy_pixels_16_to_16, draw(f, Src::k16, true), "pixman_blt 16 bpp", pixman_blt(16),
           kLevel),
        OP(xc_blend_alpha_color_rgba_to_rgb, cover(f), "OVER solid, a8 mask -> x8r8g8b8",
           pixman(over, P::kSolid, P::kA8, P::kXrgb), kAhead),
        OP(xc_blend_alpha_color_rgba_to_rgba, cover(f), "OVER solid, a8 mask -> a8r8g8b8",
           pixman(over, P::kSolid, P::kA8, P::kArgb), kAhead),
        OP(xc_blend_alpha_texture_rgba_to_rgb, cover_texture(f),
           "OVER a8r8g8b8, a8 mask -> x8r8g8b8", pixman(over, P::kArgb, P::kA8, P::kXrgb), kAhead),
        OP(xc_blend_alpha_texture_rgba_to_rgba, cover_texture(f),
           "OVER a8r8g8b8, a8 mask -> a8r8g8b8", pixman(over, P::kArgb, P::kA8, P::kArgb), kAhead),
        OP(xc_blend_pixels_mul_color_rgba_to_rgb, draw(f, Src::kWithAlpha, false, kHalfWhite),
           "OVER a8r8g8b8, solid mask -> x8r8g8b8", pixman(over, P::kArgb, P::kHalfMask, P::kXrgb),
           kAhead),
        OP(xc_blend_pixels_mul_color_rgba_to_rgba, draw(f, Src::kWithAlpha, false, kHalfWhite),
           "OVER a8r8g8b8, solid mask -> a8r8g8b8", pixman(over, P::kArgb, P::kHalfMask, P::kArgb),
           kAhead),
        OP(xc_blend_pixels_mul_color_rgb_to_rgb, draw(f, Src::kOpaque, false, kHalfColor),
           "OVER x8r8g8b8, solid mask -> x8r8g8b8", pixman(over, P::kXrgb, P::kHalfMask, P::kXrgb),
           kAhead),
        OP(xc_blend_pixels_mul_color_rgb_to_rgba, draw(f, Src::kOpaque, false, kHalfColor),
           "OVER x8r8g8b8, solid mask -> a8r8g8b8", pixman(over, P::kXrgb, P::kHalfMask, P::kArgb),
           kAhead),
        // pixman has no ordered dither on its fast paths: the peer of the
        // dithering converters is its plain truncating conversion.
        OP(xc_convert_rgba_to_16, convert(f, true), "SRC x8r8g8b8 -> r5g6b5",
           pixman(copy, P::kXrgb, P::kNone, P::kRgb565), kAhead),
        OP(xc_convert_rgba_to_16_90, convert(f, true), "SRC x8r8g8b8 rot 90 -> r5g6b5",
           pixman(copy, P::kXrgb, P::kNone, P::kRgb565, 90), kAhead),
        OP(xc_convert_rgba_to_16_270, convert(f, true), "SRC x8r8g8b8 rot 270 -> r5g6b5",
           pixman(copy, P::kXrgb, P::kNone, P::kRgb565, 270), kAhead),
        OP(xc_convert_rgba_to_18, convert(f, false), "SRC x8r8g8b8 -> x14r6g6b6",
           pixman(copy, P::kXrgb, P::kNone, P::kX14rgb666), kAhead),
        OP(xc_convert_rgba_to_18_90, convert(f, false), "SRC x8r8g8b8 rot 90 -> x14r6g6b6",
           pixman(copy, P::kXrgb, P::kNone, P::kX14rgb666, 90), kAhead),
        OP(xc_convert_rgba_to_18_270, convert(f, false), "SRC x8r8g8b8 rot 270 -> x14r6g6b6",
           pixman(copy, P::kXrgb, P::kNone, P::kX14rgb666, 270), kAhead),
        OP(xc_convert_rgba_to_32, convert(f, false), "pixman_blt 32 bpp", pixman_blt(32), kLevel),
        OP(xc_convert_rgba_to_32_90, convert(f, false), "SRC a8r8g8b8 rot 90 -> a8r8g8b8",
           pixman(copy, P::kArgb, P::kNone, P::kArgb, 90), kAhead),
        OP(xc_convert_rgba_to_32_270, convert(f, false), "SRC a8r8g8b8 rot 270 -> a8r8g8b8",
           pixman(copy, P::kArgb, P::kNone, P::kArgb, 270), kAhead),
    };
}

void time_run(benchmark::State &state, Content content, const Prepare &prepare) {
    const Run run = prepare(canvas(content));
    for (auto _ : state) {
        run();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(kPixels));
}

std::string key(const char *who, const Op &op, Content c) {
    return std::string(who) + "/" + op.name + "/" + content_name(c);
}

void print_table(const std::vector<Op> &list, const std::map<std::string, double> &rates) {
    std::printf(
        "\n| primitive | ours | content | ours Mpx/s | pixman, at its best | pixman Mpx/s "
        "| ours / pixman | target | reference Mpx/s | ours / reference |\n");
    std::printf("|---|---|---|---:|---|---:|---:|---:|---:|---:|\n");
    for (const Op &op : list) {
        for (Content c : kContents) {
            const std::string ours = key("ours", op, c), theirs = key("pixman", op, c);
            if (!rates.count(ours)) continue;
            const std::string reference = op.has_variant ? key("reference", op, c) : ours;
            const std::string ratio = bench::ratio(rates, ours, theirs);
            const bool met = ratio != "-" && rates.at(ours) >= op.target * rates.at(theirs);
            std::printf("| %s | %s | %s | %s | %s | %s | %s | %.1f%s | %s | %s |\n", op.name + 3,
                        op.pick_name.c_str(), content_name(c), bench::cell(rates, ours).c_str(),
                        op.pixman_name, bench::cell(rates, theirs).c_str(), ratio.c_str(),
                        op.target, met || ratio == "-" ? "" : " missed",
                        bench::cell(rates, reference).c_str(),
                        bench::ratio(rates, ours, reference).c_str());
        }
    }
}

}  // namespace

int main(int argc, char **argv) {
    // Five repetitions in random order by default: on a shared machine the
    // load moves, and the medians of interleaved runs compare fairly.
    bench::initialize(argc, argv,
                      {"--benchmark_repetitions=5", "--benchmark_enable_random_interleaving=true"});

    const std::vector<Op> list = ops();
    const auto add = [](const std::string &name, Content c, Prepare prepare) {
        benchmark::RegisterBenchmark(
            name.c_str(), [c, prepare](benchmark::State &state) { time_run(state, c, prepare); });
    };
    for (const Op &op : list) {
        for (Content c : kContents) {
            add(key("ours", op, c), c, op.ours);
            if (op.has_variant) add(key("reference", op, c), c, op.reference);
            add(key("pixman", op, c), c, op.theirs);
        }
    }
    bench::Collect collect;
    benchmark::RunSpecifiedBenchmarks(&collect);
    print_table(list, collect.rates);
    benchmark::Shutdown();
    return 0;
}

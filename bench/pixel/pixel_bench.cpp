// Megapixels per second of every span primitive and display converter at
// three panel sizes, beside memcpy/memset of the same destination bytes and
// pixman's nearest equivalent, measured in one run and printed as a table.
//
//   pixel_bench [--benchmark_filter=REGEX] [--benchmark_min_time=SECONDS]
#include <benchmark/benchmark.h>
#include <pixman.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "fbcompose/pixel.h"
#include "report.hpp"

namespace {

struct Size {
    int w, h;
    std::string name() const { return std::to_string(w) + "x" + std::to_string(h); }
};
constexpr Size kSizes[] = {{64, 64}, {800, 480}, {1920, 1080}};

// One size's pixels, shared by our primitives and pixman's images. Sources
// look like UI artwork and glyphs: runs of 1 to 32 pixels that are
// transparent, opaque or partly covered, in equal shares.
struct Canvas {
    explicit Canvas(Size s) : w(s.w), h(s.h), n(size_t(s.w) * size_t(s.h)) {
        std::mt19937 rng(1);
        uint32_t run_left = 0, run_kind = 0;
        auto alpha = [&] {
            if (run_left == 0) run_left = 1 + rng() % 32, run_kind = rng() % 3;
            --run_left;
            return run_kind == 0 ? 0u : run_kind == 1 ? 255u : 1 + rng() % 254;
        };
        auto premultiplied = [&] {
            const uint32_t a = alpha();
            uint32_t word = a << 24;
            for (int shift = 0; shift < 24; shift += 8) word |= ((rng() & 255) * a >> 8) << shift;
            return word;
        };
        src.resize(n), tex.resize(n), opaque.resize(n), dst.resize(n);
        src16.resize(n), dst16.resize(n), cov.resize(n);
        for (size_t i = 0; i < n; ++i) {
            src[i] = premultiplied();
            tex[i] = premultiplied();
            opaque[i] = rng() | 0xFF000000u;
            dst[i] = rng() | 0xFF000000u;
            src16[i] = uint16_t(rng());
            cov[i] = uint8_t(alpha());
        }
    }
    int w, h;
    size_t n;
    std::vector<uint32_t> src, tex, opaque, dst;
    std::vector<uint16_t> src16, dst16;
    std::vector<uint8_t> cov;
};

Canvas &canvas(const Size &s) {
    static std::map<int, std::unique_ptr<Canvas>> canvases;
    auto &c = canvases[s.w];
    if (!c) c = std::make_unique<Canvas>(s);
    return *c;
}

using Run = std::function<void()>;
using Prepare = std::function<Run(Canvas &)>;

constexpr uint32_t kOpaqueColor = 0xFF336699, kHalfColor = 0x80193350, kHalfWhite = 0x80FFFFFF;

// Ours: one primitive call per row, as the drawing code makes them.

Prepare fill(xc_fill_func f, uint32_t color) {
    return [=](Canvas &c) -> Run {
        return [&c, f, color] {
            for (int y = 0; y < c.h; ++y) f(color, c.dst.data() + size_t(y) * c.w, c.w);
        };
    };
}

enum class Bits { k16, k32 };

Prepare draw(xc_draw_func f, Bits src_bits, Bits dst_bits, bool opaque_src, uint32_t color = 0) {
    return [=](Canvas &c) -> Run {
        const std::vector<uint32_t> &src32 = opaque_src ? c.opaque : c.src;
        return [&c, &src32, f, src_bits, dst_bits, color] {
            for (int y = 0; y < c.h; ++y) {
                const size_t row = size_t(y) * c.w;
                const void *s = src_bits == Bits::k16 ? static_cast<const void *>(&c.src16[row])
                                                      : &src32[row];
                void *d = dst_bits == Bits::k16 ? static_cast<void *>(&c.dst16[row]) : &c.dst[row];
                f(s, d, c.w, color);
            }
        };
    };
}

Prepare cover(xc_alpha_func f) {
    return [=](Canvas &c) -> Run {
        return [&c, f] {
            for (int y = 0; y < c.h; ++y) {
                const size_t row = size_t(y) * c.w;
                f(&c.cov[row], &c.dst[row], c.w, kOpaqueColor);
            }
        };
    };
}

Prepare cover_texture(xc_alpha_texture_func f) {
    return [=](Canvas &c) -> Run {
        return [&c, f] {
            for (int y = 0; y < c.h; ++y) {
                const size_t row = size_t(y) * c.w;
                f(&c.cov[row], &c.dst[row], c.w, &c.tex[row]);
            }
        };
    };
}

// The whole canvas in one call, as for one damaged rectangle the size of the panel.
Prepare convert(xc_convert_func f, Bits dst_bits) {
    return [=](Canvas &c) -> Run {
        void *d = dst_bits == Bits::k16 ? static_cast<void *>(c.dst16.data()) : c.dst.data();
        return [&c, f, d] { f(c.src.data(), d, 0, 0, c.w, c.h, 0, 0); };
    };
}

// pixman: images over the same pixels, built before timing.

enum class Pix { kNone, kArgb, kXrgb, kXbgr, kRgb565, kSolid, kHalfMask, kA8 };

pixman_format_code_t format_of(Pix p) {
    switch (p) {
        case Pix::kXrgb: return PIXMAN_x8r8g8b8;
        case Pix::kXbgr: return PIXMAN_x8b8g8r8;
        case Pix::kRgb565: return PIXMAN_r5g6b5;
        case Pix::kA8: return PIXMAN_a8;
        default: return PIXMAN_a8r8g8b8;
    }
}

struct ImageRelease {
    void operator()(pixman_image_t *image) const { pixman_image_unref(image); }
};
using Image = std::shared_ptr<pixman_image_t>;

Image make_image(Canvas &c, Pix p, bool is_dst, int w, int h) {
    if (p == Pix::kNone) return nullptr;
    if (p == Pix::kSolid || p == Pix::kHalfMask) {
        const pixman_color_t color = p == Pix::kSolid ? pixman_color_t{0x3333, 0x6666, 0x9999, 0xFFFF}
                                                      : pixman_color_t{0, 0, 0, 0x8080};
        return Image(pixman_image_create_solid_fill(&color), ImageRelease{});
    }
    void *bits = p == Pix::kA8       ? static_cast<void *>(c.cov.data())
                 : p == Pix::kRgb565 ? (is_dst ? static_cast<void *>(c.dst16.data()) : c.src16.data())
                 : is_dst            ? static_cast<void *>(c.dst.data())
                 : p == Pix::kXrgb || p == Pix::kXbgr ? c.opaque.data()
                                     : c.src.data();
    const int bpp = PIXMAN_FORMAT_BPP(format_of(p)) / 8;
    return Image(pixman_image_create_bits(format_of(p), w, h, static_cast<uint32_t *>(bits), w * bpp),
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

Prepare pixman(pixman_op_t op, Pix src, Pix mask, Pix dst, int rotation = 0, bool dither = false) {
    return [=](Canvas &c) -> Run {
        const int out_w = rotation ? c.h : c.w, out_h = rotation ? c.w : c.h;
        Image s = make_image(c, src, false, c.w, c.h), m = make_image(c, mask, false, c.w, c.h);
        Image d = make_image(c, dst, true, out_w, out_h);
        if (rotation) rotate(s.get(), rotation, c.w, c.h);
        if (dither) pixman_image_set_dither(d.get(), PIXMAN_DITHER_ORDERED_BAYER_8);
        return [s, m, d, op, out_w, out_h] {
            pixman_image_composite32(op, s.get(), m.get(), d.get(), 0, 0, 0, 0, 0, 0, out_w, out_h);
        };
    };
}

Prepare pixman_fill_solid() {
    return [](Canvas &c) -> Run {
        return [&c] { pixman_fill(c.dst.data(), c.w, 32, 0, 0, c.w, c.h, kOpaqueColor); };
    };
}

struct Op {
    const char *name;
    int dst_bytes;  // per pixel, for the memory reference
    bool fill;      // memset is the reference rather than memcpy
    Prepare ours;
    const char *pixman_name = nullptr;
    Prepare theirs = nullptr;
};

std::vector<Op> ops() {
    const auto over = PIXMAN_OP_OVER, copy = PIXMAN_OP_SRC;
    using P = Pix;
    return {
        {"copy_color_rgba_to_rgba", 4, true, fill(xc_copy_color_rgba_to_rgba, kOpaqueColor),
         "pixman_fill", pixman_fill_solid()},
        {"copy_color_rgb_to_rgba", 4, true, fill(xc_copy_color_rgb_to_rgba, kOpaqueColor)},
        {"blend_color_rgba_to_rgb", 4, true, fill(xc_blend_color_rgba_to_rgb, kHalfColor),
         "OVER solid -> x8r8g8b8", pixman(over, P::kSolid, P::kHalfMask, P::kXrgb)},
        {"blend_color_rgba_to_rgba", 4, true, fill(xc_blend_color_rgba_to_rgba, kHalfColor),
         "OVER solid -> a8r8g8b8", pixman(over, P::kSolid, P::kHalfMask, P::kArgb)},
        {"blend_pixels_rgba_to_rgb", 4, false,
         draw(xc_blend_pixels_rgba_to_rgb, Bits::k32, Bits::k32, false),
         "OVER a8r8g8b8 -> x8r8g8b8", pixman(over, P::kArgb, P::kNone, P::kXrgb)},
        {"blend_pixels_rgba_to_rgba", 4, false,
         draw(xc_blend_pixels_rgba_to_rgba, Bits::k32, Bits::k32, false),
         "OVER a8r8g8b8 -> a8r8g8b8", pixman(over, P::kArgb, P::kNone, P::kArgb)},
        {"copy_pixels_rgba_to_rgba", 4, false,
         draw(xc_copy_pixels_rgba_to_rgba, Bits::k32, Bits::k32, false),
         "SRC a8r8g8b8 -> a8r8g8b8", pixman(copy, P::kArgb, P::kNone, P::kArgb)},
        {"copy_pixels_rgb_to_rgba", 4, false,
         draw(xc_copy_pixels_rgb_to_rgba, Bits::k32, Bits::k32, true),
         "SRC x8r8g8b8 -> a8r8g8b8", pixman(copy, P::kXrgb, P::kNone, P::kArgb)},
        {"copy_pixels_rgba_to_16", 2, false,
         draw(xc_copy_pixels_rgba_to_16, Bits::k32, Bits::k16, true),
         "SRC x8r8g8b8 -> r5g6b5", pixman(copy, P::kXrgb, P::kNone, P::kRgb565)},
        {"copy_pixels_16_to_rgb", 4, false,
         draw(xc_copy_pixels_16_to_rgb, Bits::k16, Bits::k32, false),
         "SRC r5g6b5 -> x8r8g8b8", pixman(copy, P::kRgb565, P::kNone, P::kXrgb)},
        {"copy_pixels_16_to_16", 2, false,
         draw(xc_copy_pixels_16_to_16, Bits::k16, Bits::k16, false),
         "SRC r5g6b5 -> r5g6b5", pixman(copy, P::kRgb565, P::kNone, P::kRgb565)},
        {"blend_alpha_color_rgba_to_rgb", 4, false, cover(xc_blend_alpha_color_rgba_to_rgb),
         "OVER solid, a8 mask -> x8r8g8b8", pixman(over, P::kSolid, P::kA8, P::kXrgb)},
        {"blend_alpha_color_rgba_to_rgba", 4, false, cover(xc_blend_alpha_color_rgba_to_rgba),
         "OVER solid, a8 mask -> a8r8g8b8", pixman(over, P::kSolid, P::kA8, P::kArgb)},
        {"blend_alpha_texture_rgba_to_rgb", 4, false,
         cover_texture(xc_blend_alpha_texture_rgba_to_rgb), "OVER a8r8g8b8, a8 mask -> x8r8g8b8",
         pixman(over, P::kArgb, P::kA8, P::kXrgb)},
        {"blend_alpha_texture_rgba_to_rgba", 4, false,
         cover_texture(xc_blend_alpha_texture_rgba_to_rgba), "OVER a8r8g8b8, a8 mask -> a8r8g8b8",
         pixman(over, P::kArgb, P::kA8, P::kArgb)},
        {"blend_pixels_mul_color_rgba_to_rgb", 4, false,
         draw(xc_blend_pixels_mul_color_rgba_to_rgb, Bits::k32, Bits::k32, false, kHalfWhite),
         "OVER a8r8g8b8, solid mask -> x8r8g8b8", pixman(over, P::kArgb, P::kHalfMask, P::kXrgb)},
        {"blend_pixels_mul_color_rgba_to_rgba", 4, false,
         draw(xc_blend_pixels_mul_color_rgba_to_rgba, Bits::k32, Bits::k32, false, kHalfWhite),
         "OVER a8r8g8b8, solid mask -> a8r8g8b8", pixman(over, P::kArgb, P::kHalfMask, P::kArgb)},
        {"blend_pixels_mul_color_rgb_to_rgb", 4, false,
         draw(xc_blend_pixels_mul_color_rgb_to_rgb, Bits::k32, Bits::k32, true, kHalfColor),
         "OVER x8r8g8b8, solid mask -> x8r8g8b8", pixman(over, P::kXrgb, P::kHalfMask, P::kXrgb)},
        {"blend_pixels_mul_color_rgb_to_rgba", 4, false,
         draw(xc_blend_pixels_mul_color_rgb_to_rgba, Bits::k32, Bits::k32, true, kHalfColor),
         "OVER x8r8g8b8, solid mask -> a8r8g8b8", pixman(over, P::kXrgb, P::kHalfMask, P::kArgb)},
        // pixman's a8r8g8b8 -> r5g6b5 fast path ignores the dither setting; a
        // byte-swapped source takes the path that honours it.
        {"convert_rgba_to_16", 2, false, convert(xc_convert_rgba_to_16, Bits::k16),
         "SRC x8b8g8r8 -> r5g6b5, Bayer 8", pixman(copy, P::kXbgr, P::kNone, P::kRgb565, 0, true)},
        {"convert_rgba_to_16_90", 2, false, convert(xc_convert_rgba_to_16_90, Bits::k16),
         "SRC rot 90 -> r5g6b5, Bayer 8", pixman(copy, P::kArgb, P::kNone, P::kRgb565, 90, true)},
        {"convert_rgba_to_16_270", 2, false, convert(xc_convert_rgba_to_16_270, Bits::k16),
         "SRC rot 270 -> r5g6b5, Bayer 8", pixman(copy, P::kArgb, P::kNone, P::kRgb565, 270, true)},
        {"convert_rgba_to_18", 4, false, convert(xc_convert_rgba_to_18, Bits::k32)},
        {"convert_rgba_to_18_90", 4, false, convert(xc_convert_rgba_to_18_90, Bits::k32)},
        {"convert_rgba_to_18_270", 4, false, convert(xc_convert_rgba_to_18_270, Bits::k32)},
        {"convert_rgba_to_32", 4, false, convert(xc_convert_rgba_to_32, Bits::k32),
         "SRC a8r8g8b8 -> x8r8g8b8", pixman(copy, P::kArgb, P::kNone, P::kXrgb)},
        {"convert_rgba_to_32_90", 4, false, convert(xc_convert_rgba_to_32_90, Bits::k32),
         "SRC rot 90 -> x8r8g8b8", pixman(copy, P::kArgb, P::kNone, P::kXrgb, 90)},
        {"convert_rgba_to_32_270", 4, false, convert(xc_convert_rgba_to_32_270, Bits::k32),
         "SRC rot 270 -> x8r8g8b8", pixman(copy, P::kArgb, P::kNone, P::kXrgb, 270)},
    };
}

void time_run(benchmark::State &state, const Size &size, const Prepare &prepare) {
    Canvas &c = canvas(size);
    const Run run = prepare(c);
    for (auto _ : state) {
        run();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(c.n));
}

// memcpy or memset of a canvas's worth of destination bytes.
Prepare reference(bool set, int bytes) {
    return [=](Canvas &c) -> Run {
        void *dst = bytes == 2 ? static_cast<void *>(c.dst16.data()) : c.dst.data();
        const void *src = bytes == 2 ? static_cast<const void *>(c.src16.data()) : c.src.data();
        const size_t n = c.n * size_t(bytes);
        if (set) return [dst, n] { std::memset(dst, 0x5A, n); };
        return [dst, src, n] { std::memcpy(dst, src, n); };
    };
}

std::string reference_name(bool set, int bytes, const Size &s) {
    return std::string(set ? "memset/" : "memcpy/") + std::to_string(bytes) + "/" + s.name();
}

void print_table(const std::vector<Op> &list, const std::map<std::string, double> &rates) {
    std::printf("\n| ours | size | Mpx/s | pixman equivalent | Mpx/s | ours/pixman | ours/mem | pixman/mem |\n");
    std::printf("|---|---|---:|---|---:|---:|---:|---:|\n");
    for (const Op &op : list) {
        for (const Size &s : kSizes) {
            const std::string ours = "ours/" + std::string(op.name) + "/" + s.name();
            const std::string theirs = "pixman/" + std::string(op.name) + "/" + s.name();
            const std::string mem = reference_name(op.fill, op.dst_bytes, s);
            if (!rates.count(ours)) continue;
            std::printf("| %s | %s | %s | %s | %s | %s | %s | %s |\n", op.name, s.name().c_str(),
                        bench::cell(rates, ours).c_str(), op.pixman_name ? op.pixman_name : "-",
                        bench::cell(rates, theirs).c_str(), bench::ratio(rates, ours, theirs).c_str(),
                        bench::ratio(rates, ours, mem).c_str(), bench::ratio(rates, theirs, mem).c_str());
        }
    }
    std::printf("\n| reference | size | Mpx/s |\n|---|---|---:|\n");
    for (const Size &s : kSizes) {
        for (bool set : {false, true}) {
            for (int bytes : {2, 4}) {
                std::printf("| %s of %d-byte pixels | %s | %s |\n", set ? "memset" : "memcpy", bytes,
                            s.name().c_str(), bench::cell(rates, reference_name(set, bytes, s)).c_str());
            }
        }
    }
}

}  // namespace

int main(int argc, char **argv) {
    bench::initialize(argc, argv);  // a short default keeps one full run under a minute

    const std::vector<Op> list = ops();
    for (const Size &s : kSizes) {
        for (bool set : {false, true}) {
            for (int bytes : {2, 4}) {
                benchmark::RegisterBenchmark(reference_name(set, bytes, s).c_str(),
                                             [s, set, bytes](benchmark::State &state) {
                                                 time_run(state, s, reference(set, bytes));
                                             });
            }
        }
    }
    for (const Op &op : list) {
        for (const Size &s : kSizes) {
            benchmark::RegisterBenchmark(("ours/" + std::string(op.name) + "/" + s.name()).c_str(),
                                         [&op, s](benchmark::State &state) { time_run(state, s, op.ours); });
            if (!op.theirs) continue;
            benchmark::RegisterBenchmark(("pixman/" + std::string(op.name) + "/" + s.name()).c_str(),
                                         [&op, s](benchmark::State &state) { time_run(state, s, op.theirs); });
        }
    }
    bench::Collect collect;
    benchmark::RunSpecifiedBenchmarks(&collect);
    print_table(list, collect.rates);
    benchmark::Shutdown();
    return 0;
}

// Destination megapixels per second of the blit in each of its paths onto
// an 800 x 480 canvas, beside pixman's scaled composite with the nearest or
// bilinear filter over the same pixels, measured in one run and printed as
// a table.
//
//   transform_bench [--benchmark_filter=REGEX] [--benchmark_min_time=SECONDS]
#include <benchmark/benchmark.h>
#include <pixman.h>

#include <cstdio>
#include <map>
#include <random>
#include <string>

#include "fbcompose/transform.h"
#include "report.hpp"

namespace {

constexpr int kW = 800, kH = 480;

struct Case {
    const char *name;  // path and scale
    int sw, sh;        // source size; the destination is always kW x kH
    int smooth;
    pixman_filter_t filter;
    bool over = false;  // an alpha source blended (OVER), else an opaque one copied (SRC)
};

const Case kCases[] = {
    {"noscale", kW, kH, 0, PIXMAN_FILTER_NEAREST},
    {"nearest 2x up", kW / 2, kH / 2, 0, PIXMAN_FILTER_NEAREST},
    {"nearest 0.5x down", kW * 2, kH * 2, 0, PIXMAN_FILTER_NEAREST},
    {"nearest 1.5x up", kW * 2 / 3, kH * 2 / 3, 0, PIXMAN_FILTER_NEAREST},
    {"nearest OVER 2x up", kW / 2, kH / 2, 0, PIXMAN_FILTER_NEAREST, true},
    {"nearest OVER 0.5x down", kW * 2, kH * 2, 0, PIXMAN_FILTER_NEAREST, true},
    {"nearest OVER 1.5x up", kW * 2 / 3, kH * 2 / 3, 0, PIXMAN_FILTER_NEAREST, true},
    {"one row (400 x 1)", kW / 2, 1, 0, PIXMAN_FILTER_BILINEAR},
    {"one column (1 x 240)", 1, kH / 2, 0, PIXMAN_FILTER_BILINEAR},
    {"smooth 2x up (linear)", kW / 2, kH / 2, 1, PIXMAN_FILTER_BILINEAR},
    {"smooth 0.5x down (linear)", kW * 2, kH * 2, 1, PIXMAN_FILTER_BILINEAR},
    {"smooth 1.5x up (linear)", kW * 2 / 3, kH * 2 / 3, 1, PIXMAN_FILTER_BILINEAR},
    {"smooth 0.25x down (box)", kW * 4, kH * 4, 1, PIXMAN_FILTER_BILINEAR},
};

// A photo-like source: smooth ramps plus noise; opaque, or (`over`) icon
// artwork: premultiplied, in runs of 1 to 32 transparent, opaque or
// translucent pixels.
xc_image *source(int w, int h, bool over = false) {
    xc_image *image =
        over ? xc_image_new_from_data(w, h, nullptr, 32, 0, 0) : xc_image_create(w, h);
    std::mt19937 rng(1);
    uint32_t run_left = 0, a = 255;
    auto *p = reinterpret_cast<uint32_t *>(image->data);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            if (over && run_left-- == 0) {
                run_left = rng() % 32;
                const uint32_t kind = rng() % 3;
                a = kind == 0 ? 0 : kind == 1 ? 255 : 1 + rng() % 254;
            }
            const uint32_t c[3] = {uint32_t(rng() & 0xFF), uint32_t((y + rng() % 16) & 0xFF),
                                   uint32_t((x + rng() % 16) & 0xFF)};
            uint32_t word = a << 24;
            for (int i = 0; i < 3; ++i) word |= (c[i] * a / 255) << (8 * i);
            p[y * w + x] = word;
        }
    return image;
}

pixman_image_t *wrap(xc_image *image) {
    return pixman_image_create_bits(image->has_alpha ? PIXMAN_a8r8g8b8 : PIXMAN_x8r8g8b8,
                                    image->width, image->height,
                                    reinterpret_cast<uint32_t *>(image->data), image->rowstride);
}

void ours(benchmark::State &state, const Case &c) {
    xc_image *src = source(c.sw, c.sh, c.over);
    xc_image *dst = xc_image_create(kW, kH);
    const xg_area clip{0, 0, kW, kH};
    for (auto _ : state) {
        xc_image_blit(src, dst, &clip, 0, 0, c.sw, c.sh, 0, 0, kW, kH, c.smooth, 0xFFFFFFFF);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kW * kH);
    xc_image_unref(dst);
    xc_image_unref(src);
}

// The destination-to-source scale, the filter, and edge pixels repeated so
// that bilinear never reads outside the source either.
void theirs(benchmark::State &state, const Case &c) {
    xc_image *src_image = source(c.sw, c.sh, c.over);
    xc_image *dst_image = xc_image_create(kW, kH);
    pixman_image_t *src = wrap(src_image), *dst = wrap(dst_image);
    pixman_transform_t t;
    pixman_transform_init_scale(&t, pixman_double_to_fixed(double(c.sw) / kW),
                                pixman_double_to_fixed(double(c.sh) / kH));
    pixman_image_set_transform(src, &t);
    pixman_image_set_filter(src, c.filter, nullptr, 0);
    pixman_image_set_repeat(src, PIXMAN_REPEAT_PAD);
    for (auto _ : state) {
        pixman_image_composite32(c.over ? PIXMAN_OP_OVER : PIXMAN_OP_SRC, src, nullptr, dst, 0, 0,
                                 0, 0, 0, 0, kW, kH);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kW * kH);
    pixman_image_unref(dst);
    pixman_image_unref(src);
    xc_image_unref(dst_image);
    xc_image_unref(src_image);
}

const char *pixman_name(const Case &c) {
    if (c.over) return "OVER a8r8g8b8, nearest";
    return c.filter == PIXMAN_FILTER_NEAREST ? "SRC, nearest" : "SRC, bilinear";
}

void print_table(const std::map<std::string, double> &rates) {
    std::printf("\n| ours | size | Mpx/s | pixman equivalent | Mpx/s | ours/pixman |\n");
    std::printf("|---|---|---:|---|---:|---:|\n");
    for (const Case &c : kCases) {
        const std::string size = std::to_string(c.sw) + "x" + std::to_string(c.sh) + " to " +
                                 std::to_string(kW) + "x" + std::to_string(kH);
        const std::string a = std::string("ours/") + c.name, b = std::string("pixman/") + c.name;
        std::printf("| blit %s | %s | %s | %s | %s | %s |\n", c.name, size.c_str(),
                    bench::cell(rates, a).c_str(), pixman_name(c), bench::cell(rates, b).c_str(),
                    bench::ratio(rates, a, b).c_str());
    }
}

}  // namespace

int main(int argc, char **argv) {
    bench::initialize(argc, argv);
    for (const Case &c : kCases) {
        benchmark::RegisterBenchmark((std::string("ours/") + c.name).c_str(),
                                     [&c](benchmark::State &s) { ours(s, c); });
        benchmark::RegisterBenchmark((std::string("pixman/") + c.name).c_str(),
                                     [&c](benchmark::State &s) { theirs(s, c); });
    }
    bench::Collect collect;
    benchmark::RunSpecifiedBenchmarks(&collect);
    print_table(collect.rates);
    benchmark::Shutdown();
    return 0;
}

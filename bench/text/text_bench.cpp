// Glyphs per second of a 40-character line of cached glyphs drawn onto an
// 800x480 canvas, beside pixman compositing the same glyph masks (OVER, a
// solid colour through a8) at the same places, measured in one run.
//
//   text_bench [--benchmark_filter=REGEX] [--benchmark_min_time=SECONDS]
#include <benchmark/benchmark.h>
#include <pixman.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "fbcompose/text.h"

namespace {

constexpr const char *kFont = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
// 15 points at 75 dpi is a 16-pixel em.
constexpr int32_t kPoints = 15;
constexpr int32_t kWidth = 800, kHeight = 480;
constexpr int32_t kPenX = 10, kBaseline = 100;
constexpr uint32_t kColor = 0xFFE0C040;
constexpr const char *kLine = "The quick brown fox jumps over a lazy do";  // 40 characters

struct Line {
    Line() {
        xc_init();
        font = xc_font_load(kFont, kPoints, 0, 0);
        text.reset(xg_unicode_new_from_utf8(kLine));
        canvas = xc_image_create(kWidth, kHeight);
        std::memset(canvas->data, 0x30, size_t(canvas->rowstride) * kHeight);
    }
    ~Line() {
        xc_image_unref(canvas);
        xc_font_free(font);
    }
    xc_font *font = nullptr;
    std::unique_ptr<uint16_t, decltype(&std::free)> text{nullptr, &std::free};
    xc_image *canvas = nullptr;
};

// The shared line, or null (the benchmark marked skipped) without its font.
Line *line(benchmark::State &state) {
    static Line l;
    if (l.font) return &l;
    state.SkipWithError("font not found");
    return nullptr;
}

void BM_FontDraw(benchmark::State &state) {
    Line *lp = line(state);
    if (!lp) return;
    Line &l = *lp;
    const xg_area clip{0, 0, kWidth, kHeight};
    const int32_t glyphs = xg_unicode_len(l.text.get());
    // Fills the glyph cache, so the loop measures drawing only.
    const xc_paint paint{kColor, nullptr, 0, 0};
    xc_font_draw(l.canvas, &clip, l.font, kPenX, kBaseline, l.text.get(), -1, paint);
    for (auto _ : state) {
        xc_font_draw(l.canvas, &clip, l.font, kPenX, kBaseline, l.text.get(), -1, paint);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * glyphs);
}
BENCHMARK(BM_FontDraw);

// One glyph mask as pixman wants it (rows padded to 4 bytes) and where it
// goes.
struct Mask {
    std::vector<uint32_t> bits;
    pixman_image_t *image = nullptr;
    int32_t x = 0, y = 0, w = 0, h = 0;
};

std::vector<Mask> masks_of_line(Line &l) {
    std::vector<Mask> masks;
    xc_font_set_size(l.font);
    int64_t pen = int64_t{kPenX} * 256;
    for (const uint16_t *c = l.text.get(); *c; ++c) {
        const xc_font_glyph *fg = xc_font_get_glyph(l.font, *c);
        const FT_Bitmap &b = fg->bitmap->bitmap;
        Mask m;
        m.x = int32_t(pen >> 8) + fg->bitmap->left;
        m.y = kBaseline - fg->bitmap->top;
        m.w = int32_t(b.width);
        m.h = int32_t(b.rows);
        pen += fg->glyph->advance.x >> 8;
        const int32_t stride = (m.w + 3) & ~3;
        m.bits.assign(size_t(stride) * size_t(m.h) / 4 + 1, 0);
        auto *bytes = reinterpret_cast<uint8_t *>(m.bits.data());
        for (int32_t r = 0; r < m.h; ++r)
            std::memcpy(bytes + r * stride, b.buffer + r * b.pitch, size_t(m.w));
        m.image = pixman_image_create_bits(PIXMAN_a8, m.w, m.h, m.bits.data(), stride);
        masks.push_back(std::move(m));
    }
    return masks;
}

void BM_PixmanGlyphMasks(benchmark::State &state) {
    Line *lp = line(state);
    if (!lp) return;
    Line &l = *lp;
    std::vector<Mask> masks = masks_of_line(l);
    pixman_image_t *dst =
        pixman_image_create_bits(PIXMAN_x8r8g8b8, kWidth, kHeight,
                                 reinterpret_cast<uint32_t *>(l.canvas->data), l.canvas->rowstride);
    const pixman_color_t color{0xE0E0, 0xC0C0, 0x4040, 0xFFFF};
    pixman_image_t *solid = pixman_image_create_solid_fill(&color);
    for (auto _ : state) {
        for (const Mask &m : masks) {
            if (m.w == 0) continue;
            pixman_image_composite32(PIXMAN_OP_OVER, solid, m.image, dst, 0, 0, 0, 0, m.x, m.y, m.w,
                                     m.h);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * int64_t(masks.size()));
    for (Mask &m : masks) pixman_image_unref(m.image);
    pixman_image_unref(solid);
    pixman_image_unref(dst);
}
BENCHMARK(BM_PixmanGlyphMasks);

}  // namespace

BENCHMARK_MAIN();

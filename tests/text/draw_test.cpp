#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_GLYPH_H

#include "fbcompose/pixel.h"
#include "font_fixture.hpp"

namespace {

using fbc_test::FontTest;
using fbc_test::kSans;
using fbc_test::ReferenceFace;
using fbc_test::ReferenceGlyph;

using Text = std::vector<uint16_t>;

constexpr uint32_t kBackground = 0xFF203040;
constexpr int32_t kWidth = 120, kHeight = 40;

Text terminated(Text t) {
    t.push_back(0);
    return t;
}

struct Canvas {
    xc_image *image;
    explicit Canvas(bool alpha = false, int32_t w = kWidth, int32_t h = kHeight)
        : image(xc_image_create(w, h)) {
        image->has_alpha = alpha;
        if (alpha) image->format = 0;
        for (int32_t y = 0; y < h; ++y)
            for (int32_t x = 0; x < w; ++x) at(x, y) = kBackground + static_cast<uint32_t>(x);
    }
    ~Canvas() { xc_image_unref(image); }
    uint32_t &at(int32_t x, int32_t y) {
        return static_cast<uint32_t *>(xc_image_pointer(image, x, y))[0];
    }
    std::vector<uint32_t> pixels() const {
        const auto *p = reinterpret_cast<const uint32_t *>(image->data);
        return std::vector<uint32_t>(p, p + image->width * image->height);
    }
};

// A texture whose every pixel tells where it is.
Canvas make_texture(int32_t w, int32_t h) {
    Canvas t(true, w, h);
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x)
            t.at(x, y) = (y % 3 ? 0xFF000000u : 0x80000000u) | uint32_t(y) << 8 | uint32_t(x);
    return t;
}

// Where the library is expected to put each pixel: FreeType's glyphs at
// FreeType's advances, one pixel at a time through the same span functions.
void reference_draw(Canvas &canvas, const xg_area &clip, const ReferenceFace &face, int32_t x,
                    int32_t y, const Text &text, const xc_paint &paint) {
    uint32_t color = paint.color;
    xg_color_premultiply(&color);
    int64_t pen = int64_t{x} * 64;
    for (uint16_t ch : text) {
        if (ch == 0xFEFF) continue;
        const ReferenceGlyph g = face.glyph(ch == 0x3000 ? uint16_t{' '} : ch);
        const int64_t gx = (pen >> 6) + g.left, gy = int64_t{y} - g.top;
        if (gx >= clip.x2) break;
        pen += g.advance_26_6;
        for (int32_t r = 0; r < g.rows; ++r) {
            for (int32_t c = 0; c < g.width; ++c) {
                const int64_t px = gx + c, py = gy + r;
                if (px < std::max(clip.x1, 0) || px >= std::min(clip.x2, canvas.image->width) ||
                    py < std::max(clip.y1, 0) || py >= std::min(clip.y2, canvas.image->height))
                    continue;
                const uint8_t cov = g.at(c, r);
                void *dst = &canvas.at(int32_t(px), int32_t(py));
                if (!paint.texture) {
                    xc_get_alpha_func(canvas.image)(&cov, dst, 1, color);
                    continue;
                }
                const int64_t tx = px - paint.x, ty = py - paint.y;
                if (tx < 0 || ty < 0 || tx >= paint.texture->width || ty >= paint.texture->height)
                    continue;
                const auto *tex = static_cast<const uint32_t *>(
                    xc_image_pointer(paint.texture, int32_t(tx), int32_t(ty)));
                xc_get_alpha_texture_func(canvas.image)(&cov, dst, 1, tex);
            }
        }
    }
}

class Draw : public FontTest {
protected:
    void SetUp() override {
        FontTest::SetUp();
        font = load(kSans, 16);
        ASSERT_NE(font, nullptr);
    }
    // Draws with the library and with the reference; both must agree.
    void expect_as_reference(const xg_area &clip, int32_t x, int32_t y, const Text &text,
                             xc_paint paint, bool alpha = false, const std::string &what = "") {
        Canvas got(alpha), want(alpha);
        xc_font_draw(got.image, &clip, font, x, y, terminated(text).data(), -1, paint);
        reference_draw(want, clip, ref, x, y, text, paint);
        EXPECT_EQ(got.pixels(), want.pixels()) << what;
        EXPECT_NE(want.pixels(), Canvas(alpha).pixels()) << what << ": nothing was drawn";
    }
    xc_font *font = nullptr;
    ReferenceFace ref{kSans, 16};
    const xg_area whole{0, 0, kWidth, kHeight};
    const Text sample{'H', 'g', ' ', 'j', 'W', '.', 0xE9, 'q'};
};

TEST_F(Draw, GlyphsLandWhereFreeTypePlacesThem) {
    const xc_paint opaque{0xFFC08040, nullptr, 0, 0};
    const xc_paint faint{0x80FF2000, nullptr, 0, 0};
    expect_as_reference(whole, 5, 22, sample, opaque, false, "rgb canvas");
    expect_as_reference(whole, 5, 22, sample, faint, false, "translucent colour");
    expect_as_reference(whole, 5, 22, sample, faint, true, "rgba canvas");
}

TEST_F(Draw, ClipsAtEveryEdge) {
    const xc_paint paint{0xFFFFFFFF, nullptr, 0, 0};
    const struct {
        xg_area clip;
        int32_t x, y;
        const char *what;
    } cases[] = {
        {{9, 0, kWidth, kHeight}, 5, 22, "left edge through a glyph"},
        {{0, 0, 40, kHeight}, 5, 22, "right edge through a glyph"},
        {{0, 15, kWidth, kHeight}, 5, 22, "top edge"},
        {{0, 0, kWidth, 24}, 5, 22, "bottom edge"},
        {{11, 14, 47, 25}, 5, 22, "all four"},
        {{-50, -50, 500, 500}, 5, 22, "clip larger than the image"},
        {{0, 0, kWidth, kHeight}, -13, 22, "pen left of the image"},
        {{0, 0, kWidth, kHeight}, 70, 5, "text over the top, right and bottom"},
        {{0, 0, kWidth, kHeight}, 70, 45, "baseline below the image"},
    };
    for (const auto &c : cases) expect_as_reference(c.clip, c.x, c.y, sample, paint, false, c.what);
}

TEST_F(Draw, EmptyClipOrZeroCountDrawsNothing) {
    const xc_paint paint{0xFFFFFFFF, nullptr, 0, 0};
    const Text text = terminated(sample);
    const Canvas blank;
    for (const xg_area clip : {xg_area{10, 0, 10, kHeight}, xg_area{0, 30, kWidth, 5}}) {
        Canvas canvas;
        xc_font_draw(canvas.image, &clip, font, 5, 22, text.data(), -1, paint);
        EXPECT_EQ(canvas.pixels(), blank.pixels());
    }
    Canvas canvas;
    xc_font_draw(canvas.image, &whole, font, 5, 22, text.data(), 0, paint);
    EXPECT_EQ(canvas.pixels(), blank.pixels());
}

TEST_F(Draw, CountLimitsTheCharactersDrawn) {
    const xc_paint paint{0xFFFFFFFF, nullptr, 0, 0};
    Canvas got, want;
    xc_font_draw(got.image, &whole, font, 5, 22, terminated(sample).data(), 2, paint);
    reference_draw(want, whole, ref, 5, 22, {'H', 'g'}, paint);
    EXPECT_EQ(got.pixels(), want.pixels());
}

TEST_F(Draw, ByteOrderMarkIsSkippedAndIdeographicSpaceIsASpace) {
    const xc_paint paint{0xFFFFFFFF, nullptr, 0, 0};
    Canvas marked, plain;
    xc_font_draw(marked.image, &whole, font, 5, 22, terminated({'A', 0xFEFF, 0x3000, 'B'}).data(),
                 -1, paint);
    xc_font_draw(plain.image, &whole, font, 5, 22, terminated({'A', ' ', 'B'}).data(), -1, paint);
    EXPECT_EQ(marked.pixels(), plain.pixels());
}

TEST_F(Draw, StopsAtTheFirstGlyphReachingTheRightEdge) {
    // A narrow base and a combining mark whose negative bearing puts it
    // left of the base's first column.
    Text pair;
    for (uint16_t base : {'.', 'i', 'l', '!'}) {
        for (uint16_t mark : {0x0301, 0x0300, 0x0302, 0x0308}) {
            const ReferenceGlyph b = ref.glyph(base), m = ref.glyph(mark);
            if (m.width > 0 && (b.advance_26_6 >> 6) + m.left + 1 < b.left) pair = {base, mark};
        }
    }
    ASSERT_FALSE(pair.empty()) << "no base and mark pair in this font";
    const ReferenceGlyph b = ref.glyph(pair[0]), m = ref.glyph(pair[1]);
    const int32_t x = 20, mark_x = x + int32_t(b.advance_26_6 >> 6) + m.left;
    const xg_area clip{mark_x, 0, x + b.left, kHeight};
    const xc_paint paint{0xFFFFFFFF, nullptr, 0, 0};
    Canvas canvas;
    xc_font_draw(canvas.image, &clip, font, x, 30, terminated(pair).data(), -1, paint);
    EXPECT_EQ(canvas.pixels(), Canvas().pixels());
    // With the base gone, the mark alone is drawn inside the same clip.
    xc_font_draw(canvas.image, &clip, font, x + int32_t(b.advance_26_6 >> 6), 30,
                 terminated({pair[1]}).data(), -1, paint);
    EXPECT_NE(canvas.pixels(), Canvas().pixels());
}

TEST_F(Draw, TextureIsAlignedToItsOriginAndLimitedToItsRectangle) {
    const Canvas texture = make_texture(30, 12);
    const struct {
        int32_t x, y;
        const char *what;
    } origins[] = {{12, 8, "inside"}, {-7, 15, "left of the image"}, {0, 0, "at the corner"}};
    for (const auto &o : origins) {
        const xc_paint paint{0, texture.image, o.x, o.y};
        expect_as_reference(whole, 5, 22, sample, paint, false, o.what);
        expect_as_reference({10, 6, 40, 30}, 5, 22, sample, paint, true, o.what);
    }
}

TEST_F(Draw, OneBitBitmapsAreExpandedToFullCoverage) {
    // A monochrome rendering of 'R' from the font's own face, cached under
    // a private character.
    constexpr uint16_t kKey = 0xE123;
    xc_font_set_size(font);
    xc_font_get_glyph(font, 'x');
    ASSERT_EQ(FT_Load_Char(font->face, 'R', FT_LOAD_RENDER | FT_LOAD_TARGET_MONO), 0);
    auto *fg = static_cast<xc_font_glyph *>(std::calloc(1, sizeof(xc_font_glyph)));
    ASSERT_EQ(FT_Get_Glyph(font->face->glyph, &fg->glyph), 0);
    fg->bitmap = reinterpret_cast<FT_BitmapGlyph>(fg->glyph);
    ASSERT_EQ(fg->bitmap->bitmap.pixel_mode, FT_PIXEL_MODE_MONO);
    (*fbc::glyph_table(font))[kKey] = fg;

    const ReferenceGlyph g = fbc_test::packed(fg);
    const xg_area clip{7, 0, kWidth, kHeight};  // starts inside the glyph
    const int32_t x = 5, y = 22;
    uint32_t full = 0xFF00FF00;
    Canvas canvas;
    xc_font_draw(canvas.image, &clip, font, x, y, terminated({kKey}).data(), -1,
                 xc_paint{full, nullptr, 0, 0});
    // Full coverage stores the premultiplied colour.
    xg_color_premultiply(&full);
    int32_t covered = 0;
    for (int32_t r = 0; r < g.rows; ++r) {
        for (int32_t c = 0; c < g.width; ++c) {
            const int32_t px = x + g.left + c, py = y - g.top + r;
            const uint32_t want = g.at(c, r) && px >= clip.x1 ? full : kBackground + px;
            covered += want == full;
            EXPECT_EQ(canvas.at(px, py), want) << c << "," << r;
        }
    }
    EXPECT_GT(covered, 10);
}

TEST_F(Draw, ImagesWithoutThirtyTwoBitPixelsAreLeftAlone) {
    uint16_t pixels[16 * 16] = {};
    xc_image *image = xc_image_new_with_data(16, 16, pixels, 3, 0, 1, 32);
    const xg_area clip{0, 0, 16, 16};
    xc_font_draw(image, &clip, font, 0, 12, terminated({'M'}).data(), -1,
                 xc_paint{0xFFFFFFFF, nullptr, 0, 0});
    EXPECT_TRUE(std::all_of(std::begin(pixels), std::end(pixels), [](uint16_t p) { return !p; }));
    xc_image_unref(image);
    Canvas canvas;
    xc_image *empty = xc_image_new();
    xc_font_draw(canvas.image, &whole, font, 5, 22, terminated(sample).data(), -1,
                 xc_paint{0, empty, 0, 0});
    EXPECT_EQ(canvas.pixels(), Canvas().pixels());
    xc_image_unref(empty);
}

}  // namespace

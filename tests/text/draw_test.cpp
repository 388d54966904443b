#include <cstdlib>

#include "fbcompose/pixel.h"
#include "font_fixture.hpp"

namespace fbc_test {
namespace {

constexpr int32_t kWidth = 120, kHeight = 40;
constexpr xg_area kWhole{0, 0, kWidth, kHeight};
constexpr xc_paint kWhite{0xFFFFFFFF, nullptr, 0, 0};

using Pixels = std::vector<uint32_t>;
using Fill = uint32_t (*)(int32_t x, int32_t y);

// 32-bit pixels and an image over them (with alpha, in the format that
// keeps it). By default a ramp, so that every pixel left alone is known.
struct Canvas {
    Pixels pixels;
    xc_image *image;
    explicit Canvas(
        bool alpha = false, int32_t w = kWidth, int32_t h = kHeight,
        Fill fill = [](int32_t x, int32_t) { return 0xFF203040 + x; })
        : pixels(size_t(w * h)),
          image(xc_image_new_with_data(w, h, pixels.data(), alpha ? 0 : 1, 0, 1, 0)) {
        for (int32_t i = 0; i < w * h; ++i) pixels[size_t(i)] = fill(i % w, i / w);
    }
    ~Canvas() { xc_image_unref(image); }
};

Pixels blank() { return Canvas().pixels; }

// One call of the drawer.
struct Call {
    xg_area clip = kWhole;
    int32_t x = 5, y = 22;
    Text text{'H', 'g', ' ', 'j', 'W', '.', 0xE9, 'q'};
    int32_t count = -1;
    xc_paint paint = kWhite;
    bool alpha = false;
};

// Where each pixel should go: the glyphs at their bearings and 26.6
// advances, clipped, one pixel at a time through the span functions.
Pixels reference_draw(const Call &c, const std::vector<ReferenceGlyph> &glyphs) {
    Canvas canvas(c.alpha);
    uint32_t color = c.paint.color;
    xg_color_premultiply(&color);
    const xc_image *t = c.paint.texture;
    int64_t pen = int64_t{c.x} * 64;
    for (const ReferenceGlyph &g : glyphs) {
        const int64_t gx = (pen >> 6) + g.left, gy = c.y - g.top;
        if (gx >= c.clip.x2) break;
        pen += g.advance_26_6;
        for (int64_t py = std::max<int64_t>({gy, c.clip.y1, 0});
             py < std::min<int64_t>({gy + g.rows, c.clip.y2, kHeight}); ++py) {
            for (int64_t px = std::max<int64_t>({gx, c.clip.x1, 0});
                 px < std::min<int64_t>({gx + g.width, c.clip.x2, kWidth}); ++px) {
                const uint8_t cov = g.at(int32_t(px - gx), int32_t(py - gy));
                uint32_t *dst = &canvas.pixels[size_t(py * kWidth + px)];
                const int32_t tx = int32_t(px - c.paint.x), ty = int32_t(py - c.paint.y);
                if (!t) xc_get_alpha_func(canvas.image)(&cov, dst, 1, color);
                else if (tx >= 0 && ty >= 0 && tx < t->width && ty < t->height)
                    xc_get_alpha_texture_func(canvas.image)(
                        &cov, dst, 1, static_cast<const uint32_t *>(xc_image_pointer(t, tx, ty)));
            }
        }
    }
    return canvas.pixels;
}

class Draw : public Sans16 {
protected:
    Pixels library(const Call &c) {
        Canvas canvas(c.alpha);
        xc_font_draw(canvas.image, &c.clip, font, c.x, c.y, terminated(c.text).data(), c.count,
                     c.paint);
        return canvas.pixels;
    }
    // By default the glyphs are FreeType's for the characters the call draws.
    void expect_as_reference(const Call &c, std::vector<ReferenceGlyph> glyphs = {}) {
        const size_t shown = c.count < 0 ? c.text.size() : size_t(c.count);
        if (glyphs.empty())
            for (size_t i = 0; i < shown; ++i) glyphs.push_back(ref.glyph(c.text[i]));
        const Pixels want = reference_draw(c, glyphs);
        EXPECT_EQ(library(c), want);
        EXPECT_TRUE(shown == 0 || want != Canvas(c.alpha).pixels) << "nothing was drawn";
    }
};

// Random clips, pens, counts and texture origins are pinned by the
// pipeline's hash; these rows check the placement itself.
TEST_F(Draw, GlyphsLandWhereFreeTypePlacesThemClippedAtEveryEdge) {
    const xc_paint faint{0x80FF2000, nullptr, 0, 0};
    const Call calls[] = {
        {.paint = faint},  {.paint = faint, .alpha = true}, {.count = 2},
        {.count = 0},      {.clip = {11, 14, 47, 25}},  // all four edges through glyphs
        {.x = -13},                                     // pen left of the image
        {.x = 70, .y = 5},                              // text over the top, right and bottom
    };
    for (const Call &c : calls) expect_as_reference(c);
}

TEST_F(Draw, ByteOrderMarkIsSkippedAndIdeographicSpaceIsASpace) {
    EXPECT_EQ(library({.text = {'A', 0xFEFF, 0x3000, 'B'}}), library({.text = {'A', ' ', 'B'}}));
}

TEST_F(Draw, StopsAtTheFirstGlyphReachingTheRightEdge) {
    // The grave accent's negative bearing puts it left of the base's first
    // column: a clip from one to the other holds the accent only.
    const ReferenceGlyph base = ref.glyph('i'), mark = ref.glyph(0x0300);
    const int32_t x = 20, step = int32_t(base.advance_26_6 >> 6);
    const xg_area between{x + step + mark.left, 0, x + base.left, kHeight};
    ASSERT_LT(between.x1, between.x2);
    EXPECT_EQ(library({.clip = between, .x = x, .text = {'i', 0x0300}}), blank());
    EXPECT_NE(library({.clip = between, .x = x + step, .text = {0x0300}}), blank());
}

TEST_F(Draw, TextureIsAlignedToItsOriginAndLimitedToItsRectangle) {
    const Canvas texture(true, 30, 12, [](int32_t x, int32_t y) {
        return (y % 3 ? 0xFF000000u : 0x80000000u) | uint32_t(y) << 8 | uint32_t(x);
    });
    expect_as_reference({.paint = {0, texture.image, 12, 8}});
    expect_as_reference(
        {.clip = {10, 6, 40, 30}, .paint = {0, texture.image, -7, 15}, .alpha = true});
}

TEST_F(Draw, OneBitBitmapsAreExpandedToFullCoverage) {
    // A monochrome 'R' of the font's own face, cached under a private character.
    xc_font_get_glyph(font, 'x');
    ASSERT_EQ(FT_Load_Char(font->face, 'R', FT_LOAD_RENDER | FT_LOAD_TARGET_MONO), 0);
    auto *fg = static_cast<xc_font_glyph *>(std::calloc(1, sizeof(xc_font_glyph)));
    ASSERT_EQ(FT_Get_Glyph(font->face->glyph, &fg->glyph), 0);
    fg->bitmap = reinterpret_cast<FT_BitmapGlyph>(fg->glyph);
    ASSERT_EQ(fg->bitmap->bitmap.pixel_mode, FT_PIXEL_MODE_MONO);
    (*fbc::glyph_table(font))[0xE123] = fg;
    // The clip starts inside the glyph, so rows of bits are cut mid-byte.
    expect_as_reference({.clip = {7, 0, kWidth, kHeight}, .text = {0xE123}}, {packed(fg)});
}

// RGB565, no pixels, rows shorter than their pixels (4 bytes for 16), or
// pitched off a word boundary: as an image or as a texture.
TEST_F(Draw, ImagesOrTexturesWithoutThirtyTwoBitPixelsAreLeftAlone) {
    std::vector<uint32_t> words(16 * 16 + 1, 0);
    for (xc_image *odd : {xc_image_new_with_data(16, 16, words.data(), 3, 0, 1, 32), xc_image_new(),
                          xc_image_new_with_data(16, 15, words.data(), 0, 0, 1, 4),
                          xc_image_new_with_data(16, 15, words.data(), 0, 0, 1, 66)}) {
        xc_font_draw(odd, &kWhole, font, 0, 12, terminated({'M'}).data(), -1, kWhite);
        EXPECT_EQ(library({.paint = {0, odd, 0, 0}}), blank());
        xc_image_unref(odd);
    }
    EXPECT_EQ(words, std::vector<uint32_t>(16 * 16 + 1, 0));
}

}  // namespace
}  // namespace fbc_test

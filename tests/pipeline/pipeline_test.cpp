// One seeded sequence of fills, blends, blits through every drawer, shapes
// and text on an opaque canvas, an alpha layer and a 16-bit image, with the
// damaged rectangles converted into a panel of every depth and rotation
// between steps, hashed to one stored number. Whichever kernels a build or a
// CPU picks, they must leave every byte as the plain scalar code does.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "fbcompose/draw.h"
#include "fbcompose/pixel.h"
#include "fbcompose/transform.h"
#include "image_words.hpp"
#include "seeded.hpp"
#include "text/font_fixture.hpp"

namespace {

using test::Hash;
using test::Image;
using test::Rng;

constexpr uint64_t kPipelineHash = 0xEB771C3897F13BB7;
constexpr int32_t kW = 96, kH = 64;
constexpr uint32_t kNoTint = 0xFFFFFFFF;

// Depth 32: premultiplied artwork in runs of transparent, opaque and
// translucent pixels; 24: an opaque photo; 16: RGB565 words.
Image artwork(Rng &rng, int32_t w, int32_t h, int32_t depth) {
    Image image{xc_image_new_from_data(w, h, nullptr, depth, 0, 0)};
    int32_t run = 0;
    uint32_t a = 0;
    for (int32_t y = 0; y < h; ++y) {
        uint8_t *row = image->data + y * image->rowstride;
        for (int32_t x = 0; x < w; ++x) {
            if (run-- <= 0) {
                run = rng.between(1, 12);
                a = uint32_t(rng.below(3) ? rng.below(2) * 255 : rng.below(256));
            }
            uint32_t word = a << 24;
            for (int shift = 0; shift < 24; shift += 8)
                word |= (rng.word() & 255) * a >> 8 << shift;
            if (depth == 16) reinterpret_cast<uint16_t *>(row)[x] = uint16_t(rng.word());
            else reinterpret_cast<uint32_t *>(row)[x] = depth == 24 ? rng.word() : word;
        }
    }
    return image;
}

// The panel in every depth and rotation, fed with the canvas's damaged rectangles.
struct Panel {
    int32_t depth, rotation;
    std::vector<uint32_t> words = std::vector<uint32_t>(size_t(kW * kH));

    // Canvas pixel (x, y) lands at panel (x, y), (kH - 1 - y, x) or (y, kW - 1 - x).
    void convert(const xc_image *canvas, const xg_rect &r) {
        const int32_t row = rotation ? kH : kW;
        int32_t px = r.x, py = r.y;
        if (rotation == 90) px = kH - r.y - r.h, py = r.x;
        if (rotation == 270) px = r.y, py = kW - r.x - r.w;
        const int32_t bytes = depth == 16 ? 2 : 4;
        char *out = reinterpret_cast<char *>(words.data()) + (py * row + px) * bytes;
        const int32_t out_w = rotation ? r.h : r.w;
        xc_get_convert_func(0, 0, depth, rotation)(xc_image_pointer(canvas, r.x, r.y), out,
                                                   kW - r.w, row - out_w, r.w, r.h, px, py);
    }
};

class Pipeline : public fbc_test::FontTest {
protected:
    Rng rng;
    Image canvas{xc_image_create(kW, kH)};
    Image layer = artwork(rng, 64, 48, 32);
    Image rgb16 = artwork(rng, 48, 40, 16);
    Image icon = artwork(rng, 40, 30, 32), photo = artwork(rng, 40, 30, 24);
    Image tile = artwork(rng, 24, 20, 16);

    xg_area clip_within(const xc_image *image) {
        if (rng.below(2)) return {0, 0, image->width, image->height};
        const int32_t x = rng.below(image->width / 2), y = rng.below(image->height / 2);
        return {x, y, x + rng.between(1, image->width), y + rng.between(1, image->height)};
    }

    // The sizes of a blit pick its drawer.
    enum Drawer { kNoScale, kNearest, kOneRow, kOneColumn, kSmoothUp, kSmoothDown };

    void blit(xc_image *src, xc_image *dst, int drawer) {
        const int32_t sw = drawer == kOneColumn ? 1 : rng.between(2, src->width);
        const int32_t sh = drawer == kOneRow ? 1 : rng.between(2, src->height);
        int32_t dw = sw, dh = sh;
        if (drawer == kNearest) dw = rng.between(1, 2 * sw), dh = rng.between(1, 2 * sh);
        if (drawer == kOneRow || drawer == kOneColumn)
            dw = rng.between(1, 60), dh = rng.between(1, 40);
        if (drawer == kSmoothUp) dw = rng.between(sw + 1, 3 * sw), dh = rng.between(sh + 1, 3 * sh);
        if (drawer == kSmoothDown) dw = rng.between(1, sw / 2 + 1), dh = rng.between(1, sh / 2 + 1);
        const int32_t sx = rng.below(src->width - sw + 1), sy = rng.below(src->height - sh + 1);
        const int32_t dx = rng.between(-dw / 2, dst->width - dw / 2);
        const int32_t dy = rng.between(-dh / 2, dst->height - dh / 2);
        const bool tint = src->depth != 16 && dst->depth != 16 && rng.below(2);
        const xg_area clip = clip_within(dst);
        xc_image_blit(src, dst, &clip, sx, sy, sw, sh, dx, dy, dw, dh, drawer >= kSmoothUp,
                      tint ? rng.color() : kNoTint);
    }

    void shape(xc_image *dst) {
        const xg_area clip = clip_within(dst);
        const int32_t x = rng.between(-8, dst->width), y = rng.between(-8, dst->height);
        const uint32_t color = rng.color();
        if (rng.below(3) == 0) {
            xg_area area{x, y, x + rng.between(0, 40), y + rng.between(0, 30)};
            xc_rectangle_draw(dst, &clip, &area, color);
        } else if (rng.below(2)) {
            const xg_point to{rng.between(-8, dst->width), rng.between(-8, dst->height)};
            xc_line_draw(dst, &clip, x, y, to.x, to.y, color);
        } else {
            std::vector<xg_point> points(size_t(rng.between(3, 6)));
            xg_list *list = nullptr;
            for (xg_point &p : points)
                p = {rng.between(0, 40), rng.between(0, 30)}, list = xg_list_append(list, &p);
            xc_polygon_draw(dst, &clip, x * 262144 + rng.below(262144), y, list, color);
            xg_list_free(list);
        }
    }

    void text(xc_image *dst, xc_font *font) {
        static const uint16_t kText[] = {'F', 'b', ' ', 'g', 0x4E2D, 'W', 0xE9, 0x6587, 'y', 0};
        const xg_area clip = clip_within(dst);
        const xc_paint paint{rng.color(), rng.below(3) ? nullptr : icon.get(), rng.between(-20, 40),
                             rng.between(-20, 30)};
        const xg_point pen{rng.between(-10, dst->width - 10), rng.between(0, dst->height + 10)};
        xc_font_draw(dst, &clip, font, pen.x, pen.y, kText, rng.between(-1, 9), paint);
    }
};

TEST_F(Pipeline, SeededSequenceHashesToTheStoredConstant) {
    xc_font_set_fallback(fbc_test::kCjk);
    xc_font *fonts[] = {load(fbc_test::kSans, 11), load(fbc_test::kMono, 19)};
    ASSERT_TRUE(fonts[0] && fonts[1]);
    std::memset(canvas->data, 0x40, size_t(kH * canvas->rowstride));
    std::vector<Panel> panels;
    for (int32_t depth : {16, 18, 32})
        for (int32_t rotation : {0, 90, 270}) panels.push_back({depth, rotation});
    xc_dm *damage = xc_dm_new(kW, kH);
    const xg_rect whole{0, 0, kW, kH};
    xc_dm_add_area(damage, &whole);

    for (int step = 0; step < 240; ++step) {
        xc_image *targets[] = {canvas.get(), canvas.get(), layer.get()};
        xc_image *dst = targets[rng.below(3)];
        switch (rng.below(4)) {
            case 0: shape(dst); break;
            case 1: text(dst, fonts[rng.below(2)]); break;
            default: {
                // Opaque sources only onto the 16-bit image, without tint or
                // smoothing; 16-bit ones only onto an opaque image.
                const bool onto16 = rng.below(6) == 0;
                xc_image *sources[] = {icon.get(), photo.get(), tile.get(), layer.get()};
                xc_image *src = onto16 ? (rng.below(2) ? tile.get() : canvas.get())
                                       : sources[rng.below(dst == layer.get() ? 2 : 4)];
                blit(src, onto16 ? rgb16.get() : dst, rng.below(onto16 ? 2 : 6));
            }
        }
        // Random damage: the converted rectangles need not be where the step drew.
        const xg_rect touched{rng.below(kW), rng.below(kH), rng.between(1, 40), rng.between(1, 30)};
        if (dst == canvas.get()) xc_dm_add_area(damage, &touched);
        if (step % 16 != 15) continue;
        xg_list *rects = xc_dm_get_rects(damage);
        for (xg_list_item *item = rects ? rects->first : nullptr; item; item = item->next) {
            xg_rect r = *static_cast<xg_rect *>(item->data);
            r.w = std::min(r.w, kW - r.x), r.h = std::min(r.h, kH - r.y);
            for (Panel &panel : panels) panel.convert(canvas.get(), r);
        }
        xg_list_free_with_data(rects);
    }
    xc_dm_free(damage);

    Hash hash;
    for (const xc_image *image : {canvas.get(), layer.get(), rgb16.get()}) hash.add(image);
    for (const Panel &panel : panels) hash.add(panel.words.data(), panel.words.size() * 4);
    // The 16-bit image as panel pixels too, through the two direct converters.
    const auto *words16 = reinterpret_cast<const uint16_t *>(rgb16->data);
    const int32_t w16 = rgb16->width, h16 = rgb16->height;
    std::vector<uint16_t> out16(size_t(w16 * h16));
    std::vector<uint32_t> out18(out16.size());
    xc_convert_16_to_16(words16, out16.data(), w16, w16, w16, h16);
    xc_convert_16_to_18(words16, out18.data(), w16, w16, w16, h16);
    hash.add(out16.data(), out16.size() * 2);
    hash.add(out18.data(), out18.size() * 4);
    EXPECT_EQ(hash.value, kPipelineHash) << std::hex << "0x" << hash.value;
}

}  // namespace

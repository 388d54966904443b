// One seeded sequence of fills, blends, blits through every drawer, shapes
// and text on an opaque canvas, an alpha layer and a 16-bit image, hashed to
// one stored number. Whichever kernels a build or a CPU picks, they must
// leave every byte as the plain scalar code does. (The panel converters are
// held to their model, every variant of them, by the pixel tests.)
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "fbcompose/draw.h"
#include "fbcompose/transform.h"
#include "image_words.hpp"
#include "seeded.hpp"
#include "text/font_fixture.hpp"

namespace {

using test::Hash;
using test::Image;
using test::Rng;

constexpr uint64_t kPipelineHash = 0x7911CD05EC967873;
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
    }
    Hash hash;
    for (const xc_image *image : {canvas.get(), layer.get(), rgb16.get()}) hash.add(image);
    EXPECT_EQ(hash.value, kPipelineHash) << std::hex << "0x" << hash.value;
}

}  // namespace

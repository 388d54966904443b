// Seeded blits through the nearest and smoothing scalers, at every size
// relation (enlarging, reducing either side of half, far below it), with
// source areas overhanging the image, clips cutting every edge, each source
// kind onto each destination kind, modulated or not: hashed per source kind
// and filter to stored numbers, the scalers' output is pinned bit for bit
// whichever kernels a build or a CPU picks.
#include <gtest/gtest.h>

#include <algorithm>

#include "fbcompose/transform.h"
#include "image_words.hpp"
#include "seeded.hpp"

namespace {

using namespace test;

constexpr int32_t kCanvas = 80;

// Random pixels of a source of `depth` 16, 24 or 32 (premultiplied).
Image source(Rng &rng, int32_t w, int32_t h, int32_t depth) {
    Image image{xc_image_new_from_data(w, h, nullptr, depth, 0, 0)};
    for (int32_t y = 0; y < h; ++y) {
        uint8_t *row = image->data + y * image->rowstride;
        for (int32_t x = 0; x < w; ++x) {
            const uint32_t c = rng.color();
            uint32_t word = c & 0xFF000000u;
            for (int shift = 0; shift < 24; shift += 8)
                word |= (c >> shift & 255) * (c >> 24) >> 8 << shift;
            if (depth == 16) reinterpret_cast<uint16_t *>(row)[x] = uint16_t(c);
            else reinterpret_cast<uint32_t *>(row)[x] = depth == 24 ? c : word;
        }
    }
    return image;
}

// A destination size for `size` source pixels.
int32_t target(Rng &rng, int32_t size) {
    switch (rng.below(4)) {
        case 0: return rng.between(1, 70);
        case 1: return std::max(1, size / 2 + rng.between(-1, 1));  // either side of half
        case 2: return size * rng.between(4, 12) / 4;               // enlarging
        default: return std::max(1, size / rng.between(3, 9));      // far below half
    }
}

uint64_t blits(uint32_t seed, int32_t depth, int smooth) {
    Rng rng(seed);
    Hash hash;
    for (int i = 0; i < 300; ++i) {
        const int32_t w = rng.between(1, 70), h = rng.between(1, 70);
        const Image src = source(rng, w, h, depth);
        // Source areas may overhang any edge of the image.
        const int32_t sx = rng.between(-4, w - 1), sy = rng.between(-4, h - 1);
        const int32_t sw = rng.between(1, w + 4 - sx), sh = rng.between(1, h + 4 - sy);
        const int32_t dw = target(rng, sw), dh = target(rng, sh);
        const int32_t dx = rng.between(-dw / 2, kCanvas - 1),
                      dy = rng.between(-dh / 2, kCanvas - 1);
        const int32_t x1 = rng.between(0, kCanvas - 1), y1 = rng.between(0, kCanvas - 1);
        const xg_area clip{x1, y1, rng.between(x1 + 1, kCanvas), rng.between(y1 + 1, kCanvas)};
        const uint32_t colour = rng.below(2) ? 0xFFFFFFFFu : rng.color();
        static constexpr int32_t kDepths[] = {24, 32, 16};
        Image dst{xc_image_new_from_data(kCanvas, kCanvas, nullptr, kDepths[rng.below(3)], 0, 0)};
        for (int32_t b = 0; b < dst->rowstride * kCanvas; ++b) dst->data[b] = uint8_t(rng.word());
        xc_image_blit(src.get(), dst.get(), &clip, sx, sy, sw, sh, dx, dy, dw, dh, smooth, colour);
        hash.add(dst.get());
    }
    return hash.value;
}

TEST(ScaledOutput, SeededBlitsHashToTheStoredNumbers) {
    struct Case {
        int32_t depth;
        int smooth;
        uint64_t want;
    };
    const Case cases[] = {
        {24, 0, 0x573DB79F0B2E1C0F}, {32, 0, 0x95CFEDCE6CA8576D}, {16, 0, 0xC9322836AA76465E},
        {24, 1, 0x1FC8B9ECE448B0EF}, {32, 1, 0xC5DF3BFC8FB8B00B}, {16, 1, 0xD4609A61A88C592A},
    };
    for (const Case &c : cases) {
        const uint64_t got = blits(uint32_t(c.depth * 2 + c.smooth), c.depth, c.smooth);
        EXPECT_EQ(got, c.want) << "depth " << c.depth << " smooth " << c.smooth << ": 0x"
                               << std::hex << got;
    }
}

TEST(ScaledOutput, SeededOneDimensionalResamplesHashToTheStoredNumber) {
    Rng rng(7);
    Hash hash;
    for (int i = 0; i < 400; ++i) {
        const int32_t n = rng.between(1, 70), step = rng.between(1, 3);
        const int32_t m = target(rng, n), out_step = rng.between(1, 2);
        Words src(size_t(n * step)), dst(size_t(m * out_step));
        for (uint32_t &v : src) v = rng.word();
        xc_image_scale_1d(src.data(), n, step, dst.data(), m, out_step);
        hash.add(dst.data(), dst.size() * 4);
    }
    EXPECT_EQ(hash.value, 0x2CC9DF737E775726u) << std::hex << "0x" << hash.value;
}

}  // namespace

// How every scanline drawer hands its rows to the span function. A run
// that lies inside the pixel blocks, aligned for the span function's
// pixels, goes straight to it. The span selection gives a 32-bit function
// for an alpha or modulated source onto a 16-bit image (and for a 16-bit
// source onto an alpha image), a rule kept as it is; such a run covers
// twice the bytes of its pixels and may start off a word boundary, so it is
// passed through aligned scratch words and held to the blocks: every byte
// inside them comes out as before and none outside is touched.
#pragma once

#include <cstdint>

#include "fbcompose/image.h"
#include "fbcompose/pixel.h"

namespace fbc {

class RowWriter {
public:
    // Draws nothing until assigned.
    RowWriter() = default;
    // `reads_as`: the source as the span function sees it.
    RowWriter(const xc_image *reads_as, xc_image *dst, uint32_t color);

    // False when no span function draws these images: an opaque source
    // onto an opaque destination of depth below 16 (where
    // xc_get_draw_func would abort) draws nothing, with a diagnostic.
    explicit operator bool() const { return draw_ != nullptr; }

    // n pixels from `row` onto `to`, a pixel of the destination. `from`:
    // the image `row` points into, or null for a buffer of n pixels.
    void draw(const void *row, const xc_image *from, void *to, int64_t n) const;

    // The same for a source run in the destination's own block, possibly
    // overlapping `to`: as if the source had been copied first. Needs
    // pixels_match().
    void draw_overlapping(const void *row, void *to, int64_t n) const;

    // Whether the span function's pixels are the images' own, as
    // xc_image_pointer steps them.
    bool pixels_match(const xc_image *src) const;

    // Whether the span function stores its source pixels unchanged (a
    // plain copy between like pixels): a drawer may then write them itself.
    bool stores_source() const { return stores_source_; }

    // Whether the span function blends 32-bit sources with alpha over
    // 32-bit destinations, keeping their alpha (rgb) or blending it (rgba):
    // a drawer may then blend its pixels itself.
    enum class Over { none, rgb, rgba };
    Over blends_over() const { return over_; }

private:
    void held(const uint8_t *s, int64_t s_bytes, uint8_t *d, int64_t d_bytes, int64_t n) const;

    xc_draw_func draw_ = nullptr;
    xc_image *dst_ = nullptr;
    uint32_t color_ = 0;
    int32_t src_bytes_ = 4, dst_bytes_ = 4;  // per pixel, as the span function moves them
    bool stores_source_ = false;
    Over over_ = Over::none;
};

}  // namespace fbc

// Drawers without filtering: equal sizes, and nearest-pixel sampling.
#include <cstdint>
#include <cstring>
#include <memory>

#include "core/pixel_bounds.hpp"
#include "fbcompose/transform.h"
#include "pixel/scale_rows.hpp"
#include "transform/drawer_guard.hpp"
#include "transform/scale_common.hpp"

namespace fbc {
namespace {

// Destination column x reads source column ((x - d.x1) x (sw - 1)) /
// (dw - 1) + s.x1, so first and last columns meet exactly.
px::ColumnWalk column_walk(const xg_area &clip, const xg_area &s, const xg_area &d) {
    return px::column_walk(int64_t{clip.x1} - d.x1, width_of(s) - 1, width_of(d) - 1, s.x1);
}

// Source rows of destination rows from y: size over size, unlike the
// columns' (size - 1) over (size - 1); compat: the asymmetry is kept.
px::ColumnWalk row_walk(int32_t y, const xg_area &s, const xg_area &d) {
    return px::column_walk(int64_t{y} - d.y1, height_of(s), height_of(d), s.y1);
}

// The pick of `kernel`, or null where that is its reference.
px::NearestOverFn fused(const px::Kernel<px::NearestOverFn> &kernel) {
    const px::NearestOverFn pick = kernel.pick();
    return pick == kernel.reference ? nullptr : pick;
}

// Nearest-pixel rows, the source's and the destination's addressed as
// `kind` says; sources of depth below 17 are gathered as 16-bit pixels
// when `halfwords`. Where the span function would only copy the gathered
// row, or blend it over, the pixels go straight onto the destination row:
// each is read once and written once.
void sample(const DrawerGuard &guard, xc_image *dst, const xg_area &s, const xg_area &d,
            DrawerKind kind, bool halfwords) {
    const xc_image *from = guard.source();
    const xg_area &c = guard.clip();
    const RowWriter &out = guard.out();
    const int32_t n = width_of(c);
    const px::ColumnWalk walk = column_walk(c, s, d);
    const bool narrow = halfwords && from->depth < 17;
    static const px::NearestWordsFn words = px::kNearestWords.pick();
    static const px::NearestHalfwordsFn halves = px::kNearestHalfwords.pick();
    static const px::NearestOverFn over_rgb = fused(px::kNearestOverRgb);
    static const px::NearestOverFn over_rgba = fused(px::kNearestOverRgba);
    const auto gather = [&](const uint8_t *line, void *into) {
        if (narrow)
            halves(reinterpret_cast<const uint16_t *>(line), walk, static_cast<uint16_t *>(into),
                   n);
        else
            words(reinterpret_cast<const uint32_t *>(line), walk, static_cast<uint32_t *>(into), n);
    };
    // Rows of words may run past a destination of narrower pixels; pointer
    // rows lie in the image, and the guard checked their alignment.
    const bool on_image = kind.dst_rows == Rows::pointer && out.pixels_match(from);
    const bool in_place = on_image && out.stores_source() && (narrow ? 2 : 4) == pointer_step(dst);
    // Blends of 32-bit pixels take each sampled pixel straight onto the
    // destination, read once, with the span function's arithmetic, where a
    // variant does it: the plain loop loses to the gather and a vectorised
    // span function.
    const px::NearestOverFn blend = !on_image || narrow || pointer_step(dst) != 4 ? nullptr
                                    : out.blends_over() == RowWriter::Over::rgb   ? over_rgb
                                    : out.blends_over() == RowWriter::Over::rgba  ? over_rgba
                                                                                  : nullptr;
    const auto row = std::make_unique<uint32_t[]>(in_place || blend ? 0 : static_cast<size_t>(n));
    // compat: rows of words start at the first source row as
    // xc_image_pointer places it (through rowstride), `width` words apart.
    const auto *first_words = kind.src_rows == Rows::words
                                  ? static_cast<const uint8_t *>(xc_image_pointer(from, 0, s.y1))
                                  : nullptr;
    const px::ColumnWalk rows = row_walk(c.y1, s, d);
    int32_t sy = rows.first;
    uint32_t rem = rows.rem;
    for (int32_t y = c.y1; y < c.y2; ++y, px::step(rows, sy, rem)) {
        const uint8_t *line = first_words ? first_words + int64_t{sy - s.y1} * from->width * 4
                                          : row_pixel(from, kind.src_rows, 0, sy);
        uint8_t *to = row_pixel(dst, kind.dst_rows, c.x1, y);
        if (blend) {
            blend(reinterpret_cast<const uint32_t *>(line), walk, reinterpret_cast<uint32_t *>(to),
                  n);
        } else if (in_place) {
            gather(line, to);
        } else {
            gather(line, row.get());
            out.draw(row.get(), nullptr, to, n);
        }
    }
}

// Equal sizes with the source in the destination's own block: a source
// below its destination is read top down, one above it bottom up, and a
// row that overlaps itself goes through scratch, so that every pixel is
// read before it is overwritten.
void copy_in_place(const RowWriter &out, const xc_image *image, const uint8_t *s, uint8_t *d,
                   int32_t rows, int32_t n) {
    const bool bottom_up = s < d;
    const int32_t bytes = n * pointer_step(image);
    for (int32_t i = 0; i < rows; ++i) {
        const intptr_t r = (bottom_up ? rows - 1 - i : i) * static_cast<intptr_t>(image->rowstride);
        if (s + r < d + r + bytes && d + r < s + r + bytes) out.draw_overlapping(s + r, d + r, n);
        else out.draw(s + r, image, d + r, n);
    }
}

}  // namespace
}  // namespace fbc

extern "C" {

void xc_scale_noscale(const xc_image *src, xc_image *dst, const xg_area *clip,
                      const xg_area *src_area, const xg_area *dst_area, uint32_t color) {
    fbc::DrawerGuard guard(src, dst, clip, src_area, dst_area, color,
                           {.reads_dst_size = true, .orders_shared_rows = true});
    if (!guard) return;
    const fbc::RowWriter &out = guard.out();
    // Rows are ordered in place only on the image itself with the span
    // function's pixels its own; anything else reads a copy.
    const bool in_place = guard.shares_pixels() && src == dst && out.pixels_match(src);
    if (guard.shares_pixels() && !in_place && !guard.copy_source()) return;
    const xc_image *from = guard.source();
    const xg_area &c = guard.clip();
    auto *d = static_cast<uint8_t *>(xc_image_pointer(dst, c.x1, c.y1));
    const auto *s = static_cast<const uint8_t *>(xc_image_pointer(
        from, c.x1 - dst_area->x1 + src_area->x1, c.y1 - dst_area->y1 + src_area->y1));
    const int32_t rows = fbc::height_of(c), n = fbc::width_of(c);
    // Full rows between like images are one run: the test is against the
    // source's width, not the destination's.
    if (c.x1 == 0 && c.x2 == from->width && from->depth == dst->depth &&
        from->rowstride == dst->rowstride) {
        const int64_t count = int64_t{rows} * c.x2;
        if (in_place) out.draw_overlapping(s, d, count);
        else out.draw(s, from, d, count);
        return;
    }
    if (in_place) {
        fbc::copy_in_place(out, from, s, d, rows, n);
        return;
    }
    for (int32_t y = 0; y < rows; ++y, s += from->rowstride, d += dst->rowstride)
        out.draw(s, from, d, n);
}

void xc_scale_sample(const xc_image *src, xc_image *dst, const xg_area *clip,
                     const xg_area *src_area, const xg_area *dst_area, uint32_t color) {
    const fbc::DrawerGuard guard(src, dst, clip, src_area, dst_area, color);
    if (guard) fbc::sample(guard, dst, *src_area, *dst_area, {}, true);
}

void xc_scale_sample_rgb16_to_rgb16(const xc_image *src, xc_image *dst, const xg_area *clip,
                                    const xg_area *src_area, const xg_area *dst_area,
                                    uint32_t color) {
    // compat: despite the name it moves 32-bit words, with rows of `width`
    // words below the first source row; that row is placed through
    // rowstride, so only a pitch of whole words keeps the reads aligned.
    if (src && src->rowstride % 4 != 0) return;
    constexpr fbc::DrawerKind kWords{.src_rows = fbc::Rows::words, .dst_rows = fbc::Rows::words};
    const fbc::DrawerGuard guard(src, dst, clip, src_area, dst_area, color, kWords);
    if (guard) fbc::sample(guard, dst, *src_area, *dst_area, kWords, false);
}

}  // extern "C"

// Drawers without filtering: equal sizes, and nearest-pixel sampling.
#include <cstdint>
#include <cstring>
#include <memory>

#include "core/pixel_bounds.hpp"
#include "fbcompose/transform.h"
#include "transform/scale_common.hpp"

namespace fbc {
namespace {

// Destination column x reads source column ((x - d.x1) x (sw - 1)) /
// (dw - 1) + s.x1, so first and last columns meet exactly.
std::unique_ptr<int32_t[]> column_map(const xg_area &clip, const xg_area &s, const xg_area &d) {
    const int32_t n = width_of(clip);
    auto map = std::make_unique<int32_t[]>(static_cast<size_t>(n));
    const int64_t dwm = width_of(d) - 1;
    const int64_t swm = width_of(s) - 1;
    for (int32_t i = 0; i < n; ++i)
        map[static_cast<size_t>(i)] =
            dwm ? static_cast<int32_t>((int64_t{clip.x1 + i - d.x1} * swm) / dwm + s.x1) : s.x1;
    return map;
}

// Source row of destination row y, relative to s.y1: size over size, unlike
// the columns' (size - 1) over (size - 1); compat: the asymmetry is kept.
int32_t source_row(int32_t y, const xg_area &s, const xg_area &d) {
    return static_cast<int32_t>((int64_t{height_of(s)} * (y - d.y1)) / height_of(d));
}

template <typename Pixel>
void gather(const uint8_t *row, const int32_t *map, int32_t n, Pixel *out) {
    const auto *pixels = reinterpret_cast<const Pixel *>(row);
    for (int32_t i = 0; i < n; ++i) out[i] = pixels[map[i]];
}

}  // namespace
}  // namespace fbc

extern "C" {

void xc_scale_noscale(const xc_image *src, xc_image *dst, const xg_area *clip,
                      const xg_area *src_area, const xg_area *dst_area, uint32_t color) {
    const xc_draw_func draw = fbc::row_function(src, dst, color);
    auto *d = static_cast<uint8_t *>(xc_image_pointer(dst, clip->x1, clip->y1));
    const auto *s = static_cast<const uint8_t *>(
        xc_image_pointer(src, clip->x1 - dst_area->x1 + src_area->x1,
                         clip->y1 - dst_area->y1 + src_area->y1));
    const int32_t rows = fbc::height_of(*clip);
    // Full rows between like images are one run: the test is against the
    // source's width, not the destination's.
    if (clip->x1 == 0 && clip->x2 == src->width && src->depth == dst->depth &&
        src->rowstride == dst->rowstride) {
        draw(s, d, rows * clip->x2, color);
        return;
    }
    for (int32_t y = 0; y < rows; ++y, s += src->rowstride, d += dst->rowstride)
        draw(s, d, fbc::width_of(*clip), color);
}

void xc_scale_sample(const xc_image *src, xc_image *dst, const xg_area *clip,
                     const xg_area *src_area, const xg_area *dst_area, uint32_t color) {
    const xc_draw_func draw = fbc::row_function(src, dst, color);
    const int32_t n = fbc::width_of(*clip);
    const auto map = fbc::column_map(*clip, *src_area, *dst_area);
    const auto row = std::make_unique<uint32_t[]>(static_cast<size_t>(n));
    const auto *first = static_cast<const uint8_t *>(xc_image_pointer(src, 0, src_area->y1));
    for (int32_t y = clip->y1; y < clip->y2; ++y) {
        const uint8_t *line =
            first + static_cast<intptr_t>(fbc::source_row(y, *src_area, *dst_area)) * src->rowstride;
        if (src->depth < 17)
            fbc::gather(line, map.get(), n, reinterpret_cast<uint16_t *>(row.get()));
        else
            fbc::gather(line, map.get(), n, row.get());
        draw(row.get(), xc_image_pointer(dst, clip->x1, y), n, color);
    }
}

void xc_scale_sample_rgb16_to_rgb16(const xc_image *src, xc_image *dst, const xg_area *clip,
                                    const xg_area *src_area, const xg_area *dst_area,
                                    uint32_t color) {
    // compat: despite the name it moves 32-bit words, with rows of `width`
    // words below the first source row (which xc_image_pointer places).
    if (!fbc::rows_hold(src, 4) || !fbc::rows_hold(dst, 4)) return;
    const xc_draw_func draw = fbc::row_function(src, dst, color);
    const int32_t n = fbc::width_of(*clip);
    const auto map = fbc::column_map(*clip, *src_area, *dst_area);
    const auto row = std::make_unique<uint32_t[]>(static_cast<size_t>(n));
    const auto *first = static_cast<const uint8_t *>(xc_image_pointer(src, 0, src_area->y1));
    const intptr_t pitch = intptr_t{src->width} * 4;
    for (int32_t y = clip->y1; y < clip->y2; ++y) {
        fbc::gather(first + fbc::source_row(y, *src_area, *dst_area) * pitch, map.get(), n,
                    row.get());
        draw(row.get(), const_cast<uint32_t *>(fbc::word_at(dst, clip->x1, y)), n, color);
    }
}

}  // extern "C"

// The smoothing scalers: a box filter in each direction that shrinks below
// half, linear interpolation otherwise, all drawn by one engine.
//
// Per destination row the engine filters vertically first, into one row of
// per-column values (two source rows blended, or the channel sums of a box
// of rows), then each destination pixel combines its columns of that row.
// Boxes in both directions over colour words skip the row of sums: each
// destination pixel totals its own box where the source lies.
// The taps of both directions, and the box divisors, are worked out once per
// blit; 16-bit sources are widened to colour words once per source row and
// kept while the destination rows that blend them last.
#include "transform/scale_smooth.hpp"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "core/assert.hpp"
#include "fbcompose/transform.h"
#include "pixel/channel.hpp"
#include "pixel/scale_rows.hpp"
#include "transform/drawer_guard.hpp"
#include "transform/row_writer.hpp"
#include "transform/scale_common.hpp"

namespace fbc {
namespace {

// Box sums above this many pixels could overflow 32 bits (255 x n).
constexpr uint64_t kMaxBoxPixels = UINT32_MAX / 255;

Tap box_tap(int64_t factor, int32_t src_size, int32_t dst_size, int32_t i) {
    // Source pixel j belongs to the destination pixel its left edge falls in.
    auto edge = [&](int64_t k) {
        return static_cast<int32_t>((k * factor + kFractionMask) >> kFixedShift);
    };
    int32_t first = std::min(edge(i), src_size - 1);
    int32_t end = i == dst_size - 1 ? src_size : std::min(edge(i + 1), src_size);
    if (end <= first) end = first + 1;  // enlarging: at least one pixel
    return {first, end - first, 0};
}

Tap linear_tap(int64_t step, int32_t src_size, int32_t i) {
    const int64_t position = i * step;
    const auto first = static_cast<int32_t>(position >> kFixedShift);
    const auto f = static_cast<uint32_t>(position & kFractionMask);
    // The last pixel carries weight 0 for its right neighbour.
    return first + 1 < src_size ? Tap{first, 2, f} : Tap{src_size - 1, 1, 0};
}

px::WordTap word_tap(const Tap &t) { return {t.first, t.first + t.count - 1, t.f}; }

int32_t max_count(const std::vector<Tap> &taps) {
    int32_t m = 1;
    for (const Tap &t : taps) m = std::max(m, t.count);
    return m;
}

// The source area's rows as colour words, over the columns the taps read.
// Words are read in place; RGB565 is widened (alpha 0) into one of two kept
// rows, the one not used last, so blending rows r and r + 1 and then r + 1
// and r + 2 widens each row once.
class SourceRows {
public:
    SourceRows(const xc_image *src, const xg_area &area, int32_t first_column, int32_t columns)
        : src_(src),
          x_(area.x1 + first_column),
          y_(area.y1),
          n_(columns),
          widen_(src->depth == 16) {
        if (widen_) kept_.resize(2 * static_cast<size_t>(columns));
    }

    const uint32_t *row(int32_t r) {
        const void *p = xc_image_pointer(src_, x_, y_ + r);
        if (!widen_) return static_cast<const uint32_t *>(p);
        for (int slot : {0, 1})
            if (kept_row_[slot] == r) return slot_words(last_ = slot);
        last_ ^= 1;
        kept_row_[last_] = r;
        uint32_t *out = slot_words(last_);
        const auto *in = static_cast<const uint16_t *>(p);
        for (int32_t i = 0; i < n_; ++i) out[i] = px::unpack_565(in[i]);
        return out;
    }

private:
    uint32_t *slot_words(int slot) { return kept_.data() + static_cast<size_t>(slot) * n_; }

    const xc_image *src_;
    int32_t x_, y_, n_;
    bool widen_;
    std::vector<uint32_t> kept_;
    int32_t kept_row_[2] = {-1, -1};
    int last_ = 1;
};

// The box columns' taps with their divisors: one reciprocal per distinct
// column count and row count, not one per pixel. The edges of boxes land on
// either side of the factor, so few counts are distinct.
class BoxColumns {
public:
    explicit BoxColumns(const std::vector<Tap> &columns) {
        for (const Tap &t : columns) {
            const auto count = static_cast<uint32_t>(t.count);
            auto it = std::find(counts_.begin(), counts_.end(), count);
            index_.push_back(static_cast<uint32_t>(it - counts_.begin()));
            if (it == counts_.end()) counts_.push_back(count);
            taps_.push_back({t.first, t.count, px::Divider()});
        }
    }

    // The taps for boxes of `rows` rows; divisors recomputed only when it
    // changes.
    const px::BoxTap *for_rows(uint32_t rows) {
        if (rows != rows_) {
            rows_ = rows;
            dividers_.clear();
            for (uint32_t c : counts_) dividers_.emplace_back(c * rows);
            for (size_t i = 0; i < taps_.size(); ++i) taps_[i].divide = dividers_[index_[i]];
        }
        return taps_.data();
    }

private:
    std::vector<uint32_t> counts_;
    std::vector<uint32_t> index_;
    std::vector<px::Divider> dividers_;
    std::vector<px::BoxTap> taps_;
    uint32_t rows_ = 0;
};

void smooth_scale(const DrawerGuard &guard, xc_image *dst, const xg_area &src_area,
                  const xg_area &dst_area, uint32_t color, Filter fx, Filter fy) {
    const xc_image *src = guard.source();
    const xg_area &clip = guard.clip();
    auto columns = make_taps(fx, width_of(src_area), width_of(dst_area), clip.x1 - dst_area.x1,
                             clip.x2 - dst_area.x1);
    const auto rows = make_taps(fy, height_of(src_area), height_of(dst_area), clip.y1 - dst_area.y1,
                                clip.y2 - dst_area.y1);
    const int32_t span_first = columns.front().first;
    const int32_t span = columns.back().first + columns.back().count - span_first;
    for (Tap &t : columns) t.first -= span_first;
    const auto n = static_cast<int32_t>(columns.size());
    // Sums are divided per column first when the horizontal step needs
    // averages or a whole box could overflow.
    const bool average_rows =
        fx == Filter::linear ||
        uint64_t(max_count(columns)) * uint64_t(max_count(rows)) > kMaxBoxPixels;

    // A 16-bit source reaches the span function as opaque colour words.
    xc_image as_words = *src;
    if (src->depth == 16) {
        as_words.depth = 24;
        as_words.has_alpha = 0;
    }
    const RowWriter writer(&as_words, dst, color);
    if (!writer) return;

    // This CPU's row passes, picked once.
    static const px::LerpRowsFn lerp_rows = px::kLerpRows.pick();
    static const px::LerpWordsFn lerp_words = px::kLerpWords.pick();
    static const px::BoxRowFn box_row = px::kBoxRow.pick();
    // Boxes in both directions over colour words read in place: each
    // destination pixel sums its whole box at once, without a row of sums.
    const bool whole_boxes =
        fx == Filter::box && fy == Filter::box && !average_rows && src->depth != 16;
    SourceRows source(src, src_area, span_first, span);
    std::vector<px::WordTap> word_taps;
    for (const Tap &t : columns) word_taps.push_back(word_tap(t));
    BoxColumns boxes(columns);
    std::vector<uint32_t> blended(static_cast<size_t>(span));
    std::vector<uint32_t> sums(fy == Filter::box && !whole_boxes ? 4 * static_cast<size_t>(span)
                                                                 : 0);
    std::vector<uint32_t> out(static_cast<size_t>(n));
    for (int32_t y = clip.y1; y < clip.y2; ++y) {
        const Tap &rt = rows[static_cast<size_t>(y - clip.y1)];
        const auto row_count = static_cast<uint32_t>(rt.count);
        if (whole_boxes) {
            box_row(source.row(rt.first), src->rowstride, rt.count, boxes.for_rows(row_count),
                    out.data(), n);
            writer.draw(out.data(), nullptr, xc_image_pointer(dst, clip.x1, y), n);
            continue;
        }
        // The row of per-column values: words in `line`, or the channel sums
        // of `summed_rows` rows (0: none).
        const uint32_t *line = blended.data();
        uint32_t summed_rows = 0;
        if (fy == Filter::linear) {
            const uint32_t *top = source.row(rt.first);
            if (rt.f == 0) line = top;
            else lerp_rows(top, source.row(rt.first + 1), blended.data(), span, rt.f);
        } else {
            std::fill(sums.begin(), sums.end(), 0u);
            for (int32_t r = rt.first; r < rt.first + rt.count; ++r) {
                const auto *bytes = reinterpret_cast<const uint8_t *>(source.row(r));
                for (size_t k = 0; k < sums.size(); ++k) sums[k] += bytes[k];
            }
            summed_rows = row_count;
            if (average_rows) {
                const px::Divider divide(summed_rows);
                auto *bytes = reinterpret_cast<uint8_t *>(blended.data());
                for (size_t k = 0; k < sums.size(); ++k)
                    bytes[k] = static_cast<uint8_t>(divide(sums[k]));
                summed_rows = 0;
            }
        }
        if (fx == Filter::linear) {
            lerp_words(line, word_taps.data(), out.data(), n);
        } else if (summed_rows == 0) {
            box_row(line, 0, 1, boxes.for_rows(1), out.data(), n);
        } else {
            const px::BoxTap *taps = boxes.for_rows(summed_rows);
            for (int32_t i = 0; i < n; ++i)
                out[static_cast<size_t>(i)] = px::box_average(sums.data() + 4 * taps[i].first, 4,
                                                              taps[i].count, taps[i].divide);
        }
        writer.draw(out.data(), nullptr, xc_image_pointer(dst, clip.x1, y), n);
    }
}

void scale_with(const xc_image *src, xc_image *dst, const xg_area *clip, const xg_area *src_area,
                const xg_area *dst_area, uint32_t color, Filter fx, Filter fy) {
    const DrawerGuard guard(src, dst, clip, src_area, dst_area, color);
    if (guard) smooth_scale(guard, dst, *src_area, *dst_area, color, fx, fy);
}

}  // namespace

std::vector<Tap> make_taps(Filter filter, int32_t src_size, int32_t dst_size, int32_t from,
                           int32_t to) {
    std::vector<Tap> taps;
    taps.reserve(static_cast<size_t>(std::max(to - from, 0)));
    const int64_t factor = (int64_t{src_size} << kFixedShift) / dst_size;
    const int64_t step = end_to_end_step(src_size, dst_size);
    for (int32_t i = from; i < to; ++i)
        taps.push_back(filter == Filter::box ? box_tap(factor, src_size, dst_size, i)
                                             : linear_tap(step, src_size, i));
    return taps;
}

}  // namespace fbc

extern "C" {

void xc_scale_smooth(const xc_image *src, xc_image *dst, const xg_area *clip,
                     const xg_area *src_area, const xg_area *dst_area, uint32_t color) {
    // In 64 bits: the drawer chosen checks the areas, this only compares.
    const bool shrink_x = fbc::wide_width(*dst_area) < fbc::wide_width(*src_area) / 2;
    const bool shrink_y = fbc::wide_height(*dst_area) < fbc::wide_height(*src_area) / 2;
    xc_scale_func drawer = xc_scale_linear;
    if (shrink_x && shrink_y) drawer = xc_image_scale_down_xy;
    else if (shrink_x) drawer = xc_image_scale_down_x;
    else if (shrink_y) drawer = xc_image_scale_down_y;
    drawer(src, dst, clip, src_area, dst_area, color);
}

void xc_scale_linear(const xc_image *src, xc_image *dst, const xg_area *clip,
                     const xg_area *src_area, const xg_area *dst_area, uint32_t color) {
    const fbc::DrawerGuard guard(src, dst, clip, src_area, dst_area, color);
    if (!guard) return;
    // The guard has refused any area outside the source, so this holds
    // whatever the caller passed.
    FBC_ASSERT("scale_linear",
               src_area->x1 >= 0 && src_area->x2 <= src->width && src_area->x1 < src_area->x2);
    FBC_ASSERT("scale_linear",
               src_area->y1 >= 0 && src_area->y2 <= src->height && src_area->y1 < src_area->y2);
    fbc::smooth_scale(guard, dst, *src_area, *dst_area, color, fbc::Filter::linear,
                      fbc::Filter::linear);
}

void xc_image_scale_down_x(const xc_image *src, xc_image *dst, const xg_area *clip,
                           const xg_area *src_area, const xg_area *dst_area, uint32_t color) {
    fbc::scale_with(src, dst, clip, src_area, dst_area, color, fbc::Filter::box,
                    fbc::Filter::linear);
}

void xc_image_scale_down_y(const xc_image *src, xc_image *dst, const xg_area *clip,
                           const xg_area *src_area, const xg_area *dst_area, uint32_t color) {
    fbc::scale_with(src, dst, clip, src_area, dst_area, color, fbc::Filter::linear,
                    fbc::Filter::box);
}

void xc_image_scale_down_xy(const xc_image *src, xc_image *dst, const xg_area *clip,
                            const xg_area *src_area, const xg_area *dst_area, uint32_t color) {
    fbc::scale_with(src, dst, clip, src_area, dst_area, color, fbc::Filter::box, fbc::Filter::box);
}

}  // extern "C"

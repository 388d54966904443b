// Separable filtering: per destination row, the source rows are first
// combined into one row of per-column channel values (box sums or a linear
// blend), then each destination pixel combines those columns.
#include "transform/smooth_engine.hpp"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "transform/row_writer.hpp"
#include "transform/scale_common.hpp"

namespace fbc {
namespace {

// Box sums above this many pixels could overflow 32 bits (255 x n).
constexpr uint64_t kMaxBoxPixels = UINT32_MAX / 255;

Tap box_tap(int64_t factor, int32_t src_size, int32_t dst_size, int32_t i) {
    // Source pixel j belongs to the destination pixel its left edge falls in.
    auto edge = [&](int64_t k) { return static_cast<int32_t>((k * factor + 0xFFFF) >> 16); };
    int32_t first = std::min(edge(i), src_size - 1);
    int32_t end = i == dst_size - 1 ? src_size : std::min(edge(i + 1), src_size);
    if (end <= first) end = first + 1;  // enlarging: at least one pixel
    return {first, end - first, 0};
}

Tap linear_tap(int64_t step, int32_t src_size, int32_t i) {
    const int64_t position = i * step;
    const auto first = static_cast<int32_t>(position >> 16);
    const auto f = static_cast<uint32_t>(position & 0xFFFF);
    // The last pixel carries weight 0 for its right neighbour.
    return first + 1 < src_size ? Tap{first, 2, f} : Tap{src_size - 1, 1, 0};
}

// A source pixel as a colour word; RGB565 unpacks into the top bits.
uint32_t source_word(const uint8_t *row, int32_t x, bool rgb565) {
    if (!rgb565) return reinterpret_cast<const uint32_t *>(row)[x];
    const uint32_t v = reinterpret_cast<const uint16_t *>(row)[x];
    return ((v & 0xF800) << 8) | ((v & 0x07E0) << 5) | ((v & 0x001F) << 3);
}

struct Job {
    const xc_image *src;
    const xg_area &src_area;
    bool rgb565;
    int32_t span_first;  // first source column read, relative to src_area.x1
    int32_t span_count;
    std::vector<uint32_t> columns;  // 4 channels per source column
};

const uint8_t *source_row(const Job &job, int32_t r) {
    return static_cast<const uint8_t *>(
        xc_image_pointer(job.src, job.src_area.x1 + job.span_first, job.src_area.y1 + r));
}

// Channel sums of `tap.count` rows per column; returns the row count.
uint32_t sum_rows(Job &job, const Tap &tap) {
    std::fill(job.columns.begin(), job.columns.end(), 0u);
    for (int32_t r = tap.first; r < tap.first + tap.count; ++r) {
        const uint8_t *row = source_row(job, r);
        uint32_t *c = job.columns.data();
        for (int32_t x = 0; x < job.span_count; ++x, c += 4) {
            const uint32_t p = source_word(row, x, job.rgb565);
            for (int ch = 0; ch < 4; ++ch) c[ch] += (p >> (8 * ch)) & 0xFF;
        }
    }
    return static_cast<uint32_t>(tap.count);
}

// Two rows blended per channel by the tap's weight; returns 1.
uint32_t blend_rows(Job &job, const Tap &tap) {
    const uint8_t *top = source_row(job, tap.first);
    const uint8_t *bottom = tap.f ? source_row(job, tap.first + 1) : top;
    uint32_t *c = job.columns.data();
    for (int32_t x = 0; x < job.span_count; ++x, c += 4) {
        const uint32_t p = source_word(top, x, job.rgb565);
        const uint32_t q = tap.f ? source_word(bottom, x, job.rgb565) : p;
        for (int ch = 0; ch < 4; ++ch) c[ch] = lerp_byte(p, q, tap.f, 8 * ch) >> (8 * ch);
    }
    return 1;
}

void divide_columns(Job &job, uint32_t count) {
    if (count == 1) return;
    const Divider divide(count);
    for (uint32_t &v : job.columns) v = divide(v);
}

uint32_t box_pixel(const uint32_t *columns, const Tap &tap, uint32_t rows) {
    uint32_t sum[4] = {0, 0, 0, 0};
    for (int32_t x = 0; x < tap.count; ++x)
        for (int ch = 0; ch < 4; ++ch) sum[ch] += columns[4 * (tap.first + x) + ch];
    const Divider divide(static_cast<uint32_t>(tap.count) * rows);
    uint32_t out = 0;
    for (int ch = 0; ch < 4; ++ch) out |= divide(sum[ch]) << (8 * ch);
    return out;
}

uint32_t linear_pixel(const uint32_t *columns, const Tap &tap) {
    const uint32_t *a = columns + 4 * tap.first;
    const uint32_t *b = tap.count == 2 ? a + 4 : a;
    uint32_t out = 0;
    for (int ch = 0; ch < 4; ++ch)
        out |= ((b[ch] * tap.f + a[ch] * (65536 - tap.f)) >> 16) << (8 * ch);
    return out;
}

uint32_t max_count(const std::vector<Tap> &taps) {
    int32_t m = 1;
    for (const Tap &t : taps) m = std::max(m, t.count);
    return static_cast<uint32_t>(m);
}

}  // namespace

std::vector<Tap> make_taps(Filter filter, int32_t src_size, int32_t dst_size, int32_t from,
                           int32_t to) {
    std::vector<Tap> taps;
    taps.reserve(static_cast<size_t>(std::max(to - from, 0)));
    const int64_t factor = (int64_t{src_size} << 16) / dst_size;
    const int64_t step = end_to_end_step(src_size, dst_size);
    for (int32_t i = from; i < to; ++i)
        taps.push_back(filter == Filter::box ? box_tap(factor, src_size, dst_size, i)
                                             : linear_tap(step, src_size, i));
    return taps;
}

void smooth_scale(const DrawerGuard &guard, xc_image *dst, const xg_area &src_area,
                  const xg_area &dst_area, uint32_t color, Filter fx, Filter fy) {
    const xc_image *src = guard.source();
    const xg_area &clip = guard.clip();
    auto columns = make_taps(fx, width_of(src_area), width_of(dst_area), clip.x1 - dst_area.x1,
                             clip.x2 - dst_area.x1);
    const auto rows = make_taps(fy, height_of(src_area), height_of(dst_area),
                                clip.y1 - dst_area.y1, clip.y2 - dst_area.y1);
    Job job{src, src_area, src->depth == 16, columns.front().first, 0, {}};
    job.span_count = columns.back().first + columns.back().count - job.span_first;
    job.columns.resize(static_cast<size_t>(job.span_count) * 4);
    for (Tap &t : columns) t.first -= job.span_first;
    // Sums are divided per column first when the horizontal step needs
    // averages or a whole box could overflow.
    const bool average_rows = fx == Filter::linear ||
                              uint64_t{max_count(columns)} * max_count(rows) > kMaxBoxPixels;
    // A 16-bit source reaches the span function as opaque colour words.
    xc_image as_words = *src;
    if (job.rgb565) {
        as_words.depth = 24;
        as_words.has_alpha = 0;
    }
    const RowWriter writer(&as_words, dst, color);
    if (!writer) return;
    std::vector<uint32_t> out(columns.size());
    for (int32_t y = clip.y1; y < clip.y2; ++y) {
        const Tap &rt = rows[static_cast<size_t>(y - clip.y1)];
        uint32_t n = fy == Filter::box ? sum_rows(job, rt) : blend_rows(job, rt);
        if (average_rows) {
            divide_columns(job, n);
            n = 1;
        }
        for (size_t i = 0; i < columns.size(); ++i)
            out[i] = fx == Filter::box ? box_pixel(job.columns.data(), columns[i], n)
                                       : linear_pixel(job.columns.data(), columns[i]);
        writer.draw(out.data(), nullptr, xc_image_pointer(dst, clip.x1, y), width_of(clip));
    }
}

}  // namespace fbc

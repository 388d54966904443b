#include "transform/row_writer.hpp"

#include <algorithm>
#include <cstring>

#include "core/log.hpp"
#include "core/pixel_bounds.hpp"
#include "pixel/kernel_table.hpp"
#include "transform/scale_common.hpp"

namespace fbc {
namespace {

// Pixels per pass through the scratch words.
constexpr int64_t kChunk = 256;

// Bytes from p, a pixel of the image, to the end of its block.
int64_t bytes_left(const xc_image *image, const uint8_t *p) {
    return block_bytes(image) - static_cast<int64_t>(reinterpret_cast<uintptr_t>(p) -
                                                     reinterpret_cast<uintptr_t>(image->data));
}

bool aligned(const void *p, int32_t size) {
    return reinterpret_cast<uintptr_t>(p) % static_cast<uintptr_t>(size) == 0;
}

// Plain drawing without modulation, the modulating kind otherwise; the
// colour is passed to every call either way.
xc_draw_func row_function(const xc_image *src, const xc_image *dst, uint32_t color) {
    return color == kNoModulation ? xc_get_draw_func(src, dst)
                                  : xc_get_mul_draw_func(src, dst, color);
}

}  // namespace

RowWriter::RowWriter(const xc_image *reads_as, xc_image *dst, uint32_t color)
    : dst_(dst), color_(color) {
    if (color == kNoModulation && !reads_as->has_alpha && !dst->has_alpha && dst->depth < 16) {
        log_err("no span function draws an opaque image onto one of depth %u\n",
                static_cast<unsigned>(dst->depth));
        return;
    }
    draw_ = row_function(reads_as, dst, color);
    // The only span functions on 16-bit pixels, as the getters hand them
    // out (a faster variant or the reference); every other one moves
    // 32-bit words.
    const auto is = [this](xc_draw_func reference) {
        return draw_ == reference || draw_ == px::chosen(reference);
    };
    if (is(xc_copy_pixels_16_to_16) || is(xc_copy_pixels_16_to_rgb)) src_bytes_ = 2;
    if (is(xc_copy_pixels_16_to_16) || is(xc_copy_pixels_rgba_to_16)) dst_bytes_ = 2;
    stores_source_ = is(xc_copy_pixels_16_to_16) || is(xc_copy_pixels_rgba_to_rgba);
    if (is(xc_blend_pixels_rgba_to_rgb)) over_ = Over::rgb;
    if (is(xc_blend_pixels_rgba_to_rgba)) over_ = Over::rgba;
}

bool RowWriter::pixels_match(const xc_image *src) const {
    return src_bytes_ == pointer_step(src) && dst_bytes_ == pointer_step(dst_);
}

void RowWriter::draw(const void *row, const xc_image *from, void *to, int64_t n) const {
    if (n <= 0) return;
    const auto *s = static_cast<const uint8_t *>(row);
    auto *d = static_cast<uint8_t *>(to);
    const int64_t s_bytes = from ? bytes_left(from, s) : n * src_bytes_;
    const int64_t d_bytes = bytes_left(dst_, d);
    if (n <= INT32_MAX && s_bytes >= n * src_bytes_ && d_bytes >= n * dst_bytes_ &&
        aligned(s, src_bytes_) && aligned(d, dst_bytes_)) {
        draw_(s, d, static_cast<int32_t>(n), color_);
        return;
    }
    held(s, s_bytes, d, d_bytes, n);
}

void RowWriter::held(const uint8_t *s, int64_t s_bytes, uint8_t *d, int64_t d_bytes,
                     int64_t n) const {
    // A source pixel not wholly inside its block has no value to draw; a
    // destination pixel partly inside gets its bytes inside, which the
    // span functions compute byte by byte.
    n = std::min({n, s_bytes / src_bytes_, (d_bytes + dst_bytes_ - 1) / dst_bytes_});
    uint32_t in[kChunk], out[kChunk] = {};
    for (int64_t i = 0; i < n; i += kChunk) {
        const int64_t k = std::min(kChunk, n - i);
        const auto out_bytes =
            static_cast<size_t>(std::min(k * dst_bytes_, d_bytes - i * dst_bytes_));
        std::memcpy(in, s + i * src_bytes_, static_cast<size_t>(k * src_bytes_));
        std::memcpy(out, d + i * dst_bytes_, out_bytes);
        draw_(in, out, static_cast<int32_t>(k), color_);
        std::memcpy(d + i * dst_bytes_, out, out_bytes);
    }
}

void RowWriter::draw_overlapping(const void *row, void *to, int64_t n) const {
    const auto *s = static_cast<const uint8_t *>(row);
    auto *d = static_cast<uint8_t *>(to);
    const int64_t px = src_bytes_;
    // Front to back when the destination lies before the source, back to
    // front otherwise: each chunk of the source is taken before any write
    // reaches it.
    const bool backward = d > s;
    uint32_t scratch[kChunk];
    for (int64_t done = 0; done < n;) {
        const int64_t k = std::min(kChunk, n - done);
        const int64_t i = backward ? n - done - k : done;
        std::memcpy(scratch, s + i * px, static_cast<size_t>(k * px));
        draw_(scratch, d + i * px, static_cast<int32_t>(k), color_);
        done += k;
    }
}

}  // namespace fbc

#include "transform/drawer_guard.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "core/log.hpp"
#include "core/pixel_bounds.hpp"

namespace fbc {
namespace {

bool addressable(const xc_image *image, Rows rows) {
    return rows == Rows::words ? words_addressable(image)
                               : rows_addressable(image, pointer_step(image));
}

// Bytes from one row to the next as the drawer steps them.
int64_t row_pitch(const xc_image *image, Rows rows) {
    return rows == Rows::words ? int64_t{image->width} * 4 : image->rowstride;
}

}  // namespace

DrawerGuard::DrawerGuard(const xc_image *src, xc_image *dst, const xg_area *clip,
                         const xg_area *src_area, const xg_area *dst_area, uint32_t color,
                         DrawerKind kind)
    : src_(src), dst_(dst), kind_(kind) {
    if (!src || !dst || !clip || !src_area || !dst_area) return;
    if (!addressable(src, kind.src_rows) || !addressable(dst, kind.dst_rows)) return;
    // Corners in 64 bits: a caller's areas may span more than int32 holds.
    const int64_t dw = int64_t{dst_area->x2} - dst_area->x1;
    const int64_t dh = int64_t{dst_area->y2} - dst_area->y1;
    if (dw > INT32_MAX || dh > INT32_MAX) return;
    const int64_t sx1 = src_area->x1, sy1 = src_area->y1;
    const int64_t sx2 = kind.reads_dst_size ? sx1 + dw : src_area->x2;
    const int64_t sy2 = kind.reads_dst_size ? sy1 + dh : src_area->y2;
    if (sx1 < 0 || sy1 < 0 || sx1 >= sx2 || sy1 >= sy2 || sx2 > src->width || sy2 > src->height)
        return;
    if (clip->x1 < dst_area->x1 || clip->y1 < dst_area->y1 || clip->x2 > dst_area->x2 ||
        clip->y2 > dst_area->y2)
        return;
    clip_ = {std::max(clip->x1, 0), std::max(clip->y1, 0), std::min(clip->x2, dst->width),
             std::min(clip->y2, dst->height)};
    if (clip_.x1 >= clip_.x2 || clip_.y1 >= clip_.y2) return;
    out_ = RowWriter(src, dst, color);
    if (!out_) return;
    first_row_ = sy1;
    end_row_ = sy2;
    ok_ = !shares_pixels() || kind.orders_shared_rows || copy_source();
}

bool DrawerGuard::shares_pixels() const {
    const auto s = reinterpret_cast<uintptr_t>(src_->data);
    const auto d = reinterpret_cast<uintptr_t>(dst_->data);
    return s < d + static_cast<uintptr_t>(block_bytes(dst_)) &&
           d < s + static_cast<uintptr_t>(block_bytes(src_));
}

bool DrawerGuard::copy_source() {
    // The copy keeps the source's layout, so the drawer addresses it alike;
    // only the rows it reads are filled in, and the row after them, into
    // which a 32-bit span over 16-bit pixels runs on.
    const int64_t block = block_bytes(src_);
    const int64_t pitch = row_pitch(src_, kind_.src_rows);
    // Word rows may start at a row placed through rowstride: copy them all.
    const bool words = kind_.src_rows == Rows::words;
    const int64_t from = words ? 0 : std::min(first_row_ * pitch, block);
    const int64_t to = words ? block : std::min((end_row_ + 1) * pitch, block);
    copy_pixels_.reset(static_cast<uint8_t *>(std::malloc(static_cast<size_t>(block))));
    if (!copy_pixels_) {
        log_err("drawing an image onto itself: no memory for a copy of %lld bytes\n",
                static_cast<long long>(block));
        return false;
    }
    std::memcpy(copy_pixels_.get() + from, src_->data + from, static_cast<size_t>(to - from));
    copy_ = *src_;
    copy_.data = copy_pixels_.get();
    src_ = &copy_;
    return true;
}

}  // namespace fbc

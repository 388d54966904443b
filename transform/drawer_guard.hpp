// The one check every scanline drawer makes before it addresses a pixel,
// whether the blit called it or a caller did with areas of its own. The
// drawers trust what it lets through: their column and row maps keep a
// clip inside the destination area on source pixels inside the source
// area, so checking the areas once here keeps every pixel they address
// inside both images, for any int32 corners.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

#include "fbcompose/image.h"
#include "transform/row_writer.hpp"

namespace fbc {

// How a drawer addresses an image's rows: through rowstride at the pointer
// step of xc_image_pointer, or as 32-bit words with `width` words per row.
enum class Rows { pointer, words };

// Pixel (x, y) as a drawer addressing rows that way reaches it.
inline uint8_t *row_pixel(const xc_image *image, Rows rows, int32_t x, int32_t y) {
    return rows == Rows::words ? image->data + (int64_t{y} * image->width + x) * 4
                               : static_cast<uint8_t *>(xc_image_pointer(image, x, y));
}

struct DrawerKind {
    Rows src_rows = Rows::pointer;
    Rows dst_rows = Rows::pointer;
    // Reads as many source pixels as the destination area holds, from the
    // source area's corner (the drawer for equal sizes).
    bool reads_dst_size = false;
    // Orders its own rows when the source is the destination; otherwise a
    // source sharing pixels with the destination is read from a copy.
    bool orders_shared_rows = false;
};

class DrawerGuard {
public:
    // Lets a drawing through when both images have addressable rows, the
    // source area (as the drawer reads it) lies in the source, the clip is
    // non-empty and lies in the destination area (a clip reaching past the
    // destination image is held to it, as the blit holds its own), and a
    // span function draws the images with the colour.
    DrawerGuard(const xc_image *src, xc_image *dst, const xg_area *clip, const xg_area *src_area,
                const xg_area *dst_area, uint32_t color, DrawerKind kind = {});
    DrawerGuard(const DrawerGuard &) = delete;
    DrawerGuard &operator=(const DrawerGuard &) = delete;

    explicit operator bool() const { return ok_; }
    // The clip to draw, within the destination image and area.
    const xg_area &clip() const { return clip_; }
    // The image to read: the source, or the copy taken of it.
    const xc_image *source() const { return src_; }
    // Where the rows go.
    const RowWriter &out() const { return out_; }
    // Whether the source's pixel block overlaps the destination's.
    bool shares_pixels() const;
    // Reads from a copy of the source rows the drawer needs from now on, as
    // if the source had been copied before drawing; false (nothing may be
    // drawn) when there is no memory for it.
    bool copy_source();

private:
    bool ok_ = false;
    xg_area clip_{};
    const xc_image *src_ = nullptr;
    const xc_image *dst_ = nullptr;
    RowWriter out_;
    DrawerKind kind_;
    int64_t first_row_ = 0, end_row_ = 0;  // source rows read
    xc_image copy_{};
    std::unique_ptr<uint8_t, void (*)(void *)> copy_pixels_{nullptr, std::free};
};

}  // namespace fbc

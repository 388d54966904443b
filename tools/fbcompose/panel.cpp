#include "panel.hpp"

#include <algorithm>
#include <cstdio>
#include <new>

#include "cli.hpp"

namespace fbctool {

bool parse_depth(const std::string &text, int32_t &depth) {
    return (text == "16" || text == "18" || text == "32") && parse_int(text, 16, 32, depth);
}

bool parse_rotation(const std::string &text, int32_t &rotation) {
    return (text == "0" || text == "90" || text == "270") && parse_int(text, 0, 270, rotation);
}

bool panel::make(int32_t depth, int32_t rotation, int32_t canvas_width, int32_t canvas_height,
                 panel &out, std::string &problem) {
    out.convert_ = xc_get_convert_func(0, 0, depth, rotation);
    if (!out.convert_) {
        problem = cat({"no converter for depth ", std::to_string(depth), " and rotation ",
                       std::to_string(rotation)});
        return false;
    }
    out.depth_ = depth;
    out.rotation_ = rotation;
    out.canvas_width_ = canvas_width;
    out.canvas_height_ = canvas_height;
    const bool turned = rotation != 0;
    out.width_ = turned ? canvas_height : canvas_width;
    out.height_ = turned ? canvas_width : canvas_height;
    out.pixel_bytes_ = depth == 16 ? 2 : 4;
    // A frame buffer the machine cannot hold is reported, not thrown.
    try {
        out.frame_.assign(static_cast<size_t>(out.width_) * static_cast<size_t>(out.height_) *
                              static_cast<size_t>(out.pixel_bytes_), 0);
    } catch (const std::bad_alloc &) {
        problem = cat({"no memory for a ", std::to_string(out.width_), "x",
                       std::to_string(out.height_), " frame buffer"});
        return false;
    }
    return true;
}

void panel::update(const xc_image *canvas, xg_rect r) {
    // Damage rectangles are whole tiles and may reach past the canvas.
    const int32_t x = std::max(r.x, 0), y = std::max(r.y, 0);
    const int32_t w = std::min(r.x + r.w, canvas_width_) - x;
    const int32_t h = std::min(r.y + r.h, canvas_height_) - y;
    if (w <= 0 || h <= 0) return;
    // Where the rectangle's first output pixel lands, and the length of one
    // output row: canvas (cx, cy) goes to (H-1-cy, cx) turned by 90 and to
    // (cy, W-1-cx) turned by 270.
    int32_t px = x, py = y, row = w;
    if (rotation_ == 90) {
        px = canvas_height_ - y - h;
        py = x;
        row = h;
    } else if (rotation_ == 270) {
        px = y;
        py = canvas_width_ - x - w;
        row = h;
    }
    const int32_t canvas_row = canvas->rowstride / 4;
    uint8_t *dst = frame_.data() + (static_cast<size_t>(py) * static_cast<size_t>(width_) +
                                    static_cast<size_t>(px)) * static_cast<size_t>(pixel_bytes_);
    convert_(xc_image_pointer(canvas, x, y), dst, canvas_row - w, width_ - row, w, h, px, py);
}

namespace {

uint32_t widen(uint32_t v, int bits) {
    return (v << (8 - bits)) | (v >> (2 * bits - 8));  // replicate the top bits
}

uint32_t decode(const uint8_t *p, int32_t depth) {
    if (depth == 16) {
        const uint32_t v = static_cast<uint32_t>(p[0] | p[1] << 8);
        return 0xFF000000u | widen(v >> 11, 5) << 16 | widen((v >> 5) & 63, 6) << 8 |
               widen(v & 31, 5);
    }
    const uint32_t v = static_cast<uint32_t>(p[0] | p[1] << 8 | p[2] << 16) |
                       static_cast<uint32_t>(p[3]) << 24;
    if (depth == 18)
        return 0xFF000000u | widen((v >> 12) & 63, 6) << 16 | widen((v >> 6) & 63, 6) << 8 |
               widen(v & 63, 6);
    return 0xFF000000u | (v & 0xFFFFFFu);
}

}  // namespace

xc_image *panel::preview() const {
    xc_image *image = xc_image_create(width_, height_);
    if (!image || !image->data) return image;
    for (int32_t y = 0; y < height_; ++y) {
        auto *out = static_cast<uint32_t *>(xc_image_pointer(image, 0, y));
        const uint8_t *in = frame_.data() + static_cast<size_t>(y) * static_cast<size_t>(width_) *
                                                static_cast<size_t>(pixel_bytes_);
        for (int32_t x = 0; x < width_; ++x) out[x] = decode(in + x * pixel_bytes_, depth_);
    }
    return image;
}

bool panel::write_raw(const std::string &path) const {
    FILE *file = std::fopen(path.c_str(), "wb");
    if (!file) return false;
    const bool ok = std::fwrite(frame_.data(), 1, frame_.size(), file) == frame_.size();
    return std::fclose(file) == 0 && ok;
}

}  // namespace fbctool

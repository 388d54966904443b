// The device's panel as the tool models it: a frame buffer in the panel's
// pixel format and orientation, filled from a composed canvas one damaged
// rectangle at a time through the library's converters.
#pragma once

#include <fbcompose/fbcompose.h>

#include <cstdint>
#include <string>
#include <vector>

namespace fbctool {

class panel {
public:
    // depth 16, 18 or 32; rotation 0, 90 or 270; the canvas's size.
    static bool make(int32_t depth, int32_t rotation, int32_t canvas_width,
                     int32_t canvas_height, panel &out, std::string &problem);

    // Converts one canvas rectangle (clipped to the canvas) into the frame
    // buffer, with the dither phase of its position on the panel.
    void update(const xc_image *canvas, xg_rect rect);

    // The panel's pixels widened back to 8 bits per channel, in the panel's
    // orientation, as an opaque image (caller unrefs).
    xc_image *preview() const;

    bool write_raw(const std::string &path) const;

    int32_t width() const { return width_; }
    int32_t height() const { return height_; }
    int32_t depth() const { return depth_; }
    size_t bytes() const { return frame_.size(); }

private:
    int32_t depth_ = 0, rotation_ = 0;
    int32_t canvas_width_ = 0, canvas_height_ = 0;
    int32_t width_ = 0, height_ = 0;  // the panel's own, after rotation
    int32_t pixel_bytes_ = 0;
    xc_convert_func convert_ = nullptr;
    std::vector<uint8_t> frame_;
};

// "16", "18" or "32" and "0", "90" or "270" from the command line.
bool parse_depth(const std::string &text, int32_t &depth);
bool parse_rotation(const std::string &text, int32_t &rotation);

}  // namespace fbctool

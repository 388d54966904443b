// The panels the tool draws on: one in its own memory, written to files,
// and a device's.
#pragma once

#include <fbcompose/fbcompose.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace fbctool {

// A panel whose frame buffer is the tool's own memory: what convert and the
// demo write to files, byte for byte what a device panel would hold.
class memory_panel {
public:
    // A panel for a canvas of the given size: depth 16, 18 or 32, rotation
    // 0, 90 or 270. False with `problem` when the memory is not there.
    bool make(int32_t depth, int32_t rotation, int32_t canvas_width, int32_t canvas_height,
              std::string &problem);

    fbcompose::panel &panel() { return panel_; }
    const std::vector<uint8_t> &bytes() const { return bytes_; }
    // The panel's own size, after rotation.
    int32_t width() const { return width_; }
    int32_t height() const { return height_; }
    int32_t depth() const { return depth_; }

private:
    std::vector<uint8_t> bytes_;
    fbcompose::panel panel_;
    int32_t width_ = 0, height_ = 0, depth_ = 0;
};

// A frame-buffer device's panel; empty after printing
// "fbcompose: cannot use the panel 'PATH': CAUSE".
fbcompose::panel open_device(const std::string &path, int32_t rotation);

// How the panel's pixels are laid out, for the tool's messages.
const char *pixel_layout(int32_t depth);

// The panel's pixels widened back to 8 bits per channel, in the panel's
// orientation, as an opaque image: what the panel will show.
fbcompose::image decode_panel(const memory_panel &panel);

}  // namespace fbctool

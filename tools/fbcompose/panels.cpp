#include "panels.hpp"

#include <new>

#include "cli.hpp"
#include "diagnostics.hpp"

namespace fbctool {

bool memory_panel::make(int32_t depth, int32_t rotation, int32_t canvas_width,
                        int32_t canvas_height, std::string &problem) {
    const bool turned = rotation != 0;
    width_ = turned ? canvas_height : canvas_width;
    height_ = turned ? canvas_width : canvas_height;
    depth_ = depth;
    const int32_t pixel_bytes = depth == 16 ? 2 : 4;
    // A frame buffer the machine cannot hold is reported, not thrown.
    try {
        bytes_.assign(static_cast<size_t>(width_) * static_cast<size_t>(height_) *
                          static_cast<size_t>(pixel_bytes),
                      0);
    } catch (const std::bad_alloc &) {
        problem = cat({"no memory for a ", std::to_string(width_), "x", std::to_string(height_),
                       " frame buffer"});
        return false;
    }
    panel_ = fbcompose::panel::in_memory(bytes_.data(), width_, height_, width_ * pixel_bytes,
                                         depth, rotation);
    if (!panel_) problem = "the library refused the panel";
    return static_cast<bool>(panel_);
}

fbcompose::panel open_device(const std::string &path, int32_t rotation) {
    clear_cause();
    fbcompose::panel panel = fbcompose::panel::open_fbdev(path, rotation);
    if (!panel) fail(cat({"cannot use the panel '", path, "': ", cause()}));
    return panel;
}

const char *pixel_layout(int32_t depth) {
    return depth == 16 ? "RGB565 words" : depth == 18 ? "RGB666 in 32-bit words" : "32-bit words";
}

}  // namespace fbctool

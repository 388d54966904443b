#include "image_io.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "cli.hpp"
#include "diagnostics.hpp"

namespace fbctool {
namespace {

// The library's last word on the failure, else what the system says about
// the file, else that no loader could make sense of it.
std::string load_failure_cause(const std::string &path) {
    std::string why = cause();
    if (!why.empty()) return why;
    if (FILE *file = std::fopen(path.c_str(), "rb")) {
        std::fclose(file);
        return "not an image file the loaders read (PNG, JPEG, BMP, GIF, WBMP)";
    }
    return std::strerror(errno);
}

}  // namespace

fbcompose::image load_image(const std::string &path) {
    clear_cause();
    fbcompose::image image = fbcompose::image::from_file(path);
    if (image && image.load() && image.width() > 0 && image.height() > 0) return image;
    fail(cat({"cannot load '", path, "': ", load_failure_cause(path)}));
    return {};
}

int play_once(const fbcompose::image &animation, const std::function<void(int32_t)> &frame) {
    constexpr int kMaxFrames = 10000;
    frame(xc_image_get_delay(animation.get()));
    int frames = 1;
    int32_t delay, x, y, w, h;
    for (; frames < kMaxFrames && xc_image_next_frame(animation.get(), &delay, &x, &y, &w, &h) > 0;
         ++frames)
        frame(delay);
    return frames;
}

fbcompose::image flatten(const fbcompose::image &image) {
    fbcompose::image canvas = fbcompose::image::create(image.width(), image.height());
    if (!canvas) return canvas;
    const xg_area clip = canvas.area();
    xg_area all = clip;
    xc_rectangle_draw(canvas.get(), &clip, &all, 0xFF000000u);
    xc_image_blit(image.get(), canvas.get(), &clip, 0, 0, image.width(), image.height(), 0, 0,
                  image.width(), image.height(), 0, 0xFFFFFFFFu);
    return canvas;
}

}  // namespace fbctool

// fbcompose info: what the loaders see in image files.
#include <fbcompose/fbcompose.h>

#include <cstdio>
#include <string>

#include "cli.hpp"
#include "commands.hpp"

namespace fbctool {
namespace {

constexpr std::string_view kCommand = "info";
// An animation that never comes back to its first frame is cut off here.
constexpr int kMaxFrames = 10000;

int help() {
    std::printf(
        "usage: fbcompose info FILE...\n\n"
        "Prints each file's type, size and alpha, and for animations the number\n"
        "of frames and their delays in milliseconds.\n");
    return 0;
}

// Plays the animation once round, collecting each frame's delay.
std::string frame_delays(xc_image *image, int &frames) {
    std::string delays = std::to_string(xc_image_get_delay(image));
    frames = 1;
    int32_t delay, x, y, w, h;
    while (frames < kMaxFrames) {
        const int index = xc_image_next_frame(image, &delay, &x, &y, &w, &h);
        if (index <= 0) break;
        delays += cat({" ", std::to_string(delay)});
        ++frames;
        if (frames % 500 == 0) std::fprintf(stderr, "fbcompose info: %d frames so far\n", frames);
    }
    return delays;
}

}  // namespace

int run_info(int argc, char **argv) {
    args a(argc, argv);
    if (a.wants_help()) return help();
    if (a.empty()) return usage_error(kCommand, "needs at least one file");
    xc_init();
    int status = 0;
    while (!a.empty()) {
        const std::string path = a.take();
        xc_image *image = xc_image_new_from_file(path.c_str());
        if (!image) {
            status = fail(kCommand, cat({"cannot open '", path, "' as an image"}));
            continue;
        }
        std::printf("%s: %s, %dx%d, %s", path.c_str(), image->type_name ? image->type_name : "?",
                    image->width, image->height, image->has_alpha ? "alpha" : "opaque");
        if (image->is_ani) {
            if (xc_image_load_data(image) < 0) {
                std::printf("\n");
                status = fail(kCommand, cat({"cannot decode '", path, "'"}));
            } else {
                int frames = 0;
                const std::string delays = frame_delays(image, frames);
                std::printf(", %d frames, delays (ms): %s\n", frames, delays.c_str());
            }
        } else {
            std::printf("\n");
        }
        xc_image_unref(image);
    }
    return status;
}

}  // namespace fbctool

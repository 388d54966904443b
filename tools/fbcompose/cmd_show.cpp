// fbcompose show: images on a real panel, each fitted to it, animations
// frame by frame.
#include <chrono>
#include <cstdio>
#include <thread>

#include "cli.hpp"
#include "commands.hpp"
#include "image_io.hpp"
#include "panels.hpp"

namespace fbctool {
namespace {

constexpr std::string_view kCommand = "show";

constexpr const char *kHelp =
    "usage: fbcompose show IMAGE... --fb DEVICE [--rotate 0|90|270] [--delay MS]\n\n"
    "Shows each image on a Linux frame-buffer device such as /dev/fb0: scaled to\n"
    "fit the panel whole, with black bars (fit's matte). A still image stays\n"
    "--delay milliseconds (default 3000); an animated GIF plays once round, each\n"
    "frame for its own delay. --rotate says how the panel is mounted (the picture\n"
    "is turned so that it shows upright). The last image stays on the panel.\n";
constexpr option_spec kOptions[] = {{"--fb", true}, {"--rotate", true}, {"--delay", true}};
constexpr command_spec kSpec{kCommand, kOptions, kHelp};

// GIFs often ask for no delay at all; like most viewers, show those frames
// for a tenth of a second.
std::chrono::milliseconds frame_time(int32_t delay) {
    return std::chrono::milliseconds(delay < 20 ? 100 : delay);
}

void show_frame(fbcompose::panel &panel, const fbcompose::image &frame) {
    const auto fitted = fbcompose::image::adopt(
        xc_image_fit_size(frame.get(), panel.canvas_width(), panel.canvas_height(), "matte"));
    if (fitted && fitted->data) panel.update(fitted);
}

void show(fbcompose::panel &panel, const fbcompose::image &image, int32_t still_ms) {
    if (!image->is_ani) {
        show_frame(panel, image);
        std::this_thread::sleep_for(std::chrono::milliseconds(still_ms));
        return;
    }
    play_once(image, [&](int32_t delay) {
        show_frame(panel, image);
        std::this_thread::sleep_for(frame_time(delay));
    });
}

}  // namespace

int run_show(int argc, char **argv) {
    command_line a;
    int status = 0;
    if (!a.read(kSpec, argc, argv, status)) return status;
    int32_t rotation = 0, delay = 3000;
    const std::string fb = a.value("--fb");
    if (a.operands.empty()) return usage_error(kCommand, "needs at least one image");
    if (fb.empty()) return usage_error(kCommand, "needs --fb DEVICE");
    if (!parse_rotation(a.value("--rotate", "0"), rotation))
        return usage_error(kCommand,
                           cat({"bad --rotate '", a.value("--rotate"), "' (0, 90 or 270)"}));
    if (!parse_int(a.value("--delay", "3000"), 0, 3600000, delay))
        return usage_error(kCommand,
                           cat({"bad --delay '", a.value("--delay"), "' (0 to 3600000 ms)"}));

    xc_init();
    fbcompose::panel panel = open_device(fb, rotation);
    if (!panel) return kFailed;
    for (const std::string &path : a.operands) {
        const fbcompose::image image = load_image(path);
        if (!image) {
            status = kFailed;
            continue;
        }
        std::printf("%s: %dx%d on %s (%dx%d)\n", path.c_str(), image.width(), image.height(),
                    fb.c_str(), panel.canvas_width(), panel.canvas_height());
        std::fflush(stdout);
        show(panel, image, delay);
    }
    return status;
}

}  // namespace fbctool

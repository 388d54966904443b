// fbcompose fit: an image cropped, matted or stretched to a size.
#include <fbcompose/fbcompose.h>

#include <cstdio>
#include <cstring>

#include "cli.hpp"
#include "commands.hpp"
#include "image_io.hpp"

namespace fbctool {
namespace {

constexpr std::string_view kCommand = "fit";
constexpr const char *kModes[] = {"crop", "matte", "matte-both", "distort"};

int help() {
    std::printf(
        "usage: fbcompose fit IN WxH --mode crop|matte|matte-both|distort\n"
        "                     -o OUT.png|OUT.jpg [--quality Q]\n\n"
        "crop cuts the excess, matte shrinks or enlarges into black bars, matte-both\n"
        "does the same but never enlarges, distort stretches. Q is the JPEG quality\n"
        "(1-100; by default 80 for small images, 60 otherwise).\n");
    return 0;
}

bool known_mode(const std::string &mode) {
    for (const char *m : kModes)
        if (mode == m) return true;
    return false;
}

}  // namespace

int run_fit(int argc, char **argv) {
    args a(argc, argv);
    if (a.wants_help()) return help();
    if (a.empty()) return usage_error(kCommand, "needs an input image");
    const std::string in = a.take();
    if (a.empty()) return usage_error(kCommand, "needs a size WxH");
    const std::string size = a.take();
    int32_t width = 0, height = 0, quality = 0;
    if (!parse_size(size, width, height)) return usage_error(kCommand, cat({"bad size '", size, "'"}));
    std::string mode, out, value;
    while (!a.empty()) {
        if (a.take_option("--mode", mode) || a.take_option("-o", out)) continue;
        if (a.take_option("--quality", value) && parse_int(value, 1, 100, quality)) continue;
        return usage_error(kCommand, cat({"bad argument '", value.empty() ? a.take() : value, "'"}));
    }
    if (!known_mode(mode)) return usage_error(kCommand, cat({"unknown --mode '", mode, "'"}));
    if (out.empty()) return usage_error(kCommand, "needs -o OUT.png or OUT.jpg");

    xc_init();
    std::string problem;
    xc_image *image = load_image(in, problem);
    if (!image) return fail(kCommand, problem);
    xc_image *fitted = xc_image_fit_size(image, width, height, mode.c_str());
    xc_image_unref(image);
    char options[32] = "";
    if (quality > 0) std::snprintf(options, sizeof options, "quality=%d", quality);
    const int saved = fitted && fitted->data ? xc_image_save(fitted, out.c_str(), nullptr, options) : -1;
    xc_image_unref(fitted);
    if (saved < 0) return fail(kCommand, cat({"cannot write '", out, "' (the name must end in .png, .jpg or .jpeg)"}));
    std::printf("%s -> %s: %dx%d, %s\n", in.c_str(), out.c_str(), width, height, mode.c_str());
    return 0;
}

}  // namespace fbctool

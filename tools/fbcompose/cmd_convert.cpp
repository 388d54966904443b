// fbcompose convert: any image the loaders read, into the panel's format
// (boot splashes, firmware assets).
#include <fbcompose/fbcompose.h>

#include <cstdio>

#include "cli.hpp"
#include "commands.hpp"
#include "image_io.hpp"
#include "panel.hpp"

namespace fbctool {
namespace {

constexpr std::string_view kCommand = "convert";

int help() {
    std::printf(
        "usage: fbcompose convert IN -o OUT.raw --depth 16|18|32 [--rotate 0|90|270]\n"
        "                         [--preview OUT.png]\n\n"
        "Writes IN (PNG, JPEG, BMP, GIF, WBMP) as panel pixels: RGB565 words, RGB666 in\n"
        "32-bit words, or 32-bit words, little-endian, rows top to bottom in the panel's\n"
        "orientation, ordered-dithered. Transparent pixels show black.\n");
    return 0;
}

}  // namespace

int run_convert(int argc, char **argv) {
    args a(argc, argv);
    if (a.wants_help()) return help();
    if (a.empty()) return usage_error(kCommand, "needs an input image");
    const std::string in = a.take();
    std::string out, preview, value;
    int32_t depth = 0, rotation = 0;
    while (!a.empty()) {
        if (a.take_option("-o", out) || a.take_option("--preview", preview)) continue;
        if (a.take_option("--depth", value)) {
            if (!parse_depth(value, depth)) return usage_error(kCommand, cat({"bad --depth '", value, "'"}));
        } else if (a.take_option("--rotate", value)) {
            if (!parse_rotation(value, rotation))
                return usage_error(kCommand, cat({"bad --rotate '", value, "'"}));
        } else {
            return usage_error(kCommand, cat({"unknown argument '", a.take(), "'"}));
        }
    }
    if (out.empty() || depth == 0) return usage_error(kCommand, "needs -o OUT.raw and --depth");

    xc_init();
    std::string problem;
    xc_image *image = load_image(in, problem);
    if (!image) return fail(kCommand, problem);
    xc_image *canvas = flatten(image);
    const int32_t width = image->width, height = image->height;
    xc_image_unref(image);
    panel screen;
    if (!canvas->data || !panel::make(depth, rotation, width, height, screen, problem)) {
        xc_image_unref(canvas);
        return fail(kCommand, problem.empty() ? "no memory for the image" : problem);
    }
    screen.update(canvas, {0, 0, width, height});
    xc_image_unref(canvas);
    if (!screen.write_raw(out)) return fail(kCommand, cat({"cannot write '", out, "'"}));
    if (!preview.empty()) {
        xc_image *shown = screen.preview();
        const int saved = xc_image_save(shown, preview.c_str(), nullptr, nullptr);
        xc_image_unref(shown);
        if (saved < 0) return fail(kCommand, cat({"cannot write '", preview, "'"}));
    }
    std::printf("%s: %dx%d -> %s: %dx%d, %d bits, %zu bytes\n", in.c_str(), width, height,
                out.c_str(), screen.width(), screen.height(), depth, screen.bytes());
    return 0;
}

}  // namespace fbctool

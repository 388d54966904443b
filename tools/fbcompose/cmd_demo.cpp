// fbcompose demo: composes a sample device screen.
#include <fbcompose/fbcompose.h>

#include <cstdio>

#include "cli.hpp"
#include "commands.hpp"

namespace fbctool {
namespace {

constexpr std::string_view kCommand = "demo";

// Fills the canvas with a diagonal gradient, one row at a time.
void paint_gradient(xc_image *canvas) {
    for (int32_t y = 0; y < canvas->height; ++y) {
        auto *row = static_cast<uint32_t *>(xc_image_pointer(canvas, 0, y));
        for (int32_t x = 0; x < canvas->width; ++x) {
            const auto r = static_cast<uint32_t>(x * 255 / (canvas->width - 1));
            const auto g = static_cast<uint32_t>(y * 255 / (canvas->height - 1));
            row[x] = 0xFF000000u | r << 16 | g << 8 | 0x40u;
        }
    }
}

}  // namespace

int run_demo(int argc, char **argv) {
    args a(argc, argv);
    if (a.wants_help()) {
        std::printf("usage: fbcompose demo [--size WxH]\n");
        return 0;
    }
    int32_t width = 800, height = 480;
    std::string value;
    while (!a.empty()) {
        if (a.take_option("--size", value)) {
            if (!parse_size(value, width, height) || width < 2 || height < 2)
                return usage_error(kCommand, cat({"bad --size '", value, "'"}));
            continue;
        }
        return usage_error(kCommand, cat({"unknown argument '", a.take(), "'"}));
    }
    if (xc_init() != 0) return fail(kCommand, "the font engine did not start");
    xc_image *canvas = xc_image_create(width, height);
    if (!canvas || !canvas->data) {
        xc_image_unref(canvas);
        return fail(kCommand, "no memory for a canvas of that size");
    }
    paint_gradient(canvas);
    std::printf("canvas %dx%d, %d bytes per row: gradient painted\n", canvas->width,
                canvas->height, canvas->rowstride);
    xc_image_unref(canvas);
    return 0;
}

}  // namespace fbctool

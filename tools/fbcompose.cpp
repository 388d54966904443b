// fbcompose: the library's main job from the command line.
#include <fbcompose/fbcompose.h>

#include <cstdio>
#include <cstring>

namespace {

int usage(FILE *out) {
    std::fprintf(out,
                 "usage: fbcompose demo [--size WxH]\n"
                 "  demo   compose a sample screen and report what was done\n");
    return out == stdout ? 0 : 2;
}

// Fills the canvas with a diagonal gradient, one row at a time.
void paint_gradient(xc_image *canvas) {
    for (int32_t y = 0; y < canvas->height; ++y) {
        auto *row = static_cast<uint32_t *>(xc_image_pointer(canvas, 0, y));
        for (int32_t x = 0; x < canvas->width; ++x) {
            const uint32_t r = static_cast<uint32_t>(x * 255 / (canvas->width - 1));
            const uint32_t g = static_cast<uint32_t>(y * 255 / (canvas->height - 1));
            row[x] = 0xFF000000u | r << 16 | g << 8 | 0x40u;
        }
    }
}

int demo(int argc, char **argv) {
    int32_t width = 800, height = 480;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--size") == 0 && i + 1 < argc &&
            std::sscanf(argv[++i], "%dx%d", &width, &height) == 2 && width > 1 && height > 1)
            continue;
        if (std::strcmp(argv[i], "--help") == 0) return usage(stdout);
        std::fprintf(stderr, "fbcompose demo: bad argument '%s'\n", argv[i]);
        return 2;
    }
    if (xc_init() != 0) {
        std::fprintf(stderr, "fbcompose demo: the font engine did not start\n");
        return 1;
    }
    xc_image *canvas = xc_image_create(width, height);
    if (!canvas || !canvas->data) {
        std::fprintf(stderr, "fbcompose demo: no memory for a %dx%d canvas\n", width, height);
        return 1;
    }
    paint_gradient(canvas);
    std::printf("canvas %dx%d, %d bytes per row: gradient painted\n", canvas->width,
                canvas->height, canvas->rowstride);
    xc_image_unref(canvas);
    return 0;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc < 2) return demo(0, nullptr);
    if (std::strcmp(argv[1], "demo") == 0) return demo(argc - 2, argv + 2);
    if (std::strcmp(argv[1], "--help") == 0) return usage(stdout);
    std::fprintf(stderr, "fbcompose: unknown command '%s'\n", argv[1]);
    return usage(stderr);
}

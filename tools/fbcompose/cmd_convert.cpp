// fbcompose convert: any image the loaders read, into the panel's format
// (boot splashes, firmware assets).
#include <cstdio>

#include "cli.hpp"
#include "commands.hpp"
#include "image_io.hpp"
#include "outputs.hpp"
#include "panels.hpp"
#include "progress.hpp"

namespace fbctool {
namespace {

constexpr std::string_view kCommand = "convert";

constexpr const char *kHelp =
    "usage: fbcompose convert IN -o OUT.raw --depth 16|18|32 [--rotate 0|90|270]\n"
    "                         [--preview OUT.png]\n\n"
    "Writes IN (PNG, JPEG, BMP, GIF, WBMP) as the bytes of a panel frame buffer,\n"
    "the image drawn over black (transparent pixels show black):\n"
    "  --depth 16  RGB565: one 16-bit word per pixel, red in bits 15-11, green\n"
    "              10-5, blue 4-0\n"
    "  --depth 18  RGB666: one 32-bit word per pixel, red in bits 17-12, green\n"
    "              11-6, blue 5-0, the top 14 bits 0\n"
    "  --depth 32  one 32-bit word per pixel, red in bits 23-16, green 15-8,\n"
    "              blue 7-0, the top 8 bits 255\n"
    "Words are little-endian, rows follow each other top to bottom without\n"
    "padding, pixels left to right, all in the panel's orientation: --rotate 90\n"
    "or 270 writes the picture turned clockwise by that much (a WxH image gives\n"
    "H columns and W rows), as a panel mounted that way needs. 16 and 18 bits are\n"
    "ordered-dithered (4x4) by each pixel's place on the panel. -o - writes the bytes to\n"
    "standard output. --preview writes a PNG (or JPEG) decoded back from those\n"
    "bytes: what the panel will show.\n";
constexpr option_spec kOptions[] = {
    {"-o", true}, {"--depth", true}, {"--rotate", true}, {"--preview", true}};
constexpr command_spec kSpec{kCommand, kOptions, kHelp};

struct request {
    std::string in, out, preview;
    int32_t depth = 0, rotation = 0;
};

int read_request(const command_line &a, const outputs &written, request &r) {
    if (a.operands.size() != 1) return usage_error(kCommand, "needs one input image");
    r.in = a.operands[0];
    r.out = a.value("-o");
    r.preview = a.value("--preview");
    if (r.out.empty() || !a.has("--depth"))
        return usage_error(kCommand, "needs -o OUT.raw and --depth");
    if (!parse_depth(a.value("--depth"), r.depth))
        return usage_error(kCommand,
                           cat({"bad --depth '", a.value("--depth"), "' (16, 18 or 32)"}));
    if (a.has("--rotate") && !parse_rotation(a.value("--rotate"), r.rotation))
        return usage_error(kCommand,
                           cat({"bad --rotate '", a.value("--rotate"), "' (0, 90 or 270)"}));
    if (int bad = written.check(r.out, output_kind::bytes)) return bad;
    if (!r.preview.empty()) return written.check(r.preview, output_kind::image);
    return 0;
}

}  // namespace

int run_convert(int argc, char **argv) {
    command_line a;
    int status = 0;
    if (!a.read(kSpec, argc, argv, status)) return status;
    request r;
    outputs written(kCommand);
    if (int bad = read_request(a, written, r)) return bad;

    xc_init();
    progress work(kCommand);
    work.at("loading");
    const fbcompose::image image = load_image(r.in);
    if (!image) return kFailed;
    work.at("converting");
    const fbcompose::image canvas = flatten(image);
    memory_panel screen;
    std::string problem;
    if (!canvas) return fail("no memory for the image");
    if (!screen.make(r.depth, r.rotation, image.width(), image.height(), problem))
        return fail(problem);
    screen.panel().update(canvas);
    work.at("writing");
    if (!written.write_bytes(r.out, screen.bytes().data(), screen.bytes().size())) return kFailed;
    if (!r.preview.empty() && !written.save_image(r.preview, decode_panel(screen).get()))
        return kFailed;
    written.keep();
    // With -o - the frame buffer is standard output: the report goes aside.
    std::fprintf(is_stdout(r.out) ? stderr : stdout, "%s: %dx%d -> %s: %dx%d, %d bits, %zu bytes\n",
                 r.in.c_str(), image.width(), image.height(), r.out.c_str(), screen.width(),
                 screen.height(), r.depth, screen.bytes().size());
    return 0;
}

}  // namespace fbctool

// fbcompose fit: an image cropped, matted or stretched to a size.
#include <cstdio>

#include "cli.hpp"
#include "commands.hpp"
#include "image_io.hpp"
#include "outputs.hpp"
#include "progress.hpp"

namespace fbctool {
namespace {

constexpr std::string_view kCommand = "fit";
constexpr const char *kModes[] = {"crop", "matte", "matte-both", "distort"};

constexpr const char *kHelp =
    "usage: fbcompose fit IN WxH --mode crop|matte|matte-both|distort\n"
    "                     -o OUT.png|OUT.jpg [--quality Q]\n\n"
    "Writes IN scaled (smoothly) to WxH, opaque, as PNG or JPEG by OUT's suffix.\n"
    "  matte       the whole picture, shrunk or enlarged to fit, black bars around it\n"
    "  matte-both  the same, but a picture smaller than WxH is centred, not enlarged\n"
    "  distort     the whole picture stretched to WxH\n"
    "  crop        fills WxH and cuts the excess, centred. A portrait source (taller\n"
    "              than WxH's shape) loses its top and bottom as expected. A landscape\n"
    "              source keeps its full height and takes W0*H/W of its columns (W0 its\n"
    "              width), which is the true crop only when H equals its height;\n"
    "              otherwise the picture comes out squeezed or stretched sideways (a\n"
    "              200x100 source cropped to 100x100 is the whole picture at half its\n"
    "              width). The library keeps this on purpose; for landscape sources\n"
    "              use matte, or fit to the source's own height first.\n"
    "Q is the JPEG quality (1-100; by default 80 for small images, 60 otherwise).\n";
constexpr option_spec kOptions[] = {{"--mode", true}, {"-o", true}, {"--quality", true}};
constexpr command_spec kSpec{kCommand, kOptions, kHelp};

bool known_mode(const std::string &mode) {
    for (const char *m : kModes)
        if (mode == m) return true;
    return false;
}

struct request {
    std::string in, out, mode;
    int32_t width = 0, height = 0, quality = 0;
};

int read_request(const command_line &a, request &r) {
    if (a.operands.size() != 2) return usage_error(kCommand, "needs an input image and a size WxH");
    r.in = a.operands[0];
    if (!parse_size(a.operands[1], r.width, r.height))
        return usage_error(kCommand,
                           cat({"bad size '", a.operands[1], "' (WxH, 1 to 16384 each)"}));
    r.mode = a.value("--mode");
    if (!known_mode(r.mode)) return usage_error(kCommand, cat({"unknown --mode '", r.mode, "'"}));
    if (a.has("--quality") && !parse_int(a.value("--quality"), 1, 100, r.quality))
        return usage_error(kCommand,
                           cat({"bad --quality '", a.value("--quality"), "' (1 to 100)"}));
    r.out = a.value("-o");
    if (r.out.empty()) return usage_error(kCommand, "needs -o OUT.png or OUT.jpg");
    return 0;
}

}  // namespace

int run_fit(int argc, char **argv) {
    command_line a;
    int status = 0;
    if (!a.read(kSpec, argc, argv, status)) return status;
    request r;
    outputs written(kCommand);
    if (int bad = read_request(a, r)) return bad;
    if (int bad = written.check(r.out, output_kind::image)) return bad;

    xc_init();
    progress work(kCommand);
    work.at("loading");
    const fbcompose::image image = load_image(r.in);
    if (!image) return kFailed;
    work.at("fitting");
    const auto fitted =
        fbcompose::image::adopt(xc_image_fit_size(image.get(), r.width, r.height, r.mode.c_str()));
    if (!fitted || !fitted->data)
        return fail(cat({"no memory for a ", std::to_string(r.width), "x", std::to_string(r.height),
                         " image"}));
    work.at("saving");
    const std::string options = r.quality > 0 ? cat({"quality=", std::to_string(r.quality)}) : "";
    if (!written.save_image(r.out, fitted.get(), options.c_str())) return kFailed;
    written.keep();
    std::printf("%s -> %s: %dx%d, %s\n", r.in.c_str(), r.out.c_str(), r.width, r.height,
                r.mode.c_str());
    return 0;
}

}  // namespace fbctool

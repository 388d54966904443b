// fbcompose info: what the loaders see in image files.
#include <cstdio>
#include <string>

#include "cli.hpp"
#include "commands.hpp"
#include "image_io.hpp"
#include "progress.hpp"

namespace fbctool {
namespace {

constexpr std::string_view kCommand = "info";

constexpr const char *kHelp =
    "usage: fbcompose info FILE...\n\n"
    "Decodes each file and prints its type, size and alpha flag, and for animations\n"
    "the number of frames and their delays in milliseconds. A file that does not\n"
    "decode, or decodes to no pixels or a size of 0, is an error (exit status 1);\n"
    "the other files are still reported.\n\n"
    "The alpha flag is the image's own: \"alpha\" when the library blends it as an\n"
    "image with alpha. Palette and grey PNGs with a transparency chunk are expanded\n"
    "to carry that transparency in their pixels but are flagged \"opaque\", by\n"
    "design, and are drawn as opaque images.\n";
constexpr command_spec kSpec{kCommand, {}, kHelp};

}  // namespace

int run_info(int argc, char **argv) {
    command_line a;
    int status = 0;
    if (!a.read(kSpec, argc, argv, status)) return status;
    if (a.operands.empty()) return usage_error(kCommand, "needs at least one file");
    xc_init();
    progress work(kCommand);
    for (size_t i = 0; i < a.operands.size(); ++i) {
        const std::string &path = a.operands[i];
        work.at("file", static_cast<int64_t>(i + 1), static_cast<int64_t>(a.operands.size()));
        const fbcompose::image image = load_image(path);
        if (!image) {
            status = kFailed;
            continue;
        }
        std::printf("%s: %s, %dx%d, %s", path.c_str(), image->type_name ? image->type_name : "?",
                    image.width(), image.height(), image.has_alpha() ? "alpha" : "opaque");
        if (image->is_ani) {
            std::string delays;
            int64_t played = 0;
            const int frames = play_once(image, [&](int32_t delay) {
                delays += cat({played > 0 ? " " : "", std::to_string(delay)});
                work.at("frame", ++played);
            });
            std::printf(", %d frames, delays (ms): %s", frames, delays.c_str());
        }
        std::printf("\n");
    }
    return status;
}

}  // namespace fbctool

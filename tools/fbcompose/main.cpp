// fbcompose: prepare assets and preview the panel from the command line.
#include <cstdio>
#include <string_view>

#include "cli.hpp"
#include "commands.hpp"
#include "diagnostics.hpp"

namespace {

struct command {
    const char *name;
    int (*run)(int argc, char **argv);
    const char *summary;
};

const command kCommands[] = {
    {"demo", fbctool::run_demo, "compose a sample device screen and write the panel frame"},
    {"show", fbctool::run_show, "show images on a frame-buffer device, fitted to the panel"},
    {"convert", fbctool::run_convert, "convert an image into the panel's pixel format"},
    {"fit", fbctool::run_fit, "crop, matte or stretch an image to a size"},
    {"info", fbctool::run_info, "type, size, alpha and animation frames of image files"},
    {"archive", fbctool::run_archive, "pack, list or extract an image archive (img.ar)"},
};

int help() {
    std::printf("usage: fbcompose [--verbose] COMMAND [ARGS...]   (fbcompose COMMAND --help)\n\n");
    for (const command &c : kCommands) std::printf("  %-8s %s\n", c.name, c.summary);
    std::printf(
        "\nWith no command, runs the demo. Every command takes --help, --version and\n"
        "--verbose (the library's own messages, on standard error; without it the\n"
        "tool prints only its results and one line per error). Exit status: 0 done,\n"
        "1 the work failed, 2 a bad command line.\n\n"
        "Environment: FBCOMPOSE_ASSETS, the demo's image folder; FBCOMPOSE_PROGRESS_MS,\n"
        "how long work runs before progress lines appear on a terminal or with\n"
        "--verbose (default 1000; 0 reports every run when it ends).\n");
    return 0;
}

}  // namespace

int main(int argc, char **argv) {
    fbctool::install_log_handler();
    // Options before the command are the tool's own.
    int first = 1;
    for (; first < argc && argv[first][0] == '-'; ++first) {
        const std::string_view arg = argv[first];
        if (arg == "--help" || arg == "-h") return help();
        if (arg == "--version") return fbctool::print_version();
        if (arg != "--verbose")
            return fbctool::usage_error("", fbctool::cat({"unknown option '", arg, "'"}));
        fbctool::set_verbose(true);
    }
    if (first >= argc) return fbctool::run_demo(0, argv + first);
    for (const command &c : kCommands)
        if (std::string_view(argv[first]) == c.name)
            return c.run(argc - first - 1, argv + first + 1);
    return fbctool::usage_error("", fbctool::cat({"unknown command '", argv[first], "'"}));
}

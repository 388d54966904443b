// fbcompose: prepare assets and preview the panel from the command line.
#include <cstdio>
#include <cstring>

#include "commands.hpp"

namespace {

struct command {
    const char *name;
    int (*run)(int argc, char **argv);
    const char *summary;
};

const command kCommands[] = {
    {"demo", fbctool::run_demo, "compose a sample device screen and write the panel frame"},
    {"convert", fbctool::run_convert, "convert an image into the panel's pixel format"},
    {"fit", fbctool::run_fit, "crop, matte or stretch an image to a size"},
    {"info", fbctool::run_info, "type, size, alpha and animation frames of image files"},
    {"archive", fbctool::run_archive, "pack, list or extract an image archive (img.ar)"},
};

int help(FILE *out) {
    std::fprintf(out, "usage: fbcompose COMMAND [ARGS...]   (fbcompose COMMAND --help)\n\n");
    for (const command &c : kCommands) std::fprintf(out, "  %-8s %s\n", c.name, c.summary);
    std::fprintf(out, "\nWith no command, runs the demo.\n");
    return out == stdout ? 0 : 2;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc < 2) return fbctool::run_demo(0, argv + 1);
    if (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)
        return help(stdout);
    for (const command &c : kCommands)
        if (std::strcmp(argv[1], c.name) == 0) return c.run(argc - 2, argv + 2);
    std::fprintf(stderr, "fbcompose: unknown command '%s'\n", argv[1]);
    return help(stderr);
}

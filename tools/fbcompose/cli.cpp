#include "cli.hpp"

#include <fbcompose/fbcompose.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "diagnostics.hpp"

namespace fbctool {
namespace {

constexpr option_spec kCommonOptions[] = {
    {"--help", false}, {"-h", false}, {"--version", false}, {"--verbose", false}};

const option_spec *find_option(const command_spec &spec, std::string_view name) {
    for (const option_spec &option : kCommonOptions)
        if (option.name == name) return &option;
    for (const option_spec &option : spec.options)
        if (option.name == name) return &option;
    return nullptr;
}

bool is_option(std::string_view arg) { return arg.size() > 1 && arg[0] == '-'; }

}  // namespace

std::string cat(std::initializer_list<std::string_view> parts) {
    std::string out;
    for (std::string_view part : parts) out.append(part);
    return out;
}

int fail(const std::string &message) {
    std::fprintf(stderr, "fbcompose: %s\n", message.c_str());
    return kFailed;
}

int usage_error(std::string_view command, const std::string &message) {
    const std::string name = command.empty() ? "fbcompose" : cat({"fbcompose ", command});
    std::fprintf(stderr, "%s: %s (see '%s --help')\n", name.c_str(), message.c_str(), name.c_str());
    return kUsage;
}

bool command_line::read(const command_spec &spec, int argc, char **argv, int &status) {
    status = 0;
    bool help = false;
    for (int i = 0; i < argc && std::string_view(argv[i]) != "--"; ++i)
        help = help || std::string_view(argv[i]) == "--help" || std::string_view(argv[i]) == "-h";
    std::string problem;
    if (help) {
        std::fputs(spec.help, stdout);
    } else if (!take(spec, argc, argv, problem)) {
        status = usage_error(spec.name, problem);
    } else {
        if (has("--verbose")) set_verbose(true);
        if (!has("--version")) return true;
        print_version();
    }
    return false;
}

bool command_line::take(const command_spec &spec, int argc, char **argv, std::string &problem) {
    bool options_done = false;
    for (int i = 0; i < argc; ++i) {
        const std::string_view arg = argv[i];
        if (options_done || !is_option(arg)) {
            operands.emplace_back(arg);
        } else if (arg == "--") {
            options_done = true;
        } else {
            const size_t equals = arg.starts_with("--") ? arg.find('=') : std::string_view::npos;
            const std::string_view name = arg.substr(0, equals);
            const option_spec *option = find_option(spec, name);
            if (!option) problem = cat({"unknown option '", name, "'"});
            else if (equals != std::string_view::npos && !option->takes_value)
                problem = cat({"option '", name, "' takes no value"});
            else if (equals == std::string_view::npos && option->takes_value && i + 1 >= argc)
                problem = cat({"option '", name, "' needs a value"});
            if (!problem.empty()) return false;
            std::string value;
            if (equals != std::string_view::npos) value = arg.substr(equals + 1);
            else if (option->takes_value) value = argv[++i];
            values_.insert_or_assign(std::string(name), value);
        }
    }
    return true;
}

std::string command_line::value(std::string_view option, std::string_view fallback) const {
    const auto found = values_.find(std::string(option));
    return found == values_.end() ? std::string(fallback) : found->second;
}

int print_version() {
    std::printf("fbcompose %d.%d.%d, library %s\n", FBCOMPOSE_VERSION_MAJOR,
                FBCOMPOSE_VERSION_MINOR, FBCOMPOSE_VERSION_PATCH, xc_version());
    return 0;
}

bool parse_int(const std::string &text, int32_t low, int32_t high, int32_t &value) {
    if (text.empty()) return false;
    char *end = nullptr;
    errno = 0;
    const long parsed = std::strtol(text.c_str(), &end, 10);
    if (errno != 0 || *end != '\0' || parsed < low || parsed > high) return false;
    value = static_cast<int32_t>(parsed);
    return true;
}

bool parse_size(const std::string &text, int32_t &width, int32_t &height) {
    const size_t x = text.find('x');
    if (x == std::string::npos) return false;
    return parse_int(text.substr(0, x), 1, 16384, width) &&
           parse_int(text.substr(x + 1), 1, 16384, height);
}

bool parse_depth(const std::string &text, int32_t &depth) {
    return (text == "16" || text == "18" || text == "32") && parse_int(text, 16, 32, depth);
}

bool parse_rotation(const std::string &text, int32_t &rotation) {
    return (text == "0" || text == "90" || text == "270") && parse_int(text, 0, 270, rotation);
}

}  // namespace fbctool

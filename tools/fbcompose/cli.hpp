// What every subcommand shares: reading its command line and reporting.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace fbctool {

// Exit codes: 0 success, 1 the work failed, 2 the command line was wrong.
inline constexpr int kFailed = 1;
inline constexpr int kUsage = 2;

// Joins message pieces (GCC 12 warns falsely on chains of string +).
std::string cat(std::initializer_list<std::string_view> parts);

// Prints "fbcompose: MESSAGE" on standard error and returns kFailed.
int fail(const std::string &message);
// Prints "fbcompose CMD: MESSAGE (see 'fbcompose CMD --help')" and returns
// kUsage: one line for any bad command line.
int usage_error(std::string_view command, const std::string &message);

// An option a command takes, such as "--depth" with a value or "--verbose".
struct option_spec {
    std::string_view name;
    bool takes_value;
};

// A command: its name, its own options and its --help text.
struct command_spec {
    std::string_view name;
    std::span<const option_spec> options;
    const char *help;
};

// A command line read against a command's options. Options may come before,
// between or after the operands, as "--name value" or "--name=value"; the
// last of a repeated option wins; "--" ends the options; "-" is an operand.
// --help, -h, --version and --verbose are taken by every command.
class command_line {
public:
    // False when the command is finished: `status` is 0 after --help or
    // --version, kUsage after a one-line error.
    bool read(const command_spec &spec, int argc, char **argv, int &status);

    bool has(std::string_view option) const { return values_.count(std::string(option)) != 0; }
    // The option's value, or `fallback` when it was not given.
    std::string value(std::string_view option, std::string_view fallback = {}) const;

    std::vector<std::string> operands;

private:
    bool take(const command_spec &spec, int argc, char **argv, std::string &problem);
    std::map<std::string, std::string> values_;
};

// Prints the tool's and the library's versions.
int print_version();

// "800x480" into width and height, both within 1..16384.
bool parse_size(const std::string &text, int32_t &width, int32_t &height);
// A decimal integer within [low, high].
bool parse_int(const std::string &text, int32_t low, int32_t high, int32_t &value);
// "16", "18" or "32"; "0", "90" or "270".
bool parse_depth(const std::string &text, int32_t &depth);
bool parse_rotation(const std::string &text, int32_t &rotation);

}  // namespace fbctool

// What every subcommand shares: argument reading and error reporting.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace fbctool {

// Exit codes: 0 success, 1 the work failed, 2 the command line was wrong.
inline constexpr int kFailed = 1;
inline constexpr int kUsage = 2;

// Joins message pieces (GCC 12 warns falsely on chains of string +).
std::string cat(std::initializer_list<std::string_view> parts);

// Prints "fbcompose CMD: MESSAGE" on standard error and returns kFailed.
int fail(std::string_view command, const std::string &message);
// The same for a bad command line: returns kUsage.
int usage_error(std::string_view command, const std::string &message);

// The arguments after the subcommand, consumed front to back.
class args {
public:
    args(int argc, char **argv) : items_(argv, argv + argc) {}
    bool empty() const { return next_ >= items_.size(); }
    // True (and consumed) when the next argument is `flag`.
    bool take_flag(std::string_view flag);
    // The value after `option` when the next argument is that option.
    bool take_option(std::string_view option, std::string &value);
    std::string take();
    bool wants_help() const;

private:
    std::vector<std::string> items_;
    size_t next_ = 0;
};

// "800x480" into width and height, both positive.
bool parse_size(const std::string &text, int32_t &width, int32_t &height);
// A decimal integer within [low, high].
bool parse_int(const std::string &text, int32_t low, int32_t high, int32_t &value);

}  // namespace fbctool

#include "cli.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace fbctool {

std::string cat(std::initializer_list<std::string_view> parts) {
    std::string out;
    for (std::string_view part : parts) out.append(part);
    return out;
}

int fail(std::string_view command, const std::string &message) {
    std::fprintf(stderr, "fbcompose %.*s: %s\n", static_cast<int>(command.size()),
                 command.data(), message.c_str());
    return kFailed;
}

int usage_error(std::string_view command, const std::string &message) {
    fail(command, cat({message, " (see --help)"}));
    return kUsage;
}

bool args::take_flag(std::string_view flag) {
    if (empty() || items_[next_] != flag) return false;
    ++next_;
    return true;
}

bool args::take_option(std::string_view option, std::string &value) {
    if (empty() || items_[next_] != option || next_ + 1 >= items_.size()) return false;
    value = items_[next_ + 1];
    next_ += 2;
    return true;
}

std::string args::take() { return items_[next_++]; }

bool args::wants_help() const {
    for (const std::string &item : items_)
        if (item == "--help" || item == "-h") return true;
    return false;
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

}  // namespace fbctool

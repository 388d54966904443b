#include "diagnostics.hpp"

#include <fbcompose/fbcompose.h>

#include <cstdio>

namespace fbctool {
namespace {

struct log_state {
    bool verbose = false;
    std::string last_error, last_any;
};

log_state &state() {
    static log_state s;
    return s;
}

void on_message(const char *text, int to_stderr, void *) {
    log_state &s = state();
    s.last_any = text;
    if (to_stderr) s.last_error = text;
    // Everything on standard error, so that standard output carries only
    // the tool's results (and stays a clean stream with -o -).
    if (s.verbose) std::fputs(text, stderr);
}

std::string trimmed(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' '))
        text.pop_back();
    return text;
}

}  // namespace

void install_log_handler() { xc_set_log_func(on_message, nullptr); }

void set_verbose(bool on) { state().verbose = on; }

bool verbose() { return state().verbose; }

void clear_cause() {
    state().last_error.clear();
    state().last_any.clear();
}

std::string cause() {
    const log_state &s = state();
    return trimmed(s.last_error.empty() ? s.last_any : s.last_error);
}

}  // namespace fbctool

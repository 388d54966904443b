#include "core/log.hpp"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "fbcompose/log.h"

namespace fbc {
namespace {

xc_log_func handler = nullptr;
void *handler_user = nullptr;

void emit(bool to_stderr, const char *format, va_list args) {
    char inline_text[256];
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(inline_text, sizeof inline_text, format, args);
    char *text = inline_text;
    // Longer messages (long file names) are formatted again into a block
    // of their own size rather than cut.
    if (length >= static_cast<int>(sizeof inline_text)) {
        text = static_cast<char *>(std::malloc(static_cast<size_t>(length) + 1));
        if (text) std::vsnprintf(text, static_cast<size_t>(length) + 1, format, again);
        else text = inline_text;
    }
    va_end(again);
    if (length < 0) return;
    if (handler) handler(text, to_stderr ? 1 : 0, handler_user);
    else std::fputs(text, to_stderr ? stderr : stdout);
    if (text != inline_text) std::free(text);
}

}  // namespace

void log_out(const char *format, ...) {
    va_list args;
    va_start(args, format);
    emit(false, format, args);
    va_end(args);
}

void log_err(const char *format, ...) {
    va_list args;
    va_start(args, format);
    emit(true, format, args);
    va_end(args);
}

}  // namespace fbc

extern "C" void xc_set_log_func(xc_log_func func, void *user) {
    fbc::handler = func;
    fbc::handler_user = func ? user : nullptr;
}

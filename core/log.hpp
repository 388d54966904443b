// The one way the library prints a diagnostic: formatted here, then handed
// to the program's handler or, by default, to the stream it belongs on.
#pragma once

namespace fbc {

// printf-style; the text goes to standard output by default.
void log_out(const char *format, ...) __attribute__((format(printf, 1, 2)));
// printf-style; the text goes to standard error by default.
void log_err(const char *format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace fbc

/* Diagnostics: every line the library prints goes through one function,
 * which a program may replace to route the lines elsewhere (a log file, a
 * status bar, nowhere). */
#ifndef FBCOMPOSE_LOG_H
#define FBCOMPOSE_LOG_H

#include "export.h"

FBC_BEGIN_DECLS

/* Receives one complete diagnostic: `text` is the whole message as the
 * library would print it (usually ending in a newline, valid only during
 * the call); `to_stderr` is 1 for a message meant for standard error, 0 for
 * one meant for standard output; `user` is the pointer given with the
 * handler. Called on the thread that called into the library. */
typedef void (*xc_log_func)(const char *text, int to_stderr, void *user);

/* Installs `func` for every later diagnostic, with `user` passed back to it.
 * NULL restores the default, which writes each text unchanged to standard
 * error or standard output as `to_stderr` says. Assertion failures are
 * reported through the handler too, just before the process aborts. */
FBC_API void xc_set_log_func(xc_log_func func, void *user);

FBC_END_DECLS

#endif

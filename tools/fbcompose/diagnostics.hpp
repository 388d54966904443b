// Where the library's messages go in the tool: nowhere by default, to
// standard error with --verbose, and the last one of a failed step into the
// tool's own one-line error as its cause.
#pragma once

#include <string>

namespace fbctool {

// Routes the library's messages through the tool; call before any other
// library call.
void install_log_handler();

void set_verbose(bool on);
bool verbose();

// Forgets the messages so far: the next cause() is from what follows.
void clear_cause();
// The last error message since clear_cause() (else the last message of any
// kind), without its line end; empty when there was none.
std::string cause();

}  // namespace fbctool

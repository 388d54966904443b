#include "core/assert.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "core/log.hpp"

namespace fbc {

void assert_fail(const char *module, unsigned line, const char *function,
                 const char *text) noexcept {
    // Standard output carries the library's diagnostics; flush it so they
    // precede the assertion line.
    std::fflush(stdout);
    log_err("%s: %s:%u: %s: Assertion `%s' failed.\n", program_invocation_short_name, module, line,
            function, text);
    std::abort();
}

}  // namespace fbc

// Internal invariants that stay checked in every build, NDEBUG or not.
#pragma once

namespace fbc {

// Flushes standard output, prints one line in the C library's assert format
// naming the module, the function and the assertion text, then aborts.
[[noreturn]] void assert_fail(const char *module, unsigned line, const char *function,
                              const char *text) noexcept;

}  // namespace fbc

// FBC_ASSERT("xglist", item->prev) reports "item->prev" from xglist.
#define FBC_ASSERT(module, expr) \
    ((expr) ? void(0) : ::fbc::assert_fail(module, __LINE__, __func__, #expr))

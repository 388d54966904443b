// The few pieces of the C++ runtime that the internals still reach, kept
// inside the shared library so that a device needs no libstdc++.so for what
// is a C library to its callers: allocation over malloc, and the error
// paths of the standard containers. The internals are built without
// exceptions and the library has no way to report these failures, so each
// prints one line and aborts, as an uncaught exception would have. The
// version script keeps every name here local to the library.
//
// Linked into the shared library only: a program linking the static library
// keeps its own runtime, and the sanitizer build keeps the sanitizer's
// allocator.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "core/log.hpp"

namespace {

[[noreturn]] void fail(const char *what) {
    std::fflush(stdout);
    fbc::log_err("fbcompose: %s\n", what);
    std::abort();
}

void *allocate(std::size_t size) {
    void *block = std::malloc(size ? size : 1);
    if (!block) fail("out of memory");
    return block;
}

}  // namespace

void *operator new(std::size_t size) { return allocate(size); }
void *operator new[](std::size_t size) { return allocate(size); }
void operator delete(void *block) noexcept { std::free(block); }
void operator delete[](void *block) noexcept { std::free(block); }
void operator delete(void *block, std::size_t) noexcept { std::free(block); }
void operator delete[](void *block, std::size_t) noexcept { std::free(block); }

// What the container templates call where they would throw.
namespace std {

void __throw_bad_alloc() { fail("out of memory"); }
void __throw_bad_array_new_length() { fail("out of memory"); }
void __throw_length_error(const char *what) { fail(what); }
void __throw_logic_error(const char *what) { fail(what); }
void __throw_out_of_range_fmt(const char *format, ...) {
    char what[256];
    std::va_list args;
    va_start(args, format);
    std::vsnprintf(what, sizeof what, format, args);
    va_end(args);
    fail(what);
}

}  // namespace std

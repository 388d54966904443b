// What every fuzz target shares: its start, which silences the library's
// diagnostics, and a reader that takes typed values off the front of the
// input. Included by the target's one source file, which it gives its
// LLVMFuzzerInitialize.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "fbcompose/fbcompose.h"

// A target with more to set up (fonts, limits) defines this; it runs last.
extern "C" __attribute__((weak)) void fuzz_set_up();

// Diagnostics are expected by the thousand and would only slow the run.
extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    xc_set_log_func([](const char *, int, void *) {}, nullptr);
    if (fuzz_set_up) fuzz_set_up();
    return 0;
}

namespace fuzz {

// Values off the front of the input; once it runs dry every value is 0.
class Input {
public:
    Input(const uint8_t *data, size_t size) : data_(data), size_(size) {}
    template <typename T>
    T take() {
        T value{};
        const size_t n = sizeof(T) < size_ ? sizeof(T) : size_;
        std::memcpy(&value, data_, n);
        data_ += n;
        size_ -= n;
        return value;
    }
    // The rest of the input.
    const uint8_t *rest() const { return data_; }
    size_t rest_size() const { return size_; }

private:
    const uint8_t *data_;
    size_t size_;
};

}  // namespace fuzz

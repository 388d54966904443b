// What the fuzz targets share: silence for the library's diagnostics, and
// a reader that takes typed values off the front of the input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "fbcompose/fbcompose.h"

namespace fuzz {

// Diagnostics are expected by the thousand and would only slow the run.
inline void silence() {
    xc_set_log_func([](const char *, int, void *) {}, nullptr);
}

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

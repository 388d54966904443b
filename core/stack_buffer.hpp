// A scratch array that lives on the stack up to a fixed size and on the heap
// beyond it, so the common row widths and polygons never allocate while an
// absurdly large request cannot overflow the stack.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace fbc {

template <typename T, size_t kInline>
class StackBuffer {
public:
    // A negative count gives an empty buffer.
    explicit StackBuffer(int64_t count) {
        const size_t n = count > 0 ? static_cast<size_t>(count) : 0;
        if (n > kInline) {
            heap_.reset(new T[n]);
            data_ = heap_.get();
        }
    }
    StackBuffer(const StackBuffer &) = delete;
    StackBuffer &operator=(const StackBuffer &) = delete;

    T *data() { return data_; }
    T &operator[](size_t i) { return data_[i]; }

private:
    T inline_[kInline];
    std::unique_ptr<T[]> heap_;
    T *data_ = inline_;
};

}  // namespace fbc

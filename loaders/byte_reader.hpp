// The one bounds-checked reader of the decoders we write ourselves: every
// read is checked against the end of the buffer, and once a read has run
// past it the reader stays failed and yields zeros, so a parser can read a
// whole header and test ok() once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace fbc {

class ByteReader {
public:
    ByteReader(const uint8_t *data, size_t size) : data_(data), size_(size) {}
    explicit ByteReader(const std::vector<uint8_t> &bytes)
        : ByteReader(bytes.data(), bytes.size()) {}

    bool ok() const { return ok_; }
    size_t position() const { return pos_; }
    size_t size() const { return size_; }
    size_t remaining() const { return ok_ ? size_ - pos_ : 0; }
    bool at_end() const { return pos_ >= size_; }

    uint8_t u8() {
        const uint8_t *p = take(1);
        return p ? p[0] : 0;
    }
    uint16_t u16le() {
        const uint8_t *p = take(2);
        return p ? static_cast<uint16_t>(p[0] | p[1] << 8) : 0;
    }
    uint32_t u32le() {
        const uint8_t *p = take(4);
        return p ? static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
                       static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24
                 : 0;
    }
    int32_t s32le() { return static_cast<int32_t>(u32le()); }

    // n bytes in place, or null (and failed) when fewer are left.
    const uint8_t *bytes(size_t n) { return take(n); }
    void skip(size_t n) { take(n); }
    // Moves to an absolute position; past the end fails.
    void seek(size_t pos) {
        if (pos > size_) ok_ = false;
        else pos_ = pos;
    }

private:
    const uint8_t *take(size_t n) {
        if (!ok_ || n > size_ - pos_) {
            ok_ = false;
            return nullptr;
        }
        const uint8_t *p = data_ + pos_;
        pos_ += n;
        return p;
    }

    const uint8_t *data_;
    size_t size_;
    size_t pos_ = 0;
    bool ok_ = true;
};

}  // namespace fbc

// The one place where image sizes are checked before memory is sized by
// them. The device is 32-bit: every byte count must fit a signed 32-bit
// integer, which is also what the image cache accounts in.
#pragma once

#include <cstdint>
#include <optional>

namespace fbc {

// Largest block the library sizes from file or caller data.
inline constexpr int64_t kMaxBlockBytes = INT32_MAX;

// Images made at a size a caller names (fit, staged reduction) are refused
// beyond this many pixels, rather than allocated and filled for seconds:
// 64 megapixels, 256 MB of 32-bit pixels.
inline constexpr int64_t kMaxMadePixels = int64_t{1} << 26;

inline bool made_size_fits(int32_t width, int32_t height) {
    return width > 0 && height > 0 && int64_t{width} * height <= kMaxMadePixels;
}

// a x b when both are non-negative and the product fits kMaxBlockBytes.
inline std::optional<int32_t> checked_product(int64_t a, int64_t b) {
    if (a < 0 || b < 0) return std::nullopt;
    if (b != 0 && a > kMaxBlockBytes / b) return std::nullopt;
    return static_cast<int32_t>(a * b);
}

// a x b x c, with the same rule.
inline std::optional<int32_t> checked_product(int64_t a, int64_t b, int64_t c) {
    auto ab = checked_product(a, b);
    if (!ab) return std::nullopt;
    return checked_product(*ab, c);
}

}  // namespace fbc

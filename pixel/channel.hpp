// Channel access shared by the span primitives and the converters.
// Words are colour words: alpha in bits 24-31, red 16-23, green 8-15,
// blue 0-7. 32-bit runs are naturally aligned words, 16-bit runs aligned
// halfwords: the device cannot load an unaligned word in one access.
#pragma once

#include <cstdint>

namespace fbc::px {

inline constexpr uint32_t kAlphaMask = 0xFF000000u;
inline constexpr uint32_t kColourMask = 0x00FFFFFFu;

inline constexpr uint32_t alpha_of(uint32_t word) { return word >> 24; }

inline constexpr uint32_t channel(uint32_t word, unsigned shift) { return (word >> shift) & 0xFFu; }

// Word whose red, green and blue bytes are f(shift) truncated to a byte,
// over the bits of `rest` (an alpha byte already in place, or 0).
template <class F>
inline uint32_t map_rgb(uint32_t rest, F f) {
    uint32_t out = rest;
    for (unsigned shift = 0; shift < 24; shift += 8) out |= (f(shift) & 0xFFu) << shift;
    return out;
}

// Every product is divided by a shift of 8, never by 255: one cycle on the
// device, and the slight darkening it brings is the library's known output.

// The alpha byte of a blend, truncated and in place: ((da x inv) >> 8) + a.
inline constexpr uint32_t blend_alpha(uint32_t dst, uint32_t inv, uint32_t a) {
    return ((((alpha_of(dst) * inv) >> 8) + a) & 0xFFu) << 24;
}

// RGB565 from the top bits of each byte; the low bits are dropped.
inline constexpr uint16_t pack_565(uint32_t word) {
    return static_cast<uint16_t>(((word >> 8) & 0xF800u) | ((word >> 5) & 0x07E0u) |
                                 ((word >> 3) & 0x001Fu));
}

// RGB565 fields back in the top bits of their bytes; low bits and alpha 0.
inline constexpr uint32_t unpack_565(uint16_t v) {
    return ((v & 0xF800u) << 8) | ((v & 0x07E0u) << 5) | ((v & 0x001Fu) << 3);
}

// All four bytes: ((d x inv) >> 8) + s, truncated. Two channels share a
// multiply: each product is below 2^16 and each sum below 2^9, so no lane
// spills into the next and the masks truncate exactly as per byte.
inline uint32_t add_faded(uint32_t s, uint32_t d, uint32_t inv) {
    constexpr uint32_t kLanes = 0x00FF00FFu;
    const uint32_t br = ((((d & kLanes) * inv) >> 8) & kLanes) + (s & kLanes);
    const uint32_t ga = (((((d >> 8) & kLanes) * inv) >> 8) & kLanes) + ((s >> 8) & kLanes);
    return (br & kLanes) | (ga & kLanes) << 8;
}

// As add_faded for blue, green and red; the destination's alpha byte stays.
inline uint32_t add_faded_rgb(uint32_t s, uint32_t d, uint32_t inv) {
    return (add_faded(s, d, inv) & kColourMask) | (d & kAlphaMask);
}

// Source over, one pixel: a = 0 keeps the destination, a = 255 stores the
// whole source word, anything else blends; rgb destinations keep their alpha.
// The two shortcuts are selects, not jumps: artwork mixes them pixel by
// pixel, and a select lets the compiler vectorise a loop of them.
template <bool KeepAlpha>
inline uint32_t over(uint32_t s, uint32_t d) {
    const uint32_t a = alpha_of(s);
    const uint32_t blended = KeepAlpha ? add_faded_rgb(s, d, 255 - a) : add_faded(s, d, 255 - a);
    return a == 0 ? d : a == 255 ? s : blended;
}

// The destination's alpha byte in place: untouched in rgb runs, blended in rgba runs.
template <bool KeepAlpha>
inline uint32_t alpha_bits(uint32_t dst, uint32_t inv, uint32_t a) {
    if constexpr (KeepAlpha) return dst & kAlphaMask;
    else return blend_alpha(dst, inv, a);
}

}  // namespace fbc::px

// Helpers shared by the codecs: whole-file reading for the decoders we
// write ourselves, the premultiplication rule of decoded images with alpha,
// and the savers' geometry. The size checks are in decode_limits.hpp.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <vector>

#include "fbcompose/image.h"

namespace fbc {

// Where a decoder reads: the file called `name`, or, when `bytes` is set,
// `size` bytes in memory that `name` only labels in messages.
struct Source {
    const char *name;
    const uint8_t *bytes = nullptr;
    size_t size = 0;
};

// The whole file (or its first `limit` bytes), or nothing (errno tells why)
// when it cannot be opened or read or is larger than the device can address.
std::optional<std::vector<uint8_t>> read_whole_file(const char *filename, size_t limit = SIZE_MAX);

// The same for either kind of source.
std::optional<std::vector<uint8_t>> read_source(const Source &source, size_t limit = SIZE_MAX);

// A stream over the source for the decoders that read through stdio (a
// memory block is read in place, without a temporary file); null with
// errno set when it cannot be opened.
FILE *open_source(const Source &source);

// The bytes of an open stream from `offset` to its end (0 when unknown),
// for checking a header's sizes against what the file can hold.
int64_t bytes_after(FILE *file, long offset);

// A straight colour word made premultiplied: below full alpha each colour
// byte becomes c x a >> 8; opaque words stay as they are.
inline uint32_t premultiply_below_opaque(uint32_t word) {
    const uint32_t a = word >> 24;
    if (a == 255) return word;
    const uint32_t r = ((word >> 16) & 0xFFu) * a >> 8;
    const uint32_t g = ((word >> 8) & 0xFFu) * a >> 8;
    const uint32_t b = (word & 0xFFu) * a >> 8;
    return a << 24 | r << 16 | g << 8 | b;
}

// Colour words as R, G, B bytes for the savers: alpha is dropped and
// premultiplied colour is written as it is.
inline void pack_rgb_row(const uint32_t *src, uint8_t *dst, int32_t width) {
    for (int32_t x = 0; x < width; ++x) {
        dst[3 * x] = static_cast<uint8_t>(src[x] >> 16);
        dst[3 * x + 1] = static_cast<uint8_t>(src[x] >> 8);
        dst[3 * x + 2] = static_cast<uint8_t>(src[x]);
    }
}

// Whether a rectangle of an image may be saved: it lies inside the image and
// the image holds 32-bit rows (savers address rows as width x 4 bytes).
bool save_area_is_valid(const xc_image *image, const xg_area &area);

// The area a saver writes: the caller's or the whole image.
inline xg_area save_area_of(const xc_image *image, const xg_area *area) {
    return area ? *area : xg_area{0, 0, image->width, image->height};
}

}  // namespace fbc

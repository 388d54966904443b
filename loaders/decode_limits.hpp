// The sizes the decoders accept before they allocate pixels: what the
// device can address, the program's decode limit (xc_image_set_decode_limit),
// and what the file's own bytes can plausibly describe. A decoder that
// trusted its header alone would let a file of a few bytes claim gigabytes.
#pragma once

#include <cstdint>

namespace fbc {

// Pixels above which loading fails unless the program sets another limit:
// 64 Mi pixels (256 MiB of 32-bit pixels; exactly 8192 x 8192).
inline constexpr int64_t kDefaultDecodeLimit = int64_t{64} << 20;

// Images of up to this many pixels (1 Mi, 4 MiB of pixels) pass the
// proportion check whatever their file holds: a screenful of mostly
// background, or a file cut short, is ordinary.
inline constexpr int64_t kSmallImagePixels = int64_t{1} << 20;

// True when a width x height image of 32-bit pixels can be addressed on the
// device and is within the decode limit; otherwise says why on standard
// error ("<codec>: file(<name>) has unusable size WxH", or names both the
// image's size and the limit). Zero sizes pass: each codec decides what
// they mean.
bool image_size_fits(const char *codec, const char *filename, int64_t width, int64_t height);

// True when `bytes` bytes of encoded data can plausibly hold width x height
// pixels: at most `pixels_per_byte` pixels for each byte, the densest the
// format can encode with some room to spare, or any image up to
// kSmallImagePixels. Otherwise says so on standard error. Called before the
// pixels are allocated, with the bytes the file has for them.
bool image_fits_file(const char *codec, const char *filename, int64_t width, int64_t height,
                     int64_t bytes, int64_t pixels_per_byte);

}  // namespace fbc

// BMP reading: 1, 4, 8, 16, 24 and 32 bits per pixel, uncompressed, RLE8,
// RLE4 and bit-field masks, rows bottom-up or top-down. Opaque images give
// format 1; images whose alpha mask carries values give premultiplied
// format 0.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/log.hpp"
#include "core/pixel_format.hpp"
#include "fbcompose/loader.h"
#include "loaders/byte_reader.hpp"
#include "loaders/codec_support.hpp"
#include "loaders/decode_limits.hpp"
#include "loaders/decoders.hpp"

namespace fbc {
namespace {

enum Compression : uint32_t { kRgb = 0, kRle8 = 1, kRle4 = 2, kBitFields = 3, kAlphaBitFields = 6 };

constexpr uint32_t kOpaqueBlack = 0xFF000000u;
// File header and the largest info header, with room for trailing masks.
constexpr size_t kHeaderBytes = 14 + 124 + 16;
// A run paints at most 255 pixels for its two bytes; twice that density
// leaves room for rows that end early or skip ahead (end of line, delta).
// Beyond it the stream cannot describe the image: only colour 0 would fill it.
constexpr int64_t kRlePixelsPerByte = 256;

// One colour channel of a packed pixel: where its bits are and how many.
struct Channel {
    uint32_t mask = 0;
    int shift = 0;
    int bits = 0;
};

Channel channel_of(uint32_t mask) {
    Channel c{mask, 0, 0};
    if (!mask) return c;
    while (!((mask >> c.shift) & 1u)) ++c.shift;
    while (c.shift + c.bits < 32 && ((mask >> (c.shift + c.bits)) & 1u)) ++c.bits;
    return c;
}

// A channel value widened to 8 bits: narrow values by bit replication
// (5 bits: v << 3 | v >> 2), wide ones by keeping their top 8 bits.
uint32_t widen(uint32_t pixel, const Channel &c) {
    if (!c.bits) return 0;
    const uint32_t v = (pixel & c.mask) >> c.shift;
    if (c.bits >= 8) return (v >> (c.bits - 8)) & 0xFFu;
    uint32_t wide = v << (8 - c.bits);
    for (int filled = c.bits; filled < 8; filled *= 2) wide |= wide >> filled;
    return wide & 0xFFu;
}

struct BmpHeader {
    int32_t width = 0, height = 0;
    bool top_down = false;
    uint32_t bits = 0, compression = kRgb;
    uint32_t pixel_offset = 0;
    Channel red, green, blue, alpha;
    size_t palette_at = 0, palette_entry = 4;
    uint32_t palette_count = 0;
};

void default_masks(BmpHeader &h) {
    if (h.bits == 16) {
        h.red = channel_of(0x7C00u);
        h.green = channel_of(0x03E0u);
        h.blue = channel_of(0x001Fu);
    } else {
        h.red = channel_of(0xFF0000u);
        h.green = channel_of(0x00FF00u);
        h.blue = channel_of(0x0000FFu);
    }
}

bool supported_encoding(const BmpHeader &h) {
    switch (h.compression) {
        case kRgb:
            return h.bits == 1 || h.bits == 4 || h.bits == 8 || h.bits == 16 || h.bits == 24 ||
                   h.bits == 32;
        case kRle8: return h.bits == 8 && !h.top_down;
        case kRle4: return h.bits == 4 && !h.top_down;
        case kBitFields:
        case kAlphaBitFields: return h.bits == 16 || h.bits == 32;
        default: return false;
    }
}

// Reads the file and info headers (12-byte OS/2 or 16 to 124-byte Windows
// forms) and the masks; false for what this decoder cannot take.
bool parse_header(ByteReader &in, BmpHeader &h) {
    if (in.u8() != 'B' || in.u8() != 'M') return false;
    in.skip(8);
    h.pixel_offset = in.u32le();
    const size_t info_at = in.position();
    const uint32_t info_size = in.u32le();
    int64_t height = 0;
    if (info_size == 12) {
        h.width = in.u16le();
        height = in.u16le();
        in.skip(2);
        h.bits = in.u16le();
        h.palette_entry = 3;
    } else if (info_size >= 16 && info_size <= 124) {
        h.width = in.s32le();
        height = in.s32le();
        in.skip(2);
        h.bits = in.u16le();
        if (info_size >= 20) h.compression = in.u32le();
        // OS/2 2.x reuses compression 3 and 4 for Huffman and RLE24.
        if (info_size == 64 && h.compression > kRle4) return false;
        in.seek(info_at + 32);
        if (info_size >= 36) h.palette_count = in.u32le();
    } else {
        return false;
    }
    if (!in.ok() || h.width <= 0 || height == 0 || height == INT32_MIN) return false;
    h.top_down = height < 0;
    h.height = static_cast<int32_t>(height < 0 ? -height : height);
    if (!supported_encoding(h)) return false;

    default_masks(h);
    if (h.compression == kBitFields || h.compression == kAlphaBitFields) {
        // Masks sit in the larger info headers, or right after the 40-byte one.
        in.seek(info_at + (info_size >= 52 ? 40 : info_size));
        h.red = channel_of(in.u32le());
        h.green = channel_of(in.u32le());
        h.blue = channel_of(in.u32le());
        if (info_size >= 56 || h.compression == kAlphaBitFields) h.alpha = channel_of(in.u32le());
        if (info_size < 52) h.palette_at = in.position();
    }
    if (!h.palette_at) h.palette_at = info_at + info_size;
    if (h.bits <= 8) {
        const uint32_t full = 1u << h.bits;
        if (h.palette_count == 0 || h.palette_count > full) h.palette_count = full;
        // The palette ends where the pixels begin; missing entries read as black.
        if (h.pixel_offset > h.palette_at) {
            const size_t room = (h.pixel_offset - h.palette_at) / h.palette_entry;
            if (room < h.palette_count) h.palette_count = static_cast<uint32_t>(room);
        }
    } else {
        h.palette_count = 0;
    }
    return in.ok();
}

// Palette colours, opaque; indices beyond the palette read as black.
bool read_palette(ByteReader &in, const BmpHeader &h, uint32_t palette[256]) {
    for (int i = 0; i < 256; ++i) palette[i] = kOpaqueBlack;
    in.seek(h.palette_at);
    for (uint32_t i = 0; i < h.palette_count; ++i) {
        const uint8_t *e = in.bytes(h.palette_entry);
        if (!e) return false;
        palette[i] = kOpaqueBlack | uint32_t{e[2]} << 16 | uint32_t{e[1]} << 8 | e[0];
    }
    return true;
}

uint32_t *output_row(xc_image *image, const BmpHeader &h, int32_t file_row) {
    const int32_t y = h.top_down ? file_row : h.height - 1 - file_row;
    return reinterpret_cast<uint32_t *>(image->data + static_cast<size_t>(y) *
                                                          static_cast<size_t>(image->rowstride));
}

uint32_t packed_word(const BmpHeader &h, uint32_t v) {
    const uint32_t a = h.alpha.bits ? widen(v, h.alpha) : 255u;
    return a << 24 | widen(v, h.red) << 16 | widen(v, h.green) << 8 | widen(v, h.blue);
}

void decode_row(const uint8_t *src, uint32_t *dst, const BmpHeader &h, const uint32_t *palette) {
    for (int32_t x = 0; x < h.width; ++x) {
        switch (h.bits) {
            case 1: dst[x] = palette[(src[x >> 3] >> (7 - (x & 7))) & 1u]; break;
            case 4: dst[x] = palette[(src[x >> 1] >> (x & 1 ? 0 : 4)) & 0xFu]; break;
            case 8: dst[x] = palette[src[x]]; break;
            case 16: dst[x] = packed_word(h, src[2 * x] | uint32_t{src[2 * x + 1]} << 8); break;
            case 24:
                dst[x] = kOpaqueBlack | uint32_t{src[3 * x + 2]} << 16 |
                         uint32_t{src[3 * x + 1]} << 8 | src[3 * x];
                break;
            default: {
                const uint8_t *p = src + 4 * x;
                dst[x] = packed_word(
                    h, p[0] | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 | uint32_t{p[3]} << 24);
            }
        }
    }
}

// Bytes from one uncompressed row to the next: rows are padded to 4 bytes.
int64_t row_stride(const BmpHeader &h) { return (int64_t{h.width} * h.bits + 31) / 32 * 4; }

// Whether the file holds the pixels its header declares, checked before
// they are allocated: every uncompressed row (the last one may lack its
// padding), or a run-length stream long enough for the image's size.
bool pixels_fit_file(const std::vector<uint8_t> &bytes, const BmpHeader &h, const char *filename) {
    const int64_t data =
        h.pixel_offset <= bytes.size() ? static_cast<int64_t>(bytes.size() - h.pixel_offset) : -1;
    if (h.compression == kRle8 || h.compression == kRle4)
        return image_fits_file("bmp", filename, h.width, h.height, data < 0 ? 0 : data,
                               kRlePixelsPerByte);
    const int64_t last_row = (int64_t{h.width} * h.bits + 7) / 8;
    if (data >= 0 && row_stride(h) * (h.height - 1) + last_row <= data) return true;
    fbc::log_err("bmp: file(%s) is cut inside its pixels\n", filename);
    return false;
}

void decode_uncompressed(const std::vector<uint8_t> &bytes, xc_image *image, const BmpHeader &h,
                         const uint32_t *palette) {
    const uint8_t *pixels = bytes.data() + h.pixel_offset;
    const int64_t stride = row_stride(h);
    for (int32_t row = 0; row < h.height; ++row)
        decode_row(pixels + stride * row, output_row(image, h, row), h, palette);
}

// Run-length data: runs of one index (RLE4: two alternating), absolute
// runs padded to 16 bits, end of line, end of bitmap and position deltas.
// Pixels the stream never reaches keep palette colour 0; a cut stream keeps
// what it decoded.
void decode_rle(ByteReader &in, xc_image *image, const BmpHeader &h, const uint32_t *palette) {
    in.seek(h.pixel_offset);
    const bool four = h.compression == kRle4;
    // Runs may carry x far past the row's end (64 bits: a long stream of
    // runs without an end of line); those pixels are dropped unvisited.
    int64_t x = 0;
    int32_t y = 0;
    auto paint = [&](int count, auto index_of) {
        const int64_t n = x < h.width ? std::min<int64_t>(count, h.width - x) : 0;
        if (n > 0) {
            uint32_t *row = output_row(image, h, y) + x;
            for (int i = 0; i < n; ++i) row[i] = palette[index_of(i)];
        }
        x += count;
    };
    while (in.ok() && !in.at_end() && y < h.height) {
        const uint8_t count = in.u8();
        const uint8_t value = in.u8();
        if (count) {
            paint(count, [&](int i) { return four ? (i & 1 ? value & 0xFu : value >> 4) : value; });
        } else if (value == 0) {
            x = 0;
            ++y;
        } else if (value == 1) {
            break;
        } else if (value == 2) {
            x += in.u8();
            y += in.u8();
        } else {
            const int bytes = four ? (value + 1) / 2 : value;
            const uint8_t *run = in.bytes(static_cast<size_t>(bytes + (bytes & 1)));
            if (!run) break;
            paint(value, [&](int i) {
                return four ? (i & 1 ? run[i / 2] & 0xFu : run[i / 2] >> 4) : run[i];
            });
        }
    }
}

// Alpha masks that are all zero mean the writer left them unused.
void settle_alpha(xc_image *image) {
    auto *pixels = reinterpret_cast<uint32_t *>(image->data);
    const size_t count = static_cast<size_t>(image->width) * static_cast<size_t>(image->height);
    bool any_alpha = false;
    for (size_t i = 0; i < count && !any_alpha; ++i) any_alpha = (pixels[i] >> 24) != 0;
    if (!any_alpha) {
        for (size_t i = 0; i < count; ++i) pixels[i] |= kOpaqueBlack;
        image->has_alpha = 0;
        image->format = pixel_format::kRgb;
        return;
    }
    for (size_t i = 0; i < count; ++i) pixels[i] = premultiply_below_opaque(pixels[i]);
}

void set_flags(xc_image *image, const BmpHeader &h) {
    image->width = h.width;
    image->height = h.height;
    image->depth = 32;
    image->has_alpha = h.alpha.bits ? 1 : 0;
    image->format = h.alpha.bits ? pixel_format::kRgba : pixel_format::kRgb;
}

bool read_header(const std::vector<uint8_t> &bytes, const char *filename, BmpHeader &h) {
    ByteReader in(bytes);
    if (!parse_header(in, h)) {
        fbc::log_err("bmp: file(%s) is not a BMP image this decoder reads\n", filename);
        return false;
    }
    return image_size_fits("bmp", filename, h.width, h.height);
}

int bmp_load_info(xc_image *image, const char *filename) {
    const auto bytes = read_whole_file(filename, kHeaderBytes);
    BmpHeader h;
    if (!bytes || !read_header(*bytes, filename, h)) return -1;
    set_flags(image, h);
    return 0;
}

int bmp_load_data(xc_image *image, const char *filename) {
    return decode_bmp(image, Source{filename});
}

const char *const kExtensions[] = {"bmp", nullptr};

}  // namespace

int decode_bmp(xc_image *image, const Source &source) {
    const char *filename = source.name;
    const auto bytes = read_source(source);
    BmpHeader h;
    if (!bytes || !read_header(*bytes, filename, h)) return -1;
    ByteReader in(*bytes);
    uint32_t palette[256];
    if (!read_palette(in, h, palette)) {
        fbc::log_err("bmp: file(%s) is cut inside its palette\n", filename);
        return -1;
    }
    if (!pixels_fit_file(*bytes, h, filename)) return -1;
    set_flags(image, h);
    image->rowstride = h.width * 4;
    if (!xc_image_alloc_data(image)) return -1;
    if (h.compression == kRle8 || h.compression == kRle4) {
        auto *pixels = reinterpret_cast<uint32_t *>(image->data);
        const size_t count = static_cast<size_t>(h.width) * static_cast<size_t>(h.height);
        for (size_t i = 0; i < count; ++i) pixels[i] = palette[0];
        decode_rle(in, image, h, palette);
    } else {
        decode_uncompressed(*bytes, image, h, palette);
    }
    if (h.alpha.bits) settle_alpha(image);
    return 0;
}

}  // namespace fbc

extern "C" {
xc_image_loader bmp_loader = {
    fbc::kExtensions, "bmp",  fbc::bmp_load_data, fbc::bmp_load_info, nullptr, nullptr, nullptr,
    nullptr,          nullptr};
}

// WBMP (type 0 wireless bitmap) reading: a set bit is white, a clear bit
// black, most significant bit first, each row starting on a new byte.
#include <cerrno>
#include <cstdio>
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

constexpr uint32_t kWhite = 0xFFFFFFFFu;
constexpr uint32_t kBlack = 0xFF000000u;
constexpr uint8_t kBitMask[8] = {0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01};
// A whole file holds 8 pixels a byte. A cut one loads with its missing
// rows white, as long as it holds at least an eighth of its rows: a file of
// a few bytes declaring a huge image describes nothing.
constexpr int64_t kPixelsPerByte = 64;

// Seven value bits per byte, most significant group first; a clear bit 7
// ends the number. A number cut by the end of the file keeps what it has.
uint32_t read_multibyte(ByteReader &in) {
    uint32_t value = 0;
    while (!in.at_end()) {
        const uint8_t byte = in.u8();
        value = value << 7 | (byte & 0x7Fu);
        if (!(byte & 0x80u)) break;
    }
    return value;
}

struct WbmpHeader {
    int32_t width;
    int32_t height;
};

// compat: type and fixed header are read and ignored: any type is accepted.
WbmpHeader read_header(ByteReader &in) {
    read_multibyte(in);
    read_multibyte(in);
    const auto width = static_cast<int32_t>(read_multibyte(in));
    const auto height = static_cast<int32_t>(read_multibyte(in));
    return {width, height};
}

// Rows the file lacks, or the end of a cut row, stay white.
void decode_rows(ByteReader &in, xc_image *image) {
    for (int32_t y = 0; y < image->height; ++y) {
        auto *row = reinterpret_cast<uint32_t *>(image->data) +
                    static_cast<size_t>(y) * static_cast<size_t>(image->width);
        for (int32_t x = 0; x < image->width && !in.at_end(); x += 8) {
            const uint8_t byte = in.u8();
            const int32_t bits = image->width - x < 8 ? image->width - x : 8;
            for (int32_t k = 0; k < bits; ++k)
                if (!(byte & kBitMask[k])) row[x + k] = kBlack;
        }
    }
}

void mark_opaque(xc_image *image) {
    image->has_alpha = 0;
    image->format = pixel_format::kRgb;
    image->depth = 32;
}

int wbmp_load_info(xc_image *image, const char *filename) {
    mark_opaque(image);
    if (xc_wbmp_get_size(filename, &image->width, &image->height) < 0) return -1;
    return image_size_fits("wbmp", filename, image->width, image->height) ? 0 : -1;
}

int wbmp_load_data(xc_image *image, const char *filename) {
    return decode_wbmp(image, Source{filename});
}

const char *const kExtensions[] = {"wbmp", nullptr};

}  // namespace

int decode_wbmp(xc_image *image, const Source &source) {
    const char *filename = source.name;
    const auto bytes = read_source(source);
    if (!bytes) {
        fbc::log_err("%s:%s:%s\n", "xc_wbmp_load", filename, std::strerror(errno));
        if (!image->data) return -1;
        image->has_alpha = 0;
        return 0;
    }
    ByteReader in(*bytes);
    const WbmpHeader header = read_header(in);
    image->width = header.width;
    image->height = header.height;
    if (!image_size_fits("wbmp", filename, header.width, header.height) ||
        !image_fits_file("wbmp", filename, header.width, header.height,
                         static_cast<int64_t>(in.remaining()), kPixelsPerByte))
        return -1;
    // An empty image has no pixel block at all.
    if (header.width == 0 || header.height == 0) return -1;
    image->rowstride = header.width * 4;
    if (!xc_image_alloc_data(image)) return -1;
    const size_t count = static_cast<size_t>(header.width) * static_cast<size_t>(header.height);
    auto *pixels = reinterpret_cast<uint32_t *>(image->data);
    for (size_t i = 0; i < count; ++i) pixels[i] = kWhite;
    decode_rows(in, image);
    mark_opaque(image);
    return 0;
}

}  // namespace fbc

extern "C" {

xc_image_loader wbmp_loader = {
    fbc::kExtensions, "wbmp", fbc::wbmp_load_data, fbc::wbmp_load_info, nullptr, nullptr, nullptr,
    nullptr,          nullptr};

int xc_wbmp_get_size(const char *path, int32_t *w, int32_t *h) {
    const auto bytes = fbc::read_whole_file(path);
    if (!bytes) {
        fbc::log_err("fopen() error filename = %s\n", path);
        return -1;
    }
    fbc::ByteReader in(*bytes);
    const fbc::WbmpHeader header = fbc::read_header(in);
    *w = header.width;
    *h = header.height;
    return 0;
}

}  // extern "C"

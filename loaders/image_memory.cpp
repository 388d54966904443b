// Images decoded from a block in memory (artwork built into the program,
// a download): the built-in codecs read the block in place, and the image
// gets its pixels at once, as it has no file to load them from later.
#include <cstring>

#include "core/log.hpp"
#include "fbcompose/image.h"
#include "fbcompose/loader.h"
#include "loaders/decoders.hpp"
#include "loaders/loader_registry.hpp"

namespace fbc {
namespace {

// What messages call the block where a decoder would name its file.
constexpr const char *kLabel = "memory block";

struct BuiltInCodec {
    const xc_image_loader *loader;
    int (*decode)(xc_image *image, const Source &source);
};

const BuiltInCodec kCodecs[] = {
    {&png_loader, decode_png}, {&jpeg_loader, decode_jpeg}, {&gif_loader, decode_gif},
    {&bmp_loader, decode_bmp}, {&wbmp_loader, decode_wbmp},
};

bool starts_with(const uint8_t *bytes, size_t size, const char *magic, size_t length) {
    return size >= length && std::memcmp(bytes, magic, length) == 0;
}

// The suffix of the format the first bytes show. WBMP has no signature: its
// type and fixed-header bytes (both 0) are the weakest test, so it comes last.
const char *recognise(const uint8_t *bytes, size_t size) {
    if (starts_with(bytes, size, "\x89PNG\r\n\x1a\n", 8)) return "png";
    if (starts_with(bytes, size, "GIF87a", 6) || starts_with(bytes, size, "GIF89a", 6))
        return "gif";
    if (starts_with(bytes, size, "\xFF\xD8\xFF", 3)) return "jpg";
    if (starts_with(bytes, size, "BM", 2)) return "bmp";
    if (starts_with(bytes, size, "\0\0", 2)) return "wbmp";
    return nullptr;
}

const BuiltInCodec *codec_for(const char *type) {
    for (const BuiltInCodec &codec : kCodecs)
        if (loader_matching_suffix(codec.loader, type)) return &codec;
    return nullptr;
}

}  // namespace
}  // namespace fbc

extern "C" {

xc_image *xc_image_new_from_memory(const void *bytes, size_t size, const char *type) {
    if (!bytes || size == 0) {
        fbc::log_err("image from memory: no bytes to decode\n");
        return nullptr;
    }
    const auto *data = static_cast<const uint8_t *>(bytes);
    const char *suffix = type ? type : fbc::recognise(data, size);
    if (!suffix) {
        fbc::log_err("image from memory: the first bytes show no format a built-in loader reads\n");
        return nullptr;
    }
    const fbc::BuiltInCodec *codec = fbc::codec_for(suffix);
    if (!codec) {
        fbc::log_err("image from memory: no built-in loader reads type '%s'\n", suffix);
        return nullptr;
    }
    xc_image *image = xc_image_new();
    if (codec->decode(image, fbc::Source{fbc::kLabel, data, size}) < 0 || !image->data) {
        fbc::log_err("image from memory: the %zu-byte %s block cannot be decoded\n", size,
                     codec->loader->name);
        xc_image_unref(image);
        return nullptr;
    }
    image->type_name = codec->loader->name;
    image->no_cache = 1;
    return image;
}

}  // extern "C"

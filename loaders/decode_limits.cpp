// Size checks shared by the decoders, and the process-wide decode limit.
#include "loaders/decode_limits.hpp"

#include "core/log.hpp"
#include "core/size_check.hpp"
#include "fbcompose/loader.h"

namespace fbc {
namespace {

// Process-wide like the rest of the library's settings; callers serialise.
int64_t limit_pixels = kDefaultDecodeLimit;

}  // namespace

bool image_size_fits(const char *codec, const char *filename, int64_t width, int64_t height) {
    if (!checked_product(width, height, 4)) {
        fbc::log_err("%s: file(%s) has unusable size %lldx%lld\n", codec, filename,
                     static_cast<long long>(width), static_cast<long long>(height));
        return false;
    }
    const int64_t pixels = width * height;
    if (limit_pixels == 0 || pixels <= limit_pixels) return true;
    fbc::log_err("%s: file(%s) is %lldx%lld, %lld pixels, above the decode limit of %lld pixels\n",
                 codec, filename, static_cast<long long>(width), static_cast<long long>(height),
                 static_cast<long long>(pixels), static_cast<long long>(limit_pixels));
    return false;
}

bool image_fits_file(const char *codec, const char *filename, int64_t width, int64_t height,
                     int64_t bytes, int64_t pixels_per_byte) {
    // Sizes passed image_size_fits and files are below 2 GiB, so neither
    // product can overflow.
    const int64_t pixels = width * height;
    if (pixels <= kSmallImagePixels || pixels <= bytes * pixels_per_byte) return true;
    fbc::log_err(
        "%s: file(%s) declares %lldx%lld pixels, more than its %lld bytes of image data can hold\n",
        codec, filename, static_cast<long long>(width), static_cast<long long>(height),
        static_cast<long long>(bytes));
    return false;
}

}  // namespace fbc

extern "C" int64_t xc_image_set_decode_limit(int64_t pixels) {
    const int64_t previous = fbc::limit_pixels;
    // A negative value asks without changing anything.
    if (pixels >= 0) fbc::limit_pixels = pixels;
    return previous;
}

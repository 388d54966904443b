// Helpers shared by the codecs.
#include "loaders/codec_support.hpp"

#include <cerrno>
#include <cstdio>

#include "core/log.hpp"
#include "core/size_check.hpp"

namespace fbc {

bool image_size_fits(const char *codec, const char *filename, int64_t width,
                     int64_t height) {
    if (checked_product(width, height, 4)) return true;
    fbc::log_err("%s: file(%s) has unusable size %lldx%lld\n", codec, filename,
                 static_cast<long long>(width), static_cast<long long>(height));
    return false;
}

std::optional<std::vector<uint8_t>> read_whole_file(const char *filename, size_t limit) {
    FILE *file = std::fopen(filename, "rb");
    if (!file) return std::nullopt;
    std::optional<std::vector<uint8_t>> bytes;
    long size = -1;
    if (std::fseek(file, 0, SEEK_END) == 0) size = std::ftell(file);
    if (size >= 0 && size <= kMaxBlockBytes && std::fseek(file, 0, SEEK_SET) == 0) {
        bytes.emplace(static_cast<size_t>(size) < limit ? static_cast<size_t>(size) : limit);
        if (std::fread(bytes->data(), 1, bytes->size(), file) != bytes->size()) {
            bytes.reset();
            errno = EIO;
        }
    } else {
        errno = EFBIG;
    }
    std::fclose(file);
    return bytes;
}

bool save_area_is_valid(const xc_image *image, const xg_area &area) {
    const auto row = checked_product(image->width, 4);
    return image->data && row && image->rowstride >= *row && area.x1 >= 0 &&
           area.y1 >= 0 && area.x2 > area.x1 && area.y2 > area.y1 &&
           area.x2 <= image->width && area.y2 <= image->height;
}

}  // namespace fbc

// Helpers shared by the codecs.
#include "loaders/codec_support.hpp"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>

#include "core/size_check.hpp"

namespace fbc {

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

std::optional<std::vector<uint8_t>> read_source(const Source &source, size_t limit) {
    if (!source.bytes) return read_whole_file(source.name, limit);
    const size_t n = source.size < limit ? source.size : limit;
    return std::vector<uint8_t>(source.bytes, source.bytes + n);
}

FILE *open_source(const Source &source) {
    if (!source.bytes) return std::fopen(source.name, "rb");
    // fmemopen never writes through a block opened for reading.
    return fmemopen(const_cast<uint8_t *>(source.bytes), source.size, "rb");
}

int64_t bytes_after(FILE *file, long offset) {
    struct stat info;
    const int fd = fileno(file);
    if (fd >= 0) {
        if (fstat(fd, &info) != 0 || info.st_size < offset) return 0;
        return static_cast<int64_t>(info.st_size) - offset;
    }
    // A memory stream has no descriptor: its end is where seeking takes it.
    const long here = std::ftell(file);
    if (here < 0 || std::fseek(file, 0, SEEK_END) != 0) return 0;
    const long end = std::ftell(file);
    std::fseek(file, here, SEEK_SET);
    return end < offset ? 0 : static_cast<int64_t>(end) - offset;
}

bool save_area_is_valid(const xc_image *image, const xg_area &area) {
    const auto row = checked_product(image->width, 4);
    return image->data && row && image->rowstride >= *row && area.x1 >= 0 && area.y1 >= 0 &&
           area.x2 > area.x1 && area.y2 > area.y1 && area.x2 <= image->width &&
           area.y2 <= image->height;
}

}  // namespace fbc

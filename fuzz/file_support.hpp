// What the file-reading targets share: a scratch folder on a memory file
// system for the input (the decoders read files by name), and loading an
// image the way a program does, reading every pixel of every frame.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "fuzz_support.hpp"

// A decode limit of 2 Mi pixels instead of 64 Mi: an input may still make
// 8 MiB images, above the size (1 Mi pixels) from which the decoders check
// headers against their files, but each run stays fast.
extern "C" void fuzz_set_up() { xc_image_set_decode_limit(int64_t{1} << 18); }

namespace fuzz {

// A folder of this process's own, in /dev/shm when there is one (no disk
// writes per input), removed when the process exits normally.
inline const std::string &scratch_dir() {
    static const std::string dir = [] {
        const char *tmp = std::getenv("TMPDIR");
        std::string made = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : tmp ? tmp : "/tmp";
        made += "/fbc-fuzz-XXXXXX";
        if (!mkdtemp(made.data())) std::abort();
        return made;
    }();
    // Registered once the folder's name is made, so it runs before the name goes.
    static const int cleaned_at_exit = std::atexit([] { std::filesystem::remove_all(dir); });
    (void)cleaned_at_exit;
    return dir;
}

// Writes the input as the file `name` of the scratch folder; returns its path.
inline std::string write_scratch(const char *name, const uint8_t *data, size_t size) {
    const std::string path = scratch_dir() + "/" + name;
    FILE *file = std::fopen(path.c_str(), "wb");
    if (!file || std::fwrite(data, 1, size, file) != size || std::fclose(file) != 0) std::abort();
    return path;
}

// Row y of a decoded image: 32-bit pixels whatever its depth says.
inline const uint32_t *row(const xc_image *image, int32_t y) {
    return reinterpret_cast<const uint32_t *>(image->data + size_t(y) * size_t(image->rowstride));
}

// Where touch_pixels leaves its sum, so that the reads are not optimised away.
inline volatile uint32_t touched_sum = 0;

// Reads every pixel, so that the sanitizers see any pixel the decoder left
// unallocated.
inline void touch_pixels(const xc_image *image) {
    if (!image->data) return;
    uint32_t sum = 0;
    for (int32_t y = 0; y < image->height; ++y)
        for (int32_t x = 0; x < image->width; ++x) sum += row(image, y)[x];
    touched_sum = sum;
}

// Whether two decoded images are the same: size, alpha flags, every pixel.
inline bool same_pixels(const xc_image *a, const xc_image *b) {
    if (a->width != b->width || a->height != b->height || a->format != b->format ||
        a->has_alpha != b->has_alpha)
        return false;
    for (int32_t y = 0; y < a->height; ++y)
        if (std::memcmp(row(a, y), row(b, y), static_cast<size_t>(a->width) * 4) != 0) return false;
    return true;
}

// Information, pixels, then every frame of an animation up to the point it
// starts again; each changed area must lie on the image. When `same` is
// given (the input decoded from memory, or null where that failed), the
// file must fail where it failed and otherwise give its pixels exactly.
inline void load_every_frame(const std::string &path, const xc_image *const *same = nullptr) {
    xc_image *image = xc_image_new_from_file(path.c_str());
    const bool loaded = image && xc_image_load_data(image) >= 0 && image->data;
    if (same && (loaded != !!*same || (loaded && !same_pixels(image, *same)))) std::abort();
    if (!image) return;
    if (loaded) touch_pixels(image);
    xc_image_get_delay(image);
    int32_t delay, x, y, w, h;
    for (int last = 0, frame; (frame = xc_image_next_frame(image, &delay, &x, &y, &w, &h)) > last;
         last = frame) {
        if (x < 0 || y < 0 || w < 0 || h < 0 || x > image->width - w || y > image->height - h)
            std::abort();
        touch_pixels(image);
    }
    xc_image_unref(image);
}

}  // namespace fuzz

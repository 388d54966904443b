// What the loader tests share: the headers they all use, a scratch folder
// per test, file writing and pixel access.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "fbcompose/image.h"
#include "fbcompose/loader.h"

namespace fbc_test {

// A fresh folder under the system's temporary folder, removed afterwards.
class ScratchDir : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "fbc-loaders-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        dir_ = pattern;
        xc_image_init();
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    std::string path(const std::string &name) const { return (dir_ / name).string(); }

    std::string write(const std::string &name, const std::vector<uint8_t> &bytes) const {
        std::ofstream(path(name), std::ios::binary)
            .write(reinterpret_cast<const char *>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        return path(name);
    }

    std::filesystem::path dir_;
};

inline std::vector<uint8_t> file_bytes(const std::string &file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline uint32_t pixel(const xc_image *image, int32_t x, int32_t y) {
    return reinterpret_cast<const uint32_t *>(image->data +
                                              static_cast<size_t>(y) * image->rowstride)[x];
}

// Every pixel, rows top first: whole images compare in one assertion.
inline std::vector<uint32_t> pixels(const xc_image *image) {
    std::vector<uint32_t> words;
    for (int32_t y = 0; y < image->height; ++y)
        for (int32_t x = 0; x < image->width; ++x) words.push_back(pixel(image, x, y));
    return words;
}

// The alpha marks (format, has_alpha): 0, 1 for premultiplied alpha; 1, 0 when opaque.
inline std::pair<uint32_t, uint32_t> alpha_marks(const xc_image *image) {
    return {image->format, image->has_alpha};
}
inline std::pair<uint32_t, uint32_t> alpha_marks(bool alpha) {
    return {alpha ? 0u : 1u, alpha ? 1u : 0u};
}

// Whether each byte of two colour words differs by at most `tolerance`.
inline bool channels_within(uint32_t got, uint32_t want, int tolerance) {
    for (int shift = 0; shift < 32; shift += 8)
        if (std::abs(static_cast<int>((got >> shift) & 0xFF) -
                     static_cast<int>((want >> shift) & 0xFF)) > tolerance)
            return false;
    return true;
}

// Appends `v` as four little-endian bytes.
inline void put_le(std::vector<uint8_t> &out, uint32_t v) {
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

}  // namespace fbc_test

// What the loader tests share: the headers they all use, a scratch folder
// per test, the program's diagnostics, file bytes and pixel access.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <tuple>
#include <utility>

#include "fbcompose/image.h"
#include "fbcompose/loader.h"
#include "fbcompose/log.h"
#include "image_words.hpp"  // also <cstdint>, <string>, <vector>

namespace fbc_test {

using test::all;
using test::at;
using test::Words;
using Image = test::Image;
using Bytes = std::vector<uint8_t>;

inline std::string corpus(const std::string &file) { return FBC_CORPUS_DIR "/" + file; }

// Every diagnostic while it lives, by stream: out[0] standard output, out[1] errors.
struct Logged {
    std::string out[2];
    Logged() {
        xc_set_log_func([](const char *text, int err,
                           void *me) { static_cast<Logged *>(me)->out[err != 0] += text; },
                        this);
    }
    ~Logged() { xc_set_log_func(nullptr, nullptr); }
    // What was written since the last call, on one stream.
    std::string take(int err = 0) {
        std::string text;
        std::swap(text, out[err]);
        return text;
    }
};

// A fresh folder under the system's temporary folder, removed afterwards,
// and the diagnostics written meanwhile.
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

    std::string write(const std::string &name, const Bytes &bytes) const {
        std::ofstream(path(name), std::ios::binary)
            .write(reinterpret_cast<const char *>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        return path(name);
    }

    std::filesystem::path dir_;
    Logged log_;
};

inline Bytes file_bytes(const std::string &file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
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

// The next frame's index, its delay and changed area dropped.
inline int next_frame(xc_image *image) {
    int32_t delay, x, y, w, h;
    return xc_image_next_frame(image, &delay, &x, &y, &w, &h);
}

// Appends `v` as four little-endian bytes.
inline void put_le(Bytes &out, uint32_t v) {
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

}  // namespace fbc_test

using namespace fbc_test;  // in every loader test

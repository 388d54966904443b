// What the loader tests share: a scratch folder per test, file writing and
// pixel access.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "fbcompose/image.h"

namespace fbc_test {

// A fresh folder under the system's temporary folder, removed afterwards.
class ScratchDir : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "fbc-loaders-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        dir_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    std::string path(const std::string &name) const { return (dir_ / name).string(); }

    std::string write(const std::string &name, const std::vector<uint8_t> &bytes) const {
        const std::string file = path(name);
        FILE *out = std::fopen(file.c_str(), "wb");
        EXPECT_NE(out, nullptr);
        if (out) {
            if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), out);
            std::fclose(out);
        }
        return file;
    }

    std::filesystem::path dir_;
};

inline std::string corpus_file(const std::string &relative) {
    return std::string(FBC_CORPUS_DIR) + "/" + relative;
}

inline uint32_t pixel(const xc_image *image, int32_t x, int32_t y) {
    return reinterpret_cast<const uint32_t *>(image->data + static_cast<size_t>(y) * image->rowstride)[x];
}

// A WBMP file: type 0, fixed header 0, one-byte width and height (< 128),
// then the given row bytes.
inline std::vector<uint8_t> wbmp_file(uint8_t width, uint8_t height,
                                      const std::vector<uint8_t> &rows) {
    std::vector<uint8_t> bytes = {0x00, 0x00, width, height};
    bytes.insert(bytes.end(), rows.begin(), rows.end());
    return bytes;
}

}  // namespace fbc_test

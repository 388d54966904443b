// The per-directory archive img.ar and the PNG codec's use of it.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "fbcompose/image.h"
#include "fbcompose/loader.h"
#include "loader_test_support.hpp"

namespace fbc_test {
std::vector<uint8_t> small_png_bytes(const std::string &scratch);
}

namespace {

void put_s32(std::vector<uint8_t> &out, int32_t v) {
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<uint8_t>(static_cast<uint32_t>(v) >> (8 * i)));
}

// An archive holding the given files, data placed after the index. An
// explicit offset of 0 overrides the real one.
std::vector<uint8_t> archive(const std::vector<std::pair<std::string, std::vector<uint8_t>>> &files,
                             const char *magic = "IMGARCH0", bool zero_first_offset = false) {
    std::vector<uint8_t> out(magic, magic + 8);
    put_s32(out, static_cast<int32_t>(files.size()));
    size_t index_size = 0;
    for (const auto &f : files) index_size += 8 + f.first.size();
    auto offset = static_cast<int32_t>(12 + index_size);
    for (size_t i = 0; i < files.size(); ++i) {
        put_s32(out, zero_first_offset && i == 0 ? 0 : offset);
        put_s32(out, static_cast<int32_t>(files[i].first.size()));
        out.insert(out.end(), files[i].first.begin(), files[i].first.end());
        offset += static_cast<int32_t>(files[i].second.size());
    }
    for (const auto &f : files) out.insert(out.end(), f.second.begin(), f.second.end());
    return out;
}

class ImageArchive : public fbc_test::ScratchDir {
protected:
    void SetUp() override {
        ScratchDir::SetUp();
        xc_image_init();
        png_ = fbc_test::small_png_bytes(path("scratch.png"));
        prefix_ = path("");
    }
    std::vector<uint8_t> png_;
    std::string prefix_;
};

TEST_F(ImageArchive, StoredPngLoadsExactlyAsThePlainFile) {
    write("img.ar", archive({{"other.png", {1, 2, 3}}, {"icon.png", png_}}));
    const std::string plain = write("plain.png", png_);
    xc_image *stored = xc_image_new_from_file(path("icon.png").c_str());
    xc_image *reference = xc_image_new_from_file(plain.c_str());
    ASSERT_NE(stored, nullptr);
    ASSERT_NE(reference, nullptr);
    ASSERT_GE(xc_image_load_data(stored), 0);
    ASSERT_GE(xc_image_load_data(reference), 0);
    EXPECT_EQ(stored->width, 2);
    EXPECT_EQ(stored->has_alpha, 1u);
    EXPECT_EQ(std::memcmp(stored->data, reference->data, 16), 0);
    xc_image_unref(stored);
    xc_image_unref(reference);
}

TEST_F(ImageArchive, DirectoryIsReadOnceWithItsMessages) {
    const std::string file = write("img.ar", archive({{"a.png", png_}, {"b.png", png_}}));
    int32_t offset = -1;
    testing::internal::CaptureStdout();
    EXPECT_EQ(ar_img_lookup(path("a.png").c_str(), &offset), file);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "add dir = " + prefix_ + "\ndir = " + prefix_ + "\n");
    EXPECT_EQ(offset, 12 + 2 * (8 + 5));
    testing::internal::CaptureStdout();
    EXPECT_EQ(ar_img_lookup(path("b.png").c_str(), &offset), file);
    EXPECT_EQ(offset, 12 + 2 * (8 + 5) + static_cast<int32_t>(png_.size()));
    EXPECT_EQ(ar_img_lookup(path("c.png").c_str(), &offset), nullptr);
    EXPECT_EQ(offset, 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(ImageArchive, LaterEntryOfTheSameNameWinsAndOffsetZeroIsNeverFound) {
    write("img.ar", archive({{"zero.png", {9}}, {"twice.png", {1}}, {"twice.png", {2, 2}}}, "IMGARCH0", true));
    int32_t offset = -1;
    testing::internal::CaptureStdout();
    EXPECT_EQ(ar_img_lookup(path("zero.png").c_str(), &offset), nullptr);
    EXPECT_EQ(offset, 0);
    EXPECT_NE(ar_img_lookup(path("twice.png").c_str(), &offset), nullptr);
    EXPECT_EQ(offset, 12 + 3 * 8 + 8 + 9 + 9 + 2);
    testing::internal::GetCapturedStdout();
}

TEST_F(ImageArchive, DirectoriesWithoutUsableArchiveFailQuietlyAfterTheFirstLookup) {
    const struct {
        const char *folder;
        std::vector<uint8_t> content;  // empty: no archive at all
        const char *first_message;
    } rows[] = {
        {"none/", {}, "this dir %s has not img.ar\n"},
        {"wrong/", archive({{"a.png", {1}}}, "IMGARCH1"), "dir = %s\nnot our archive"},
        {"short/", {'I', 'M', 'G'}, "dir = %s\nnot our archive"},
    };
    for (const auto &row : rows) {
        const std::string folder = path(row.folder);
        std::filesystem::create_directory(folder);
        if (!row.content.empty() || std::string(row.folder) == "short/")
            write(std::string(row.folder) + "img.ar", row.content);
        int32_t offset = -1;
        char expected[512];
        std::snprintf(expected, sizeof(expected), row.first_message, folder.c_str());
        testing::internal::CaptureStdout();
        EXPECT_EQ(ar_img_lookup((folder + "a.png").c_str(), &offset), nullptr);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "add dir = " + folder + "\n" + expected);
        testing::internal::CaptureStdout();
        EXPECT_EQ(ar_img_lookup((folder + "a.png").c_str(), &offset), nullptr);
        EXPECT_EQ(offset, 0);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    }
}

TEST_F(ImageArchive, TruncatedIndexKeepsTheEntriesReadSoFar) {
    std::vector<uint8_t> bytes = archive({{"a.png", {1}}, {"b.png", {2}}});
    bytes.resize(12 + 8 + 5 + 6);  // cut inside the second entry
    bytes[8] = 0xFF;               // and claim a huge count
    bytes[11] = 0x7F;
    write("img.ar", bytes);
    int32_t offset = 0;
    testing::internal::CaptureStdout();
    EXPECT_NE(ar_img_lookup(path("a.png").c_str(), &offset), nullptr);
    EXPECT_EQ(ar_img_lookup(path("b.png").c_str(), &offset), nullptr);
    testing::internal::GetCapturedStdout();
}

TEST_F(ImageArchive, PathWithoutSlashUsesTheWorkingDirectory) {
    write("img.ar", archive({{"here.png", png_}}));
    ASSERT_EQ(chdir(dir_.c_str()), 0);
    int32_t offset = 0;
    testing::internal::CaptureStdout();
    EXPECT_STREQ(ar_img_lookup("here.png", &offset), "img.ar");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "add dir = \ndir = \n");
    EXPECT_EQ(offset, 12 + 8 + 8);
}

}  // namespace

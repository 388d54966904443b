// The file front end with the built-in loaders only (CANVAS_IMAGE_LOADER
// unset): suffix choice, messages, caching, the asymmetric load results.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "fbcompose/image.h"
#include "fbcompose/loader.h"
#include "loader_test_support.hpp"

namespace {

using fbc_test::ScratchDir;

class FileFrontEnd : public ScratchDir {
protected:
    void SetUp() override {
        ScratchDir::SetUp();
        unsetenv("CANVAS_IMAGE_LOADER");
        xc_image_init();
    }
    void TearDown() override {
        xc_set_image_cache_size(0);
        ScratchDir::TearDown();
    }
    // A 2 x 1 WBMP: white then black.
    std::string wbmp(const std::string &name) { return write(name, fbc_test::wbmp_file(2, 1, {0x80})); }
};

TEST_F(FileFrontEnd, RegistryListsTheBuiltInLoadersInOrder) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(xc_image_new_from_file(path("none.xyz").c_str()), nullptr);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out, "loaders[0] ext = jpg\nloaders[1] ext = png\nloaders[2] ext = bmp\n"
                   "loaders[3] ext = wbmp\nloaders[4] ext = gif\n"
                   "file(" + path("none.xyz") + ") load failed: unsupported suffix xyz\n");
}

TEST_F(FileFrontEnd, SuffixIsMatchedIgnoringCase) {
    const std::string name = wbmp("small.WbMp");
    xc_image *image = xc_image_new_from_file(name.c_str());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->loader, &wbmp_loader);
    EXPECT_EQ(image->type_name, wbmp_loader.name);  // the loader's own pointer
    EXPECT_STREQ(image->filename, name.c_str());
    EXPECT_NE(image->filename, name.c_str());
    EXPECT_EQ(image->width, 2);
    EXPECT_EQ(image->height, 1);
    EXPECT_EQ(image->data, nullptr);  // information only until load_data
    EXPECT_EQ(xc_image_load_data(image), 0);
    ASSERT_NE(image->data, nullptr);
    EXPECT_EQ(fbc_test::pixel(image, 0, 0), 0xFFFFFFFFu);
    EXPECT_EQ(fbc_test::pixel(image, 1, 0), 0xFF000000u);
    xc_image_unref(image);
}

TEST_F(FileFrontEnd, OnlyTheTextAfterTheLastDotCounts) {
    const std::string name = path("archive.wbmp.gz");
    testing::internal::CaptureStdout();
    EXPECT_EQ(xc_image_new_from_file(name.c_str()), nullptr);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("file(" + name + ") load failed: unsupported suffix gz\n"), std::string::npos);
}

TEST_F(FileFrontEnd, NameWithoutDotGivesNullSilently) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(xc_image_new_from_file("no_suffix"), nullptr);
    EXPECT_EQ(xc_image_new_from_file(nullptr), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(FileFrontEnd, FailingLoaderIsNamedByTheSuffixItListed) {
    const std::string name = path("missing.JPEG");
    xc_image_new_from_file(path("warm.xyz").c_str());  // registry lines out of the way
    testing::internal::CaptureStdout();
    EXPECT_EQ(xc_image_new_from_file(name.c_str()), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "jpeg file(" + name + ") load failed\nfile(" + name + ") load failed\n");
}

TEST_F(FileFrontEnd, SecondRequestReturnsTheCachedRecordWithoutLoading) {
    const std::string name = wbmp("cached.wbmp");
    xc_image *first = xc_image_new_from_file(name.c_str());
    ASSERT_NE(first, nullptr);
    std::filesystem::remove(name);  // a loader would now fail
    xc_image *second = xc_image_new_from_file(name.c_str());
    EXPECT_EQ(second, first);
    EXPECT_EQ(first->ref, 2);
    xc_image_unref(second);
    xc_image_unref(first);
}

TEST_F(FileFrontEnd, ReleasedImageIsDecodedAgainWithoutCacheBudget) {
    const std::string name = wbmp("again.wbmp");
    xc_image *first = xc_image_new_from_file(name.c_str());
    ASSERT_NE(first, nullptr);
    xc_image_unref(first);  // limit 0: destroyed
    std::filesystem::remove(name);
    testing::internal::CaptureStdout();
    EXPECT_EQ(xc_image_new_from_file(name.c_str()), nullptr);
    testing::internal::GetCapturedStdout();
}

TEST_F(FileFrontEnd, LoadDataLeavesImagesWithPixelsOrWithoutLoaderAlone) {
    xc_image *canvas = xc_image_create(2, 2);
    uint8_t *pixels = canvas->data;
    EXPECT_EQ(xc_image_load_data(canvas), 0);
    EXPECT_EQ(canvas->data, pixels);
    EXPECT_EQ(xc_image_load_data_rescaled(canvas, 1, 1), 0);
    EXPECT_EQ(canvas->data, pixels);
    xc_image_unref(canvas);

    xc_image *empty = xc_image_new();
    EXPECT_EQ(xc_image_load_data(empty), 0);
    EXPECT_EQ(empty->data, nullptr);
    xc_image_unref(empty);
}

TEST_F(FileFrontEnd, LoadResultsAreAsymmetric) {
    const std::string name = wbmp("vanishing.wbmp");
    xc_image *image = xc_image_new_from_file(name.c_str());
    ASSERT_NE(image, nullptr);
    std::filesystem::remove(name);
    testing::internal::CaptureStderr();
    EXPECT_EQ(xc_image_load_data(image), -1);
    EXPECT_EQ(xc_image_load_data_rescaled(image, 1, 1), 0);  // failure shows as no pixels
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(image->data, nullptr);
    xc_image_unref(image);
}

TEST_F(FileFrontEnd, SaveRefusals) {
    xc_image *canvas = xc_image_create(4, 4);
    xc_image *bare = xc_image_new();
    EXPECT_EQ(xc_image_save(bare, path("a.png").c_str(), nullptr, nullptr), -1);
    EXPECT_EQ(xc_image_save(canvas, path("no_suffix").c_str(), nullptr, nullptr), -1);
    EXPECT_EQ(xc_image_save(canvas, path("a.xyz").c_str(), nullptr, nullptr), -1);
    // The first loader listing the suffix cannot save.
    EXPECT_EQ(xc_image_save(canvas, path("a.wbmp").c_str(), nullptr, nullptr), -1);
    EXPECT_FALSE(std::filesystem::exists(path("a.wbmp")));
    xc_image_unref(bare);
    xc_image_unref(canvas);
}

TEST_F(FileFrontEnd, StillImagesHaveNoFramesOrDelay) {
    xc_image *image = xc_image_new_from_file(wbmp("still.wbmp").c_str());
    ASSERT_NE(image, nullptr);
    int32_t delay = -5, x = -5, y = -5, w = -5, h = -5;
    EXPECT_EQ(xc_image_next_frame(image, &delay, &x, &y, &w, &h), -1);
    EXPECT_EQ(delay, -5);
    EXPECT_EQ(xc_image_get_delay(image), -1);
    xc_image *canvas = xc_image_create(1, 1);
    EXPECT_EQ(xc_image_next_frame(canvas, &delay, &x, &y, &w, &h), -1);
    EXPECT_EQ(xc_image_get_delay(canvas), -1);
    xc_image_unref(canvas);
    xc_image_unref(image);
}

TEST(GuessImageType, FirstBytesDecide) {
    const struct {
        const char *header;
        const char *type;
    } rows[] = {
        {"\x89PNG\r\n\x1a\n", "png"},
        {"GIF89a", "gif"},
        {"GIF87a", "gif"},
        {"\xFF\xD8JFIF", "jpg"},
        {"\xFF\xD8\xFF\xE0\x00\x10JFIF", nullptr},  // JFIF must follow the first two bytes
        {"BM", "bmp"},
        {"BMxyz", "bmp"},
        {"\x00\x00\x81\x00", nullptr},  // WBMP has no signature
        {"\x89PN", nullptr},
        {"", nullptr},
    };
    for (const auto &row : rows) {
        const char *type = xc_image_guess_image_type(row.header);
        if (row.type) EXPECT_STREQ(type, row.type) << row.header;
        else EXPECT_EQ(type, nullptr) << row.header;
    }
}

}  // namespace

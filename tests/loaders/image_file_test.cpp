// The file front end with the built-in loaders only (CANVAS_IMAGE_LOADER
// unset): suffix choice, messages, caching, the asymmetric load results.
#include "loader_test_support.hpp"

namespace {

class FileFrontEnd : public fbc_test::ScratchDir {
protected:
    void SetUp() override {
        unsetenv("CANVAS_IMAGE_LOADER");
        ScratchDir::SetUp();
    }
    // A 2 x 1 WBMP: white then black.
    std::string wbmp(const std::string &name) { return write(name, {0, 0, 2, 1, 0x80}); }
};

TEST_F(FileFrontEnd, RegistryListsTheBuiltInLoadersInOrder) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(xc_image_new_from_file(path("none.xyz").c_str()), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "loaders[0] ext = jpg\nloaders[1] ext = png\nloaders[2] ext = bmp\n"
              "loaders[3] ext = wbmp\nloaders[4] ext = gif\n"
              "file(" + path("none.xyz") + ") load failed: unsupported suffix xyz\n");
}

TEST_F(FileFrontEnd, UnloadableNamesGiveNullWithTheirMessage) {
    xc_image_new_from_file("warm.xyz");  // registry lines out of the way
    const std::string gz = path("archive.wbmp.gz"), jpeg = path("missing.JPEG");
    const std::pair<std::string, std::string> rows[] = {
        {gz, "file(" + gz + ") load failed: unsupported suffix gz\n"},  // the last dot counts
        {jpeg, "jpeg file(" + jpeg + ") load failed\nfile(" + jpeg + ") load failed\n"},  // the suffix as listed
        {path("no_suffix"), ""}};
    for (const auto &[name, message] : rows) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(xc_image_new_from_file(name.c_str()), nullptr);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), message);
    }
    EXPECT_EQ(xc_image_new_from_file(nullptr), nullptr);
}

TEST_F(FileFrontEnd, FileLoadsInTwoStagesAsACachedStillImage) {
    const std::string name = wbmp("small.WbMp");  // suffixes match ignoring case
    xc_image *image = xc_image_new_from_file(name.c_str());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(std::make_tuple(image->loader, image->type_name, image->width, image->data),
              std::make_tuple(&wbmp_loader, wbmp_loader.name, 2, nullptr));  // the loader's own name pointer
    EXPECT_STREQ(image->filename, name.c_str());
    EXPECT_NE(image->filename, name.c_str());
    EXPECT_EQ(xc_image_load_data(image), 0);
    EXPECT_EQ(fbc_test::pixels(image), (std::vector<uint32_t>{0xFFFFFFFFu, 0xFF000000u}));
    int32_t delay = -5, x, y, w, h;
    EXPECT_EQ(xc_image_next_frame(image, &delay, &x, &y, &w, &h), -1);
    EXPECT_EQ(delay, -5);
    EXPECT_EQ(xc_image_get_delay(image), -1);
    // A second request returns the cached record without loading.
    std::filesystem::remove(name);
    EXPECT_EQ(xc_image_new_from_file(name.c_str()), image);
    EXPECT_EQ(image->ref, 2);
    xc_image_unref(image);
    xc_image_unref(image);
}

TEST_F(FileFrontEnd, ImagesWithPixelsOrWithoutLoaderNeedNoLoading) {
    xc_image *canvas = xc_image_create(2, 2), *empty = xc_image_new();
    uint8_t *pixels = canvas->data;
    EXPECT_EQ(xc_image_load_data(canvas), 0);
    EXPECT_EQ(xc_image_load_data_rescaled(canvas, 1, 1), 0);
    EXPECT_EQ(canvas->data, pixels);
    EXPECT_EQ(xc_image_load_data(empty), 0);
    EXPECT_EQ(empty->data, nullptr);
    int32_t delay, x, y, w, h;
    EXPECT_EQ(xc_image_next_frame(canvas, &delay, &x, &y, &w, &h), -1);
    EXPECT_EQ(xc_image_get_delay(canvas), -1);
    xc_image_unref(canvas);
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

TEST_F(FileFrontEnd, EachLoaderReportsAMissingFileInItsOwnWords) {
    const std::string file = path("absent.img"), absent = "Couldn't load '" + file + "' image:No such file or directory\n";
    const std::tuple<xc_image_loader *, std::string, std::string> rows[] = {  // loader, info's and data's words
        {&jpeg_loader, "", absent},
        {&png_loader, absent, absent},  // after looking in the archive
        {&gif_loader, absent, absent},
        {&wbmp_loader, "fopen() error filename = " + file + "\n", "xc_wbmp_load:" + file + ":No such file or directory\n"},
        {&bmp_loader, "", ""}};
    for (const auto &[loader, info_words, data_words] : rows) {
        SCOPED_TRACE(loader->name);
        xc_image *image = xc_image_new();
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        EXPECT_EQ(loader->load_info(image, file.c_str()), -1);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), info_words);
        testing::internal::CaptureStderr();
        EXPECT_EQ(loader->load_data(image, file.c_str()), -1);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), data_words);
        testing::internal::GetCapturedStdout();
        xc_image_unref(image);
    }
}

TEST(GuessImageType, FirstBytesDecide) {
    // JFIF must follow the first two bytes; WBMP has no signature.
    const std::pair<const char *, const char *> rows[] = {
        {"\x89PNG\r\n\x1a\n", "png"}, {"GIF89a", "gif"}, {"GIF87a", "gif"}, {"\xFF\xD8JFIF", "jpg"}, {"BMxyz", "bmp"},
        {"\xFF\xD8\xFF\xE0\x00\x10JFIF", nullptr}, {"\x00\x00\x81\x00", nullptr}, {"\x89PN", nullptr}};
    for (const auto &[header, type] : rows) EXPECT_STREQ(xc_image_guess_image_type(header), type) << header;
}

}  // namespace

// The file front end with the built-in loaders: suffix choice, messages,
// caching, the asymmetric load results, each loader's failure messages.
#include "loader_test_support.hpp"

namespace {

using FileFrontEnd = fbc_test::ScratchDir;

TEST_F(FileFrontEnd, UnloadableNamesGiveNullWithTheirMessage) {
    unsetenv("CANVAS_IMAGE_LOADER");  // the built-in loaders only
    const std::string xyz = path("none.xyz"), gz = path("archive.wbmp.gz"),
                      jpeg = path("missing.JPEG");
    const std::pair<std::string, std::string> rows[] = {
        {xyz,
         "loaders[0] ext = jpg\nloaders[1] ext = png\nloaders[2] ext = bmp\nloaders[3] ext = wbmp\n"
         "loaders[4] ext = gif\nfile(" +
             xyz + ") load failed: unsupported suffix xyz\n"},          // the registry, once
        {gz, "file(" + gz + ") load failed: unsupported suffix gz\n"},  // the last dot counts
        {jpeg, "jpeg file(" + jpeg + ") load failed\nfile(" + jpeg +
                   ") load failed\n"},  // the suffix as listed
        {path("no_suffix"), ""}};
    for (const auto &[name, message] : rows) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(xc_image_new_from_file(name.c_str()), nullptr);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), message);
    }
    EXPECT_EQ(xc_image_new_from_file(nullptr), nullptr);
}

TEST_F(FileFrontEnd, FileLoadsInTwoStagesAsACachedStillImage) {
    const std::string name =
        write("small.WbMp", {0, 0, 2, 1, 0x80});  // white, black; suffixes match ignoring case
    xc_image *image = xc_image_new_from_file(name.c_str());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(std::make_tuple(image->loader, image->type_name, image->width, image->data),
              std::make_tuple(&wbmp_loader, wbmp_loader.name, 2,
                              nullptr));  // the loader's own name pointer
    EXPECT_TRUE(image->filename != name.c_str() && name == image->filename);  // a copy
    EXPECT_EQ(xc_image_load_data(image), 0);
    EXPECT_EQ(fbc_test::pixels(image), (std::vector<uint32_t>{0xFFFFFFFFu, 0xFF000000u}));
    int32_t delay, x, y, w, h;
    EXPECT_EQ(xc_image_next_frame(image, &delay, &x, &y, &w, &h), -1);
    EXPECT_EQ(xc_image_get_delay(image), -1);
    // A second request returns the cached record without loading.
    std::filesystem::remove(name);
    EXPECT_EQ(xc_image_new_from_file(name.c_str()), image);
    EXPECT_EQ(image->ref, 2);
    xc_image_unref(image);
    xc_image_unref(image);
}

TEST_F(FileFrontEnd, LoadResultsAreAsymmetric) {
    xc_image *canvas = xc_image_create(2, 2), *bare = xc_image_new();
    uint8_t *pixels = canvas->data;
    // Images with pixels or without a loader need no loading.
    EXPECT_EQ(xc_image_load_data(canvas), 0);
    EXPECT_EQ(xc_image_load_data_rescaled(canvas, 1, 1), 0);
    EXPECT_EQ(xc_image_load_data(bare), 0);
    EXPECT_EQ(std::make_pair(canvas->data, bare->data),
              std::make_pair(pixels, static_cast<uint8_t *>(nullptr)));
    int32_t delay, x, y, w, h;
    EXPECT_EQ(std::make_pair(xc_image_next_frame(canvas, &delay, &x, &y, &w, &h),
                             xc_image_get_delay(canvas)),
              std::make_pair(-1, -1));
    // A failing loader: load_data says so, the rescaled load shows it only by leaving no pixels.
    const std::string name = write("vanishing.wbmp", {0, 0, 1, 1, 0});
    xc_image *image = xc_image_new_from_file(name.c_str());
    ASSERT_NE(image, nullptr);
    std::filesystem::remove(name);
    testing::internal::CaptureStderr();
    EXPECT_EQ(xc_image_load_data(image), -1);
    EXPECT_EQ(xc_image_load_data_rescaled(image, 1, 1), 0);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(image->data, nullptr);
    xc_image_unref(image);
    xc_image_unref(canvas);
    xc_image_unref(bare);
}

// Missing files, and absurd sizes refused before anything is allocated.
TEST_F(FileFrontEnd, EachLoaderReportsFailuresInItsOwnWords) {
    const std::string none = path("absent.img"), enoent = ":No such file or directory\n";
    const std::string absent = "Couldn't load '" + none + "' image" + enoent;
    const auto huge = [](xc_image_loader *loader, const std::string &size) {
        const std::string codec = loader->name,
                          file = FBC_CORPUS_DIR "/bad/" + codec + "/huge-dimensions." + codec;
        const std::string words = codec + ": file(" + file + ") has unusable size " + size + "\n";
        return std::make_tuple(loader, file, words, words);
    };
    // The loader, the file, and what load_info and load_data print.
    const std::tuple<xc_image_loader *, std::string, std::string, std::string> rows[] = {
        {&jpeg_loader, none, "", absent},
        {&png_loader, none, absent, absent},  // after looking in the archive
        {&gif_loader, none, absent, absent},
        {&wbmp_loader, none, "fopen() error filename = " + none + "\n",
         "xc_wbmp_load:" + none + enoent},
        {&bmp_loader, none, "", ""},
        huge(&bmp_loader, "2147483647x2147483647"),
        huge(&gif_loader, "65535x65535"),
        huge(&wbmp_loader, "16777215x16777215")};
    for (const auto &[loader, file, info_words, data_words] : rows) {
        SCOPED_TRACE(file);
        xc_image *image = xc_image_new();
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        EXPECT_EQ(loader->load_info(image, file.c_str()), -1);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), info_words);
        testing::internal::CaptureStderr();
        EXPECT_EQ(loader->load_data(image, file.c_str()), -1);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), data_words);
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(image->data, nullptr);
        xc_image_unref(image);
    }
}

TEST(GuessImageType, FirstBytesDecide) {
    // JFIF must follow the first two bytes; WBMP has no signature.
    const std::pair<const char *, const char *> rows[] = {{"\x89PNG\r\n\x1a\n", "png"},
                                                          {"GIF89a", "gif"},
                                                          {"GIF87a", "gif"},
                                                          {"\xFF\xD8JFIF", "jpg"},
                                                          {"BMxyz", "bmp"},
                                                          {"\xFF\xD8\xFF\xE0\x00\x10JFIF", nullptr},
                                                          {"\x00\x00\x81\x00", nullptr},
                                                          {"\x89PN", nullptr}};
    for (const auto &[header, type] : rows)
        EXPECT_STREQ(xc_image_guess_image_type(header), type) << header;
}

}  // namespace

// The file front end with the built-in loaders: suffix choice, messages,
// caching, the asymmetric load results, each loader's failure messages.
#include "loader_test_support.hpp"

namespace {

using FileFrontEnd = ScratchDir;

TEST_F(FileFrontEnd, UnloadableNamesGiveNullWithTheirMessage) {
    unsetenv("CANVAS_IMAGE_LOADER");  // the built-in loaders only
    const std::string xyz = path("none.xyz"), gz = path("archive.wbmp.gz"),
                      jpeg = path("missing.JPEG");
    const std::pair<std::string, std::string> rows[] = {
        // The registry's lines come once; the last dot counts; the suffix as listed.
        {xyz,
         "loaders[0] ext = jpg\nloaders[1] ext = png\nloaders[2] ext = bmp\nloaders[3] ext = wbmp\n"
         "loaders[4] ext = gif\nfile(" +
             xyz + ") load failed: unsupported suffix xyz\n"},
        {gz, "file(" + gz + ") load failed: unsupported suffix gz\n"},
        {jpeg, "jpeg file(" + jpeg + ") load failed\nfile(" + jpeg + ") load failed\n"},
        {path("no_suffix"), ""}};
    for (const auto &[name, message] : rows) {
        EXPECT_EQ(xc_image_new_from_file(name.c_str()), nullptr);
        EXPECT_EQ(log_.take(), message);
    }
    EXPECT_EQ(xc_image_new_from_file(nullptr), nullptr);
}

TEST_F(FileFrontEnd, FileLoadsInTwoStagesAsACachedStillImage) {
    const Bytes white_black = {0, 0, 2, 1, 0x80};
    const std::string name = write("small.WbMp", white_black);  // suffixes ignore case
    const Image image{xc_image_new_from_file(name.c_str())};
    ASSERT_NE(image, nullptr);
    // The loader's own name pointer, and a copy of the file name.
    EXPECT_EQ(std::make_tuple(image->loader, image->type_name, image->width, image->data),
              std::make_tuple(&wbmp_loader, wbmp_loader.name, 2, nullptr));
    EXPECT_TRUE(image->filename != name.c_str() && name == image->filename);
    // A failing loader: load_data says so, the rescaled load shows it only by leaving no pixels.
    std::filesystem::remove(name);
    EXPECT_EQ(xc_image_load_data(image.get()), -1);
    EXPECT_EQ(xc_image_load_data_rescaled(image.get(), 1, 1), 0);
    EXPECT_EQ(image->data, nullptr);
    write("small.WbMp", white_black);
    EXPECT_EQ(xc_image_load_data(image.get()), 0);
    EXPECT_EQ(all(image.get()), (Words{0xFFFFFFFFu, 0xFF000000u}));
    EXPECT_EQ(std::make_pair(next_frame(image.get()), xc_image_get_delay(image.get())),
              std::make_pair(-1, -1));
    // A second request returns the cached record without loading.
    std::filesystem::remove(name);
    EXPECT_EQ(xc_image_new_from_file(name.c_str()), image.get());
    EXPECT_EQ(image->ref, 2);
    xc_image_unref(image.get());
}

// Images with pixels or without a loader need no loading.
TEST(LoadData, DoesNothingForImagesWithPixelsOrWithoutALoader) {
    const Image canvas{xc_image_create(2, 2)}, bare{xc_image_new()};
    uint8_t *pixels = canvas->data;
    EXPECT_EQ(xc_image_load_data(canvas.get()), 0);
    EXPECT_EQ(xc_image_load_data_rescaled(canvas.get(), 1, 1), 0);
    EXPECT_EQ(xc_image_load_data(bare.get()), 0);
    EXPECT_EQ(std::make_pair(canvas->data, bare->data),
              std::make_pair(pixels, static_cast<uint8_t *>(nullptr)));
}

// Missing files, and absurd sizes refused before anything is allocated.
TEST_F(FileFrontEnd, EachLoaderReportsFailuresInItsOwnWords) {
    const std::string none = path("absent.img"), enoent = ":No such file or directory\n";
    const std::string absent = "Couldn't load '" + none + "' image" + enoent;
    const auto huge = [](xc_image_loader *loader, const std::string &size) {
        const std::string codec = loader->name,
                          file = corpus("bad/" + codec + "/huge-dimensions." + codec);
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
        const Image image{xc_image_new()};
        EXPECT_EQ(loader->load_info(image.get(), file.c_str()), -1);
        EXPECT_EQ(log_.take(1), info_words);
        EXPECT_EQ(loader->load_data(image.get(), file.c_str()), -1);
        EXPECT_EQ(log_.take(1), data_words);
        EXPECT_EQ(image->data, nullptr);
    }
}

TEST(GuessImageType, FirstBytesDecide) {
    // JFIF must follow the first two bytes; WBMP has no signature.
    const char *const headers[] = {"\x89PNG\r\n\x1a\n", "GIF89a", "GIF87a",
                                   "\xFF\xD8JFIF",      "BMxyz",  "\xFF\xD8\xFF\xE0\x00\x10JFIF",
                                   "\x00\x00\x81\x00",  "\x89PN"};
    const char *const types[] = {"png", "gif", "gif", "jpg", "bmp", nullptr, nullptr, nullptr};
    for (int i = 0; i < 8; ++i) EXPECT_STREQ(xc_image_guess_image_type(headers[i]), types[i]) << i;
}

}  // namespace

// Saving through the front end: PNG and JPEG files of an area, the refusals,
// and JPEG's choice of quality.
#include "loader_test_support.hpp"

namespace {

class ImageSave : public fbc_test::ScratchDir {
protected:
    // Saves quietly: the JPEG saver prints a line on every save.
    int save(xc_image *image, const std::string &name, const xg_area *area, const char *options) {
        testing::internal::CaptureStdout();
        const int result = xc_image_save(image, path(name).c_str(), area, options);
        last_output_ = testing::internal::GetCapturedStdout();
        return result;
    }
    std::string last_output_;
};

xc_image *filled(int32_t width, int32_t height, uint32_t word) {
    xc_image *image = xc_image_new_from_data(width, height, nullptr, 32, 0, 0);
    std::fill_n(reinterpret_cast<uint32_t *>(image->data), width * height, word);
    return image;
}

TEST_F(ImageSave, AreaReloadsWithItsColourBytesAsStoredAndAlphaDropped) {
    // Grey around the area, which holds a half-transparent premultiplied colour.
    xc_image *image = filled(40, 40, 0xFF808080u);
    auto *words = reinterpret_cast<uint32_t *>(image->data);
    for (int32_t y = 10; y < 30; ++y) std::fill_n(words + y * 40 + 10, 10, 0x80406010u);
    const xg_area area{10, 10, 20, 30};
    for (const auto &[name, tolerance] :
         {std::pair{"area.png", 0}, {"area.jpeg", 3}}) {  // JPEG is lossy
        SCOPED_TRACE(name);
        ASSERT_EQ(save(image, name, &area, "quality=95"), 0);
        xc_image *saved = xc_image_new_from_file(path(name).c_str());
        ASSERT_TRUE(saved && xc_image_load_data(saved) >= 0);
        EXPECT_EQ(std::make_tuple(saved->width, saved->height, saved->format),
                  std::make_tuple(10, 20, 1u));
        for (uint32_t word : fbc_test::pixels(saved))
            EXPECT_TRUE(fbc_test::channels_within(word, 0xFF406010u, tolerance))
                << std::hex << word;
        xc_image_unref(saved);
    }
    xc_image_unref(image);
}

TEST_F(ImageSave, RefusesWhatItCannotWrite) {
    xc_image *image = xc_image_create(8, 8), *bare = xc_image_new();
    xc_image *rgb565 = xc_image_new_from_data(8, 8, nullptr, 16, 0, 0);
    for (const std::string name : {"out.png", "out.jpg"}) {
        SCOPED_TRACE(name);
        for (const xg_area &outside :
             {xg_area{-1, 0, 4, 4}, {0, 0, 9, 4}, {0, 0, 4, 9}, {3, 0, 3, 4}, {0, 5, 4, 2}})
            EXPECT_EQ(save(image, name, &outside, nullptr), -1);
        EXPECT_EQ(save(rgb565, name, nullptr, nullptr), -1);
        EXPECT_EQ(save(bare, name, nullptr, nullptr), -1);
        EXPECT_EQ(save(image, "no/such/dir/" + name, nullptr, nullptr), -1);
    }
    EXPECT_EQ(save(image, "no_suffix", nullptr, nullptr), -1);
    EXPECT_EQ(save(image, "a.xyz", nullptr, nullptr), -1);
    // The first loader listing the suffix decides, and WBMP cannot save.
    EXPECT_EQ(save(image, "a.wbmp", nullptr, nullptr), -1);
    xc_image_unref(bare);
    xc_image_unref(rgb565);
    xc_image_unref(image);
}

TEST_F(ImageSave, JpegQualityFollowsOptionsOrSize) {
    // libjpeg scales the first luminance quantiser, 16, by the quality:
    // 80 -> 6, 60 -> 13, 95 -> 2, 1 -> 255 in a baseline file.
    const std::tuple<int32_t, int32_t, const char *, int> rows[] = {
        {200, 200, nullptr, 6},   // both sides below 300: 80
        {200, 300, nullptr, 13},  // otherwise 60
        {300, 10, "fast", 13},
        {200, 300, "x,quality=95", 2},    // a given quality wins
        {20, 20, "quality=", 255}};       // 0, which libjpeg clamps to 1
    xc_image_new_from_file("warm.none");  // registry lines out of the way
    for (const auto &[width, height, options, quantiser] : rows) {
        SCOPED_TRACE(quantiser);
        xc_image *image = filled(width, height, 0xFF808080u);
        EXPECT_EQ(save(image, "q.jpg", nullptr, options), 0);
        EXPECT_EQ(last_output_,
                  "cinfo.in_color_space = 0\n");  // printed before the colour space is set
        const std::vector<uint8_t> jpeg = fbc_test::file_bytes(path("q.jpg"));
        // The first DQT segment: marker, length, table number, then the quantisers.
        const uint8_t marker[] = {0xFF, 0xDB};
        const auto dqt =
            std::search(jpeg.begin(), jpeg.end(), std::begin(marker), std::end(marker));
        ASSERT_LT(dqt + 5, jpeg.end());
        EXPECT_EQ(dqt[5], quantiser);
        xc_image_unref(image);
    }
}

}  // namespace

// Saving through the front end: PNG and JPEG files of an area, the refusals,
// and JPEG's choice of quality.
#include "loader_test_support.hpp"

namespace {

class ImageSave : public ScratchDir {
protected:
    int save(const Image &image, const std::string &name, const char *options = nullptr,
             const xg_area *area = nullptr) {
        return xc_image_save(image.get(), path(name).c_str(), area, options);
    }
};

TEST_F(ImageSave, AreaReloadsWithItsColourBytesAsStoredAndAlphaDropped) {
    // Grey around the area, which holds a half-transparent premultiplied colour.
    const Image image = test::blank_alpha(40, 40);
    auto *words = reinterpret_cast<uint32_t *>(image->data);
    std::fill_n(words, 40 * 40, 0xFF808080u);
    for (int32_t y = 10; y < 30; ++y) std::fill_n(words + y * 40 + 10, 10, 0x80406010u);
    const xg_area area{10, 10, 20, 30};
    for (const auto &[name, tolerance] : {std::pair{"area.png", 0}, {"area.jpeg", 3}}) {
        SCOPED_TRACE(name);  // JPEG is lossy
        ASSERT_EQ(save(image, name, "quality=95", &area), 0);
        const Image saved{xc_image_new_from_file(path(name).c_str())};
        ASSERT_TRUE(saved && xc_image_load_data(saved.get()) >= 0);
        EXPECT_EQ(std::make_tuple(saved->width, saved->height, saved->format),
                  std::make_tuple(10, 20, 1u));
        for (uint32_t word : all(saved.get()))
            EXPECT_TRUE(channels_within(word, 0xFF406010u, tolerance)) << std::hex << word;
    }
}

TEST_F(ImageSave, RefusesWhatItCannotWrite) {
    const Image image{xc_image_create(8, 8)}, bare{xc_image_new()},
        rgb565{xc_image_new_from_data(8, 8, nullptr, 16, 0, 0)};
    for (const std::string name : {"out.png", "out.jpg"}) {
        SCOPED_TRACE(name);
        for (const xg_area &outside :
             {xg_area{-1, 0, 4, 4}, {0, 0, 9, 4}, {0, 0, 4, 9}, {3, 0, 3, 4}, {0, 5, 4, 2}})
            EXPECT_EQ(save(image, name, nullptr, &outside), -1);
        EXPECT_EQ(save(rgb565, name), -1);
        EXPECT_EQ(save(bare, name), -1);
        EXPECT_EQ(save(image, "no/such/dir/" + name), -1);
    }
    // The first loader listing the suffix decides, and WBMP cannot save.
    for (const char *name : {"no_suffix", "a.xyz", "a.wbmp"}) EXPECT_EQ(save(image, name), -1);
}

TEST_F(ImageSave, JpegQualityFollowsOptionsOrSize) {
    // libjpeg scales the first luminance quantiser, 16, by the quality:
    // 80 -> 6, 60 -> 13, 95 -> 2, 1 -> 255 in a baseline file. Both sides
    // below 300 give 80, others 60; a given quality wins; "quality=" is 0,
    // which libjpeg clamps to 1.
    const std::tuple<int32_t, int32_t, const char *, int> rows[] = {{200, 200, nullptr, 6},
                                                                    {200, 300, nullptr, 13},
                                                                    {300, 10, "fast", 13},
                                                                    {200, 300, "x,quality=95", 2},
                                                                    {20, 20, "quality=", 255}};
    xc_image_new_from_file("warm.none");  // registry lines out of the way
    for (const auto &[width, height, options, quantiser] : rows) {
        SCOPED_TRACE(quantiser);
        log_.take();
        EXPECT_EQ(save(test::canvas(width, height, 0xFF808080u), "q.jpg", options), 0);
        // Printed before the colour space is set.
        EXPECT_EQ(log_.take(), "cinfo.in_color_space = 0\n");
        const Bytes jpeg = file_bytes(path("q.jpg"));
        // The first DQT segment: marker, length, table number, then the quantisers.
        const uint8_t marker[] = {0xFF, 0xDB};
        const auto dqt = std::search(jpeg.begin(), jpeg.end(), marker, marker + 2);
        ASSERT_LT(dqt + 5, jpeg.end());
        EXPECT_EQ(dqt[5], quantiser);
    }
}

}  // namespace

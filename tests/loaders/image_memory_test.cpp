// Images from memory: what the corpus test does not show, the refusals and
// what makes a memory image unlike a file image.
#include "fbcompose/log.h"

#include "loader_test_support.hpp"

namespace {

std::string logged;
void keep(const char *text, int to_stderr, void *) {
    if (to_stderr) logged += text;
}

std::vector<uint8_t> corpus_bytes(const char *file) {
    return fbc_test::file_bytes(std::string(FBC_CORPUS_DIR) + "/" + file);
}

TEST(ImageFromMemory, RefusesWhatItCannotDecodeWithAMessage) {
    const std::vector<uint8_t> png = corpus_bytes("png/pngsuite/basn0g08.png");
    const std::vector<uint8_t> cut(png.begin(), png.begin() + 60);
    const char text[] = "plain text, no image";
    struct Case {
        const void *bytes;
        size_t size;
        const char *type, *message;
    } cases[] = {
        {nullptr, 10, "png", "no bytes"},
        {png.data(), 0, "png", "no bytes"},
        {text, sizeof text, nullptr, "first bytes show no format"},
        {png.data(), png.size(), "tiff", "type 'tiff'"},
        {png.data(), png.size(), "bmp", "cannot be decoded"},
        {cut.data(), cut.size(), "png", "60-byte png block cannot be decoded"},
    };
    xc_set_log_func(keep, nullptr);
    for (const Case &c : cases) {
        logged.clear();
        EXPECT_EQ(xc_image_new_from_memory(c.bytes, c.size, c.type), nullptr) << c.message;
        EXPECT_NE(logged.find(c.message), std::string::npos) << logged;
    }
    xc_set_log_func(nullptr, nullptr);
}

// The first frame, as a still image the caller owns: no loader to step
// frames with, no file name, so nothing is cached or shared.
TEST(ImageFromMemory, GivesAnOwnedStillImage) {
    xc_image_init();
    const std::vector<uint8_t> gif = corpus_bytes("gif/gif-test-suite/animated_loop.gif");
    xc_image *image = xc_image_new_from_memory(gif.data(), gif.size(), "GIF");
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->is_ani, 0u);
    int32_t delay, x, y, w, h;
    EXPECT_EQ(xc_image_next_frame(image, &delay, &x, &y, &w, &h), -1);
    EXPECT_EQ(xc_image_load_data(image), 0);
    const std::vector<uint8_t> png = corpus_bytes("png/pngsuite/basn0g08.png");
    xc_image *first = xc_image_new_from_memory(png.data(), png.size(), nullptr);
    xc_image *second = xc_image_new_from_memory(png.data(), png.size(), nullptr);
    ASSERT_TRUE(first && second);
    EXPECT_NE(first, second);
    EXPECT_EQ(first->ref, 1);
    for (xc_image *i : {image, first, second}) xc_image_unref(i);
}

}  // namespace

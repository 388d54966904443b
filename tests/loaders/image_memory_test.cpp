// Images from memory: what the corpus test does not show, the refusals and
// what makes a memory image unlike a file image.
#include "loader_test_support.hpp"

namespace {

TEST(ImageFromMemory, RefusesWhatItCannotDecodeWithAMessage) {
    const Bytes png = file_bytes(corpus("png/pngsuite/basn0g08.png"));
    const Bytes cut(png.begin(), png.begin() + 60);  // a block of its own: reads past it show
    const char text[] = "plain text, no image";
    const struct {
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
    Logged log;
    for (const auto &c : cases) {
        EXPECT_EQ(xc_image_new_from_memory(c.bytes, c.size, c.type), nullptr) << c.message;
        EXPECT_NE(log.take(1).find(c.message), std::string::npos) << c.message;
    }
}

// The first frame, as a still image the caller owns: no loader to step
// frames with, no file name, so nothing is cached or shared.
TEST(ImageFromMemory, GivesAnOwnedStillImage) {
    xc_image_init();
    const Bytes gif = file_bytes(corpus("gif/gif-test-suite/animated_loop.gif"));
    const Image image{xc_image_new_from_memory(gif.data(), gif.size(), "GIF")};
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->is_ani, 0u);
    EXPECT_EQ(std::make_pair(next_frame(image.get()), xc_image_get_delay(image.get())),
              std::make_pair(-1, -1));
    const Bytes png = file_bytes(corpus("png/pngsuite/basn0g08.png"));
    const Image first{xc_image_new_from_memory(png.data(), png.size(), nullptr)},
        second{xc_image_new_from_memory(png.data(), png.size(), nullptr)};
    ASSERT_TRUE(first && second);
    EXPECT_NE(first, second);
    EXPECT_EQ(first->ref, 1);
}

}  // namespace

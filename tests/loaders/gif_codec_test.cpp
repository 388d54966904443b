// The GIF codec's animation stepping on files written with giflib's
// encoder: frame index, delay, changed area, looping, caching, alpha. The
// corpus checks the composited pixels (disposal, transparency) of real
// animations frame by frame.
#include <gif_lib.h>

#include "loader_test_support.hpp"

namespace {

struct GifFrame {
    int left, top, width, height;
    std::string indices;  // palette letters K, R, G, B (black, red, green, blue), rows run together
    int disposal, delay_cs, transparent = NO_TRANSPARENT_COLOR;
};

class GifCodec : public ScratchDir {
protected:
    // Writes the frames on a width x height screen and opens the file.
    Image open(const char *name, int width, int height, const std::vector<GifFrame> &frames) {
        int error = 0;
        GifFileType *gif = EGifOpenFileName(path(name).c_str(), false, &error);
        const GifColorType colours[4] = {{0, 0, 0}, {255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
        ColorMapObject *map = GifMakeMapObject(4, colours);
        EGifPutScreenDesc(gif, width, height, 8, 0, map);
        GifFreeMapObject(map);
        for (const GifFrame &f : frames) {
            GraphicsControlBlock gcb{f.disposal, false, f.delay_cs, f.transparent};
            GifByteType ext[4];
            EGifGCBToExtension(&gcb, ext);
            EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, ext);
            EGifPutImageDesc(gif, f.left, f.top, f.width, f.height, false, nullptr);
            std::vector<GifPixelType> indices;
            for (char c : f.indices) indices.push_back(std::string("KRGB").find(c) & 3);
            for (int y = 0; y < f.height; ++y)
                EGifPutLine(gif, indices.data() + y * f.width, f.width);
        }
        EGifCloseFile(gif, &error);
        return Image{xc_image_new_from_file(path(name).c_str())};
    }
};

TEST_F(GifCodec, FramesReportTheirIndexDelayAndChangedAreaLoopAndMarkAlpha) {
    const Image image = open("anim.gif", 4, 4,
                             {{0, 0, 4, 4, "RRRRRRRRRRRRRRRR", DISPOSE_DO_NOT, 0},
                              {1, 1, 2, 2, "GGGG", DISPOSE_BACKGROUND, 1},
                              {0, 0, 1, 1, "B", DISPOSE_PREVIOUS, 5},
                              {2, 3, 2, 1, "KG", DISPOSE_DO_NOT, 2, 0}});
    ASSERT_NE(image, nullptr);
    // Disposal to background can make pixels clear: the image is marked as having alpha.
    EXPECT_TRUE(image->is_ani && image->no_cache && image->format == 0);
    EXPECT_EQ(xc_image_lookup_in_cache(path("anim.gif").c_str()), nullptr);  // never shared
    EXPECT_EQ(xc_image_get_delay(image.get()), -1);
    // Delays of 10 ms or less play as 100. The changed area includes what the
    // last frame's disposal undid. Past the last frame: frame 0 again.
    const std::tuple<int, int, int, int, int, int> steps[] = {{1, 100, 1, 1, 2, 2},
                                                              {2, 50, 0, 0, 3, 3},
                                                              {3, 20, 0, 0, 4, 4},
                                                              {0, 100, 0, 0, 4, 4},
                                                              {1, 100, 1, 1, 2, 2}};
    for (const auto &step : steps) {
        int32_t delay = 0, x = -1, y = -1, w = -1, h = -1;
        const int index = xc_image_next_frame(image.get(), &delay, &x, &y, &w, &h);
        EXPECT_EQ(std::make_tuple(index, delay, x, y, w, h), step);
        EXPECT_EQ(xc_image_get_delay(image.get()), delay);
        // Nothing was loaded before the first step: it decodes frame 0 first.
        EXPECT_EQ(at(image.get(), 0, 3), 0xFFFF0000u);
    }
    // A first frame leaving pixels uncovered marks alpha too.
    const Image partial = open("partial.gif", 3, 1, {{1, 0, 2, 1, "GR", DISPOSE_DO_NOT, 7}});
    ASSERT_NE(partial, nullptr);
    EXPECT_EQ(alpha_marks(partial.get()), alpha_marks(true));
    ASSERT_EQ(xc_image_load_data(partial.get()), 0);
    EXPECT_EQ(all(partial.get()), (Words{0, 0xFF00FF00u, 0xFFFF0000u}));
}

}  // namespace

// The GIF codec: frames composited on demand with their disposal methods,
// delays, changed rectangles and looping, on files written here with
// giflib's encoder and on the gif-test-suite's published frames.
#include <gif_lib.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "corpus_support.hpp"
#include "fbcompose/image.h"
#include "fbcompose/loader.h"
#include "loader_test_support.hpp"

namespace {

constexpr uint32_t kRed = 0xFFFF0000u, kGreen = 0xFF00FF00u, kBlue = 0xFF0000FFu, kClear = 0;

struct GifFrame {
    int left, top, width, height;
    std::vector<uint8_t> indices;  // palette 0 black, 1 red, 2 green, 3 blue
    int disposal, delay_cs, transparent = NO_TRANSPARENT_COLOR;
};

void write_gif(const std::string &file, int width, int height, const std::vector<GifFrame> &frames) {
    int error = 0;
    GifFileType *gif = EGifOpenFileName(file.c_str(), false, &error);
    ASSERT_NE(gif, nullptr);
    const GifColorType colours[4] = {{0, 0, 0}, {255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
    ColorMapObject *map = GifMakeMapObject(4, colours);
    EGifSetGifVersion(gif, true);
    EGifPutScreenDesc(gif, width, height, 8, 0, map);
    GifFreeMapObject(map);
    for (const GifFrame &f : frames) {
        GraphicsControlBlock gcb{f.disposal, false, f.delay_cs, f.transparent};
        GifByteType ext[4];
        EGifGCBToExtension(&gcb, ext);
        EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, ext);
        EGifPutImageDesc(gif, f.left, f.top, f.width, f.height, false, nullptr);
        std::vector<GifPixelType> row(f.indices);
        for (int y = 0; y < f.height; ++y) EGifPutLine(gif, row.data() + y * f.width, f.width);
    }
    EGifCloseFile(gif, &error);
}

struct Step {
    int index, delay;
    xg_rect changed;
    std::vector<std::pair<xg_point, uint32_t>> pixels;
};

class GifCodec : public fbc_test::ScratchDir {
protected:
    void SetUp() override {
        ScratchDir::SetUp();
        xc_image_init();
    }
};

TEST_F(GifCodec, FramesCompositeWithTheirDisposalDelayAndChangedArea) {
    const std::string file = path("anim.gif");
    write_gif(file, 4, 4,
              {{0, 0, 4, 4, std::vector<uint8_t>(16, 1), DISPOSE_DO_NOT, 0},
               {1, 1, 2, 2, {2, 2, 2, 2}, DISPOSE_BACKGROUND, 1},
               {0, 0, 1, 1, {3}, DISPOSE_PREVIOUS, 5},
               {2, 3, 2, 1, {0, 2}, DISPOSE_DO_NOT, 2, 0}});
    xc_image *image = xc_image_new_from_file(file.c_str());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->is_ani, 1u);
    EXPECT_EQ(image->no_cache, 1u);
    EXPECT_EQ(image->format, 0u);  // disposal to background makes transparent pixels
    EXPECT_EQ(xc_image_get_delay(image), -1);
    ASSERT_EQ(xc_image_load_data(image), 0);
    EXPECT_EQ(fbc_test::pixel(image, 3, 3), kRed);
    EXPECT_EQ(xc_image_get_delay(image), 100);  // 0 ms plays as 100

    const Step steps[] = {
        {1, 100, {1, 1, 2, 2}, {{{1, 1}, kGreen}, {{2, 2}, kGreen}, {{0, 0}, kRed}}},
        // The green square is cleared to transparent, then blue drawn.
        {2, 50, {0, 0, 3, 3}, {{{0, 0}, kBlue}, {{1, 1}, kClear}, {{2, 2}, kClear}, {{3, 3}, kRed}}},
        // The blue pixel is restored to red; index 0 is transparent here.
        {3, 20, {0, 0, 4, 4}, {{{0, 0}, kRed}, {{1, 1}, kClear}, {{2, 3}, kRed}, {{3, 3}, kGreen}}},
        // Past the last frame the animation starts again on a clear screen.
        {0, 100, {0, 0, 4, 4}, {{{1, 1}, kRed}, {{3, 3}, kRed}}},
        {1, 100, {1, 1, 2, 2}, {{{2, 2}, kGreen}}},
    };
    for (const Step &step : steps) {
        SCOPED_TRACE(step.index);
        int32_t delay = 0, x = -1, y = -1, w = -1, h = -1;
        EXPECT_EQ(xc_image_next_frame(image, &delay, &x, &y, &w, &h), step.index);
        EXPECT_EQ(delay, step.delay);
        EXPECT_EQ(xc_image_get_delay(image), step.delay);
        EXPECT_EQ(x, step.changed.x);
        EXPECT_EQ(y, step.changed.y);
        EXPECT_EQ(w, step.changed.w);
        EXPECT_EQ(h, step.changed.h);
        for (const auto &[at, word] : step.pixels) EXPECT_EQ(fbc_test::pixel(image, at.x, at.y), word) << at.x << "," << at.y;
    }
    xc_image *second = xc_image_new_from_file(file.c_str());
    EXPECT_NE(second, image);
    xc_image_unref(second);
    xc_image_unref(image);
}

TEST_F(GifCodec, StillImageIsOpaqueCachedAndHasNoNextFrame) {
    const std::string file = path("still.gif");
    write_gif(file, 2, 1, {{0, 0, 2, 1, {1, 3}, DISPOSE_DO_NOT, 7}});
    xc_image *image = xc_image_new_from_file(file.c_str());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->is_ani, 0u);
    EXPECT_EQ(image->format, 1u);
    EXPECT_EQ(image->has_alpha, 0u);
    ASSERT_EQ(xc_image_load_data(image), 0);
    EXPECT_EQ(fbc_test::pixel(image, 0, 0), kRed);
    EXPECT_EQ(fbc_test::pixel(image, 1, 0), kBlue);
    EXPECT_EQ(xc_image_get_delay(image), 70);
    int32_t delay = 0, x = 0, y = 0, w = 0, h = 0;
    EXPECT_EQ(xc_image_next_frame(image, &delay, &x, &y, &w, &h), -1);
    EXPECT_EQ(xc_image_lookup_in_cache(file.c_str()), image);
    xc_image_unref(image);
    xc_image_unref(image);
}

TEST_F(GifCodec, PartialFirstFrameAndTransparencyGiveAlpha) {
    const std::string file = path("partial.gif");
    write_gif(file, 3, 1, {{1, 0, 2, 1, {2, 0}, DISPOSE_DO_NOT, 0, 0}});
    xc_image *image = xc_image_new_from_file(file.c_str());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->format, 0u);
    EXPECT_EQ(image->has_alpha, 1u);
    ASSERT_EQ(xc_image_load_data(image), 0);
    EXPECT_EQ(fbc_test::pixel(image, 0, 0), kClear);  // not covered by the frame
    EXPECT_EQ(fbc_test::pixel(image, 1, 0), kGreen);
    EXPECT_EQ(fbc_test::pixel(image, 2, 0), kClear);  // transparent index
    xc_image_unref(image);
}

TEST_F(GifCodec, NextFrameDecodesTheFirstFrameWhenNothingIsLoadedYet) {
    const std::string file = path("lazy.gif");
    write_gif(file, 1, 1, {{0, 0, 1, 1, {1}, DISPOSE_DO_NOT, 3}, {0, 0, 1, 1, {2}, DISPOSE_DO_NOT, 4}});
    xc_image *image = xc_image_new_from_file(file.c_str());
    ASSERT_NE(image, nullptr);
    int32_t delay = 0, x = 0, y = 0, w = 0, h = 0;
    EXPECT_EQ(xc_image_next_frame(image, &delay, &x, &y, &w, &h), 1);
    EXPECT_EQ(fbc_test::pixel(image, 0, 0), kGreen);
    EXPECT_EQ(delay, 40);
    xc_image_unref(image);
}

// The suite's published frames, composited by another decoder: frame N
// after N calls of next_frame, then frame 0 again.
class GifSuiteFrames : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override { xc_image_init(); }
};

TEST_P(GifSuiteFrames, MatchThePublishedFrames) {
    fbc_test::CorpusRow row;
    row.format = "gif";
    const std::string name = "gif/gif-test-suite/" + GetParam();
    xc_image *image = xc_image_new_from_file(fbc_test::corpus_path(name).c_str());
    ASSERT_NE(image, nullptr);
    ASSERT_EQ(xc_image_load_data(image), 0);
    for (int n = 0; n <= 4; ++n) {
        SCOPED_TRACE(n);
        const int frame = n % 4;
        if (n > 0) {
            int32_t delay = 0, x = 0, y = 0, w = 0, h = 0;
            EXPECT_EQ(xc_image_next_frame(image, &delay, &x, &y, &w, &h), frame);
            EXPECT_GE(delay, 20);
        }
        const auto expected = fbc_test::stored_reference(
            row, "ref/" + name + ".frame" + std::to_string(frame) + ".rgba");
        ASSERT_EQ(expected.size(), static_cast<size_t>(image->width) * image->height);
        fbc_test::expect_pixels(image, expected, 0);
    }
    xc_image_unref(image);
}

INSTANTIATE_TEST_SUITE_P(
    Suite, GifSuiteFrames,
    testing::Values("animated_loop.gif", "animated_loop_interlaced.gif", "animated_loop_variable_delay.gif",
                    "animated_noloop.gif", "animated_transparent_firstframerestoreprev_loop.gif",
                    "animated_transparent_frame_norestore_loop.gif",
                    "animated_transparent_frame_restorebackground_loop.gif",
                    "animated_transparent_frame_restoreprev_loop.gif", "animated_transparent_loop.gif",
                    "animated_transparent_loop_frames_out_of_bounds.gif",
                    "animated_transparent_restoreprev_loop.gif"),
    [](const testing::TestParamInfo<std::string> &param) { return fbc_test::test_name(param.param); });

}  // namespace

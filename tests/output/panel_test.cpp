#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "fbcompose/fbcompose.h"
#include "image_words.hpp"

namespace {

struct Capture {
    Capture() { xc_set_log_func(keep, &text); }
    ~Capture() { xc_set_log_func(nullptr, nullptr); }
    static void keep(const char *t, int, void *user) { *static_cast<std::string *>(user) += t; }
    std::string text;
};

struct Layout {
    int depth, rotation;
};
constexpr Layout kLayouts[] = {{16, 0},   {16, 90}, {16, 270}, {18, 0},  {18, 90},
                               {18, 270}, {32, 0},  {32, 90},  {32, 270}};

// A panel buffer with two pixels of padding per row, filled with a pattern
// that no conversion writes, so stray writes and gaps both show.
struct Frame {
    Frame(Layout l, int32_t cw, int32_t ch)
        : bytes(l.depth == 16 ? 2 : 4),
          width(l.rotation ? ch : cw),
          height(l.rotation ? cw : ch),
          stride((width + 2) * bytes),
          data(static_cast<size_t>(stride * height), 0xA5) {}
    int32_t bytes, width, height, stride;
    std::vector<uint8_t> data;
};

// Converting the damage in pieces, overlapping or reaching past the canvas,
// gives the bytes of one converter call over the whole canvas.
TEST(Panel, PiecesGiveTheBytesOfOneWholeConversion) {
    constexpr int32_t cw = 37, ch = 23;
    std::mt19937 rng(7);
    const test::Image canvas = test::painted(cw, ch, [&](int, int) { return uint32_t(rng()); });
    for (const Layout l : kLayouts) {
        Frame whole(l, cw, ch), pieces(l, cw, ch);
        xc_get_convert_func(0, 0, l.depth, l.rotation)(
            canvas->data, whole.data.data(), 0, whole.stride / whole.bytes - (l.rotation ? ch : cw),
            cw, ch, 0, 0);
        xc_panel *panel = xc_panel_new(pieces.data.data(), pieces.width, pieces.height,
                                       pieces.stride, l.depth, l.rotation);
        ASSERT_NE(panel, nullptr);
        for (int round = 0; round < 20; ++round) {
            // A random grid covers the canvas exactly; single pixels, edges
            // and rectangles past the canvas are converted again on top.
            std::vector<xg_rect> rects;
            for (int32_t y = 0, h; y < ch; y += h)
                for (int32_t x = 0, w, rh = h = 1 + rng() % 9; x < cw; x += w)
                    rects.push_back({x, y, w = 1 + rng() % 12, rh});
            rects.push_back({int32_t(rng() % cw), int32_t(rng() % ch), 1, 1});
            rects.push_back({cw - 3, -5, 20, ch + 20});
            rects.push_back({INT32_MAX - 1, 0, INT32_MAX, 10});
            xg_list *list = nullptr;
            for (xg_rect &r : rects) list = xg_list_append(list, &r);
            EXPECT_EQ(xc_panel_update(panel, canvas.get(), list), int(rects.size()) - 1);
            xg_list_free(list);
            ASSERT_EQ(pieces.data, whole.data)
                << l.depth << "/" << l.rotation << " round " << round;
        }
        std::fill(pieces.data.begin(), pieces.data.end(), 0xA5);
        EXPECT_EQ(xc_panel_update(panel, canvas.get(), nullptr), 1);
        EXPECT_EQ(pieces.data, whole.data);
        int32_t w, h;
        xc_panel_get_canvas_size(panel, &w, &h);
        EXPECT_EQ(std::pair(w, h), std::pair(cw, ch));
        xc_panel_free(panel);
    }
}

TEST(Panel, RefusesUnusableArgumentsNamingThem) {
    uint32_t pixels[64];
    struct Row {
        void *pixels;
        int32_t width, height, stride;
        int depth, rotation;
        const char *named;
    };
    const Row rows[] = {
        {nullptr, 4, 4, 16, 32, 0, "pixels"},    {pixels, 0, 4, 16, 32, 0, "width"},
        {pixels, 4, -1, 16, 32, 0, "height"},    {pixels, 4, 4, 15, 32, 0, "stride"},
        {pixels, 4, 4, 9, 16, 0, "stride"},      {pixels, 4, 4, 16, 24, 0, "depth"},
        {pixels, 4, 4, 16, 32, 180, "rotation"},
    };
    for (const Row &r : rows) {
        Capture log;
        EXPECT_EQ(xc_panel_new(r.pixels, r.width, r.height, r.stride, r.depth, r.rotation),
                  nullptr);
        EXPECT_EQ(log.text.rfind(std::string("xc_panel_new: bad ") + r.named, 0), 0u) << log.text;
    }
    xc_panel *panel = xc_panel_new(pixels, 8, 4, 32, 32, 90);  // shows a 4 x 8 canvas
    const test::Image too_small = test::canvas(4, 7, 0u);
    test::Image rgb565{xc_image_new_from_data(4, 8, nullptr, 16, 0, 0)};
    Capture log;
    EXPECT_EQ(xc_panel_update(panel, too_small.get(), nullptr), -1);
    EXPECT_EQ(xc_panel_update(panel, rgb565.get(), nullptr), -1);
    EXPECT_EQ(xc_panel_update(nullptr, too_small.get(), nullptr), -1);
    EXPECT_NE(log.text.find("cannot fill a panel that shows 4 x 8"), std::string::npos) << log.text;
    xc_panel_free(panel);
}

TEST(Panel, FrameBufferDeviceIsRefusedClearlyOrDriven) {
    {
        Capture log;
        EXPECT_EQ(xc_panel_open_fbdev("/nonexistent/fb0", 0), nullptr);
        EXPECT_EQ(xc_panel_open_fbdev("/dev/null", 0), nullptr);
        EXPECT_EQ(
            log.text,
            "xc_panel_open_fbdev: cannot drive '/nonexistent/fb0': No such file or directory\n"
            "xc_panel_open_fbdev: cannot drive '/dev/null': not a frame-buffer device\n");
    }
    xc_panel *panel = xc_panel_open_fbdev("/dev/fb0", 0);
    if (!panel) GTEST_SKIP() << "no frame-buffer device this test can drive";
    int32_t w, h;
    xc_panel_get_canvas_size(panel, &w, &h);
    const test::Image canvas = test::canvas(w, h, 0xFF000000u);
    EXPECT_EQ(xc_panel_update(panel, canvas.get(), nullptr), 1);
    xc_panel_free(panel);
}

}  // namespace

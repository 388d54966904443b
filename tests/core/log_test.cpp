#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "fbcompose/fbcompose.h"

namespace {

using Messages = std::vector<std::pair<std::string, int>>;

void collect(const char *text, int to_stderr, void *user) {
    static_cast<Messages *>(user)->emplace_back(text, to_stderr);
}

// Each diagnostic reaches the handler whole, with the stream it would have
// gone to, whether the library or a codec library under it wrote it; a null
// handler brings the default stream back.
TEST(Log, HandlerReceivesEachMessageWithItsStreamUntilNullRestoresTheDefault) {
    Messages got;
    xc_set_log_func(collect, &got);
    xc_image *png = xc_image_new_from_file(FBC_CORPUS_DIR "/png/pngsuite/xcrn0g04.png");
    const xg_area area{1, -2, 30, 40};
    xc_print_area(&area, "clip");
    int32_t w, h;
    xc_wbmp_get_size("/nonexistent/x.wbmp", &w, &h);
    xc_set_log_func(nullptr, &got);
    EXPECT_EQ(png, nullptr);
    const Messages expected{
        {"libpng error: PNG file corrupted by ASCII conversion\n", 1},
        {"png file(" FBC_CORPUS_DIR "/png/pngsuite/xcrn0g04.png) load failed\n", 0},
        {"file(" FBC_CORPUS_DIR "/png/pngsuite/xcrn0g04.png) load failed\n", 0},
        {"clip: x1 = 1 y1 = -2 x2 = 30 y2 = 40\n", 0},
        {"fopen() error filename = /nonexistent/x.wbmp\n", 1},
    };
    // The registry's lines come first, at the first load.
    ASSERT_GE(got.size(), expected.size());
    EXPECT_EQ(Messages(got.end() - static_cast<long>(expected.size()), got.end()), expected);
    got.clear();
    testing::internal::CaptureStdout();
    xc_print_area(&area, "clip");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "clip: x1 = 1 y1 = -2 x2 = 30 y2 = 40\n");
    EXPECT_TRUE(got.empty());
}

}  // namespace

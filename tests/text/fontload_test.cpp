#include "font_fixture.hpp"

namespace fbc_test {
namespace {

// What an unreferenced handle is charged: a fixed part, and per glyph entry
// its bitmap plus a record overhead.
constexpr int64_t kHandleCost = 16560, kRecordCost = 420;
constexpr int32_t kRoomy = 10000000;

using FontLoad = FontTest;

TEST_F(FontLoad, SameFileSizeAndBoldShareOneHandleThatTheCacheRevives) {
    xc_font_set_cache(kRoomy);
    xc_font *font = xc_font_load(kSans, 12, 0, 0);
    ASSERT_NE(font, nullptr);
    EXPECT_EQ(xc_font_load(kSans, 12, 0, 0), font);
    EXPECT_EQ(font->ref, 2);
    for (xc_font *other : {load(kSans, 13), load(kSans, 12, 1, 0), load(kSans, 12, 0, 1)})
        EXPECT_NE(other, font);
    xc_font_free(font);
    xc_font_free(font);
    EXPECT_EQ(fbc::font_cache_usage(), kHandleCost);
    EXPECT_EQ(xc_font_load(kSans, 12, 0, 0), font);
    EXPECT_EQ(std::pair(font->ref, fbc::font_cache_usage()), std::pair(1, int64_t{0}));
    xc_font_free(font);
}

TEST_F(FontLoad, WithLimitZeroTheLastReleaseEvictsTheHandleItsFallbacksAndItsFace) {
    EXPECT_EQ(xc_font_get_cache(), 0);
    xc_font_set_fallback(kCjk);
    xc_font *a = xc_font_load(kSans, 10, 0, 0), *b = xc_font_load(kSans, 11, 0, 0);
    xc_font_get_glyph(b, kZhong);
    ASSERT_NE(b->fallback[0], nullptr);
    xc_font_free(a);
    EXPECT_EQ(std::pair(fbc::font_handle_count(), b->source->ref), std::pair(2, 1));
    xc_font_free(b);
    EXPECT_EQ(std::pair(fbc::font_handle_count(), fbc::font_source_count()), std::pair(0, 0));
    xc_font_free(nullptr);
}

TEST_F(FontLoad, CostChargesEveryEntryEvenWhereEntriesShareARecord) {
    xc_font_set_cache(kRoomy);
    xc_font *font = xc_font_load(kSans, 14, 0, 0);
    int64_t expected = kHandleCost;
    for (uint16_t ch : Text{'A', 'g', ' ', 0, kZhong, kWen}) {
        const FT_Bitmap &b = xc_font_get_glyph(font, ch)->bitmap->bitmap;
        expected += int64_t{b.rows} * b.width + kRecordCost;
    }
    // Missing characters share the record cached under key 0.
    EXPECT_EQ(xc_font_get_glyph(font, kZhong), xc_font_get_glyph(font, 0));
    // 0x3000 is cached as a space: no new entry.
    xc_font_get_glyph(font, 0x3000);
    xc_font_free(font);
    EXPECT_EQ(fbc::font_cache_usage(), expected);
}

TEST_F(FontLoad, LoweringTheLimitEvictsLeastRecentlyUsedFirstButNeverAHeldHandle) {
    xc_font_set_cache(kRoomy);
    // Held, of another file, and the oldest of all.
    load(kMono, 9);
    xc_font *fonts[4];
    for (int32_t i = 0; i < 4; ++i) fonts[i] = xc_font_load(kSans, 10 + i, 0, 0);
    for (xc_font *font : fonts) xc_font_free(font);
    // Reusing size 10 makes it the most recent; size 11 is now the oldest.
    xc_font_free(xc_font_load(kSans, 10, 0, 0));
    xc_font_set_cache(3 * kHandleCost);
    EXPECT_EQ(std::tuple(xc_font_get_cache(), fbc::font_cache_usage(), fbc::font_source_count()),
              std::tuple(3 * kHandleCost, 3 * kHandleCost, 2));
    // 12, 13 and 10 are still cached (no new handle); reuse orders them
    // 10, 13, 12 from the most recent.
    for (int32_t size : {12, 13, 10}) xc_font_load(kSans, size, 0, 0);
    EXPECT_EQ(fbc::font_handle_count(), 4);
    for (xc_font *font : {fonts[0], fonts[2], fonts[3]}) xc_font_free(font);
    xc_font_set_cache(2 * kHandleCost - 1);
    EXPECT_EQ(fbc::font_handle_count(), 2);
    // The survivor is size 10: loading it revives the cached handle.
    EXPECT_EQ(xc_font_load(kSans, 10, 0, 0), fonts[0]);
    xc_font_free(fonts[0]);
}

// Files that cannot be opened are not worth a message; a size the face
// refuses is, and the handle is still made.
TEST_F(FontLoad, UnopenableFilesYieldNullSilentlyAbsurdSizesAreReported) {
    testing::internal::CaptureStdout();
    for (const char *path : {"/nonexistent/font.ttf", FBC_TEST_DATA_DIR "/../CMakeLists.txt", ""})
        EXPECT_EQ(xc_font_load(path, 12, 0, 0), nullptr) << path;
    EXPECT_EQ(xc_font_load(nullptr, 12, 0, 0), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    testing::internal::CaptureStdout();
    ASSERT_NE(load(kSans, INT32_MAX), nullptr);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out.rfind("font_load Set_Char_Size size = 2147483647 failed = ", 0), 0u) << out;
}

}  // namespace
}  // namespace fbc_test

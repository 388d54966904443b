#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "fbcompose/fbcompose.hpp"

namespace {

constexpr const char *kFont = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

TEST(FontHandle, HoldsOneReferenceAndMovesIt) {
    ASSERT_EQ(xc_init(), 0);
    fbcompose::font a(kFont, 12);
    ASSERT_TRUE(a);
    xc_font *raw = a.get();
    EXPECT_EQ(raw->ref, 1);
    EXPECT_GT(a.ascent(), 0);
    EXPECT_GT(a.descent(), 0);
    {
        fbcompose::font again(kFont, 12);  // the same handle, one more reference
        EXPECT_EQ(again.get(), raw);
        EXPECT_EQ(raw->ref, 2);
    }
    EXPECT_EQ(raw->ref, 1);
    fbcompose::font moved = std::move(a);
    EXPECT_FALSE(a);
    EXPECT_EQ(moved.get(), raw);
    EXPECT_EQ(raw->ref, 1);
    EXPECT_FALSE(fbcompose::font("/nonexistent.ttf", 12));
}

TEST(DamageHandle, TakesMergedRectanglesAndLeavesTheGridClean) {
    fbcompose::damage damage(100, 50);
    EXPECT_EQ(damage.add({0, 0, 17, 1}), 2);
    EXPECT_EQ(damage.add({48, 32, 1, 1}), 1);
    const auto rects = damage.take_rects();
    ASSERT_EQ(rects.size(), 2u);
    EXPECT_EQ(rects[0].x, 0);
    EXPECT_EQ(rects[0].w, 32);
    EXPECT_EQ(rects[1].x, 48);
    EXPECT_EQ(rects[1].y, 32);
    EXPECT_TRUE(damage.take_rects().empty());
    damage.add({0, 0, 1, 1});
    damage.reset();
    EXPECT_TRUE(damage.take_rects().empty());
}

TEST(Widen, DecodesUtf8IntoUnitsAndStopsAtAnInvalidSequence) {
    EXPECT_EQ(fbcompose::widen("Gr\xC3\xBC\xC3\x9F"
                               "e"),
              u"Grüße");
    EXPECT_EQ(fbcompose::widen("ab\xC3"
                               "A"),
              u"ab");
    const std::u16string text = u"xy";
    EXPECT_EQ(fbcompose::units(text)[1], u'y');
    EXPECT_EQ(fbcompose::units(text)[2], 0);
}

}  // namespace

TEST(PanelHandle, ConvertsTheRectanglesItIsGivenAndOwnsThePanel) {
    const fbcompose::image canvas = fbcompose::image::create(40, 24);
    for (int32_t y = 0; y < 24; ++y)
        for (int32_t x = 0; x < 40; ++x)
            canvas.row(y)[x] = 0xFF000000u | (uint32_t(y * 40 + x) * 2654435761u) >> 8;
    // Turned by 90: the panel is 24 wide, 40 high, and shows a 40x24 canvas.
    std::vector<uint16_t> whole(24 * 40, 0), pieces(24 * 40, 0);
    fbcompose::panel a = fbcompose::panel::in_memory(whole.data(), 24, 40, 48, 16, 90);
    fbcompose::panel b = fbcompose::panel::in_memory(pieces.data(), 24, 40, 48, 16, 90);
    ASSERT_TRUE(a && b);
    EXPECT_EQ(a.canvas_width(), 40);
    EXPECT_EQ(a.canvas_height(), 24);
    EXPECT_EQ(a.update(canvas), 1);
    EXPECT_EQ(b.update(canvas, {}), 0);
    EXPECT_EQ(pieces, std::vector<uint16_t>(24 * 40, 0));
    EXPECT_EQ(b.update(canvas, {{0, 0, 40, 10}, {-5, 8, 60, 16}, {100, 0, 5, 5}}), 2);
    EXPECT_EQ(pieces, whole);

    fbcompose::panel moved = std::move(a);
    EXPECT_FALSE(a);
    EXPECT_EQ(moved.canvas_width(), 40);
    EXPECT_FALSE(fbcompose::panel::in_memory(whole.data(), 24, 40, 48, 24, 0));
}

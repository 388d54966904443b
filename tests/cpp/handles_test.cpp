#include <gtest/gtest.h>

#include <utility>

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
    EXPECT_EQ(fbcompose::widen("Gr\xC3\xBC\xC3\x9F" "e"), u"Grüße");
    EXPECT_EQ(fbcompose::widen("ab\xC3" "A"), u"ab");
    const std::u16string text = u"xy";
    EXPECT_EQ(fbcompose::units(text)[1], u'y');
    EXPECT_EQ(fbcompose::units(text)[2], 0);
}

}  // namespace

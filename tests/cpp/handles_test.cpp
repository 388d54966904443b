#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "fbcompose/fbcompose.hpp"

namespace {

using fbcompose::image;

TEST(ImageHandle, CopiesShareMovesTransferAndEveryHandleReleasesOnce) {
    xc_image *raw = xc_image_create(5, 2);
    image a = image::share(raw);
    {
        image b = a, c;
        c = b;
        EXPECT_EQ(std::pair(c.get(), raw->ref), std::pair(raw, 4));
    }
    image moved = std::move(a);
    EXPECT_FALSE(a);
    EXPECT_EQ(raw->ref, 2);
    moved.reset();
    image owner = image::adopt(raw);
    EXPECT_EQ(raw->ref, 1);
    EXPECT_EQ(std::pair(owner.release(), raw->ref), std::pair(raw, 1));
    EXPECT_FALSE(owner);
    owner = image::adopt(raw);
    EXPECT_FALSE(image::create(0x40000000, 4));
}

TEST(ImageHandle, RowsAreSpansOverThePixels) {
    const image canvas = image::create(5, 2);
    canvas.row(1)[4] = 0xFF123456u;
    EXPECT_EQ(static_cast<uint32_t *>(xc_image_pointer(canvas.get(), 4, 1))[0], 0xFF123456u);
    EXPECT_EQ(canvas.row(1).size(), 5u);
    const image narrow = image::adopt(xc_image_new_from_data(6, 2, nullptr, 16, 0, 0));
    EXPECT_EQ(
        std::pair(reinterpret_cast<uint8_t *>(narrow.row16(1).data()), narrow.row16(1).size()),
        std::pair(narrow->data + 12, size_t{6}));
}

TEST(FontHandle, HoldsOneReferenceAndMovesIt) {
    ASSERT_EQ(xc_init(), 0);
    constexpr const char *kFont = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
    fbcompose::font a(kFont, 12);
    xc_font *raw = a.get();
    ASSERT_NE(raw, nullptr);
    EXPECT_GT(std::min(a.ascent(), a.descent()), 0);
    {
        fbcompose::font again(kFont, 12);  // the same handle, one more reference
        EXPECT_EQ(std::pair(again.get(), raw->ref), std::pair(raw, 2));
    }
    fbcompose::font moved = std::move(a);
    EXPECT_FALSE(a);
    EXPECT_EQ(std::pair(moved.get(), raw->ref), std::pair(raw, 1));
    EXPECT_FALSE(fbcompose::font("/nonexistent.ttf", 12));
}

TEST(DamageAndText, TakeRectsLeavesTheGridCleanAndWidenStopsAtAnInvalidSequence) {
    fbcompose::damage damage(100, 50);
    EXPECT_EQ(damage.add({0, 0, 17, 1}), 2);
    EXPECT_EQ(damage.add({48, 32, 1, 1}), 1);
    const auto rects = damage.take_rects();
    ASSERT_EQ(rects.size(), 2u);
    EXPECT_EQ(std::tuple(rects[0].x, rects[0].w, rects[1].x, rects[1].y),
              std::tuple(0, 32, 48, 32));
    EXPECT_TRUE(damage.take_rects().empty());
    damage.add({0, 0, 1, 1});
    damage.reset();
    EXPECT_TRUE(damage.take_rects().empty());
    EXPECT_EQ(fbcompose::widen("Gr\xC3\xBC\xC3\x9F\x65"), u"Grüße");
    EXPECT_EQ(fbcompose::widen("ab\xC3\x41"), u"ab");
    const std::u16string text = u"xy";
    EXPECT_EQ(std::pair(fbcompose::units(text)[1], fbcompose::units(text)[2]),
              std::pair(uint16_t{'y'}, uint16_t{0}));
}

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
    EXPECT_EQ(std::pair(a.canvas_width(), a.canvas_height()), std::pair(40, 24));
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

}  // namespace

#include <gtest/gtest.h>

#include <vector>

#include "font_fixture.hpp"

namespace {

using fbc_test::FontTest;
using fbc_test::kSans;
using fbc_test::ReferenceFace;

using Text = std::vector<uint16_t>;

Text terminated(Text t) {
    t.push_back(0);
    return t;
}

class Measure : public FontTest {
protected:
    void SetUp() override {
        FontTest::SetUp();
        font = load(kSans, 16);
        ASSERT_NE(font, nullptr);
    }
    xc_font *font = nullptr;
    ReferenceFace ref{kSans, 16};
};

TEST_F(Measure, AscentAndDescentAreTheSizesMetrics) {
    EXPECT_EQ(xc_font_get_ascent(font), ref.ascent());
    EXPECT_EQ(xc_font_get_descent(font), ref.descent());
    EXPECT_GT(xc_font_get_descent(font), 0);
    // Another size of the face in between does not leak into the answer.
    xc_font *big = load(kSans, 40);
    EXPECT_GT(xc_font_get_ascent(big), ref.ascent());
    EXPECT_EQ(xc_font_get_ascent(font), ref.ascent());
}

TEST_F(Measure, AdvanceSumsTheFirstCountCharacters) {
    const Text text = terminated({'W', 'a', 'v', 'e', ' ', 'j', 0xE9});
    const struct {
        int32_t count;
        Text measured;
    } cases[] = {
        {-1, {'W', 'a', 'v', 'e', ' ', 'j', 0xE9}},
        {0, {}},
        {1, {'W'}},
        {3, {'W', 'a', 'v'}},
        {100, {'W', 'a', 'v', 'e', ' ', 'j', 0xE9}},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(xc_font_query_advance(font, text.data(), c.count), ref.advance(c.measured))
            << c.count;
    }
    EXPECT_GT(ref.advance({'W', 'a', 'v'}), 0);
    EXPECT_EQ(xc_font_query_advance(font, terminated({}).data(), -1), 0);
    EXPECT_EQ(xc_font_query_advance(font, nullptr, -1), 0);
}

TEST_F(Measure, ByteOrderMarkIsNotMeasuredAndIdeographicSpaceIsASpace) {
    EXPECT_EQ(xc_font_query_advance(font, terminated({'a', 0xFEFF, 'b'}).data(), -1),
              ref.advance({'a', 'b'}));
    EXPECT_EQ(xc_font_query_advance(font, terminated({'a', 0x3000, 'b'}).data(), -1),
              ref.advance({'a', ' ', 'b'}));
}

TEST_F(Measure, SizeIsTheAdvanceAndTheLineHeight) {
    const Text text = terminated({'H', 'i', '!'});
    int32_t width = -1, height = -1;
    xc_font_query_size(font, text.data(), 2, &width, &height);
    EXPECT_EQ(width, ref.advance({'H', 'i'}));
    EXPECT_EQ(height, ref.ascent() + ref.descent());
    xc_font_query_size(font, text.data(), -1, nullptr, &height);
    xc_font_query_size(font, text.data(), -1, &width, nullptr);
    EXPECT_EQ(width, ref.advance({'H', 'i', '!'}));
}

struct Box {
    int32_t x = -99, y = -99, w = -99, h = -99;
};

TEST_F(Measure, CharCoordsBoxTheCharacterBeforeTheCaret) {
    const Text text = terminated({'A', 'V', 'j', 0xFEFF});
    const int32_t height = ref.ascent() + ref.descent();
    const struct {
        int32_t pos;
        Text before;
        uint16_t ch;
    } cases[] = {{0, {}, 'A'}, {1, {}, 'A'}, {2, {'A'}, 'V'}, {3, {'A', 'V'}, 'j'}};
    for (const auto &c : cases) {
        Box b;
        ASSERT_EQ(xc_font_query_char_coords(font, text.data(), c.pos, &b.x, &b.y, &b.w, &b.h), 1)
            << c.pos;
        EXPECT_EQ(b.x, ref.advance(c.before) + ref.glyph(c.ch).left) << c.pos;
        EXPECT_EQ(b.y, -ref.ascent());
        EXPECT_EQ(b.w, ref.glyph(c.ch).width) << c.pos;
        EXPECT_EQ(b.h, height);
    }
    Box b;
    // The byte order mark has no glyph; past the end there is no character.
    EXPECT_EQ(xc_font_query_char_coords(font, text.data(), 4, &b.x, &b.y, &b.w, &b.h), 0);
    EXPECT_EQ(xc_font_query_char_coords(font, text.data(), 5, &b.x, &b.y, &b.w, &b.h), 0);
    EXPECT_EQ(xc_font_query_char_coords(font, text.data(), 9, &b.x, &b.y, &b.w, &b.h), 0);
    EXPECT_EQ(xc_font_query_char_coords(font, terminated({}).data(), 0, &b.x, &b.y, &b.w, &b.h),
              0);
}

TEST_F(Measure, HitTestOnCharacterBoundaries) {
    const Text text = terminated({'m', 0xFEFF, 'i', 'W'});
    const int32_t m = ref.advance({'m'});
    const int32_t mi = ref.advance({'m', 'i'});
    const int32_t all = ref.advance({'m', 'i', 'W'});
    const struct {
        int32_t px;
        int32_t index;
        int32_t box_x;
    } cases[] = {
        {0, 0, ref.glyph('m').left},
        {m, 0, ref.glyph('m').left},  // the boundary belongs to the left
        {m + 1, 2, m + ref.glyph('i').left},
        {mi, 2, m + ref.glyph('i').left},
        {mi + 1, 3, mi + ref.glyph('W').left},
        {all, 3, mi + ref.glyph('W').left},
        {all + 1, -1, -99},
        {-1, -1, -99},
    };
    for (const auto &c : cases) {
        Box b;
        EXPECT_EQ(xc_font_query_text_at_pos(font, text.data(), c.px, 0, &b.x, &b.y, &b.w, &b.h),
                  c.index)
            << c.px;
        EXPECT_EQ(b.x, c.box_x) << c.px;
        if (c.index < 0) continue;
        EXPECT_EQ(b.y, -ref.ascent());
        EXPECT_EQ(b.w, ref.glyph(text[static_cast<size_t>(c.index)]).width);
        EXPECT_EQ(b.h, ref.ascent() + ref.descent());
    }
}

TEST_F(Measure, HitTestVerticalLimitsAndNullOutputs) {
    const Text text = terminated({'x'});
    const int32_t top = -ref.ascent(), bottom = ref.descent();
    const struct {
        int32_t py;
        int32_t index;
    } cases[] = {{top, 0}, {bottom, 0}, {top - 1, -1}, {bottom + 1, -1}};
    for (const auto &c : cases) {
        EXPECT_EQ(xc_font_query_text_at_pos(font, text.data(), 1, c.py, nullptr, nullptr, nullptr,
                                            nullptr),
                  c.index)
            << c.py;
    }
    EXPECT_EQ(xc_font_query_text_at_pos(font, terminated({}).data(), 0, 0, nullptr, nullptr,
                                        nullptr, nullptr),
              -1);
}

}  // namespace

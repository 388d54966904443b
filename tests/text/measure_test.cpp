#include <array>

#include "font_fixture.hpp"

namespace fbc_test {
namespace {

// x, y, w, h of a character's box; -99 where nothing was stored.
using Box = std::array<int32_t, 4>;
constexpr Box kNone{-99, -99, -99, -99};

class Measure : public Sans16 {
protected:
    // Another size of the face, active last, must not change any answer.
    void SetUp() override {
        Sans16::SetUp();
        load(kSans, 40);
    }
    // What the caret box query finds before `pos`, and the box.
    std::pair<int, Box> caret_box(const Text &text, int32_t pos) {
        Box b = kNone;
        return {xc_font_query_char_coords(font, text.data(), pos, &b[0], &b[1], &b[2], &b[3]), b};
    }
    // The box of `ch` with the pen after `before`.
    Box box(const Text &before, uint16_t ch) const {
        const ReferenceGlyph g = ref.glyph(ch);
        return {ref.advance(before) + g.left, -ref.ascent(), g.width, ref.ascent() + ref.descent()};
    }
};

TEST_F(Measure, AdvanceAndSizeSumTheFirstCountCharacters) {
    const Text wave{'W', 'a', 'v', 'e', ' ', 'j', 0xE9};
    const struct {
        Text text;
        int32_t count;
        Text measured;
    } cases[] = {
        {wave, -1, wave},
        {wave, 100, wave},
        {wave, 0, {}},
        {wave, 3, {'W', 'a', 'v'}},
        {{}, -1, {}},
        // The byte order mark is not measured, the ideographic space is a space.
        {{'a', 0xFEFF, 0x3000, 'b'}, -1, {'a', ' ', 'b'}},
    };
    for (const auto &c : cases) {
        int32_t width = -1, height = -1;
        xc_font_query_size(font, terminated(c.text).data(), c.count, &width, &height);
        EXPECT_EQ(std::pair(width, height),
                  std::pair(ref.advance(c.measured), ref.ascent() + ref.descent()));
        EXPECT_EQ(xc_font_query_advance(font, terminated(c.text).data(), c.count), width);
    }
    EXPECT_EQ(xc_font_query_advance(font, nullptr, -1), 0);
    xc_font_query_size(font, terminated(wave).data(), -1, nullptr, nullptr);
}

TEST_F(Measure, HitTestOnCharacterBoundariesAndCaretBoxesAgree) {
    const Text text = terminated({'m', 0xFEFF, 'i', 'W'});
    const int32_t m = ref.advance({'m'}), mi = ref.advance({'m', 'i'});
    const int32_t all = ref.advance({'m', 'i', 'W'}), top = -ref.ascent(), bottom = ref.descent();
    // A point on a boundary belongs to the character on its left.
    const struct {
        int32_t px, py, index;
        Box box;
    } cases[] = {
        {0, 0, 0, box({}, 'm')},
        {m, 0, 0, box({}, 'm')},
        {m + 1, 0, 2, box({'m'}, 'i')},
        {mi + 1, 0, 3, box({'m', 'i'}, 'W')},
        {all, 0, 3, box({'m', 'i'}, 'W')},
        {all + 1, 0, -1, kNone},
        {-1, 0, -1, kNone},
        {1, top, 0, box({}, 'm')},
        {1, bottom, 0, box({}, 'm')},
        {1, top - 1, -1, kNone},
        {1, bottom + 1, -1, kNone},
    };
    for (const auto &c : cases) {
        Box b = kNone;
        const int32_t hit =
            xc_font_query_text_at_pos(font, text.data(), c.px, c.py, &b[0], &b[1], &b[2], &b[3]);
        EXPECT_EQ(std::pair(hit, b), std::pair(c.index, c.box)) << c.px << "," << c.py;
        // The character hit is the one before the caret after it.
        if (hit >= 0) {
            EXPECT_EQ(caret_box(text, hit + 1), std::pair(1, b));
        }
    }
    // Caret 0 boxes the first character; the byte order mark has no box,
    // and past the end there is no character.
    EXPECT_EQ(caret_box(text, 0), std::pair(1, box({}, 'm')));
    for (int32_t pos : {2, 5, 9}) EXPECT_EQ(caret_box(text, pos), std::pair(0, kNone)) << pos;
    // Any output may be left out; an empty text has nothing to hit.
    const auto hit = [&](const Text &t) {
        return xc_font_query_text_at_pos(font, t.data(), 1, 0, nullptr, nullptr, nullptr, nullptr);
    };
    EXPECT_EQ(std::pair(hit(text), hit(terminated({}))), std::pair(0, -1));
}

}  // namespace
}  // namespace fbc_test

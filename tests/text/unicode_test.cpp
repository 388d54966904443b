#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fbcompose/text.h"

namespace {

using Units = std::vector<uint16_t>;

// A wide string owned by the test.
struct Wide {
    uint16_t *str;
    explicit Wide(uint16_t *s) : str(s) {}
    ~Wide() { std::free(str); }
    Units units() const { return Units(str, str + xg_unicode_len(str)); }
};

Units terminated(Units u) {
    u.push_back(0);
    return u;
}

struct NextCase {
    const char *bytes;
    uint32_t ch;
    int32_t advance;  // 0: invalid or end, position unchanged
};

TEST(Utf8, GetNextDecodesEachLengthAndRefusesBrokenSequences) {
    const NextCase cases[] = {
        {"A", 'A', 1},
        {"", 0, 0},
        {"\xC3\xA9", 0xE9, 2},
        {"\xC3" "A", 0, 0},
        {"\xC3", 0, 0},
        {"\xE2\x82\xAC", 0x20AC, 3},
        {"\xE2\x82" "A", 0, 0},
        {"\xEF\xBF\xBF", 0xFFFF, 3},
        // Four-byte leads keep four value bits, so 0xF8 adds bit 21.
        {"\xF0\x9F\x98\x80", 0x1F600, 4},
        {"\xF8\x80\x80\x80", 0x200000, 4},
        // A stray continuation byte in lead position opens four bytes.
        {"\x80\x81\x82\x83", 0x00000000 | (1 << 12) | (2 << 6) | 3, 4},
        {"\x80" "A", 0, 0},
        {"\xF0\x9F\x98", 0, 0},
    };
    for (const NextCase &c : cases) {
        int32_t pos = 0;
        EXPECT_EQ(xg_utf8_get_next(c.bytes, &pos), c.ch) << c.bytes;
        EXPECT_EQ(pos, c.advance) << c.bytes;
    }
}

TEST(Utf8, GetNextStartsAtThePosition) {
    const char *s = "a\xC3\xA9" "b";
    int32_t pos = 1;
    EXPECT_EQ(xg_utf8_get_next(s, &pos), 0xE9u);
    EXPECT_EQ(xg_utf8_get_next(s, &pos), uint32_t{'b'});
    EXPECT_EQ(pos, 4);
    EXPECT_EQ(xg_utf8_get_next(s, &pos), 0u);
    EXPECT_EQ(pos, 4);
}

struct PrevCase {
    const char *bytes;
    int32_t from;
    uint32_t ch;
    int32_t to;
};

TEST(Utf8, GetPrevStepsBackToThePreviousLead) {
    const PrevCase cases[] = {
        {"ab", 1, 'b', 0},
        {"ab", 0, 'a', -1},
        // The terminator decodes as 0 and the step still happens.
        {"ab", 2, 0, 1},
        {"a\xC3\xA9" "b", 3, 'b', 1},
        {"a\xE2\x82\xAC", 4, 0, 1},
        {"\xC3\xA9\xC3\xA9", 2, 0xE9, 0},
        // Just after a high byte at byte 0 the position stays.
        {"\xC3" "b", 1, 'b', 1},
        // Only continuation bytes before: the position stays.
        {"\xA9\xA9" "b", 2, 'b', 2},
        // An invalid sequence at the position: nothing moves.
        {"a\xC3" "b", 1, 0, 1},
    };
    for (const PrevCase &c : cases) {
        int32_t pos = c.from;
        EXPECT_EQ(xg_utf8_get_prev(c.bytes, &pos), c.ch) << c.bytes << " @" << c.from;
        EXPECT_EQ(pos, c.to) << c.bytes << " @" << c.from;
    }
}

TEST(Utf8, GetPrevBeforeTheStartDecodesNothing) {
    int32_t pos = -1;
    EXPECT_EQ(xg_utf8_get_prev("ab", &pos), 0u);
    EXPECT_EQ(pos, -1);
}

TEST(Utf8, GetLastFindsTheStartOfTheLastCharacter) {
    const char *s = "a\xC3\xA9\xE2\x82\xAC";  // a, e-acute, euro sign
    const int32_t expected[] = {0, 0, 0, 1, 1, 3, 3};
    for (int32_t len = 0; len <= 6; ++len)
        EXPECT_EQ(xg_utf8_get_last(s, len), expected[len]) << len;
    EXPECT_EQ(xg_utf8_get_last("\xA9\xA9", 2), 0);
    EXPECT_EQ(xg_utf8_get_last("ab", -3), 0);
}

TEST(Utf8, LengthCountsCharactersThatEndWithinTheLimit) {
    const char *s = "a\xC3\xA9\xE2\x82\xAC" "b";  // 7 bytes, 4 characters
    const int32_t expected[] = {0, 1, 1, 2, 2, 2, 3, 4, 4};
    for (int32_t limit = 0; limit <= 8; ++limit)
        EXPECT_EQ(xg_utf8_len_full(s, limit), expected[limit]) << limit;
    EXPECT_EQ(xg_utf8_len_full(s, -1), 4);
    EXPECT_EQ(xg_utf8_len(s), 4);
    EXPECT_EQ(xg_utf8_len(""), 0);
    // Counting stops at the first invalid sequence.
    EXPECT_EQ(xg_utf8_len("ab\xC3" "cd"), 2);
}

TEST(Unicode, DecodeWritesUnitsWithoutTerminator) {
    uint16_t dest[8];
    std::fill(std::begin(dest), std::end(dest), uint16_t{0xAAAA});
    EXPECT_EQ(xg_unicode_decode_utf8(dest, "x\xE2\x82\xAC\xF0\x9F\x98\x80"), 3);
    EXPECT_EQ(dest[0], 'x');
    EXPECT_EQ(dest[1], 0x20AC);
    // Only the low 16 bits of a four-byte character are kept.
    EXPECT_EQ(dest[2], 0xF600);
    EXPECT_EQ(dest[3], 0xAAAA);
    EXPECT_EQ(xg_unicode_decode_utf8(dest, ""), 0);
    EXPECT_EQ(dest[0], 'x');
}

TEST(Unicode, NewFromUtf8KeepsTheCharactersBeforeAnInvalidSequence) {
    Wide good(xg_unicode_new_from_utf8("h\xC3\xA9llo"));
    EXPECT_EQ(good.units(), (Units{'h', 0xE9, 'l', 'l', 'o'}));
    Wide cut(xg_unicode_new_from_utf8("ab\xE2\x82" "cd"));
    EXPECT_EQ(cut.units(), (Units{'a', 'b'}));
    EXPECT_EQ(cut.str[2], 0);
    Wide empty(xg_unicode_new_from_utf8(""));
    ASSERT_NE(empty.str, nullptr);
    EXPECT_EQ(empty.str[0], 0);
}

TEST(Unicode, Utf8SizeByUnitRange) {
    const struct {
        uint16_t unit;
        int32_t size;
    } cases[] = {{1, 1}, {0x7F, 1}, {0x80, 2}, {0x7FF, 2}, {0x800, 3}, {0xFFFF, 3}};
    for (const auto &c : cases) {
        const uint16_t str[] = {c.unit, 0};
        EXPECT_EQ(xg_unicode_get_utf8_size(str), c.size) << c.unit;
    }
    const uint16_t mixed[] = {'a', 0xE9, 0x20AC, 'b', 0};
    EXPECT_EQ(xg_unicode_get_utf8_size(mixed), 7);
    EXPECT_EQ(xg_unicode_get_utf8_size(nullptr), 0);
    EXPECT_EQ(xg_unicode_get_utf8_size_full(mixed, 2), 3);
    EXPECT_EQ(xg_unicode_get_utf8_size_full(mixed, 100), 7);
    EXPECT_EQ(xg_unicode_get_utf8_size_full(mixed, 0), 0);
    EXPECT_EQ(xg_unicode_get_utf8_size_full(mixed, -1), 0);
    EXPECT_EQ(xg_unicode_get_utf8_size_full(nullptr, 5), 0);
}

TEST(Unicode, EncodeRoundTripsEveryUnit) {
    // Every non-zero unit encodes to its computed size and decodes back.
    for (uint32_t u = 1; u <= 0xFFFF; ++u) {
        const uint16_t str[] = {static_cast<uint16_t>(u), 0};
        char out[4] = {1, 1, 1, 1};
        const int32_t n = xg_unicode_encode_utf8(str, out);
        ASSERT_EQ(n, xg_unicode_get_utf8_size(str)) << u;
        ASSERT_EQ(out[n], 0) << u;
        int32_t pos = 0;
        ASSERT_EQ(xg_utf8_get_next(out, &pos), u) << u;
        ASSERT_EQ(pos, n) << u;
    }
}

TEST(Unicode, EncodeFullTakesExactlyNUnits) {
    const uint16_t str[] = {'a', 0xE9, 0, 'z', 0};
    char out[16];
    std::memset(out, 0x55, sizeof out);
    EXPECT_EQ(xg_unicode_encode_utf8_full(str, 2, out), 3);
    EXPECT_EQ(std::string(out), "a\xC3\xA9");
    // Past the terminator: the zero unit and what follows are encoded.
    EXPECT_EQ(xg_unicode_encode_utf8_full(str, 4, out), 5);
    EXPECT_EQ(std::memcmp(out, "a\xC3\xA9\0z\0", 6), 0);
    std::memset(out, 0x55, sizeof out);
    EXPECT_EQ(xg_unicode_encode_utf8_full(str, 0, out), 0);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[1], 0x55);
    EXPECT_EQ(xg_unicode_encode_utf8_full(str, -4, out), 0);
    EXPECT_EQ(xg_unicode_encode_utf8(str, out), 3);
}

TEST(Unicode, DebugStringIsReplacedByTheNextCall) {
    const uint16_t euro[] = {0x20AC, '1', 0};
    const char *first = xg_unicode_to_utf8_for_debug(euro);
    EXPECT_STREQ(first, "\xE2\x82\xAC" "1");
    const uint16_t empty[] = {0};
    EXPECT_STREQ(xg_unicode_to_utf8_for_debug(empty), "");
    EXPECT_STREQ(xg_unicode_to_utf8_for_debug(nullptr), "");
    const uint16_t a[] = {'a', 0};
    EXPECT_STREQ(xg_unicode_to_utf8_for_debug(a), "a");
    EXPECT_STREQ(xg_unicode_to_utf8_for_debug(nullptr), "");
}

TEST(Unicode, LengthDupAndNdup) {
    const uint16_t str[] = {'a', 'b', 'c', 0};
    EXPECT_EQ(xg_unicode_len(str), 3);
    EXPECT_EQ(xg_unicode_len(nullptr), 0);
    Wide dup(xg_unicode_dup(str));
    EXPECT_NE(dup.str, str);
    EXPECT_EQ(dup.units(), (Units{'a', 'b', 'c'}));
    EXPECT_EQ(xg_unicode_dup(nullptr), nullptr);
    const struct {
        int32_t n;
        Units units;
    } cases[] = {{-1, {}}, {0, {}}, {2, {'a', 'b'}}, {3, {'a', 'b', 'c'}}, {9, {'a', 'b', 'c'}}};
    for (const auto &c : cases) {
        Wide copy(xg_unicode_ndup(str, c.n));
        ASSERT_NE(copy.str, nullptr);
        EXPECT_EQ(copy.units(), c.units) << c.n;
    }
    EXPECT_EQ(xg_unicode_ndup(nullptr, 3), nullptr);
}

TEST(Unicode, ConcatGrowsTheFirstString) {
    const uint16_t tail[] = {'c', 'd', 0};
    uint16_t *str = xg_unicode_ndup(tail, 1);
    str = xg_unicode_concat(str, tail);
    EXPECT_EQ(Wide(str).units(), (Units{'c', 'c', 'd'}));
    // A null first string is an empty one; a null second appends nothing.
    uint16_t *fresh = xg_unicode_concat(nullptr, tail);
    fresh = xg_unicode_concat(fresh, nullptr);
    EXPECT_EQ(Wide(fresh).units(), (Units{'c', 'd'}));
}

TEST(Unicode, CompareSubtractsTheFirstDifferingUnits) {
    const struct {
        Units a, b;
        int expected;
    } cases[] = {
        {{'a', 'b'}, {'a', 'b'}, 0},
        {{'a', 'b'}, {'a', 'c'}, -1},
        {{'a', 'b', 'c'}, {'a', 'b'}, 'c'},
        {{'a'}, {'a', 'z'}, -'z'},
        {{0xFFFF}, {1}, 0xFFFE},
        {{}, {}, 0},
    };
    for (const auto &c : cases) {
        const Units a = terminated(c.a), b = terminated(c.b);
        EXPECT_EQ(xg_unicode_cmp(a.data(), b.data()), c.expected);
    }
}

TEST(Unicode, LatinTestsTheLow16Bits) {
    EXPECT_TRUE(xg_unicode_is_latin(0));
    EXPECT_TRUE(xg_unicode_is_latin(0xFF));
    EXPECT_FALSE(xg_unicode_is_latin(0x100));
    EXPECT_FALSE(xg_unicode_is_latin(0x1FF));
    EXPECT_TRUE(xg_unicode_is_latin(0x100FF));
}

}  // namespace

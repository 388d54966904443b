#include <cstdlib>
#include <cstring>

#include "font_fixture.hpp"

namespace fbc_test {
namespace {

// The units of a string the library allocated, which is then freed; null
// reads as {0xDEAD} so that it cannot pass for an empty string.
Text take(uint16_t *str) {
    const Text units = str ? Text(str, str + xg_unicode_len(str)) : Text{0xDEAD};
    std::free(str);
    return units;
}

// One step through UTF-8: the character decoded, and the byte position
// before and after. Valid one- to three-byte characters are checked by the
// round trip of every unit below.
struct Step {
    uint32_t (*step)(const char *, int32_t *);
    const char *bytes;
    int32_t from;
    uint32_t ch;
    int32_t to;
};
constexpr auto N = xg_utf8_get_next, P = xg_utf8_get_prev;

// Four-byte leads keep four value bits, so 0xF8 adds bit 21, and a stray
// continuation byte in lead position opens four bytes. Stepping back, the
// terminator decodes as 0 and the step still happens; after a high byte at
// byte 0, or only continuation bytes, the position stays; at an invalid
// sequence nothing moves.
TEST(Utf8, StepsForwardAndBackRefusingBrokenSequences) {
    const Step steps[] = {
        {N, "\xC3\x41", 0, 0, 0},
        {N, "\xC3", 0, 0, 0},
        {N, "\xF0\x9F\x98", 0, 0, 0},
        {N, "\xF0\x9F\x98\x80", 0, 0x1F600, 4},
        {N, "\xF8\x80\x80\x80", 0, 0x200000, 4},
        {N, "\x80\x81\x82\x83", 0, 0x1083, 4},
        {N, "a\xC3\xA9\x62", 1, 0xE9, 3},
        {N, "ab", 2, 0, 2},
        {P, "ab", 1, 'b', 0},
        {P, "ab", 0, 'a', -1},
        {P, "ab", -1, 0, -1},
        {P, "\xC3\xA9\xC3\xA9", 2, 0xE9, 0},
        {P, "a\xE2\x82\xAC", 4, 0, 1},
        {P, "\xC3\x62", 1, 'b', 1},
        {P, "\xA9\xA9\x62", 2, 'b', 2},
        {P, "a\xC3\x62", 1, 0, 1},
    };
    for (const Step &s : steps) {
        int32_t pos = s.from;
        const uint32_t ch = s.step(s.bytes, &pos);
        EXPECT_EQ(std::pair(ch, pos), std::pair(s.ch, s.to))
            << (s.step == N ? "next " : "prev ") << testing::PrintToString(std::string(s.bytes))
            << " from " << s.from;
    }
}

TEST(Utf8, LastStartAndLengthCountOnlyWholeCharactersWithinTheLimit) {
    const char *s = "a\xC3\xA9\xE2\x82\xAC\x62";  // a, e-acute, euro sign, b
    const int32_t last[] = {0, 0, 0, 1, 1, 3, 3, 6}, count[] = {0, 1, 1, 2, 2, 2, 3, 4};
    for (int32_t n = 0; n < 8; ++n)
        EXPECT_EQ(std::pair(xg_utf8_get_last(s, n), xg_utf8_len_full(s, n)),
                  std::pair(last[n], count[n]))
            << n;
    EXPECT_EQ(std::pair(xg_utf8_get_last("\xA9\xA9", 2), xg_utf8_get_last("ab", -3)),
              std::pair(0, 0));
    // Counting stops at the first invalid sequence.
    EXPECT_EQ(std::pair(xg_utf8_len_full(s, -1), xg_utf8_len("ab\xC3\x63\x64")), std::pair(4, 2));
}

TEST(Unicode, DecodingKeepsTheLow16BitsAndStopsAtAnInvalidSequence) {
    uint16_t dest[4] = {0xAAAA, 0xAAAA, 0xAAAA, 0xAAAA};
    // No terminator is written.
    EXPECT_EQ(xg_unicode_decode_utf8(dest, "x\xE2\x82\xAC\xF0\x9F\x98\x80"), 3);
    EXPECT_EQ(Text(dest, dest + 4), (Text{'x', 0x20AC, 0xF600, 0xAAAA}));
    EXPECT_EQ(xg_unicode_decode_utf8(dest, ""), 0);
    EXPECT_EQ(take(xg_unicode_new_from_utf8("h\xC3\xA9\x61\xE2\x82\x63")), (Text{'h', 0xE9, 'a'}));
    EXPECT_EQ(take(xg_unicode_new_from_utf8("")), Text{});
}

TEST(Unicode, EveryUnitEncodesToOneTwoOrThreeBytesThatDecodeBack) {
    for (uint32_t u = 1; u <= 0xFFFF; ++u) {
        const uint16_t str[] = {uint16_t(u), 0};
        char out[4];
        int32_t n = xg_unicode_encode_utf8(str, out), pos = 0;
        const int32_t bytes = u < 0x80 ? 1 : u < 0x800 ? 2 : 3;
        ASSERT_EQ(std::pair(n, xg_unicode_get_utf8_size(str)), std::pair(bytes, bytes)) << u;
        const uint32_t back = xg_utf8_get_next(out, &pos);
        ASSERT_EQ(std::tuple(back, pos, out[n]), std::tuple(u, n, '\0')) << u;
    }
}

TEST(Unicode, SizeStopsAtTheTerminatorButEncodingTakesExactlyNUnits) {
    const uint16_t str[] = {'a', 0xE9, 0, 'z', 0};
    for (auto [n, size] : {std::pair(2, 3), std::pair(9, 3), std::pair(0, 0), std::pair(-1, 0)})
        EXPECT_EQ(xg_unicode_get_utf8_size_full(str, n), size) << n;
    EXPECT_EQ(
        std::pair(xg_unicode_get_utf8_size(nullptr), xg_unicode_get_utf8_size_full(nullptr, 5)),
        std::pair(0, 0));
    char out[8];
    EXPECT_EQ(xg_unicode_encode_utf8_full(str, 4, out), 5);
    EXPECT_EQ(std::string(out, 6), std::string("a\xC3\xA9\0z\0", 6));
    std::memset(out, 0x55, sizeof out);
    EXPECT_EQ(xg_unicode_encode_utf8_full(str, -4, out), 0);
    EXPECT_EQ(std::string(out, 2), std::string("\0\x55", 2));
    // The debug form is the same bytes, in a buffer the next call replaces.
    EXPECT_STREQ(xg_unicode_to_utf8_for_debug(str), "a\xC3\xA9");
    EXPECT_STREQ(xg_unicode_to_utf8_for_debug(nullptr), "");
}

TEST(Unicode, DupNdupConcatCompareAndLatin) {
    const Text abc = terminated({'a', 'b', 'c'});
    EXPECT_EQ(take(xg_unicode_dup(abc.data())), (Text{'a', 'b', 'c'}));
    for (int32_t n : {-1, 0, 2, 3, 9}) {
        const Text head(abc.begin(), abc.begin() + std::clamp(n, 0, 3));
        EXPECT_EQ(take(xg_unicode_ndup(abc.data(), n)), head) << n;
    }
    EXPECT_EQ(xg_unicode_len(nullptr), 0);
    EXPECT_TRUE(!xg_unicode_dup(nullptr) && !xg_unicode_ndup(nullptr, 3));
    // A null first string is an empty one; a null second appends nothing.
    uint16_t *str = xg_unicode_concat(xg_unicode_concat(nullptr, abc.data()), nullptr);
    EXPECT_EQ(take(xg_unicode_concat(str, abc.data() + 1)), (Text{'a', 'b', 'c', 'b', 'c'}));
    // Comparing subtracts the first differing units.
    const std::tuple<Text, Text, int> cases[] = {
        {{'a', 'b', 'c'}, {'a', 'b'}, 'c'},
        {{'a'}, {'a', 'z'}, -'z'},
        {{0xFFFF}, {1}, 0xFFFE},
        {{}, {}, 0},
    };
    for (const auto &[a, b, expected] : cases)
        EXPECT_EQ(xg_unicode_cmp(terminated(a).data(), terminated(b).data()), expected);
    // Latin tests the low 16 bits.
    for (auto [ch, latin] : {std::pair(0u, 1), std::pair(0xFFu, 1), std::pair(0x100FFu, 1),
                             std::pair(0x100u, 0), std::pair(0x1FFu, 0)})
        EXPECT_EQ(xg_unicode_is_latin(ch), latin) << ch;
}

}  // namespace
}  // namespace fbc_test

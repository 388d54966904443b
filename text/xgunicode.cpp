// UTF-8 byte strings and the library's 16-bit wide strings: stepping,
// counting, converting both ways, and the small wide-string helpers.
#include <cstdlib>
#include <cstring>

#include "core/assert.hpp"
#include "core/size_check.hpp"
#include "fbcompose/text.h"

namespace fbc {
namespace {

constexpr const char *kModule = "xgunicode";

// Buffer of the last xg_unicode_to_utf8_for_debug call.
char *debug_buffer = nullptr;

bool is_continuation(uint8_t byte) { return (byte & 0xC0) == 0x80; }

struct Decoded {
    uint32_t ch;
    int32_t length;  // 0: invalid sequence
};

// One character starting at s, without the end-of-string test (a zero byte
// decodes as the one-byte character 0). Any high-bit byte that is not a
// two- or three-byte lead starts a four-byte sequence, masked with 0x0F:
// callers rely on this leniency, so it is kept (compat:).
Decoded decode_at(const uint8_t *s) {
    const uint8_t b0 = s[0];
    if (b0 < 0x80) return {b0, 1};
    int32_t length = 4;
    uint32_t ch = b0 & 0x0F;
    if ((b0 & 0xE0) == 0xC0) {
        length = 2;
        ch = b0 & 0x1F;
    } else if ((b0 & 0xF0) == 0xE0) {
        length = 3;
    }
    // A zero terminator is not a continuation byte, so this never reads
    // past the end of the string.
    for (int32_t i = 1; i < length; ++i) {
        if (!is_continuation(s[i])) return {0, 0};
        ch = (ch << 6) | (s[i] & 0x3F);
    }
    return {ch, length};
}

// From a high-bit byte at q > 0, the nearest earlier byte that is not a
// continuation byte, or -1 when only continuation bytes lie before q.
int32_t previous_lead(const uint8_t *s, int32_t q) {
    while (q > 0) {
        --q;
        if (!is_continuation(s[q])) return q;
    }
    return -1;
}

// Bytes that unit u takes in UTF-8.
int32_t utf8_size_of(uint16_t u) {
    if (u < 0x80) return 1;
    if (u < 0x800) return 2;
    return 3;
}

// Bytes for n + 1 units, or nullopt when that cannot be sized.
std::optional<int32_t> units_bytes(int64_t n) { return checked_product(n + 1, sizeof(uint16_t)); }

uint16_t *allocate_units(int64_t n) {
    auto bytes = units_bytes(n);
    if (!bytes) return nullptr;
    return static_cast<uint16_t *>(std::malloc(static_cast<size_t>(*bytes)));
}

}  // namespace
}  // namespace fbc

extern "C" {

uint32_t xg_utf8_get_next(const char *utf8, int32_t *pos) {
    const auto *s = reinterpret_cast<const uint8_t *>(utf8) + *pos;
    if (*s == 0) return 0;
    const fbc::Decoded d = fbc::decode_at(s);
    if (d.length == 0) return 0;
    *pos += d.length;
    return d.ch;
}

uint32_t xg_utf8_get_prev(const char *utf8, int32_t *pos) {
    const int32_t p = *pos;
    // A position already stepped off the front has nothing to decode.
    if (p < 0) return 0;
    const auto *s = reinterpret_cast<const uint8_t *>(utf8);
    const fbc::Decoded d = fbc::decode_at(s + p);
    if (d.length == 0) return 0;
    if (p == 0) {
        *pos = -1;
        return d.ch;
    }
    const int32_t q = p - 1;
    if (s[q] < 0x80) {
        *pos = q;
    } else if (q != 0) {
        const int32_t lead = fbc::previous_lead(s, q);
        if (lead >= 0) *pos = lead;
    }
    return d.ch;
}

int32_t xg_utf8_get_last(const char *utf8, int32_t len) {
    if (len < 1) return 0;
    const auto *s = reinterpret_cast<const uint8_t *>(utf8);
    const int32_t i = len - 1;
    if (s[i] < 0x80) return i;
    if (i == 0) return 0;
    const int32_t lead = fbc::previous_lead(s, i);
    return lead < 0 ? 0 : lead;
}

int32_t xg_utf8_len_full(const char *utf8, int32_t max_bytes) {
    int32_t pos = 0;
    int32_t count = 0;
    while (xg_utf8_get_next(utf8, &pos) != 0) {
        if (max_bytes >= 0 && pos > max_bytes) break;
        ++count;
    }
    return count;
}

int32_t xg_utf8_len(const char *utf8) { return xg_utf8_len_full(utf8, -1); }

int32_t xg_unicode_decode_utf8(uint16_t *dest, const char *utf8) {
    int32_t pos = 0;
    int32_t n = 0;
    if (utf8[0] == 0) return 0;
    do {
        const uint32_t ch = xg_utf8_get_next(utf8, &pos);
        if (ch == 0) break;
        dest[n++] = static_cast<uint16_t>(ch);
    } while (utf8[pos] != 0);
    return n;
}

uint16_t *xg_unicode_new_from_utf8(const char *utf8) {
    const int32_t l = xg_utf8_len(utf8);
    uint16_t *str = fbc::allocate_units(l);
    if (!str) return nullptr;
    const int32_t off = xg_unicode_decode_utf8(str, utf8);
    FBC_ASSERT(fbc::kModule, off == l);
    str[off] = 0;
    return str;
}

int32_t xg_unicode_get_utf8_size(const uint16_t *str) {
    return xg_unicode_get_utf8_size_full(str, INT32_MAX);
}

int32_t xg_unicode_get_utf8_size_full(const uint16_t *str, int32_t n) {
    if (!str) return 0;
    int32_t size = 0;
    for (int32_t i = 0; i < n && str[i] != 0; ++i) size += fbc::utf8_size_of(str[i]);
    return size;
}

int32_t xg_unicode_encode_utf8_full(const uint16_t *str, int32_t n, char *out) {
    auto *o = reinterpret_cast<uint8_t *>(out);
    for (int32_t i = 0; i < n; ++i) {
        const uint16_t u = str[i];
        const int32_t size = fbc::utf8_size_of(u);
        static constexpr uint8_t kLead[] = {0, 0x00, 0xC0, 0xE0};
        // Continuation bytes are filled from the last one backwards.
        uint32_t rest = u;
        for (int32_t k = size - 1; k > 0; --k) {
            o[k] = static_cast<uint8_t>(0x80 | (rest & 0x3F));
            rest >>= 6;
        }
        o[0] = static_cast<uint8_t>(kLead[size] | rest);
        o += size;
    }
    *o = 0;
    return static_cast<int32_t>(o - reinterpret_cast<uint8_t *>(out));
}

int32_t xg_unicode_encode_utf8(const uint16_t *str, char *out) {
    return xg_unicode_encode_utf8_full(str, xg_unicode_len(str), out);
}

const char *xg_unicode_to_utf8_for_debug(const uint16_t *str) {
    std::free(fbc::debug_buffer);
    fbc::debug_buffer = nullptr;
    if (!str || str[0] == 0) return "";
    const int32_t l = xg_unicode_get_utf8_size(str);
    auto bytes = fbc::checked_product(static_cast<int64_t>(l) + 1, 1);
    if (!bytes) return "";
    fbc::debug_buffer = static_cast<char *>(std::malloc(static_cast<size_t>(*bytes)));
    const int32_t off = xg_unicode_encode_utf8(str, fbc::debug_buffer);
    FBC_ASSERT(fbc::kModule, l == off);
    return fbc::debug_buffer;
}

int32_t xg_unicode_len(const uint16_t *str) {
    if (!str) return 0;
    int32_t n = 0;
    while (str[n] != 0) ++n;
    return n;
}

uint16_t *xg_unicode_dup(const uint16_t *str) {
    if (!str) return nullptr;
    return xg_unicode_ndup(str, xg_unicode_len(str));
}

uint16_t *xg_unicode_ndup(const uint16_t *str, int32_t n) {
    if (!str) return nullptr;
    int32_t len = 0;
    while (len < n && str[len] != 0) ++len;
    uint16_t *copy = fbc::allocate_units(len);
    if (!copy) return nullptr;
    std::memcpy(copy, str, static_cast<size_t>(len) * sizeof(uint16_t));
    copy[len] = 0;
    return copy;
}

uint16_t *xg_unicode_concat(uint16_t *str1, const uint16_t *str2) {
    const int32_t len1 = xg_unicode_len(str1);
    const int32_t len2 = xg_unicode_len(str2);
    auto bytes = fbc::units_bytes(static_cast<int64_t>(len1) + len2);
    if (!bytes) return str1;
    auto *joined = static_cast<uint16_t *>(std::realloc(str1, static_cast<size_t>(*bytes)));
    if (!joined) return str1;
    if (len2 > 0) std::memcpy(joined + len1, str2, static_cast<size_t>(len2) * sizeof(uint16_t));
    joined[len1 + len2] = 0;
    return joined;
}

int xg_unicode_cmp(const uint16_t *str1, const uint16_t *str2) {
    int32_t i = 0;
    while (str1[i] != 0 && str1[i] == str2[i]) ++i;
    return static_cast<int32_t>(str1[i]) - static_cast<int32_t>(str2[i]);
}

int xg_unicode_is_latin(uint32_t ch) { return (ch & 0xFFFF) < 256; }

}  // extern "C"

// UTF-8 and wide strings: stepping, counting, decoding and encoding an
// arbitrary zero-terminated byte string, and the wide-string helpers on
// what it decodes to; and the input as raw 16-bit units, zeros and lone
// surrogates included, encoded unit for unit and decoded back.
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_support.hpp"

namespace {

void step_through(const std::string &text) {
    const char *utf8 = text.c_str();
    const auto length = static_cast<int32_t>(text.size());
    for (int32_t pos = 0; xg_utf8_get_next(utf8, &pos) != 0;) {
    }
    // A dozen or so positions keep the quadratic counting cheap.
    const int32_t stride = length / 16 + 1;
    for (int32_t pos = 0; pos <= length; pos += stride) {
        int32_t back = pos;
        xg_utf8_get_prev(utf8, &back);
        xg_utf8_get_last(utf8, pos);
        xg_utf8_len_full(utf8, pos);
    }
    xg_utf8_len(utf8);
}

void round_trip(const std::string &text) {
    uint16_t *wide = xg_unicode_new_from_utf8(text.c_str());
    const int32_t units = xg_unicode_len(wide);
    std::string encoded(static_cast<size_t>(xg_unicode_get_utf8_size(wide)) + 1, '\0');
    xg_unicode_encode_utf8(wide, encoded.data());
    xg_unicode_get_utf8_size_full(wide, units / 2);
    xg_unicode_to_utf8_for_debug(wide);
    uint16_t *half = xg_unicode_ndup(wide, units / 2);
    uint16_t *both = xg_unicode_concat(xg_unicode_dup(wide), half);
    xg_unicode_cmp(both, wide);
    for (int32_t i = 0; i < units; ++i) xg_unicode_is_latin(wide[i]);
    std::free(both);
    std::free(half);
    std::free(wide);
}

void raw_units(const uint8_t *data, size_t size) {
    std::vector<uint16_t> units(size / 2);
    if (!units.empty()) std::memcpy(units.data(), data, units.size() * 2);
    const auto n = static_cast<int32_t>(units.size());
    // At most three bytes a unit, and the terminating zero.
    std::string utf8(units.size() * 3 + 1, '\xFF');
    xg_unicode_encode_utf8_full(units.data(), n, utf8.data());
    std::vector<uint16_t> back(static_cast<size_t>(xg_utf8_len(utf8.c_str())) + 1);
    xg_unicode_decode_utf8(back.data(), utf8.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const auto *bytes = reinterpret_cast<const char *>(data);
    const std::string text(bytes, strnlen(bytes, size));
    step_through(text);
    round_trip(text);
    raw_units(data, size);
    return 0;
}

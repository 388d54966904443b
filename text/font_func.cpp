// The font engine's globals: the FreeType library handle, its start-up,
// and the list of fallback font files tried for missing characters.
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "fbcompose/text.h"

FT_Library xg_ft_lib = nullptr;
char *font_fallback[8] = {};

namespace fbc {
namespace {

int32_t init_count = 0;

constexpr size_t kFallbackSlots = sizeof font_fallback / sizeof font_fallback[0];

// Replaces entry i with a copy of name (null clears it).
void set_fallback_entry(size_t i, std::string_view name) {
    std::free(font_fallback[i]);
    font_fallback[i] = name.empty() ? nullptr : strndup(name.data(), name.size());
}

}  // namespace
}  // namespace fbc

extern "C" {

int xc_font_init(void) {
    if (++fbc::init_count != 1) return fbc::init_count;
    const FT_Error error = FT_Init_FreeType(&xg_ft_lib);
    if (error != 0) fbc::init_count = 0;
    return error;
}

void xc_font_set_fallback(const char *names) {
    std::string_view rest = names ? names : "";
    size_t slot = 0;
    // Empty fields between commas are skipped; names past the eighth are
    // ignored.
    while (slot < fbc::kFallbackSlots && !rest.empty()) {
        const size_t comma = rest.find(',');
        const std::string_view name = rest.substr(0, comma);
        rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
        if (!name.empty()) fbc::set_fallback_entry(slot++, name);
    }
    for (; slot < fbc::kFallbackSlots; ++slot) fbc::set_fallback_entry(slot, {});
}

}  // extern "C"

// What the font loader, the glyph cache and the text drawer share: the glyph
// table behind xc_font.glyphs, its accounting and its release.
#pragma once

#include <cstdint>
#include <unordered_map>

#include "fbcompose/text.h"

namespace fbc {

// Keyed by the 16-bit character. A missing character may share the record
// cached under key 0, so one record can sit under several keys.
using GlyphTable = std::unordered_map<uint16_t, xc_font_glyph *>;

// The font's table, or null before its first glyph lookup.
inline GlyphTable *glyph_table(const xc_font *font) {
    return static_cast<GlyphTable *>(font->glyphs);
}

// Bytes an unreferenced handle is charged in the font cache: a fixed part
// plus, per table entry, its bitmap and a per-record overhead.
int64_t font_cache_cost(const xc_font *font);

// Frees every FreeType glyph and record of the table exactly once (shared
// records included) and empties it.
void glyph_table_clear(GlyphTable &table);

// Clears and destroys the font's table; glyphs is null afterwards.
void glyph_table_destroy(xc_font *font);

// For tests and diagnostics: the summed cost of the unreferenced handles,
// and how many handles and faces are open.
int64_t font_cache_usage();
int32_t font_handle_count();
int32_t font_source_count();

}  // namespace fbc

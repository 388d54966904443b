// The per-font glyph cache: rendered glyphs by character, found in the
// font's face, in its attached fallback fonts or in the fallback list, and
// flushed whole when it grows too large.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <ft2build.h>
#include FT_BITMAP_H

#include "core/assert.hpp"
#include "core/log.hpp"
#include "fbcompose/text.h"
#include "text/font_internal.hpp"

namespace fbc {
namespace {

constexpr const char *kModule = "font_func";

// A table this full is emptied before the next insertion.
constexpr size_t kMaxGlyphs = 1000;
constexpr uint16_t kByteOrderMark = 0xFEFF;
constexpr uint16_t kIdeographicSpace = 0x3000;
// Render to coverage, with the font's own hints only.
constexpr FT_Int32 kLoadFlags = FT_LOAD_RENDER | FT_LOAD_NO_AUTOHINT;

constexpr size_t kFallbackSlots = sizeof(xc_font::fallback) / sizeof(xc_font::fallback[0]);

struct Found {
    FT_Face face;
    FT_UInt index;  // 0: not found
};

FT_UInt char_index(FT_Face face, uint16_t ch) {
    FBC_ASSERT(kModule, face);
    return FT_Get_Char_Index(face, ch);
}

// The attached fallback slots, in order, up to the first empty one.
Found find_in_attached(const xc_font *font, uint16_t ch) {
    for (xc_font *fallback : font->fallback) {
        if (!fallback) break;
        if (FT_UInt index = char_index(fallback->face, ch)) return {fallback->face, index};
    }
    return {nullptr, 0};
}

// The slot already holding a font of this file, else the first empty one,
// else none (kFallbackSlots).
size_t slot_for(const xc_font *font, const char *name) {
    for (size_t i = 0; i < kFallbackSlots; ++i)
        if (font->fallback[i] && std::strcmp(font->fallback[i]->source->filename, name) == 0)
            return i;
    for (size_t i = 0; i < kFallbackSlots; ++i)
        if (!font->fallback[i]) return i;
    return kFallbackSlots;
}

// Attaches fonts named by font_fallback that are not attached yet, at the
// requesting font's size and emboldening, until one has the character. A
// file that fails to load leaves its slot empty, to be retried later.
Found find_in_fallback_list(xc_font *font, uint16_t ch) {
    for (char *const name : font_fallback) {
        if (!name) break;
        if (std::strcmp(name, font->source->filename) == 0) continue;
        const size_t slot = slot_for(font, name);
        if (slot == kFallbackSlots || font->fallback[slot]) continue;
        xc_font *fallback = xc_font_load(name, font->size, font->bold_x, font->bold_y);
        font->fallback[slot] = fallback;
        if (!fallback) continue;
        xc_font_set_size(fallback);
        if (FT_UInt index = char_index(fallback->face, ch)) return {fallback->face, index};
    }
    return {nullptr, 0};
}

[[noreturn]] void glyph_failed(FT_Face face, FT_UInt index) {
    fbc::log_out("load glyph failed: face = %p index = %d\n", static_cast<void *>(face),
                 static_cast<int>(index));
    const xc_font_glyph *fg = nullptr;
    FBC_ASSERT(kModule, fg);
    std::abort();
}

// Renders glyph `index` of `face` into a new record; failures are fatal.
xc_font_glyph *render_glyph(const xc_font *font, FT_Face face, FT_UInt index) {
    if (FT_Error error = FT_Load_Glyph(face, index, kLoadFlags)) {
        fbc::log_out("load glyph error index = %d error = %d\n", static_cast<int>(index), error);
        glyph_failed(face, index);
    }
    auto *fg = static_cast<xc_font_glyph *>(std::calloc(1, sizeof(xc_font_glyph)));
    if (FT_Get_Glyph(face->glyph, &fg->glyph) != 0) {
        std::free(fg);
        fbc::log_out("get glyph error\n");
        glyph_failed(face, index);
    }
    if (fg->glyph->format != FT_GLYPH_FORMAT_BITMAP &&
        FT_Glyph_To_Bitmap(&fg->glyph, FT_RENDER_MODE_NORMAL, nullptr, 1) != 0) {
        fbc::log_out("glyph to bitmap error\n");
        FT_Done_Glyph(fg->glyph);
        std::free(fg);
        glyph_failed(face, index);
    }
    fg->bitmap = reinterpret_cast<FT_BitmapGlyph>(fg->glyph);
    // Emboldening widens the bitmap only; the advance stays the face's.
    if (font->bold_x >= 1 || font->bold_y != 0) {
        FT_Bitmap_Embolden(xg_ft_lib, &fg->bitmap->bitmap, static_cast<FT_Pos>(font->bold_x) * 64,
                           static_cast<FT_Pos>(font->bold_y) * 64);
    }
    return fg;
}

// The record for a character no face has: the one under key 0 if cached,
// else the font's own missing-glyph shape.
xc_font_glyph *missing_glyph(const xc_font *font, const GlyphTable &table) {
    if (auto it = table.find(0); it != table.end()) return it->second;
    FT_Face face = font->face;
    FBC_ASSERT(kModule, face);
    return render_glyph(font, face, 0);
}

xc_font_glyph *lookup_glyph(xc_font *font, uint16_t ch) {
    if (!font->glyphs) font->glyphs = new GlyphTable();
    GlyphTable &table = *glyph_table(font);
    if (auto it = table.find(ch); it != table.end()) return it->second;
    if (table.size() >= kMaxGlyphs) glyph_table_clear(table);

    Found found{font->face, char_index(font->face, ch)};
    if (found.index == 0) found = find_in_attached(font, ch);
    if (found.index == 0) found = find_in_fallback_list(font, ch);
    xc_font_glyph *fg =
        found.index ? render_glyph(font, found.face, found.index) : missing_glyph(font, table);
    table.emplace(ch, fg);
    return fg;
}

}  // namespace

void glyph_table_clear(GlyphTable &table) {
    // Several keys may share one record: free each distinct one once.
    std::vector<xc_font_glyph *> records;
    records.reserve(table.size());
    for (const auto &[ch, fg] : table) records.push_back(fg);
    std::sort(records.begin(), records.end());
    records.erase(std::unique(records.begin(), records.end()), records.end());
    for (xc_font_glyph *fg : records) {
        FT_Done_Glyph(fg->glyph);
        std::free(fg);
    }
    table.clear();
}

void glyph_table_destroy(xc_font *font) {
    GlyphTable *table = glyph_table(font);
    if (!table) return;
    glyph_table_clear(*table);
    delete table;
    font->glyphs = nullptr;
}

}  // namespace fbc

extern "C" {

xc_font_glyph *xc_font_get_glyph(xc_font *font, uint32_t ch) {
    uint16_t key = static_cast<uint16_t>(ch & 0xFFFF);
    if (key == fbc::kByteOrderMark) return nullptr;
    if (key == fbc::kIdeographicSpace) key = 0x20;
    xc_font *fi = font;
    FBC_ASSERT(fbc::kModule, fi);
    return fbc::lookup_glyph(font, key);
}

}  // extern "C"

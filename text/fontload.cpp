// Font handles: one shared FreeType face per file, one size object per
// handle (file, size, emboldening), and the byte-limited cache of handles
// nobody references, evicted least recently used first.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <ft2build.h>
#include FT_SIZES_H

#include "core/assert.hpp"
#include "core/log.hpp"
#include "fbcompose/list.h"
#include "fbcompose/text.h"
#include "text/font_internal.hpp"

namespace fbc {
namespace {

constexpr const char *kModule = "fontload";

// Character sizes are points at this resolution, both ways.
constexpr FT_UInt kDpi = 75;
// Fixed charge of a cached handle, and the extra charge per glyph record.
constexpr int64_t kHandleCost = 16560;
constexpr int64_t kGlyphRecordCost = 420;

xg_list *fonts = nullptr;    // front: most recently loaded or reused
xg_list *sources = nullptr;  // front: most recently used
int32_t cache_limit = 0;
// Wider than the limit so that many large cached handles cannot wrap it.
int64_t cache_usage = 0;

xc_font *font_of(const xg_list_item *item) { return static_cast<xc_font *>(item->data); }
xc_font_source *source_of(const xg_list_item *item) {
    return static_cast<xc_font_source *>(item->data);
}

xg_list *move_to_front(xg_list *list, xg_list_item *item) {
    void *data = item->data;
    list = xg_list_remove_list(list, item);
    return xg_list_prepend(list, data);
}

xg_list_item *find_font(const char *filename, int32_t size, int32_t bold_x, int32_t bold_y) {
    for (xg_list_item *item = fonts ? fonts->first : nullptr; item; item = item->next) {
        const xc_font *font = font_of(item);
        if (font->size == size && font->bold_x == bold_x && font->bold_y == bold_y &&
            std::strcmp(font->source->filename, filename) == 0)
            return item;
    }
    return nullptr;
}

xg_list_item *find_source(const char *filename) {
    for (xg_list_item *item = sources ? sources->first : nullptr; item; item = item->next)
        if (std::strcmp(source_of(item)->filename, filename) == 0) return item;
    return nullptr;
}

// A new source with its face open, or null when FreeType cannot open it.
xc_font_source *open_source(const char *filename) {
    auto *fs = static_cast<xc_font_source *>(std::calloc(1, sizeof(xc_font_source)));
    if (!fs) return nullptr;
    if (FT_New_Face(xg_ft_lib, filename, 0, &fs->face) != 0) {
        std::free(fs);
        return nullptr;
    }
    fs->filename = strdup(filename);
    FT_Select_Charmap(fs->face, FT_ENCODING_UNICODE);
    fs->ref = 1;
    sources = xg_list_prepend(sources, fs);
    return fs;
}

xc_font_source *acquire_source(const char *filename) {
    if (xg_list_item *item = find_source(filename)) {
        xc_font_source *fs = source_of(item);
        ++fs->ref;
        sources = move_to_front(sources, item);
        return fs;
    }
    return open_source(filename);
}

void release_source(xc_font_source *fs) {
    if (--fs->ref > 0) return;
    FBC_ASSERT(kModule, fs->ref == 0);
    sources = xg_list_remove(sources, fs);
    FT_Done_Face(fs->face);
    std::free(fs->filename);
    std::free(fs);
}

// size points in 26.6, saturated so that an absurd size reaches FreeType
// as an error instead of wrapping.
FT_F26Dot6 char_height(int32_t size) {
    constexpr int64_t kMax = (int64_t{1} << 31) - 1;
    const int64_t height = static_cast<int64_t>(size) * 64;
    return static_cast<FT_F26Dot6>(height > kMax ? kMax : height < -kMax ? -kMax : height);
}

xc_font *new_handle(xc_font_source *fs, int32_t size, int32_t bold_x, int32_t bold_y) {
    auto *font = static_cast<xc_font *>(std::calloc(1, sizeof(xc_font)));
    font->size = size;
    font->bold_x = bold_x;
    font->bold_y = bold_y;
    font->source = fs;
    font->face = fs->face;
    if (FT_New_Size(font->face, &font->ft_size) == 0) FT_Activate_Size(font->ft_size);
    const FT_Error error = FT_Set_Char_Size(font->face, 0, char_height(size), kDpi, kDpi);
    if (error != 0) fbc::log_out("font_load Set_Char_Size size = %d failed = %d\n", size, error);
    fs->cur_size = size;
    font->ref = 1;
    return font;
}

void activate(xc_font *font) {
    if (font->source->cur_size == font->size) return;
    FT_Activate_Size(font->ft_size);
    font->source->cur_size = font->size;
}

// The unreferenced handle nearest the back of the font list.
xg_list_item *least_recent_unreferenced() {
    for (xg_list_item *item = fonts ? fonts->last : nullptr; item; item = item->prev)
        if (font_of(item)->ref == 0) return item;
    return nullptr;
}

// Destroys one unreferenced handle; returns false when there is none.
bool evict_one() {
    xg_list_item *item = least_recent_unreferenced();
    if (!item) return false;
    xc_font *font = font_of(item);
    FT_Done_Size(font->ft_size);
    fonts = xg_list_remove_list(fonts, item);
    cache_usage -= font_cache_cost(font);
    glyph_table_destroy(font);
    release_source(font->source);
    // Fallbacks may cascade into further evictions; this handle is already
    // off the list, so it cannot be picked again.
    for (xc_font *fallback : font->fallback)
        if (fallback) xc_font_free(fallback);
    std::free(font);
    return true;
}

void evict_to_limit() {
    while (cache_limit < cache_usage && evict_one()) {
    }
}

}  // namespace

int64_t font_cache_cost(const xc_font *font) {
    int64_t cost = kHandleCost;
    if (const GlyphTable *table = glyph_table(font)) {
        for (const auto &[ch, fg] : *table) {
            const FT_Bitmap &bitmap = fg->bitmap->bitmap;
            cost += static_cast<int64_t>(bitmap.rows) * bitmap.width + kGlyphRecordCost;
        }
    }
    return cost;
}

int64_t font_cache_usage() { return cache_usage; }
int32_t font_handle_count() { return xg_list_count(fonts); }
int32_t font_source_count() { return xg_list_count(sources); }

}  // namespace fbc

extern "C" {

xc_font *xc_font_load(const char *filename, int32_t size, int32_t bold_x, int32_t bold_y) {
    if (!filename) return nullptr;
    if (xg_list_item *item = fbc::find_font(filename, size, bold_x, bold_y)) {
        xc_font *font = fbc::font_of(item);
        if (font->ref == 0) fbc::cache_usage -= fbc::font_cache_cost(font);
        ++font->ref;
        fbc::fonts = fbc::move_to_front(fbc::fonts, item);
        return font;
    }
    xc_font_source *fs = fbc::acquire_source(filename);
    if (!fs) return nullptr;
    xc_font *font = fbc::new_handle(fs, size, bold_x, bold_y);
    fbc::fonts = xg_list_prepend(fbc::fonts, font);
    return font;
}

void xc_font_set_size(xc_font *font) {
    fbc::activate(font);
    for (xc_font *fallback : font->fallback) {
        if (!fallback) break;
        fbc::activate(fallback);
    }
}

void xc_font_free(xc_font *font) {
    if (!font) return;
    if (--font->ref != 0) return;
    fbc::cache_usage += fbc::font_cache_cost(font);
    fbc::evict_to_limit();
}

void xc_font_set_cache(int32_t bytes) {
    fbc::cache_limit = bytes;
    fbc::evict_to_limit();
}

int32_t xc_font_get_cache(void) { return fbc::cache_limit; }

}  // extern "C"

// Fonts from the Debian packages the set-up installs, and an independent
// FreeType face to check the library's glyphs against.
#pragma once

#include <gtest/gtest.h>

#include <ft2build.h>
#include FT_FREETYPE_H

#include <cstdint>
#include <vector>

#include "fbcompose/text.h"
#include "text/font_internal.hpp"

namespace fbc_test {

inline constexpr const char *kSans = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
inline constexpr const char *kMono = "/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf";
inline constexpr const char *kSerif = "/usr/share/fonts/truetype/dejavu/DejaVuSerif.ttf";
inline constexpr const char *kCondensed =
    "/usr/share/fonts/truetype/dejavu/DejaVuSansCondensed.ttf";
// Has the CJK ideographs that DejaVu lacks.
inline constexpr const char *kCjk = "/usr/share/fonts/truetype/wqy/wqy-microhei.ttc";
inline constexpr uint16_t kZhong = 0x4E2D;  // CJK ideograph, not in DejaVu
inline constexpr uint16_t kWen = 0x6587;    // another one

// What FreeType itself renders for one glyph at a size (points at 75 dpi).
struct ReferenceGlyph {
    int32_t left = 0, top = 0;
    int32_t width = 0, rows = 0;
    int64_t advance_26_6 = 0;
    std::vector<uint8_t> coverage;  // rows x width, tightly packed
    uint8_t at(int32_t col, int32_t row) const { return coverage[row * width + col]; }
};

class ReferenceFace {
public:
    ReferenceFace(const char *path, int32_t size);
    ~ReferenceFace();
    ReferenceFace(const ReferenceFace &) = delete;
    ReferenceFace &operator=(const ReferenceFace &) = delete;

    bool has(uint16_t ch) const { return FT_Get_Char_Index(face_, ch) != 0; }
    ReferenceGlyph glyph(uint16_t ch) const;
    ReferenceGlyph glyph_by_index(FT_UInt index) const;
    int32_t ascent() const { return static_cast<int32_t>(face_->size->metrics.ascender >> 6); }
    int32_t descent() const { return static_cast<int32_t>(-(face_->size->metrics.descender >> 6)); }
    // Pixel width of a string: the 26.6 advances summed, then floored.
    int32_t advance(const std::vector<uint16_t> &text) const;

private:
    FT_Library lib_ = nullptr;
    FT_Face face_ = nullptr;
};

// A glyph record's bitmap as packed rows.
ReferenceGlyph packed(const xc_font_glyph *fg);

// Every test starts the font engine and, at the end, drops its fonts and
// the fallback list and empties the cache so the leak checker sees nothing.
class FontTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    // Loads a font the fixture frees at the end.
    xc_font *load(const char *path, int32_t size, int32_t bold_x = 0, int32_t bold_y = 0);

private:
    std::vector<xc_font *> loaded_;
};

}  // namespace fbc_test

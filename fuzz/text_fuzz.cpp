// Text drawing and measuring at arbitrary int32 positions, counts, clips
// and texture origins, over images of every kind (as the destination and
// as the texture), in the system font the text tests use at a few sizes.
#include "fuzz_images.hpp"

namespace {

constexpr const char *kSans = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

xc_font *fonts[4];

}  // namespace

extern "C" void fuzz_set_up() {
    xc_font_init();
    // Loaded once: the fonts and their glyph caches live for the process.
    fonts[0] = xc_font_load(kSans, 1, 0, 0);
    fonts[1] = xc_font_load(kSans, 9, 0, 0);
    fonts[2] = xc_font_load(kSans, 16, 0, 0);
    fonts[3] = xc_font_load(kSans, 40, 2, 1);
}

namespace {

// Up to 24 characters, any 16-bit values, terminated.
std::vector<uint16_t> text(fuzz::Input &in) {
    std::vector<uint16_t> units;
    for (int n = in.take<uint8_t>() % 25; n > 0; --n) {
        const auto pick = in.take<uint8_t>();
        units.push_back(pick < 160 ? uint16_t(' ' + pick % 95) : in.take<uint16_t>());
    }
    units.push_back(0);
    return units;
}

void draw(fuzz::Input &in, fuzz::Images &images, xc_font *font, const uint16_t *units) {
    xc_image *image = images.make(in);
    const xg_area clip = fuzz::area(in);
    const int32_t x = fuzz::coord(in), y = fuzz::coord(in), count = fuzz::coord(in);
    xc_paint paint{fuzz::colour(in), nullptr, 0, 0};
    if (in.take<uint8_t>() & 1) {
        paint.texture = in.take<uint8_t>() % 4 == 0 ? image : images.make(in);
        paint.x = fuzz::coord(in);
        paint.y = fuzz::coord(in);
    }
    xc_font_draw(image, &clip, font, x, y, units, count, paint);
}

void measure(fuzz::Input &in, xc_font *font, const uint16_t *units) {
    int32_t x, y, w, h;
    const bool out = in.take<uint8_t>() & 1;
    xc_font_query_advance(font, units, fuzz::coord(in));
    xc_font_query_size(font, units, fuzz::coord(in), out ? &w : nullptr, out ? nullptr : &h);
    xc_font_query_char_coords(font, units, fuzz::coord(in), &x, &y, &w, &h);
    const int32_t px = fuzz::coord(in), py = fuzz::coord(in);
    xc_font_query_text_at_pos(font, units, px, py, out ? &x : nullptr, &y, out ? &w : nullptr, &h);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input in(data, size);
    fuzz::Images images;
    xc_font *font = fonts[in.take<uint8_t>() % 4];
    if (!font) return 0;  // the font is not installed
    const std::vector<uint16_t> units = text(in);
    if (in.take<uint8_t>() & 1) draw(in, images, font, units.data());
    else measure(in, font, units.data());
    return 0;
}

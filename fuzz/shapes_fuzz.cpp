// Lines, rectangles and polygons with arbitrary int32 end points, areas,
// offsets and clips over images of every kind, and the damage manager with
// arbitrary rectangles.
#include "fuzz_images.hpp"

namespace {

void polygon(fuzz::Input &in, xc_image *image, const xg_area &clip) {
    xg_point points[16];
    xg_list *list = nullptr;
    const int count = in.take<uint8_t>() % 16;
    for (int i = 0; i < count; ++i) {
        points[i] = {fuzz::coord(in), fuzz::coord(in)};
        list = xg_list_append(list, &points[i]);
    }
    const int32_t x_offset = fuzz::coord(in), y_offset = fuzz::coord(in);
    xc_polygon_draw(image, &clip, x_offset, y_offset, list, fuzz::colour(in));
    xg_list_free(list);
}

// Screens up to 2048 pixels a side, or sizes the manager refuses (negative,
// or too many tiles).
void damage(fuzz::Input &in) {
    const bool absurd = in.take<uint8_t>() & 1;
    const int32_t w = absurd ? fuzz::coord(in) | 0x40000000 : in.take<uint16_t>() % 2049;
    const int32_t h = absurd ? fuzz::coord(in) | 0x40000000 : in.take<uint16_t>() % 2049;
    xc_dm *dm = xc_dm_new(w, h);
    for (int i = in.take<uint8_t>() % 6; i > 0; --i) {
        const xg_rect rect{fuzz::coord(in), fuzz::coord(in), fuzz::coord(in), fuzz::coord(in)};
        xc_dm_add_area(dm, &rect);
        if (in.take<uint8_t>() % 8 == 0) xc_dm_reset(dm);
    }
    xg_list_free_with_data(xc_dm_get_rects(dm));
    xc_dm_free(dm);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input in(data, size);
    fuzz::Images images;
    xc_image *image = images.make(in);
    const xg_area clip = fuzz::area(in);
    for (int calls = 1 + in.take<uint8_t>() % 3; calls > 0; --calls) {
        const int which = in.take<uint8_t>() % 4;
        if (which == 2) polygon(in, image, clip);
        if (which == 3) damage(in);
        if (which >= 2) continue;
        // A line from (x1, y1) to (x2, y2), or the rectangle they span.
        xg_area ends = fuzz::area(in);
        if (which == 0)
            xc_line_draw(image, &clip, ends.x1, ends.y1, ends.x2, ends.y2, fuzz::colour(in));
        else xc_rectangle_draw(image, &clip, &ends, fuzz::colour(in));
    }
    return 0;
}

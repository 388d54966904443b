// Converting damaged canvas rectangles into a panel frame buffer, each at
// its rotated place with the dither phase of that place.
#include "output/panel.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "core/log.hpp"
#include "core/pixel_bounds.hpp"

namespace fbc {
namespace {

// The panel turned back upright: the canvas it shows.
void canvas_size(const xc_panel &panel, int32_t &width, int32_t &height) {
    const bool turned = panel.rotation != 0;
    width = turned ? panel.height : panel.width;
    height = turned ? panel.width : panel.height;
}

const char *unusable_argument(void *pixels, int32_t width, int32_t height, int32_t stride,
                              int depth, int rotation) {
    if (!pixels) return "pixels: null";
    if (width < 1) return "width: below 1";
    if (height < 1) return "height: below 1";
    if (depth != 16 && depth != 18 && depth != 32) return "depth: not 16, 18 or 32";
    if (rotation != 0 && rotation != 90 && rotation != 270) return "rotation: not 0, 90 or 270";
    const int32_t bytes = depth == 16 ? 2 : 4;
    if (int64_t{stride} < int64_t{width} * bytes) return "stride: shorter than a row";
    if (stride % bytes != 0) return "stride: not a whole number of pixels";
    return nullptr;
}

// Converts the part of `r` inside the canvas area; false when nothing is left.
bool convert_rect(const xc_panel &panel, const xc_image &canvas, const xg_rect &r) {
    int32_t cw, ch;
    canvas_size(panel, cw, ch);
    // Damage rectangles are whole tiles and may reach past the canvas;
    // 64-bit ends, since a caller's rectangle may reach past INT32_MAX.
    const int64_t x1 = std::max<int64_t>(r.x, 0), y1 = std::max<int64_t>(r.y, 0);
    const int64_t x2 = std::min<int64_t>(int64_t{r.x} + r.w, cw);
    const int64_t y2 = std::min<int64_t>(int64_t{r.y} + r.h, ch);
    if (x2 <= x1 || y2 <= y1) return false;
    const auto x = static_cast<int32_t>(x1), y = static_cast<int32_t>(y1);
    const auto w = static_cast<int32_t>(x2 - x1), h = static_cast<int32_t>(y2 - y1);
    // Where the rectangle's first output pixel lands and how long its output
    // rows are: canvas (cx, cy) goes to (H - 1 - cy, cx) turned by 90 and to
    // (cy, W - 1 - cx) turned by 270. That place is also the dither phase.
    int32_t px = x, py = y, row = w;
    if (panel.rotation == 90) px = ch - y - h, py = x, row = h;
    if (panel.rotation == 270) px = y, py = cw - x - w, row = h;
    uint8_t *out = panel.pixels + ptrdiff_t{py} * panel.stride + ptrdiff_t{px} * panel.pixel_bytes;
    panel.convert(xc_image_pointer(&canvas, x, y), out, canvas.rowstride / 4 - w,
                  panel.stride / panel.pixel_bytes - row, w, h, px, py);
    return true;
}

bool canvas_fits(const xc_panel &panel, const xc_image *canvas) {
    int32_t cw, ch;
    canvas_size(panel, cw, ch);
    if (canvas && canvas->depth != 16 && rows_hold(canvas, 4) && canvas->rowstride % 4 == 0 &&
        canvas->width >= cw && canvas->height >= ch)
        return true;
    if (!canvas) log_err("xc_panel_update: no canvas\n");
    else
        log_err(
            "xc_panel_update: the canvas (%d x %d, %d bits) cannot fill a panel that shows "
            "%d x %d 32-bit pixels\n",
            canvas->width, canvas->height, static_cast<int>(canvas->depth), cw, ch);
    return false;
}

}  // namespace

xc_panel *make_panel(void *pixels, int32_t width, int32_t height, int32_t stride, int depth,
                     int rotation, const char *caller) {
    if (const char *problem = unusable_argument(pixels, width, height, stride, depth, rotation)) {
        log_err("%s: bad %s\n", caller, problem);
        return nullptr;
    }
    auto *panel = static_cast<xc_panel *>(std::calloc(1, sizeof(xc_panel)));
    if (!panel) return nullptr;
    panel->pixels = static_cast<uint8_t *>(pixels);
    panel->width = width;
    panel->height = height;
    panel->stride = stride;
    panel->depth = depth;
    panel->rotation = rotation;
    panel->pixel_bytes = depth == 16 ? 2 : 4;
    panel->convert = xc_get_convert_func(0, 0, depth, rotation);
    panel->device = -1;
    return panel;
}

}  // namespace fbc

extern "C" {

xc_panel *xc_panel_new(void *pixels, int32_t width, int32_t height, int32_t stride, int depth,
                       int rotation) {
    return fbc::make_panel(pixels, width, height, stride, depth, rotation, "xc_panel_new");
}

int xc_panel_update(xc_panel *panel, const xc_image *canvas, const xg_list *rects) {
    if (!panel) {
        fbc::log_err("xc_panel_update: no panel\n");
        return -1;
    }
    if (!fbc::canvas_fits(*panel, canvas)) return -1;
    if (!rects) {
        int32_t cw, ch;
        fbc::canvas_size(*panel, cw, ch);
        return fbc::convert_rect(*panel, *canvas, xg_rect{0, 0, cw, ch}) ? 1 : 0;
    }
    int converted = 0;
    for (const xg_list_item *item = rects->first; item; item = item->next)
        if (item->data &&
            fbc::convert_rect(*panel, *canvas, *static_cast<const xg_rect *>(item->data)))
            ++converted;
    return converted;
}

void xc_panel_get_canvas_size(const xc_panel *panel, int32_t *width, int32_t *height) {
    int32_t w = 0, h = 0;
    if (panel) fbc::canvas_size(*panel, w, h);
    if (width) *width = w;
    if (height) *height = h;
}

void xc_panel_free(xc_panel *panel) {
    if (!panel) return;
    if (panel->mapping) munmap(panel->mapping, panel->mapping_length);
    if (panel->device >= 0) close(panel->device);
    std::free(panel);
}

}  // extern "C"

// The damage manager: a grid of 16 x 16 tiles marked as areas are drawn and
// merged greedily into bands when the caller asks for rectangles.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/log.hpp"
#include "core/size_check.hpp"
#include "fbcompose/draw.h"

namespace fbc {
namespace {

constexpr int32_t kTileSize = 16;

int32_t &tile(xc_dm *dm, int32_t row, int32_t col) {
    return dm->tiles[static_cast<size_t>(row) * static_cast<size_t>(dm->cols) +
                     static_cast<size_t>(col)];
}

size_t tile_bytes(const xc_dm *dm) {
    return static_cast<size_t>(dm->cols) * static_cast<size_t>(dm->rows) * sizeof(int32_t);
}

// Length of the run of set tiles that starts at (row, col), clearing it.
int32_t take_run(xc_dm *dm, int32_t row, int32_t col) {
    int32_t n = 0;
    while (col + n < dm->cols && tile(dm, row, col + n)) tile(dm, row, col + n++) = 0;
    return n;
}

// Whether row r2 may join the band of columns c .. c + n - 1. The right
// neighbour examined is c + n + 1, not c + n: that skip decides which bands
// form and is kept (compat:).
bool row_joins_band(xc_dm *dm, int32_t r2, int32_t c, int32_t n) {
    if (c > 0 && tile(dm, r2, c - 1)) return false;
    if (c + n + 1 < dm->cols && tile(dm, r2, c + n + 1)) return false;
    for (int32_t i = c; i < c + n; ++i)
        if (!tile(dm, r2, i)) return false;
    return true;
}

xg_rect *new_rect(int32_t x, int32_t y, int32_t w, int32_t h) {
    auto *rect = static_cast<xg_rect *>(std::malloc(sizeof(xg_rect)));
    *rect = {x, y, w, h};
    return rect;
}

}  // namespace
}  // namespace fbc

extern "C" {

xc_dm *xc_dm_new(int32_t width, int32_t height) {
    auto *dm = static_cast<xc_dm *>(std::calloc(1, sizeof(xc_dm)));
    dm->tile_w = fbc::kTileSize;
    dm->tile_h = fbc::kTileSize;
    const int64_t cols = (static_cast<int64_t>(width) + 15) / 16;
    const int64_t rows = (static_cast<int64_t>(height) + 15) / 16;
    const auto bytes = fbc::checked_product(cols, rows, sizeof(int32_t));
    // The bands handed back cover whole tiles: their sides must fit too.
    const bool bands_fit = cols * fbc::kTileSize <= INT32_MAX && rows * fbc::kTileSize <= INT32_MAX;
    if (!bytes || !bands_fit || width < 0 || height < 0) {
        // An empty screen: every area then lies outside it.
        fbc::log_err("xc_dm_new: refused screen size %d x %d\n", width, height);
        return dm;
    }
    dm->cols = static_cast<int32_t>(cols);
    dm->rows = static_cast<int32_t>(rows);
    dm->width = width;
    dm->height = height;
    dm->tiles = static_cast<int32_t *>(std::calloc(static_cast<size_t>(*bytes) + 1, 1));
    return dm;
}

void xc_dm_free(xc_dm *dm) {
    if (!dm) return;
    std::free(dm->tiles);
    std::free(dm);
}

void xc_dm_reset(xc_dm *dm) {
    if (dm->tiles) std::memset(dm->tiles, 0, fbc::tile_bytes(dm));
}

int32_t xc_dm_add_area(xc_dm *dm, const xg_rect *rect) {
    // Edges in 64 bits so that a huge rectangle cannot wrap around.
    const int64_t left = std::max<int64_t>(rect->x, 0);
    const int64_t top = std::max<int64_t>(rect->y, 0);
    const int64_t right = std::min<int64_t>(int64_t{rect->x} + rect->w, dm->width);
    const int64_t bottom = std::min<int64_t>(int64_t{rect->y} + rect->h, dm->height);
    if (right <= left || top >= bottom) return 0;
    // compat: rows are divided by the tile width too; both are 16.
    const auto c0 = static_cast<int32_t>(left / dm->tile_w);
    const auto c1 = static_cast<int32_t>((right - 1) / dm->tile_w);
    const auto r0 = static_cast<int32_t>(top / dm->tile_w);
    const auto r1 = static_cast<int32_t>((bottom - 1) / dm->tile_w);
    for (int32_t r = r0; r <= r1; ++r)
        for (int32_t c = c0; c <= c1; ++c) fbc::tile(dm, r, c) = 1;
    return (r1 - r0 + 1) * (c1 - c0 + 1);
}

xg_list *xc_dm_get_rects(xc_dm *dm) {
    xg_list *rects = nullptr;
    for (int32_t r = 0; r < dm->rows; ++r) {
        int32_t c = 0;
        while (c < dm->cols) {
            if (!fbc::tile(dm, r, c)) {
                ++c;
                continue;
            }
            const int32_t n = fbc::take_run(dm, r, c);
            int32_t band = 1;
            for (int32_t r2 = r + 1; r2 < dm->rows && fbc::row_joins_band(dm, r2, c, n); ++r2) {
                std::memset(&fbc::tile(dm, r2, c), 0, static_cast<size_t>(n) * sizeof(int32_t));
                ++band;
            }
            rects = xg_list_append(rects, fbc::new_rect(dm->tile_w * c, dm->tile_h * r,
                                                        dm->tile_w * n, dm->tile_h * band));
            c += n;
        }
    }
    return rects;
}

}  // extern "C"
